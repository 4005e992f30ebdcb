#include "tdatabaseregistry.h"

#include "tdatabase.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QMutexLocker>

namespace TechDB {

namespace {
struct Registry {
    QMutex mutex;
    QHash<QString, QList<TDatabase*>> byFolder; // not owned
};

Registry& registry()
{
    static Registry instance;
    return instance;
}
} // namespace

QString TDatabaseRegistry::key(const QString& projectFolder)
{
    return QDir::cleanPath(QFileInfo(projectFolder).absoluteFilePath());
}

void TDatabaseRegistry::add(TDatabase* db)
{
    Registry& r = registry();
    QMutexLocker lock(&r.mutex);
    r.byFolder[key(db->location())].append(db);
}

void TDatabaseRegistry::remove(TDatabase* db)
{
    Registry& r = registry();
    QMutexLocker lock(&r.mutex);
    auto it = r.byFolder.find(key(db->location()));
    if (it == r.byFolder.end())
        return;
    it.value().removeAll(db);
    if (it.value().isEmpty())
        r.byFolder.erase(it);
}

TDatabase* TDatabaseRegistry::find(const QString& projectFolder)
{
    Registry& r = registry();
    QMutexLocker lock(&r.mutex);
    const QList<TDatabase*> open = r.byFolder.value(key(projectFolder));
    return open.isEmpty() ? nullptr : open.last();
}

} // namespace TechDB
