#include "kaobject2winitemfactory.h"

#include "kaobject2winfolder.h"

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info)
{
    return createItem(info, info.isDir());
}

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info, bool isDir)
{
    if (isDir)
        return new KAObject2WinFolder(info);
    return new KAObject2WinFile(info);
}

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info, bool isDir, const QString& fileName)
{
    if (isDir)
        return new KAObject2WinFolder(info, fileName);
    return new KAObject2WinFile(info, fileName);
}
