#pragma once

#include "kahost_export.h"

// Blocks opening and closing documents in the host for its scope (a bulk
// job opening projects holds one). Nests; any thread may hold one.
class KAHOST_EXPORT KAMdiInterfaceBlocker
{
public:
    KAMdiInterfaceBlocker();
    ~KAMdiInterfaceBlocker();
    KAMdiInterfaceBlocker(const KAMdiInterfaceBlocker&) = delete;
    KAMdiInterfaceBlocker& operator=(const KAMdiInterfaceBlocker&) = delete;

    // True while any blocker lives; the host's main window asks before it
    // opens or closes a document.
    static bool isBlocked();
};
