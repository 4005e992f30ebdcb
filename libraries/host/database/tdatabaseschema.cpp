#include "tdatabaseschema.h"

#include "tdatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

namespace TechDB {

namespace {

const char SqliteMagic[16] = {'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f', 'o', 'r', 'm', 'a', 't', ' ', '3', '\0'};

quint32 readBigEndian(const uchar* p, int bytes)
{
    quint32 value = 0;
    for (int i = 0; i < bytes; ++i)
        value = (value << 8) | p[i];
    return value;
}

QString native(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

bool exec(QSqlQuery& query, const QString& sql, const QString& path, QString* error)
{
    if (query.exec(sql))
        return true;
    if (error)
        *error = TDatabaseSchema::queryError(query, path);
    return false;
}

} // namespace

QString TDatabaseSchema::tr(const char* english, const char* french)
{
    return QCoreApplication::translate("TechDB::TDatabase", english, french);
}

QString TDatabaseSchema::queryError(const QSqlQuery& query, const QString& path)
{
    QString text = query.lastError().databaseText();
    if (text.isEmpty())
        text = query.lastError().text();
    return unreadable(path, text);
}

QString TDatabaseSchema::unreadable(const QString& path, const QString& detail)
{
    return tr("The project database %1 is damaged or unreadable: %2",
              "La base de données du projet %1 est endommagée ou illisible : %2")
        .arg(native(path), detail);
}

// SQLite itself accepts a missing file (it creates one) and a file of random
// bytes (it fails only at the first query), so the file is looked at first.
bool TDatabaseSchema::checkFile(const QString& path, QString* error)
{
    auto fail = [error](const QString& text) {
        if (error)
            *error = text;
        return false;
    };
    const QFileInfo info(path);
    if (!info.exists())
        return fail(tr("The project database %1 does not exist.",
                       "La base de données du projet %1 n'existe pas.").arg(native(path)));
    if (!info.isFile())
        return fail(tr("The project database %1 is not a file.",
                       "La base de données du projet %1 n'est pas un fichier.").arg(native(path)));
    if (info.size() == 0)
        return fail(tr("The file %1 is empty: it is not a project database.",
                       "Le fichier %1 est vide : ce n'est pas une base de données de projet.").arg(native(path)));

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(tr("The project database %1 cannot be read: %2",
                       "La base de données du projet %1 ne peut pas être lue : %2").arg(native(path), file.errorString()));
    const QByteArray header = file.read(100);
    const qint64 size = file.size();
    file.close();

    if (header.size() < 16 || memcmp(header.constData(), SqliteMagic, 16) != 0)
        return fail(tr("The file %1 is not a project database (unknown file format).",
                       "Le fichier %1 n'est pas une base de données de projet (format de fichier inconnu).")
                        .arg(native(path)));
    const QString damaged = tr("The project database %1 is damaged (invalid header).",
                               "La base de données du projet %1 est endommagée (en-tête invalide).").arg(native(path));
    if (header.size() < 100)
        return fail(damaged);
    const uchar* h = reinterpret_cast<const uchar*>(header.constData());
    quint32 pageSize = readBigEndian(h + 16, 2);
    if (pageSize == 1)
        pageSize = 65536;
    if (pageSize < 512 || pageSize > 65536 || (pageSize & (pageSize - 1)) != 0)
        return fail(damaged);
    // Our files always use the rollback journal; a WAL file (format 2) would
    // make even a read-only open touch files next to it.
    if (h[18] != 1 || h[19] != 1)
        return fail(tr("The file %1 is not a project database (unsupported SQLite journal format).",
                       "Le fichier %1 n'est pas une base de données de projet (format de journal SQLite non pris en charge).")
                        .arg(native(path)));
    // The page count in the header is trustworthy only when the change
    // counter matches the "version valid for" field.
    const quint32 headerPages = readBigEndian(h + 28, 4);
    const bool pagesValid = headerPages != 0 && readBigEndian(h + 24, 4) == readBigEndian(h + 92, 4);
    const qint64 expected = pagesValid ? qint64(headerPages) * pageSize : qint64(pageSize);
    if (size % pageSize != 0 || size < expected)
        return fail(tr("The project database %1 is truncated or damaged (%2 bytes, %3 expected).",
                       "La base de données du projet %1 est tronquée ou endommagée (%2 octets, %3 attendus).")
                        .arg(native(path)).arg(size).arg(expected));
    return true;
}

bool TDatabaseSchema::checkConnection(const QSqlDatabase& connection, const QString& path, QString* error)
{
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    if (!exec(query, QStringLiteral("PRAGMA application_id"), path, error) || !query.next()) {
        if (error && error->isEmpty())
            *error = queryError(query, path);
        return false;
    }
    const int applicationId = query.value(0).toInt();
    if (!exec(query, QStringLiteral("PRAGMA user_version"), path, error) || !query.next())
        return false;
    const int version = query.value(0).toInt();
    query.finish();

    if (applicationId != ApplicationId) {
        if (error)
            *error = tr("The file %1 is an SQLite database of another application, not a project database.",
                        "Le fichier %1 est une base SQLite d'une autre application, pas une base de données de projet.")
                         .arg(native(path));
        return false;
    }
    if (version > TDatabase::SchemaVersion) {
        if (error)
            *error = tr("The project database %1 was written by a newer version of the application "
                        "(format %2; this version reads formats up to %3).",
                        "La base de données du projet %1 a été écrite par une version plus récente de l'application "
                        "(format %2 ; cette version lit les formats jusqu'à %3).")
                         .arg(native(path)).arg(version).arg(TDatabase::SchemaVersion);
        return false;
    }
    if (version < 1) {
        if (error)
            *error = tr("The project database %1 has an unknown format version (%2).",
                        "La base de données du projet %1 a une version de format inconnue (%2).")
                         .arg(native(path)).arg(version);
        return false;
    }

    if (!exec(query, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"), path, error))
        return false;
    QSet<QString> tables;
    while (query.next())
        tables.insert(query.value(0).toString());
    if (query.lastError().isValid()) {
        if (error)
            *error = queryError(query, path);
        return false;
    }
    // Files of the first format have no compounds; they gain the table with
    // their first compound entry (ensureCompoundTable()).
    QStringList required = {QStringLiteral("meta"), QStringLiteral("objects"), QStringLiteral("properties"),
                            QStringLiteral("links")};
    if (version >= 2)
        required.append(QStringLiteral("compound_peaks"));
    for (const QString& table : qAsConst(required)) {
        if (!tables.contains(table)) {
            if (error)
                *error = tr("The project database %1 is damaged (table %2 missing).",
                            "La base de données du projet %1 est endommagée (table %2 manquante).")
                             .arg(native(path), table);
            return false;
        }
    }
    return true;
}

bool TDatabaseSchema::create(QSqlDatabase& connection, const TProjectHeader& header, QString* error)
{
    const QString path = connection.databaseName();
    QSqlQuery query(connection);
    const QStringList statements = {
        QStringLiteral("BEGIN IMMEDIATE"),
        QStringLiteral("PRAGMA application_id = %1").arg(ApplicationId),
        QStringLiteral("PRAGMA user_version = %1").arg(TDatabase::SchemaVersion),
        QStringLiteral("CREATE TABLE meta (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE objects (id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL DEFAULT 0, "
                       "kind INTEGER NOT NULL, name TEXT NOT NULL, source INTEGER NOT NULL DEFAULT 0, "
                       "multichannel INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE TABLE properties (object INTEGER NOT NULL, key TEXT NOT NULL, "
                       "value TEXT NOT NULL, unit TEXT NOT NULL, comment TEXT NOT NULL, PRIMARY KEY (object, key))"),
        QStringLiteral("CREATE TABLE links (identification INTEGER NOT NULL, peakdetect INTEGER NOT NULL, "
                       "UNIQUE (identification, peakdetect))"),
        QStringLiteral("CREATE INDEX links_peakdetect ON links (peakdetect)"),
        compoundTable(),
    };
    for (const QString& sql : statements) {
        if (!exec(query, sql, path, error)) {
            query.exec(QStringLiteral("ROLLBACK"));
            return false;
        }
    }
    QSqlError metaError;
    const bool metaOk = writeMeta(connection, QStringLiteral("name"), header.name, &metaError)
        && writeMeta(connection, QStringLiteral("description"), header.description, &metaError)
        && writeMeta(connection, QStringLiteral("state"), QString::number(header.state), &metaError)
        && writeMeta(connection, QStringLiteral("access_mode"), QString::number(header.accessMode), &metaError);
    if (!metaOk && error)
        *error = metaError.text();
    const bool ok = metaOk && exec(query, QStringLiteral("COMMIT"), path, error);
    if (!ok)
        query.exec(QStringLiteral("ROLLBACK"));
    return ok;
}

QString TDatabaseSchema::compoundTable()
{
    // project: the folder of the detection's project relative to this
    // project's folder; empty for a detection of this project.
    return QStringLiteral("CREATE TABLE compound_peaks (compound INTEGER NOT NULL, position INTEGER NOT NULL, "
                          "project TEXT NOT NULL DEFAULT '', peakdetect INTEGER NOT NULL, "
                          "PRIMARY KEY (compound, position))");
}

QString TDatabaseSchema::insertCompoundEntry()
{
    return QStringLiteral("INSERT INTO compound_peaks (compound, position, project, peakdetect) VALUES (?, ?, ?, ?)");
}

bool TDatabaseSchema::hasCompoundTable(const QSqlDatabase& connection)
{
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    return query.exec(QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'compound_peaks'"))
        && query.next();
}

// Inside the caller's transaction: the file takes the current format only
// together with the first compound entry written to it, and keeps it only
// if that transaction commits.
bool TDatabaseSchema::ensureCompoundTable(QSqlDatabase& connection, QSqlError* error)
{
    if (hasCompoundTable(connection))
        return true;
    QSqlQuery query(connection);
    for (const QString& sql : {compoundTable(), QStringLiteral("PRAGMA user_version = %1").arg(TDatabase::SchemaVersion)}) {
        if (!query.exec(sql)) {
            if (error)
                *error = query.lastError();
            return false;
        }
    }
    return true;
}

bool TDatabaseSchema::readHeader(const QSqlDatabase& connection, TProjectHeader* header, QString* error)
{
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    if (!exec(query, QStringLiteral("SELECT key, value FROM meta"), connection.databaseName(), error))
        return false;
    TProjectHeader result;
    while (query.next()) {
        const QString key = query.value(0).toString();
        const QString value = query.value(1).toString();
        if (key == QLatin1String("name"))
            result.name = value;
        else if (key == QLatin1String("description"))
            result.description = value;
        else if (key == QLatin1String("state"))
            result.state = value.toInt();
        else if (key == QLatin1String("access_mode"))
            result.accessMode = value.toInt();
    }
    if (query.lastError().isValid()) {
        if (error)
            *error = queryError(query, connection.databaseName());
        return false;
    }
    if (header)
        *header = result;
    return true;
}

bool TDatabaseSchema::writeMeta(const QSqlDatabase& connection, const QString& key, const QString& value,
                                QSqlError* error)
{
    QSqlQuery query(connection);
    query.prepare(QStringLiteral("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)"));
    query.addBindValue(key);
    query.addBindValue(text(value));
    if (query.exec())
        return true;
    if (error)
        *error = query.lastError();
    return false;
}

} // namespace TechDB
