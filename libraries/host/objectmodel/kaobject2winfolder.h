#pragma once

#include "kaobject2winfile.h"

#include <QDir>

// A folder of the file-system explorer, listed when expanded.
class KAHOST_EXPORT KAObject2WinFolder : public KAObject2WinFile
{
public:
    explicit KAObject2WinFolder(const QFileInfo& info)
        : KAObject2WinFolder(info, displayName(info)) {}
    // With the name shown already known (the entry's file name).
    KAObject2WinFolder(const QFileInfo& info, const QString& name)
        : KAObject2WinFile(info, name, KAObjectTypeWinFolder) {}
    QDir getDir() const { return QDir(filePath()); }
    KAObject2* clone() const override { return new KAObject2WinFolder(*this); }

protected:
    KAObject2WinFolder(const QFileInfo& info, const QString& name, KAObjectType type)
        : KAObject2WinFile(info, name, type) {}
};
