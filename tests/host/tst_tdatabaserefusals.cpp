#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "kaobject2.h"
#include "messageloggerinterface.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <memory>

using namespace DatabaseTest;

Q_DECLARE_METATYPE(QList<const KAObject2*>*)

// What the project database refuses: writes to a read-only project, files
// that are not sound project databases, and writes while another program
// holds the lock. A refusal must leave memory and the file as they were.
class TestTDatabaseRefusals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void readOnlyRefusesWrites_data();
    void readOnlyRefusesWrites();
    void refusedFilesStayUntouched_data();
    void refusedFilesStayUntouched();
    void lockedDatabaseWriteFailsInBoundedTime();

private:
    QString makeProject(const QString& name);
    std::unique_ptr<TestFixture> m_fixture;
};

void TestTDatabaseRefusals::initTestCase()
{
    kaInitTestEnvironment();
    qRegisterMetaType<QList<const KAObject2*>*>();
}

void TestTDatabaseRefusals::init()
{
    m_fixture.reset(new TestFixture);
    MessageLoggerInterface::returnMe()->clear();
    TDatabase::setBusyTimeout(2000);
}

void TestTDatabaseRefusals::cleanup()
{
    m_fixture.reset();
    TDatabase::setBusyTimeout(2000);
}

QString TestTDatabaseRefusals::makeProject(const QString& name)
{
    const QString folder = m_fixture->filePath(name);
    QString error;
    if (!TSampleGenerator::generateProject(folder, name, smallOptions(), 7, &error))
        qWarning() << "generation failed:" << error;
    return folder;
}

void TestTDatabaseRefusals::readOnlyRefusesWrites_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("rename") << QStringLiteral("rename");
    QTest::newRow("property") << QStringLiteral("property");
    QTest::newRow("delete") << QStringLiteral("delete");
    QTest::newRow("project header") << QStringLiteral("header");
    QTest::newRow("batch") << QStringLiteral("batch");
}

void TestTDatabaseRefusals::readOnlyRefusesWrites()
{
    QFETCH(QString, operation);
    const QString folder = makeProject(QStringLiteral("Read only"));
    const QString path = TDatabase::databasePath(folder);
    const QByteArray bytes = fileBytes(path);
    const QStringList entries = folderEntries(folder);

    auto opened = openFolder(folder, true);
    TDatabase* db = opened->db.get();
    QVERIFY(db->isReadOnly());
    const QString before = describe(db);
    const QString projectName = opened->project->name();
    const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
    QSignalSpy spy(db, &TDatabase::aboutToDeleteObjects);

    bool ok = true;
    if (operation == QLatin1String("rename"))
        ok = db->objectRename(analysis, QStringLiteral("New name"));
    else if (operation == QLatin1String("property"))
        ok = db->objectPropertiesAdd(analysis, TProperty(QStringLiteral("k"), QStringLiteral("v")));
    else if (operation == QLatin1String("delete"))
        ok = db->deleteObject(analysis, true);
    else if (operation == QLatin1String("header"))
        ok = db->setProjectProperties(QStringLiteral("Other"), QString(), 1);
    else
        ok = db->beginBatch();
    QVERIFY(!ok);
    QVERIFY(loggedContaining(QStringLiteral("is open read-only")));
    QVERIFY(db->lastError().contains(QStringLiteral("read-only")));
    QCOMPARE(spy.count(), 0);
    QCOMPARE(describe(db), before);
    QCOMPARE(opened->project->name(), projectName);
    bool found = true;
    db->getObjectProperties(analysis, QStringLiteral("k"), &found);
    QVERIFY(!found);
    opened.reset();
    QCOMPARE(fileBytes(path), bytes);
    QCOMPARE(folderEntries(folder), entries);
}

void TestTDatabaseRefusals::refusedFilesStayUntouched_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("message");
    QTest::newRow("missing file") << QStringLiteral("missing") << QStringLiteral("does not exist");
    QTest::newRow("empty file") << QStringLiteral("empty") << QStringLiteral("is empty");
    QTest::newRow("not SQLite") << QStringLiteral("random") << QStringLiteral("unknown file format");
    QTest::newRow("truncated mid-page") << QStringLiteral("truncated") << QStringLiteral("truncated");
    QTest::newRow("truncated at a page") << QStringLiteral("truncated-page") << QStringLiteral("truncated");
    QTest::newRow("corrupted pages") << QStringLiteral("corrupted") << QStringLiteral("damaged or unreadable");
    QTest::newRow("foreign SQLite") << QStringLiteral("foreign") << QStringLiteral("another application");
    QTest::newRow("foreign application id") << QStringLiteral("foreign-id") << QStringLiteral("another application");
    QTest::newRow("newer schema") << QStringLiteral("newer") << QStringLiteral("newer version");
    QTest::newRow("our id, no tables") << QStringLiteral("no-tables") << QStringLiteral("table meta missing");
}

void TestTDatabaseRefusals::refusedFilesStayUntouched()
{
    QFETCH(QString, damage);
    QFETCH(QString, message);
    const QString folder = makeProject(QStringLiteral("Damaged"));
    const QString path = TDatabase::databasePath(folder);
    QByteArray good = fileBytes(path);
    QVERIFY(good.size() > 4096);
    auto writeBytes = [&path](const QByteArray& bytes) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    };
    if (damage == QLatin1String("missing")) {
        QVERIFY(QFile::remove(path));
    } else if (damage == QLatin1String("empty")) {
        writeBytes(QByteArray());
    } else if (damage == QLatin1String("random")) {
        QByteArray noise(8192, '\0');
        quint32 x = 2463534242u;
        for (char& c : noise) {
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            c = char(x);
        }
        writeBytes(noise);
    } else if (damage == QLatin1String("truncated")) {
        writeBytes(good.left(good.size() / 2 + 100));
    } else if (damage == QLatin1String("truncated-page")) {
        writeBytes(good.left(2 * 4096));
    } else if (damage == QLatin1String("corrupted")) {
        // Page 1 (the schema) stays; every table page is overwritten.
        for (int i = 4096; i < good.size(); ++i)
            good[i] = char(0xA5 ^ (i & 0xFF));
        writeBytes(good);
    } else if (damage == QLatin1String("foreign")) {
        QVERIFY(QFile::remove(path));
        rawSql(path, {QStringLiteral("CREATE TABLE customers (id INTEGER PRIMARY KEY, name TEXT)"),
                      QStringLiteral("INSERT INTO customers (name) VALUES ('Alice')")});
    } else if (damage == QLatin1String("foreign-id")) {
        rawSql(path, {QStringLiteral("PRAGMA application_id = 1234")});
    } else if (damage == QLatin1String("newer")) {
        rawSql(path, {QStringLiteral("PRAGMA user_version = %1").arg(TDatabase::SchemaVersion + 1)});
    } else if (damage == QLatin1String("no-tables")) {
        QVERIFY(QFile::remove(path));
        rawSql(path, {QStringLiteral("PRAGMA application_id = %1").arg(0x4B414442),
                      QStringLiteral("PRAGMA user_version = 1"), QStringLiteral("CREATE TABLE other (x)")});
    }
    const bool existed = QFileInfo::exists(path);
    const QByteArray bytes = fileBytes(path);
    const QStringList entries = folderEntries(folder);

    for (bool readOnly : {false, true}) {
        auto opened = openFolder(folder, readOnly);
        QVERIFY(!opened->db);
        QVERIFY2(opened->error.contains(message), qPrintable(opened->error));
        QVERIFY2(opened->error.contains(QDir::toNativeSeparators(path)) || damage == QLatin1String("missing"),
                 qPrintable(opened->error));
        QCOMPARE(opened->project->db(), nullptr);
    }
    QString name;
    QVERIFY(!TDatabase::readProjectHeader(folder, &name, nullptr, nullptr, nullptr));
    QCOMPARE(QFileInfo::exists(path), existed);
    QCOMPARE(fileBytes(path), bytes);
    // No journal, WAL or shared-memory file appeared next to it.
    QCOMPARE(folderEntries(folder), entries);
}

void TestTDatabaseRefusals::lockedDatabaseWriteFailsInBoundedTime()
{
    const QString folder = makeProject(QStringLiteral("Locked"));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
    const QString name = analysis->name();
    TDatabase::setBusyTimeout(300);

    // Another program holds the write lock: a second SQLite connection
    // with an exclusive transaction open.
    const QString lockerName = QStringLiteral("tst_locker");
    {
        QSqlDatabase locker = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), lockerName);
        locker.setDatabaseName(TDatabase::databasePath(folder));
        QVERIFY(locker.open());
        QSqlQuery lock(locker);
        QVERIFY(lock.exec(QStringLiteral("BEGIN EXCLUSIVE")));

        QElapsedTimer timer;
        timer.start();
        QVERIFY(!db->objectRename(analysis, QStringLiteral("Renamed while locked")));
        const qint64 waited = timer.elapsed();
        QVERIFY2(waited >= 250, qPrintable(QString::number(waited)));
        QVERIFY2(waited < 5000, qPrintable(QString::number(waited)));
        QCOMPARE(analysis->name(), name);
        QVERIFY(loggedContaining(QStringLiteral("locked by another program")));
        QVERIFY(!db->deleteObject(analysis, true));
        QVERIFY(db->objectById(analysis->id()));

        QVERIFY(lock.exec(QStringLiteral("ROLLBACK")));
        locker.close();
    }
    QSqlDatabase::removeDatabase(lockerName);
    QVERIFY(db->objectRename(analysis, QStringLiteral("Renamed after")));
    opened.reset();
    opened = openFolder(folder);
    QVERIFY(opened->db->getAnalysis(QStringLiteral("Renamed after")));
}

QTEST_GUILESS_MAIN(TestTDatabaseRefusals)
#include "tst_tdatabaserefusals.moc"
