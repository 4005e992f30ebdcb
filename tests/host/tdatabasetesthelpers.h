#pragma once

// Helpers shared by the project database tests.

#include "kaobject2.h"
#include "kaobject2identification.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <memory>

namespace DatabaseTest {

using TechDB::TDatabase;

// A project object and its open database, closed in the right order.
struct Opened {
    std::unique_ptr<KAObject2Project> project;
    std::unique_ptr<TDatabase> db;
    QString error;
    ~Opened() { db.reset(); }
};

inline std::unique_ptr<Opened> openFolder(const QString& folder, bool readOnly = false)
{
    std::unique_ptr<Opened> opened(new Opened);
    opened->project.reset(new KAObject2Project(QDir(folder).dirName(), folder));
    opened->db.reset(TDatabase::open(opened->project.get(), readOnly, &opened->error));
    return opened;
}

inline TSampleGenerator::Options smallOptions()
{
    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = 4;
    options.signalsPerAnalysis = 2;
    options.peaksPerSignal = 5;
    options.wells = 3;
    options.datasetsPerWell = 2;
    options.variablesPerDataset = 2;
    options.groups = 2;
    return options;
}

inline QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QStringList folderEntries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

// Runs SQL on a private connection that is not ours: what another program
// would see or do to the file.
inline void rawSql(const QString& path, const QStringList& statements)
{
    const QString name = QStringLiteral("tst_raw");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        QVERIFY(db.open());
        QSqlQuery query(db);
        for (const QString& sql : statements)
            QVERIFY2(query.exec(sql), qPrintable(sql));
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

// The first column of every row a query gives, read by a connection of its
// own; a NULL reads as an empty string.
inline QStringList rawColumn(const QString& path, const QString& sql)
{
    QStringList values;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("tst_column"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(sql)) {
                while (query.next())
                    values.append(query.value(0).toString());
            }
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("tst_column"));
    return values;
}

// A project folder and its database file as they are now, to show later
// that a refusal or a read-only session left both alone.
struct FolderSnapshot {
    explicit FolderSnapshot(const QString& folder)
        : folder(folder)
        , bytes(fileBytes(TDatabase::databasePath(folder)))
        , entries(folderEntries(folder))
    {
    }
    bool unchanged() const
    {
        return fileBytes(TDatabase::databasePath(folder)) == bytes && folderEntries(folder) == entries;
    }
    QString folder;
    QByteArray bytes;
    QStringList entries;
};

inline int pragma(const QString& path, const QString& name)
{
    int value = -1;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("tst_pragma"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(QStringLiteral("PRAGMA ") + name) && query.next())
                value = query.value(0).toInt();
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("tst_pragma"));
    return value;
}

// Every object of a database as text: kind, name, parent, in database order.
inline QString describe(const TDatabase* db)
{
    QStringList lines;
    for (KAObjectType kind : db->objectTypes()) {
        for (const KAObject2* object : db->getObjectLst(kind)) {
            QString line = QStringLiteral("%1|%2|%3").arg(int(kind)).arg(object->name(),
                object->parentObject() ? object->parentObject()->name() : QString());
            if (kind == KAObjectTypeIdentification) {
                for (const KAObject2PeakDetect* pd : static_cast<const KAObject2Identification*>(object)->workPDList())
                    line += QLatin1Char('>') + pd->name();
            }
            lines.append(line);
        }
    }
    return lines.join(QLatin1Char('\n'));
}

inline bool loggedContaining(const QString& fragment)
{
    for (const QString& text : MessageLoggerInterface::returnMe()->texts()) {
        if (text.contains(fragment, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

} // namespace DatabaseTest
