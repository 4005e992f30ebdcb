#include "kaobject2winitemfactory.h"

#include "kaobject2winfolder.h"

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info)
{
    if (info.isDir())
        return new KAObject2WinFolder(info);
    return new KAObject2WinFile(info);
}
