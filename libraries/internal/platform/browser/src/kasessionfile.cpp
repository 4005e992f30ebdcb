#include "kasessionfile.h"

#include "txmlmethod.h"

#include <QFile>
#include <cstdio>

QString KASessionFile::defaultPath(const QString& pathTemplate)
{
    return pathTemplate.arg(QStringLiteral("default"));
}

bool KASessionFile::write(const QString& pathTemplate, const QByteArray& bytes)
{
    const QString sessionPath = pathTemplate.arg(QStringLiteral("session"));
    const QString target = defaultPath(pathTemplate);
    QFile::remove(sessionPath);
    if (!TXMLMethod::writeAtomically(sessionPath, bytes))
        return false;
    // rename(2) replaces the target in one step.
    if (::rename(QFile::encodeName(sessionPath).constData(), QFile::encodeName(target).constData()) == 0)
        return true;
    QFile::remove(target);
    return QFile::rename(sessionPath, target);
}
