#include "kafilesystembrowserobserver.h"

KAFileSystemBrowserObserver::~KAFileSystemBrowserObserver() = default;

void KAFileSystemBrowserObserver::fsObjectSelected(const KAObject2*)
{
}

bool KAFileSystemBrowserObserver::fsObjectOpened(const KAObject2*)
{
    return false;
}
