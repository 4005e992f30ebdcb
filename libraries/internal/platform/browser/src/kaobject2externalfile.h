#pragma once

#include "kabrowser_export.h"
#include "kaobject2file.h"

// A folder (2522) or file (2523) of the disk shown in a project's
// "External folders" branch. The branch itself is a 2522 object without
// a path.
class KABROWSER_EXPORT KAObject2ExternalFile : public KAObject2File
{
public:
    KAObject2ExternalFile(const QFileInfo& info, const QString& name)
        : KAObject2File(info, name, info.isDir() ? KAObjectTypeExternalFolders : KAObjectTypeExternalFile) {}
    explicit KAObject2ExternalFile(const QFileInfo& info)
        : KAObject2ExternalFile(info, displayName(info)) {}
    // The branch.
    explicit KAObject2ExternalFile(const QString& branchName)
        : KAObject2File(QFileInfo(), branchName, KAObjectTypeExternalFolders), m_branch(true) {}
    bool isBranch() const { return m_branch; }
    bool isReadOnly() const override { return true; }
    KAObject2* clone() const override { return new KAObject2ExternalFile(*this); }

private:
    bool m_branch = false;
};
