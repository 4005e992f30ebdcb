#pragma once

#include "kaobject2winfolder.h"

class KAAliasFolderInterface;

// A folder reached through one of the user's named shortcuts; shown under
// the shortcut's name.
class KAHOST_EXPORT KAObject2AliasFolder : public KAObject2WinFolder
{
public:
    KAObject2AliasFolder(const QFileInfo& info, const QString& aliasName)
        : KAObject2WinFolder(info, aliasName, KAObjectTypeAliasFolder) {}
    explicit KAObject2AliasFolder(const KAAliasFolderInterface* alias);
    KAObject2* clone() const override { return new KAObject2AliasFolder(*this); }
};
