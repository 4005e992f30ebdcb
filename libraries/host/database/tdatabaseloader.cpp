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
    // lets the containers be sized once (capped: ids of deleted objects are
    // never reused, so a small project may have large ids).
    if (!run(query, QStringLiteral("SELECT max(id) FROM objects"), path, error))
        return false;
    if (query.next())
        index->reserve(int(qMin<qint64>(query.value(0).toLongLong(), 1024 * 1024)));
    query.finish();

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
    if (!finished(query, path, error))
        return false;
    query.finish();
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
