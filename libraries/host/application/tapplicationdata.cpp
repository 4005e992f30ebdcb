#include "tapplicationdata.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

TApplicationData* TApplicationData::getInstance()
{
    static TApplicationData instance;
    return &instance;
}

QString TApplicationData::applicationDataPath() const
{
    QString path = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (path.isEmpty())
        path = QDir::homePath() + QStringLiteral("/.kabrowser");
    QDir().mkpath(path);
    return path;
}

bool TApplicationData::isCurrentProjectReadOnly() const
{
    return m_readOnly;
}

void TApplicationData::setCurrentProjectReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

QString TApplicationData::userName() const
{
    QString name = qEnvironmentVariable("USER");
    if (name.isEmpty())
        name = qEnvironmentVariable("USERNAME");
    return name.isEmpty() ? QStringLiteral("user") : name;
}

QString TApplicationData::applicationName() const
{
    return QStringLiteral("kabrowser");
}
