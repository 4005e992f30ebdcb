#include "tpixmapcache.h"

#include <QApplication>
#include <QFile>
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
    QMutexLocker lock(&mutex);
    auto it = cache->find(key);
    if (it == cache->end()) {
        QPixmap pixmap;
        // Pixmaps need a GUI application; a command-line run gets null ones.
        if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            const qreal ratio = qApp ? qApp->devicePixelRatio() : 1.0;
            pixmap = loadIcon(key).pixmap(QSize(IconSize, IconSize), QIcon::Normal, QIcon::On);
            Q_UNUSED(ratio);
        }
        it = cache->insert(key, pixmap);
    }
    return it.value();
}
