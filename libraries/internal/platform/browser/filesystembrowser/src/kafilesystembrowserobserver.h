#pragma once

#include "kabrowser_export.h"

class KAObject2;

// How the host learns that the user selected or opened an object in a
// file-system explorer.
class KABROWSER_EXPORT KAFileSystemBrowserObserver
{
public:
    virtual ~KAFileSystemBrowserObserver();
    virtual void fsObjectSelected(const KAObject2* object);
    // True when the observer handled the opening.
    virtual bool fsObjectOpened(const KAObject2* object);
};
