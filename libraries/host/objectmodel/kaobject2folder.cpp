#include "kaobject2folder.h"

KAObject2Folder::KAObject2Folder(const QString& name, KAObjectType folderKind)
    : KAObject2(KAObjectTypeFolder, name)
    , m_folderKind(folderKind)
{
}

KAObject2Folder::KAObject2Folder(const QString& name, KAObjectType folderKind, KAObjectType ownType)
    : KAObject2(ownType, name)
    , m_folderKind(folderKind)
    , m_ownType(ownType)
{
}

KAObjectType KAObject2Folder::type() const
{
    return m_ownType;
}
