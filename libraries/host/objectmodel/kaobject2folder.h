#pragma once

#include "kaobject2.h"

// A named folder. type() is always 260; the folder kind it was built with
// (514, 516, 519, 528, 530, ...) stays readable through folderKind().
class KAHOST_EXPORT KAObject2Folder : public KAObject2
{
public:
    KAObject2Folder(const QString& name, KAObjectType folderKind);
    KAObjectType type() const override;
    KAObjectType folderKind() const { return m_folderKind; }
    bool isUserFolder() const { return m_folderKind == KAObjectTypeUserFolder; }
    bool isReadOnly() const override { return m_readOnly; }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }
    KAObject2* clone() const override { return new KAObject2Folder(*this); }

protected:
    // For subclasses that report a kind of their own instead of 260.
    KAObject2Folder(const QString& name, KAObjectType folderKind, KAObjectType ownType);

private:
    KAObjectType m_folderKind;
    KAObjectType m_ownType = KAObjectTypeFolder;
    bool m_readOnly = false;
};
