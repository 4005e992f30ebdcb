#include "kaobject2file.h"

#include <QDir>

KAObject2File::KAObject2File(const QFileInfo& info, KAObjectType type)
    : KAObject2(type, displayName(info))
    , m_info(info)
{
}

KAObject2File::KAObject2File(const QFileInfo& info, const QString& name, KAObjectType type)
    : KAObject2(type, name)
    , m_info(info)
{
}

QString KAObject2File::displayName(const QFileInfo& info)
{
    const QString name = info.fileName();
    return name.isEmpty() ? QDir::toNativeSeparators(info.absoluteFilePath()) : name;
}
