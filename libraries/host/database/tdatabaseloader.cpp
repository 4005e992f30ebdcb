#include "tdatabaseloader.h"

#include "tdatabaseindex.h"
#include "tdatabaseschema.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace TechDB {

namespace {

// A forward-only query: SQLite rows are read once and never cached by Qt.
bool run(QSqlQuery& query, const QString& sql, const QString& path, QString* error)
{
    query.setForwardOnly(true);
    if (query.exec(sql))
        return true;
    if (error)
        *error = TDatabaseSchema::queryError(query, path);
    return false;
}

// next() returns false both at the end and on a read error.
bool finished(const QSqlQuery& query, const QString& path, QString* error)
{
    if (!query.lastError().isValid())
        return true;
    if (error)
        *error = TDatabaseSchema::queryError(query, path);
    return false;
}

} // namespace

bool TDatabaseLoader::load(const QSqlDatabase& connection, TDatabaseIndex* index, QString* error)
{
    const QString path = connection.databaseName();
    QSqlQuery query(connection);

    // max(id) is read from the primary key's b-tree end: a cheap bound that
    // lets the containers be sized once.
    if (!run(query, QStringLiteral("SELECT max(id) FROM objects"), path, error))
        return false;
    if (query.next())
        index->reserve(int(qMin<qint64>(query.value(0).toLongLong(), 16 * 1024 * 1024)));
    query.finish();

    if (!run(query, QStringLiteral("SELECT id, parent, kind, name, source, multichannel FROM objects ORDER BY id"), path, error))
        return false;
    while (query.next()) {
        index->insertObject(query.value(0).toLongLong(), query.value(1).toLongLong(), query.value(2).toInt(),
                            query.value(3).toString(), query.value(4).toInt(), query.value(5).toInt() != 0);
    }
    if (!finished(query, path, error))
        return false;
    query.finish();

    if (!run(query, QStringLiteral("SELECT object, key, value, unit, comment FROM properties"), path, error))
        return false;
    while (query.next()) {
        index->setProperty(query.value(0).toLongLong(),
                           TProperty(query.value(1).toString(), query.value(2).toString(),
                                     query.value(3).toString(), query.value(4).toString()));
    }
    if (!finished(query, path, error))
        return false;
    query.finish();

    if (!run(query, QStringLiteral("SELECT identification, peakdetect FROM links"), path, error))
        return false;
    while (query.next())
        index->insertLink(query.value(0).toLongLong(), query.value(1).toLongLong());
    return finished(query, path, error);
}

} // namespace TechDB
