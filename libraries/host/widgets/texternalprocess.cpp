#include "texternalprocess.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace {
TExternalProcess::Opener& opener()
{
    static TExternalProcess::Opener function;
    return function;
}

bool openUrl(const QUrl& url)
{
    if (const TExternalProcess::Opener& function = opener())
        return function(url);
    return QDesktopServices::openUrl(url);
}
} // namespace

void TExternalProcess::setOpener(Opener function)
{
    opener() = std::move(function);
}

bool TExternalProcess::startWindowsExplorer(const QString& path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    const QString folder = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
    return openUrl(QUrl::fromLocalFile(QDir::cleanPath(folder)));
}

bool TExternalProcess::openDocument(const QString& path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (!info.exists() || info.isDir())
        return false;
    return openUrl(QUrl::fromLocalFile(QDir::cleanPath(info.absoluteFilePath())));
}
