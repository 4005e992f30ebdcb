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
    const QUrl url = QUrl::fromLocalFile(QDir::cleanPath(folder));
    if (const Opener& function = opener())
        return function(url);
    return QDesktopServices::openUrl(url);
}
