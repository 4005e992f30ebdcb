#include "tdatabaseloader.h"

#include "tdatabaseindex.h"
#include "tdatabaseschema.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <sqlite3.h>

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

// The objects are most of a project: they are read through SQLite's own
// interface when the driver lends its handle, without a QVariant per value.
bool TDatabaseLoader::loadObjects(const QSqlDatabase& connection, TDatabaseIndex* index, QString* error)
{
    const QString path = connection.databaseName();
    const QVariant handle = connection.driver() ? connection.driver()->handle() : QVariant();
    sqlite3* db = handle.isValid() && qstrcmp(handle.typeName(), "sqlite3*") == 0
        ? *static_cast<sqlite3* const*>(handle.constData())
        : nullptr;
    if (db) {
        sqlite3_stmt* statement = nullptr;
        int rc = sqlite3_prepare_v2(db, "SELECT id, parent, kind, source, multichannel, name FROM objects ORDER BY id",
                                    -1, &statement, nullptr);
        if (rc == SQLITE_OK)
            rc = sqlite3_step(statement);
        for (; rc == SQLITE_ROW; rc = sqlite3_step(statement)) {
            const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(statement, 5));
            index->insertObject(sqlite3_column_int64(statement, 0), sqlite3_column_int64(statement, 1),
                                qint32(sqlite3_column_int64(statement, 2)),
                                QString::fromUtf8(name, sqlite3_column_bytes(statement, 5)),
                                int(sqlite3_column_int64(statement, 3) & 0xFFFF),
                                sqlite3_column_int64(statement, 4) != 0);
        }
        if (rc != SQLITE_DONE && error)
            *error = TDatabaseSchema::unreadable(path, QString::fromUtf8(sqlite3_errmsg(db)));
        sqlite3_finalize(statement);
        return rc == SQLITE_DONE;
    }

    QSqlQuery query(connection);
    // The three small integers travel packed in one column: every column
    // costs a QVariant per row, which is most of the price of a row here.
    if (!run(query,
             QStringLiteral("SELECT id, parent, (kind & 4294967295) | ((source & 65535) << 32) "
                            "| ((multichannel != 0) << 48), name FROM objects ORDER BY id"),
             path, error))
        return false;
    // SQLite integers arrive as qlonglong; toInt() would go through Qt's
    // general conversion, several times slower than taking the value.
    while (query.next()) {
        const qint64 packed = query.value(2).toLongLong();
        index->insertObject(query.value(0).toLongLong(), query.value(1).toLongLong(), qint32(packed & 0xFFFFFFFF),
                            query.value(3).toString(), int((packed >> 32) & 0xFFFF), (packed >> 48) & 1);
    }
    return finished(query, path, error);
}

bool TDatabaseLoader::load(const QSqlDatabase& connection, TDatabaseIndex* index, QString* error)
{
    const QString path = connection.databaseName();
    QSqlQuery query(connection);

    // max(id) is read from the primary key's b-tree end: a cheap bound that
    // lets the containers be sized once (capped: ids of deleted objects are
    // never reused, so a small project may have large ids).
    if (!run(query, QStringLiteral("SELECT max(id) FROM objects"), path, error))
        return false;
    if (query.next())
        index->reserve(int(qMin<qint64>(query.value(0).toLongLong(), 1024 * 1024)));
    query.finish();

    if (!loadObjects(connection, index, error))
        return false;
    index->fileKinds();

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
    if (!finished(query, path, error))
        return false;
    query.finish();

    if (!TDatabaseSchema::hasCompoundTable(connection))
        return true;
    if (!run(query, QStringLiteral("SELECT compound, position, project, peakdetect FROM compound_peaks "
                                   "ORDER BY compound, position"),
             path, error))
        return false;
    while (query.next()) {
        TCompoundRef ref;
        ref.position = query.value(1).toLongLong();
        ref.project = query.value(2).toString();
        ref.peakDetect = query.value(3).toLongLong();
        index->appendCompoundRef(query.value(0).toLongLong(), ref);
    }
    return finished(query, path, error);
}

} // namespace TechDB
