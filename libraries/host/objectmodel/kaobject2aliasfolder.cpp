#include "kaobject2aliasfolder.h"

#include "kaaliasfolderinterface.h"

KAObject2AliasFolder::KAObject2AliasFolder(const KAAliasFolderInterface* alias)
    : KAObject2WinFolder(QFileInfo(alias->path()), alias->name(), KAObjectTypeAliasFolder)
{
}
