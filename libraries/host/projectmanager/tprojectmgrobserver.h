#pragma once

#include "kahost_export.h"

class KAObject2Project;

// Told by the project manager when projects are created, opened and closed.
// Unregisters itself when destroyed.
class KAHOST_EXPORT TProjectMgrObserver
{
public:
    virtual ~TProjectMgrObserver();
    virtual void projectCreated(const KAObject2Project* project);
    virtual void projectOpened();
    virtual void projectClosed(const KAObject2Project* project);
};
