#include "tpixmapcache.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIcon>
#include <QMutex>
#include <QMutexLocker>

namespace {
const int IconSize = 16;

QIcon loadIcon(const QString& name)
{
    const QString resource = QStringLiteral(":/kabrowser/icons/%1.svg").arg(name);
    const QIcon fallback = QFile::exists(resource) ? QIcon(resource) : QIcon();
    return QIcon::fromTheme(name, fallback);
}

// A pixmap of IconSize logical pixels drawn for the screen's density. With
// Qt::AA_UseHighDpiPixmaps QIcon scales by the application's ratio itself;
// without it, the icon is drawn at device size and tagged with the ratio.
QPixmap renderForScreen(const QIcon& icon)
{
    const QSize logical(IconSize, IconSize);
    if (QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps))
        return icon.pixmap(logical);
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap = icon.pixmap(logical * ratio);
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}
} // namespace

QIcon TPixmapCache::icon(const char* name)
{
    return loadIcon(QString::fromLatin1(name));
}

// Pixmaps are cached for the life of the process: callers keep references.
const QPixmap& TPixmapCache::find(const char* name)
{
    static QMutex mutex;
    static QHash<QString, QPixmap>* cache = new QHash<QString, QPixmap>;
    static const QPixmap null;
    const QString key = QString::fromLatin1(name ? name : "");
    // Pixmaps need a GUI application; without one the answer is a null
    // pixmap, not cached, so that a later GUI run still gets the icon.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return null;
    QMutexLocker lock(&mutex);
    auto it = cache->find(key);
    if (it == cache->end())
        it = cache->insert(key, renderForScreen(loadIcon(key)));
    return it.value();
}
