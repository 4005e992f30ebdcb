#pragma once

#include "kahost_export.h"

// Told by a module's editor (its ribbon) that the user asked to close the
// module.
class KAHOST_EXPORT ModuleObserver
{
public:
    virtual ~ModuleObserver();
    virtual void moduleCloseRequested() = 0;
};
