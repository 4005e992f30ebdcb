#pragma once

#include <QString>

class QSqlDatabase;
class QSqlError;
class QSqlQuery;

namespace TechDB {

// Header fields of a project database, kept in its meta table.
struct TProjectHeader {
    QString name;
    QString description;
    int state = 0;
    int accessMode = 0;
};

// The layout of a project database file and the checks that decide whether a
// file may be opened at all. Every check reads only: a refused file must stay
// byte for byte as it was, without a journal appearing next to it.
class TDatabaseSchema
{
public:
    // PRAGMA application_id of our files: "KADB".
    static const int ApplicationId = 0x4B414442;

    // Before any SQLite call: the file exists, is a regular non-empty file,
    // starts with the SQLite signature, has a sane header (page size, legacy
    // rollback journal) and is as long as its header says. False with *error.
    static bool checkFile(const QString& path, QString* error);

    // On a connection opened read-only: our application id, a schema version
    // we know, and our tables. False with *error.
    static bool checkConnection(const QSqlDatabase& connection, const QString& path, QString* error);

    // Creates the tables and the header in an empty database, in one transaction.
    static bool create(QSqlDatabase& connection, const TProjectHeader& header, QString* error);

    // Brings a file of the first format up to the current one (the compound
    // table and the version), inside the caller's open transaction.
    static bool ensureCompoundTable(QSqlDatabase& connection, QSqlError* error);
    static bool hasCompoundTable(const QSqlDatabase& connection);

    static bool readHeader(const QSqlDatabase& connection, TProjectHeader* header, QString* error);
    // Writes one meta field (inside the caller's transaction).
    static bool writeMeta(const QSqlDatabase& connection, const QString& key, const QString& value,
                          QSqlError* error);

    static QString compoundTable();
    // The statement that appends one entry to a compound's list.
    static QString insertCompoundEntry();

    // A readable text for a failed query, naming the file.
    static QString queryError(const QSqlQuery& query, const QString& path);
    // "The project database ... is damaged or unreadable: detail".
    static QString unreadable(const QString& path, const QString& detail);
    static QString tr(const char* english, const char* french);
    // SQLite stores a null QString as NULL; our text columns are NOT NULL.
    static QString text(const QString& value) { return value.isNull() ? QString(QLatin1String("")) : value; }
};

} // namespace TechDB
