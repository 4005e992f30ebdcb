#include "kaobject2winitemfactory.h"

#include "kaobject2winfolder.h"

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info)
{
    return createItem(info, info.isDir(), KAObject2File::displayName(info));
}

KAObject2WinFile* KAObject2WinItemFactory::createItem(const QFileInfo& info, bool isDir, const QString& name)
{
    if (isDir)
        return new KAObject2WinFolder(info, name);
    return new KAObject2WinFile(info, name);
}
