#pragma once

#include "kahost_export.h"

#include <QString>

// The host's progress sink: a long job starts it with its number of steps,
// steps it, and finishes it. GUI thread only.
class KAHOST_EXPORT TProcessProgressInterface
{
public:
    virtual ~TProcessProgressInterface();
    virtual void startProcess(int steps, const QString& title = QString(), const QString& text = QString()) = 0;
    virtual void advanceProcess(int steps = 1) = 0;
    virtual void endProcess() = 0;
};
