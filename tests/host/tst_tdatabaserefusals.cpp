#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include <QElapsedTimer>

using namespace DatabaseTest;

// What the project database refuses: writes to a read-only project, files
// that are not sound project databases, and writes while another program
// holds the lock. A refusal must leave memory and the file as they were.
class TestTDatabaseRefusals : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;
    QByteArray m_good; // a sound project database

private slots:
    void initTestCase()
    {
        kaInitTestEnvironment();
        TestFixture fixture;
        m_good = fileBytes(TDatabase::databasePath(fixture.makeProject(QStringLiteral("Sound"))));
        QVERIFY(m_good.size() > 4 * 4096);
    }
    void init() { m_fixture.reset(new TestFixture); MessageLoggerInterface::returnMe()->clear(); }
    void cleanup() { m_fixture.reset(); TDatabase::setBusyTimeout(2000); }

    void readOnlyRefusesWrites_data()
    {
        QTest::addColumn<QString>("operation");
        for (const char* operation : {"rename", "property", "delete", "header", "batch"})
            QTest::newRow(operation) << QString::fromLatin1(operation);
    }

    void readOnlyRefusesWrites()
    {
        QFETCH(QString, operation);
        const QString folder = m_fixture->makeProject(QStringLiteral("Read only"));
        const FolderSnapshot file(folder);
        auto opened = openFolder(folder, true);
        TDatabase* db = opened->db.get();
        const QString before = describe(db) + opened->project->name();
        const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
        int announced = 0;
        connect(db, &TDatabase::aboutToDeleteObjects, this, [&announced]() { ++announced; });
        const bool ok = operation == QLatin1String("rename") ? db->objectRename(analysis, QStringLiteral("New name"))
            : operation == QLatin1String("property") ? db->objectPropertiesAdd(analysis, TProperty(QStringLiteral("k"), QStringLiteral("v")))
            : operation == QLatin1String("delete")   ? db->deleteObject(analysis, true)
            : operation == QLatin1String("header")   ? db->setProjectProperties(QStringLiteral("Other"), QString(), 1)
                                                     : db->beginBatch();
        QVERIFY(!ok);
        QVERIFY(db->isReadOnly() && db->lastError().contains(QStringLiteral("read-only")));
        QVERIFY(loggedContaining(QStringLiteral("is open read-only")));
        QCOMPARE(announced, 0);
        QCOMPARE(describe(db) + opened->project->name(), before);
        bool found = true;
        db->getObjectProperties(analysis, QStringLiteral("k"), &found);
        QVERIFY(!found);
        opened.reset();
        QVERIFY(file.unchanged());
    }

    void refusedFilesStayUntouched_data()
    {
        QTest::addColumn<QByteArray>("bytes"); // null: no file
        QTest::addColumn<QStringList>("sql");  // then run on the file
        QTest::addColumn<QString>("message");
        QByteArray noise = m_good;
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = char((i * 2654435761u) >> 13);
        const QStringList none;
        QTest::newRow("missing file") << QByteArray() << none << QStringLiteral("does not exist");
        QTest::newRow("empty file") << QByteArray("") << none << QStringLiteral("is empty");
        QTest::newRow("not SQLite") << noise << none << QStringLiteral("unknown file format");
        QTest::newRow("truncated mid-page") << m_good.left(m_good.size() / 2 + 100) << none << QStringLiteral("truncated");
        QTest::newRow("truncated at a page") << m_good.left(2 * 4096) << none << QStringLiteral("truncated");
        QTest::newRow("corrupted pages, schema page kept") << m_good.left(4096) + noise.mid(4096) << none
                                                           << QStringLiteral("damaged or unreadable");
        QTest::newRow("foreign SQLite") << QByteArray() << QStringList{QStringLiteral("CREATE TABLE customers (id INTEGER, name TEXT)"),
            QStringLiteral("INSERT INTO customers (name) VALUES ('Alice')")} << QStringLiteral("another application");
        QTest::newRow("foreign application id") << m_good << QStringList{QStringLiteral("PRAGMA application_id = 1234")}
                                                << QStringLiteral("another application");
        QTest::newRow("newer schema") << m_good << QStringList{QStringLiteral("PRAGMA user_version = %1").arg(TDatabase::SchemaVersion + 1)}
                                      << QStringLiteral("newer version");
        QTest::newRow("our id, no tables") << QByteArray() << QStringList{QStringLiteral("PRAGMA application_id = %1").arg(0x4B414442),
            QStringLiteral("PRAGMA user_version = 1"), QStringLiteral("CREATE TABLE other (x)")} << QStringLiteral("table meta missing");
    }

    // Refused for writing and for reading alike, with a message naming the
    // file; nothing written, not even a journal next to it.
    void refusedFilesStayUntouched()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, sql);
        QFETCH(QString, message);
        const QString folder = m_fixture->makeProject(QStringLiteral("Damaged"));
        const QString path = TDatabase::databasePath(folder);
        QFile file(path);
        QVERIFY(bytes.isNull() ? file.remove() : file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        if (!sql.isEmpty())
            rawSql(path, sql);
        const bool existed = QFileInfo::exists(path);
        const FolderSnapshot snapshot(folder);
        for (bool readOnly : {false, true}) {
            auto opened = openFolder(folder, readOnly);
            QVERIFY(!opened->db && !opened->project->db());
            QVERIFY2(opened->error.contains(message), qPrintable(opened->error));
            QVERIFY2(opened->error.contains(QDir::toNativeSeparators(path)) || !existed, qPrintable(opened->error));
        }
        QVERIFY(!TDatabase::readProjectHeader(folder, nullptr, nullptr, nullptr, nullptr));
        QCOMPARE(QFileInfo::exists(path), existed);
        QVERIFY(snapshot.unchanged());
    }

    // Another program holds the write lock: a write waits a bounded time,
    // then fails with a message, the project left as it was and writable
    // once the lock is gone.
    void lockedDatabaseWriteFailsInBoundedTime()
    {
        const QString folder = m_fixture->makeProject(QStringLiteral("Locked"));
        auto opened = openFolder(folder);
        TDatabase* db = opened->db.get();
        const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
        const QString before = describe(db);
        TDatabase::setBusyTimeout(300);
        {
            QSqlDatabase locker = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("tst_locker"));
            locker.setDatabaseName(TDatabase::databasePath(folder));
            QVERIFY(locker.open());
            QSqlQuery lock(locker);
            QVERIFY(lock.exec(QStringLiteral("BEGIN EXCLUSIVE")));
            QElapsedTimer timer;
            timer.start();
            QVERIFY(!db->objectRename(analysis, QStringLiteral("Renamed while locked")));
            const qint64 waited = timer.elapsed();
            QVERIFY2(waited >= 250 && waited < 5000, qPrintable(QString::number(waited)));
            QVERIFY(loggedContaining(QStringLiteral("locked by another program")));
            QVERIFY(!db->deleteObject(analysis, true) && describe(db) == before);
            QVERIFY(lock.exec(QStringLiteral("ROLLBACK")));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("tst_locker"));
        QVERIFY(db->objectRename(analysis, QStringLiteral("Renamed after")));
        opened = openFolder(folder);
        QVERIFY(opened->db->getAnalysis(QStringLiteral("Renamed after")));
    }
};

QTEST_GUILESS_MAIN(TestTDatabaseRefusals)
#include "tst_tdatabaserefusals.moc"
