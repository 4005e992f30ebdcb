#pragma once

#include "kaobject2file.h"

// A file of the file-system explorer.
class KAHOST_EXPORT KAObject2WinFile : public KAObject2File
{
public:
    explicit KAObject2WinFile(const QFileInfo& info)
        : KAObject2File(info, KAObjectTypeWinFile) {}
    // With the name shown already known (the entry's file name).
    KAObject2WinFile(const QFileInfo& info, const QString& name)
        : KAObject2File(info, name, KAObjectTypeWinFile) {}
    KAObject2* clone() const override { return new KAObject2WinFile(*this); }

protected:
    KAObject2WinFile(const QFileInfo& info, const QString& name, KAObjectType type)
        : KAObject2File(info, name, type) {}
};
