#include "kahostworkspace.h"

#include "tapplicationdata.h"
#include "tsamplegenerator.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

QString KAHostWorkspace::samplePath()
{
    return QDir(TApplicationData::getInstance()->applicationDataPath()).filePath(QStringLiteral("sample-workspace"));
}

QString KAHostWorkspace::resolve(const QString& requested, QString* error)
{
    if (!requested.isEmpty()) {
        const QFileInfo info(requested);
        if (!info.isDir()) {
            if (error)
                *error = QCoreApplication::translate("KAHostWorkspace", "%1 is not a folder", "%1 n'est pas un dossier")
                             .arg(requested);
            return QString();
        }
        return info.absoluteFilePath();
    }
    const QString sample = samplePath();
    if (QDir(sample).exists() && !QDir(sample).isEmpty())
        return sample;
    TSampleGenerator::Options options;
    options.projects = 4;
    options.analyses = 12;
    options.wells = 4;
    if (TSampleGenerator::generate(sample, options, error).isEmpty())
        return QString();
    return sample;
}
