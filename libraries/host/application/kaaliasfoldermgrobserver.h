#pragma once

#include "kahost_export.h"

// Told when the user's alias folders change.
class KAHOST_EXPORT KAAliasFolderMgrObserver
{
public:
    virtual ~KAAliasFolderMgrObserver();
    virtual void aliasListChanged() = 0;
};
