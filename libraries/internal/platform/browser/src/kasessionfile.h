#pragma once

#include "kabrowser_export.h"

#include <QByteArray>
#include <QString>

// Per-project state files are written to a "session" file first, which
// then takes the place of the "default" file in one step: a complete
// "default" file exists at every instant, the old one or the new one.
class KABROWSER_EXPORT KASessionFile
{
public:
    // pathTemplate holds %2 for "session" or "default".
    static bool write(const QString& pathTemplate, const QByteArray& bytes);
    static QString defaultPath(const QString& pathTemplate);
};
