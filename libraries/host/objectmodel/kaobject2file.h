#pragma once

#include "kaobject2.h"

#include <QFileInfo>

// A file or folder on disk. The name shown is the file name (the path of a
// drive root, which has none).
class KAHOST_EXPORT KAObject2File : public KAObject2
{
public:
    explicit KAObject2File(const QFileInfo& info, KAObjectType type = KAObjectTypeFile);
    KAObject2File(const QFileInfo& info, const QString& name, KAObjectType type);

    const QFileInfo& fileInfo() const { return m_info; }
    QString filePath() const { return m_info.absoluteFilePath(); }
    bool isDir() const { return m_info.isDir(); }
    KAObject2* clone() const override { return new KAObject2File(*this); }

    static QString displayName(const QFileInfo& info);

private:
    QFileInfo m_info;
};
