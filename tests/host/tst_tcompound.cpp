#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "kaobject2.h"
#include "kaobject2compoundlist.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tcompound.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <memory>

using namespace DatabaseTest;

Q_DECLARE_METATYPE(QList<const KAObject2*>*)

namespace {

// A compound's detections as ids in order; 0 stands for an entry that does
// not resolve.
QList<qint64> entryIds(const TCompoundAbstract* compound)
{
    QList<qint64> ids;
    for (const KAObject2PeakDetect* pd : compound->getPeakDetectList())
        ids.append(pd ? pd->id() : 0);
    return ids;
}

const TCompoundAbstract* compoundNamed(const TDatabase* db, const QString& name)
{
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeCompound)) {
        if (object->name() == name)
            return dynamic_cast<const TCompoundAbstract*>(object);
    }
    return nullptr;
}

const KAObject2PeakDetect* peakDetect(const TDatabase* db, qint64 id)
{
    return dynamic_cast<const KAObject2PeakDetect*>(db->objectById(id));
}

// The project's detections that are not work files, in database order.
QList<qint64> plainPeakDetects(const TDatabase* db)
{
    QList<qint64> ids;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypePeakDetect)) {
        if (!object->name().startsWith(QLatin1String("tempPD_")))
            ids.append(object->id());
    }
    return ids;
}

QStringList names(const QList<const TCompoundAbstract*>& compounds)
{
    QStringList result;
    for (const TCompoundAbstract* compound : compounds)
        result.append(compound->name());
    return result;
}

// One integer read from the file by a connection of its own.
qint64 rawValue(const QString& path, const QString& sql)
{
    qint64 value = -1;
    const QString name = QStringLiteral("tst_compound_raw");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(sql) && query.next())
                value = query.value(0).toLongLong();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return value;
}

QStringList rawTexts(const QString& path, const QString& sql)
{
    QStringList values;
    const QString name = QStringLiteral("tst_compound_raw");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
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
    QSqlDatabase::removeDatabase(name);
    return values;
}

bool hasCompoundTable(const QString& path)
{
    return rawValue(path, QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE name = 'compound_peaks'")) == 1;
}

// Every compound of a database with its entries, as text.
QString compoundState(const TDatabase* db)
{
    QStringList lines;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeCompound)) {
        QStringList ids;
        for (qint64 id : entryIds(static_cast<const TCompoundAbstract*>(object)))
            ids.append(QString::number(id));
        lines.append(object->name() + QLatin1Char(':') + ids.join(QLatin1Char(',')));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace

// Compounds of the project database: their lists of peak detections across
// reopening and across projects, their edits and signals, the upgrade of
// files of the first format, and what the sample generator writes.
class TestTCompound : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void entriesSurviveReopening();
    void otherProjectResolvesWhileOpen_data();
    void otherProjectResolvesWhileOpen();
    void deletedDetectionGivesNull();
    void allCompoundsOfProjects_data();
    void allCompoundsOfProjects();
    void addAndRemoveDetections();
    void deletingRemovesCompoundRows_data();
    void deletingRemovesCompoundRows();
    void readOnlyRefusesCompoundEdits_data();
    void readOnlyRefusesCompoundEdits();
    void compoundsChangedOnlyForCompounds_data();
    void compoundsChangedOnlyForCompounds();
    void firstFormatFile_data();
    void firstFormatFile();
    void firstFormatUpgradedByItsFirstEntryOnly();
    void currentFormatWithoutCompoundTableRefused_data();
    void currentFormatWithoutCompoundTableRefused();
    void sampleGeneratorCompounds();

private:
    // A generated project without compounds, in the sub-folder `name`.
    QString makeBase(const QString& name);
    // Writes a compound list of compounds named after `entries`' keys, each
    // naming the detections of this project in the order given.
    static QList<qint64> writeCompounds(TDatabase* db, const QString& list,
                                        const QList<QPair<QString, QList<qint64>>>& entries);
    std::unique_ptr<TestFixture> m_fixture;
};

void TestTCompound::initTestCase()
{
    kaInitTestEnvironment();
    qRegisterMetaType<QList<const KAObject2*>*>();
}

void TestTCompound::init()
{
    m_fixture.reset(new TestFixture);
    MessageLoggerInterface::returnMe()->clear();
    TDatabase::setBusyTimeout(2000);
}

void TestTCompound::cleanup()
{
    ProjectMgrInterface::returnMe()->closeAll();
    m_fixture.reset();
    TDatabase::setBusyTimeout(2000);
}

QString TestTCompound::makeBase(const QString& name)
{
    TSampleGenerator::Options options = smallOptions();
    options.compoundLists = 0;
    const QString folder = m_fixture->filePath(name);
    QString error;
    if (!TSampleGenerator::generateProject(folder, QFileInfo(name).fileName(), options, 7, &error))
        qWarning() << "generation failed:" << error;
    return folder;
}

QList<qint64> TestTCompound::writeCompounds(TDatabase* db, const QString& list,
                                            const QList<QPair<QString, QList<qint64>>>& entries)
{
    QList<qint64> ids;
    if (!db->beginBatch())
        return ids;
    const qint64 listId = db->addObject(KAObjectTypeCompoundList, 0, list);
    for (const auto& entry : entries) {
        const qint64 compound = db->addObject(KAObjectTypeCompound, listId, entry.first);
        for (qint64 pd : entry.second)
            db->addCompoundPeakDetect(compound, pd);
        ids.append(compound);
    }
    if (!db->commitBatch())
        ids.clear();
    ids.prepend(listId);
    return ids;
}

void TestTCompound::entriesSurviveReopening()
{
    const QString folder = makeBase(QStringLiteral("Round trip"));
    auto opened = openFolder(folder);
    QVERIFY2(opened->db, qPrintable(opened->error));
    const QList<qint64> pds = plainPeakDetects(opened->db.get());
    QVERIFY(pds.size() >= 6);
    // Out of database order on purpose, the shared detection in both, one
    // detection twice in the same compound, and a compound with none.
    const QList<qint64> first = {pds.at(4), pds.at(1), pds.at(3), pds.at(1)};
    const QList<qint64> second = {pds.at(3), pds.at(0)};
    const QList<qint64> ids = writeCompounds(opened->db.get(), QStringLiteral("Targets"),
                                             {{QStringLiteral("Caffeine"), first},
                                              {QStringLiteral("Theobromine"), second},
                                              {QStringLiteral("Empty"), {}}});
    QCOMPARE(ids.size(), 4);
    QVERIFY(opened->db->compoundAddPeakDetect(compoundNamed(opened->db.get(), QStringLiteral("Empty")),
                                              peakDetect(opened->db.get(), pds.at(5))));
    QVERIFY(opened->db->compoundAddPeakDetect(compoundNamed(opened->db.get(), QStringLiteral("Caffeine")),
                                              peakDetect(opened->db.get(), pds.at(2))));
    const QString before = describe(opened->db.get());

    opened.reset();
    opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(describe(db), before);

    const auto* list = dynamic_cast<const KAObject2CompoundList*>(db->objectById(ids.at(0)));
    QVERIFY(list);
    QCOMPARE(list->type(), KAObjectTypeCompoundList);
    QCOMPARE(list->children().size(), 3);
    const QStringList expectedNames = {QStringLiteral("Caffeine"), QStringLiteral("Theobromine"),
                                       QStringLiteral("Empty")};
    for (int i = 0; i < 3; ++i) {
        const auto* compound = dynamic_cast<const TCompound*>(list->children().at(i));
        QVERIFY(compound);
        QCOMPARE(compound->type(), KAObjectTypeCompound);
        QCOMPARE(compound->id(), ids.at(i + 1));
        QCOMPARE(compound->name(), expectedNames.at(i));
        QCOMPARE(compound->db(), db);
        QCOMPARE(compound->getPeakDetectList(), db->compoundPeakDetectList(compound));
    }
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Caffeine"))), first + QList<qint64>{pds.at(2)});
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Theobromine"))), second);
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Empty"))), QList<qint64>{pds.at(5)});
    // The shared detection is one object, reached from both compounds.
    const KAObject2PeakDetect* shared = compoundNamed(db, QStringLiteral("Theobromine"))->getPeakDetectList().first();
    QCOMPARE(compoundNamed(db, QStringLiteral("Caffeine"))->getPeakDetectList().at(2), shared);
    QCOMPARE(shared->db(), db);
    QVERIFY(shared->signal());
}

void TestTCompound::otherProjectResolvesWhileOpen_data()
{
    QTest::addColumn<bool>("moveWorkspace");
    QTest::newRow("in place") << false;
    QTest::newRow("workspace moved") << true;
}

void TestTCompound::otherProjectResolvesWhileOpen()
{
    QFETCH(bool, moveWorkspace);
    QString home = makeBase(QStringLiteral("ws/Home"));
    QString other = makeBase(QStringLiteral("ws/Other project"));
    auto homeDb = openFolder(home);
    auto otherDb = openFolder(other);
    QVERIFY(homeDb->db && otherDb->db);
    const QList<qint64> own = plainPeakDetects(homeDb->db.get());
    const QList<qint64> foreign = plainPeakDetects(otherDb->db.get());
    // A detection of the other project through the batch, one through the
    // live edit, between detections of this one.
    QVERIFY(homeDb->db->beginBatch());
    const qint64 list = homeDb->db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("Mixed"));
    const qint64 compoundId = homeDb->db->addObject(KAObjectTypeCompound, list, QStringLiteral("Caffeine"));
    QVERIFY(homeDb->db->addCompoundPeakDetect(compoundId, own.at(0)));
    QVERIFY(homeDb->db->addCompoundPeakDetect(compoundId, foreign.at(2), other));
    QVERIFY(homeDb->db->addCompoundPeakDetect(compoundId, own.at(1)));
    QVERIFY(homeDb->db->commitBatch());
    const TCompoundAbstract* compound = compoundNamed(homeDb->db.get(), QStringLiteral("Caffeine"));
    QVERIFY(homeDb->db->compoundAddPeakDetect(compound, peakDetect(otherDb->db.get(), foreign.at(3))));
    const QList<qint64> all = {own.at(0), foreign.at(2), own.at(1), foreign.at(3)};
    QCOMPARE(entryIds(compound), all);
    QCOMPARE(compound->getPeakDetectList().at(1)->db(), otherDb->db.get());
    // Another project is named by its folder relative to this one.
    QCOMPARE(rawTexts(TDatabase::databasePath(home),
                      QStringLiteral("SELECT project FROM compound_peaks ORDER BY position")),
             (QStringList{QString(), QStringLiteral("../Other project"), QString(),
                          QStringLiteral("../Other project")}));
    homeDb.reset();
    otherDb.reset();

    if (moveWorkspace) {
        QVERIFY(QDir(m_fixture->path()).rename(QStringLiteral("ws"), QStringLiteral("moved")));
        home = m_fixture->filePath(QStringLiteral("moved/Home"));
        other = m_fixture->filePath(QStringLiteral("moved/Other project"));
    }
    const QList<qint64> unresolved = {own.at(0), 0, own.at(1), 0};
    homeDb = openFolder(home);
    QVERIFY2(homeDb->db, qPrintable(homeDb->error));
    compound = compoundNamed(homeDb->db.get(), QStringLiteral("Caffeine"));
    QCOMPARE(entryIds(compound), unresolved);

    otherDb = openFolder(other, true);
    QVERIFY2(otherDb->db, qPrintable(otherDb->error));
    QCOMPARE(TDatabase::openDatabase(other), otherDb->db.get());
    QCOMPARE(entryIds(compound), all);
    for (int i : {1, 3})
        QCOMPARE(compound->getPeakDetectList().at(i)->db(), otherDb->db.get());

    otherDb.reset();
    QCOMPARE(TDatabase::openDatabase(other), nullptr);
    QCOMPARE(entryIds(compound), unresolved);
}

void TestTCompound::deletedDetectionGivesNull()
{
    const QString folder = makeBase(QStringLiteral("Deleted detection"));
    const QString path = TDatabase::databasePath(folder);
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    const QList<qint64> pds = plainPeakDetects(db);
    QCOMPARE(writeCompounds(db, QStringLiteral("L"), {{QStringLiteral("C"), {pds.at(0), pds.at(1)}}}).size(), 2);
    // The newest object of the file, so that a new object could take its id.
    const qint64 signal = db->objectById(pds.at(2))->parentObject()->id();
    QVERIFY(db->beginBatch());
    const qint64 newest = db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Newest"));
    QVERIFY(db->commitBatch());
    const TCompoundAbstract* compound = compoundNamed(db, QStringLiteral("C"));
    QVERIFY(db->compoundAddPeakDetect(compound, peakDetect(db, newest)));

    QVERIFY(db->deleteObject(db->objectById(pds.at(1)), true));
    QVERIFY(db->deleteObject(db->objectById(newest), true));
    QCOMPARE(entryIds(compound), (QList<qint64>{pds.at(0), 0, 0}));
    QVERIFY(db->beginBatch());
    const qint64 replacement = db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Replacement"));
    QVERIFY(db->commitBatch());
    QVERIFY(replacement != newest);
    QCOMPARE(entryIds(compound), (QList<qint64>{pds.at(0), 0, 0}));

    opened.reset();
    opened = openFolder(folder);
    QCOMPARE(entryIds(compoundNamed(opened->db.get(), QStringLiteral("C"))), (QList<qint64>{pds.at(0), 0, 0}));
    QCOMPARE(rawValue(path, QStringLiteral("SELECT COUNT(*) FROM compound_peaks")), 3);
}

void TestTCompound::allCompoundsOfProjects_data()
{
    // Projects 0 and 1 are open, 2 is closed; -1 is a null entry.
    QTest::addColumn<QList<int>>("projects");
    QTest::addColumn<QStringList>("expected");
    const QStringList a = {QStringLiteral("A1"), QStringLiteral("A2"), QStringLiteral("A3")};
    const QStringList b = {QStringLiteral("B1"), QStringLiteral("B2")};
    QTest::newRow("one project") << QList<int>{0} << a;
    QTest::newRow("order given") << QList<int>{1, 0} << b + a;
    QTest::newRow("listed twice") << QList<int>{0, 1, 0, 1} << a + b;
    QTest::newRow("closed project") << QList<int>{2} << QStringList();
    QTest::newRow("closed among open") << QList<int>{2, 1, 2, 0} << b + a;
    QTest::newRow("null entry") << QList<int>{-1, 1} << b;
    QTest::newRow("none") << QList<int>{} << QStringList();
}

void TestTCompound::allCompoundsOfProjects()
{
    QFETCH(QList<int>, projects);
    QFETCH(QStringList, expected);
    auto a = openFolder(makeBase(QStringLiteral("A")));
    auto b = openFolder(makeBase(QStringLiteral("B")));
    auto c = openFolder(makeBase(QStringLiteral("C")));
    QVERIFY(a->db && b->db && c->db);
    // Two lists in A: database order runs across them.
    QCOMPARE(writeCompounds(a->db.get(), QStringLiteral("First"), {{QStringLiteral("A1"), {}}, {QStringLiteral("A2"), {}}})
                 .size(), 3);
    QCOMPARE(writeCompounds(b->db.get(), QStringLiteral("Only"), {{QStringLiteral("B1"), {}}, {QStringLiteral("B2"), {}}})
                 .size(), 3);
    QCOMPARE(writeCompounds(a->db.get(), QStringLiteral("Second"), {{QStringLiteral("A3"), {}}}).size(), 2);
    QCOMPARE(writeCompounds(c->db.get(), QStringLiteral("Closed"), {{QStringLiteral("C1"), {}}}).size(), 2);
    c->db.reset();
    QCOMPARE(c->project->db(), nullptr);

    const KAObject2Project* all[] = {a->project.get(), b->project.get(), c->project.get()};
    QList<const KAObject2Project*> list;
    for (int index : projects)
        list.append(index < 0 ? nullptr : all[index]);
    const QList<const TCompoundAbstract*> compounds = TDatabase::getAllCompoundinDB(list);
    QCOMPARE(names(compounds), expected);
    for (const TCompoundAbstract* compound : compounds) {
        QCOMPARE(compound->type(), KAObjectTypeCompound);
        QCOMPARE(compound->db()->getObjectLst(KAObjectTypeCompound).contains(compound), true);
    }
}

void TestTCompound::addAndRemoveDetections()
{
    const QString folder = makeBase(QStringLiteral("Edits"));
    const QString path = TDatabase::databasePath(folder);
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    const QList<qint64> pds = plainPeakDetects(db);
    QCOMPARE(writeCompounds(db, QStringLiteral("L"), {{QStringLiteral("C"), {pds.at(0), pds.at(1)}},
                                                      {QStringLiteral("D"), {pds.at(1)}}})
                 .size(), 3);
    const TCompoundAbstract* c = compoundNamed(db, QStringLiteral("C"));
    const TCompoundAbstract* d = compoundNamed(db, QStringLiteral("D"));
    const KAObject2PeakDetect* second = peakDetect(db, pds.at(1));
    const int signalChildren = second->parentObject()->children().size();

    QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pds.at(2))));
    QCOMPARE(entryIds(c), (QList<qint64>{pds.at(0), pds.at(1), pds.at(2)}));
    QVERIFY(db->compoundRemovePeakDetect(c, second));
    QCOMPARE(entryIds(c), (QList<qint64>{pds.at(0), pds.at(2)}));
    // The detection stays, in its signal and in the other compound.
    QCOMPARE(db->objectById(pds.at(1)), second);
    QCOMPARE(second->parentObject()->children().size(), signalChildren);
    QCOMPARE(entryIds(d), QList<qint64>{pds.at(1)});
    // Not in the list: nothing to remove.
    QVERIFY(!db->compoundRemovePeakDetect(c, second));
    QCOMPARE(entryIds(c), (QList<qint64>{pds.at(0), pds.at(2)}));
    // The last entry out, then a new one: it goes to the end.
    QVERIFY(db->compoundRemovePeakDetect(c, peakDetect(db, pds.at(2))));
    QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pds.at(3))));
    QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pds.at(4))));
    QCOMPARE(entryIds(c), (QList<qint64>{pds.at(0), pds.at(3), pds.at(4)}));
    // A detection listed twice leaves the list entirely.
    QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pds.at(0))));
    QVERIFY(db->compoundRemovePeakDetect(c, peakDetect(db, pds.at(0))));
    QCOMPARE(entryIds(c), (QList<qint64>{pds.at(3), pds.at(4)}));
    const qint64 cId = c->id();
    QCOMPARE(rawValue(path, QStringLiteral("SELECT COUNT(*) FROM compound_peaks WHERE compound = %1").arg(cId)), 2);

    opened.reset();
    opened = openFolder(folder);
    db = opened->db.get();
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("C"))), (QList<qint64>{pds.at(3), pds.at(4)}));
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("D"))), QList<qint64>{pds.at(1)});
    QVERIFY(db->compoundAddPeakDetect(compoundNamed(db, QStringLiteral("C")), peakDetect(db, pds.at(5))));
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("C"))), (QList<qint64>{pds.at(3), pds.at(4), pds.at(5)}));
}

void TestTCompound::deletingRemovesCompoundRows_data()
{
    QTest::addColumn<QString>("doomed");
    QTest::addColumn<QStringList>("remaining");
    QTest::newRow("compound list") << QStringLiteral("First") << QStringList{QStringLiteral("E")};
    QTest::newRow("compound") << QStringLiteral("C")
                              << QStringList{QStringLiteral("D"), QStringLiteral("E")};
}

void TestTCompound::deletingRemovesCompoundRows()
{
    QFETCH(QString, doomed);
    QFETCH(QStringList, remaining);
    const QString folder = makeBase(QStringLiteral("Delete"));
    const QString path = TDatabase::databasePath(folder);
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    const QList<qint64> pds = plainPeakDetects(db);
    const QList<qint64> first = writeCompounds(db, QStringLiteral("First"),
                                               {{QStringLiteral("C"), {pds.at(0), pds.at(1)}},
                                                {QStringLiteral("D"), {pds.at(1), pds.at(2)}}});
    const QList<qint64> second = writeCompounds(db, QStringLiteral("Second"), {{QStringLiteral("E"), {pds.at(1)}}});
    QCOMPARE(first.size(), 3);
    QCOMPARE(second.size(), 2);
    const int peakCount = db->getObjectLst(KAObjectTypePeakDetect).size();
    const KAObject2* object = doomed == QLatin1String("First") ? db->objectById(first.at(0))
                                                               : db->objectById(first.at(1));
    QList<qint64> gone = {object->id()};
    for (const KAObject2* child : object->children())
        gone.append(child->id());
    QVERIFY(db->deleteObject(object, true));

    auto check = [&](const TDatabase* db) {
        for (qint64 id : gone)
            QCOMPARE(db->objectById(id), nullptr);
        QCOMPARE(names(TDatabase::getAllCompoundinDB({db->project()})), remaining);
        QCOMPARE(db->getObjectLst(KAObjectTypePeakDetect).size(), peakCount);
        QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("E"))), QList<qint64>{pds.at(1)});
    };
    check(db);
    QStringList ids;
    for (qint64 id : gone)
        ids.append(QString::number(id));
    const QString inGone = ids.join(QLatin1Char(','));
    QCOMPARE(rawValue(path, QStringLiteral("SELECT COUNT(*) FROM compound_peaks WHERE compound IN (%1)").arg(inGone)), 0);
    QCOMPARE(rawValue(path, QStringLiteral("SELECT COUNT(*) FROM objects WHERE id IN (%1)").arg(inGone)), 0);
    QCOMPARE(rawValue(path, QStringLiteral("SELECT COUNT(*) FROM compound_peaks WHERE compound = %1").arg(second.at(1))),
             1);

    opened.reset();
    opened = openFolder(folder);
    QVERIFY(opened->db);
    check(opened->db.get());
}

void TestTCompound::readOnlyRefusesCompoundEdits_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("add detection") << QStringLiteral("add");
    QTest::newRow("remove detection") << QStringLiteral("remove");
    QTest::newRow("rename compound") << QStringLiteral("rename");
    QTest::newRow("delete compound") << QStringLiteral("delete compound");
    QTest::newRow("delete compound list") << QStringLiteral("delete list");
}

void TestTCompound::readOnlyRefusesCompoundEdits()
{
    QFETCH(QString, operation);
    const QString folder = makeBase(QStringLiteral("Read only"));
    const QString path = TDatabase::databasePath(folder);
    QList<qint64> pds;
    {
        auto writable = openFolder(folder);
        pds = plainPeakDetects(writable->db.get());
        QCOMPARE(writeCompounds(writable->db.get(), QStringLiteral("L"), {{QStringLiteral("C"), {pds.at(0), pds.at(1)}}})
                     .size(), 2);
    }
    const QByteArray bytes = fileBytes(path);
    const QStringList entries = folderEntries(folder);

    auto opened = openFolder(folder, true);
    TDatabase* db = opened->db.get();
    QVERIFY(db && db->isReadOnly());
    const QString before = describe(db);
    const QString compounds = compoundState(db);
    const TCompoundAbstract* compound = compoundNamed(db, QStringLiteral("C"));
    QSignalSpy changed(db, &TDatabase::compoundsChanged);
    QSignalSpy deleting(db, &TDatabase::aboutToDeleteObjects);

    bool ok = true;
    if (operation == QLatin1String("add"))
        ok = db->compoundAddPeakDetect(compound, peakDetect(db, pds.at(2)));
    else if (operation == QLatin1String("remove"))
        ok = db->compoundRemovePeakDetect(compound, peakDetect(db, pds.at(0)));
    else if (operation == QLatin1String("rename"))
        ok = db->objectRename(compound, QStringLiteral("Renamed"));
    else if (operation == QLatin1String("delete compound"))
        ok = db->deleteObject(compound, true);
    else
        ok = db->deleteObject(compound->parentObject(), true);
    QVERIFY(!ok);
    QVERIFY(loggedContaining(QStringLiteral("is open read-only")));
    QCOMPARE(changed.count(), 0);
    QCOMPARE(deleting.count(), 0);
    QCOMPARE(describe(db), before);
    QCOMPARE(compoundState(db), compounds);
    opened.reset();
    QCOMPARE(fileBytes(path), bytes);
    QCOMPARE(folderEntries(folder), entries);
}

void TestTCompound::compoundsChangedOnlyForCompounds_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<bool>("fires");
    QTest::newRow("batch with a compound list") << QStringLiteral("batch list") << true;
    QTest::newRow("batch with entries only") << QStringLiteral("batch entries") << true;
    QTest::newRow("batch without compounds") << QStringLiteral("batch well") << false;
    QTest::newRow("add detection") << QStringLiteral("add") << true;
    QTest::newRow("remove detection") << QStringLiteral("remove") << true;
    QTest::newRow("rename compound") << QStringLiteral("rename compound") << true;
    QTest::newRow("rename compound list") << QStringLiteral("rename list") << true;
    QTest::newRow("rename peak detection") << QStringLiteral("rename peak") << true;
    QTest::newRow("rename well") << QStringLiteral("rename well") << false;
    QTest::newRow("rename analysis") << QStringLiteral("rename analysis") << false;
    QTest::newRow("delete compound") << QStringLiteral("delete compound") << true;
    QTest::newRow("delete analysis") << QStringLiteral("delete analysis") << true;
    QTest::newRow("delete well") << QStringLiteral("delete well") << false;
}

void TestTCompound::compoundsChangedOnlyForCompounds()
{
    QFETCH(QString, operation);
    QFETCH(bool, fires);
    auto opened = openFolder(makeBase(QStringLiteral("Signals")));
    TDatabase* db = opened->db.get();
    const QList<qint64> pds = plainPeakDetects(db);
    const QList<qint64> ids = writeCompounds(db, QStringLiteral("L"), {{QStringLiteral("C"), {pds.at(0), pds.at(1)}}});
    QCOMPARE(ids.size(), 2);
    const KAObject2* list = db->objectById(ids.at(0));
    const auto* compound = static_cast<const TCompoundAbstract*>(db->objectById(ids.at(1)));
    const KAObject2* well = db->getObjectLst(KAObjectTypeWell).first();
    const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
    QSignalSpy compounds(db, &TDatabase::compoundsChanged);
    QSignalSpy objects(db, &TDatabase::objectsChanged);

    bool ok = false;
    if (operation.startsWith(QLatin1String("batch"))) {
        ok = db->beginBatch();
        if (operation == QLatin1String("batch list")) {
            const qint64 newList = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("New list"));
            ok = ok && db->addObject(KAObjectTypeCompound, newList, QStringLiteral("New compound"));
        } else if (operation == QLatin1String("batch entries")) {
            ok = ok && db->addCompoundPeakDetect(compound->id(), pds.at(2));
        } else {
            const qint64 newWell = db->addObject(KAObjectTypeWell, 0, QStringLiteral("New well"));
            ok = ok && db->addObject(KAObjectTypeDataset, newWell, QStringLiteral("New dataset"));
        }
        ok = db->commitBatch() && ok;
    } else if (operation == QLatin1String("add")) {
        ok = db->compoundAddPeakDetect(compound, peakDetect(db, pds.at(2)));
    } else if (operation == QLatin1String("remove")) {
        ok = db->compoundRemovePeakDetect(compound, peakDetect(db, pds.at(0)));
    } else if (operation == QLatin1String("rename compound")) {
        ok = db->objectRename(compound, QStringLiteral("Renamed"));
    } else if (operation == QLatin1String("rename list")) {
        ok = db->objectRename(list, QStringLiteral("Renamed"));
    } else if (operation == QLatin1String("rename peak")) {
        ok = db->objectRename(db->objectById(pds.at(0)), QStringLiteral("Renamed"));
    } else if (operation == QLatin1String("rename well")) {
        ok = db->objectRename(well, QStringLiteral("Renamed"));
    } else if (operation == QLatin1String("rename analysis")) {
        ok = db->objectRename(analysis, QStringLiteral("Renamed"));
    } else if (operation == QLatin1String("delete compound")) {
        ok = db->deleteObject(compound, true);
    } else if (operation == QLatin1String("delete analysis")) {
        ok = db->deleteObject(analysis, true);
    } else if (operation == QLatin1String("delete well")) {
        ok = db->deleteObject(well, true);
    }
    QVERIFY(ok);
    QCOMPARE(compounds.count(), fires ? 1 : 0);
    // Object edits are announced as such whatever they touch.
    if (operation != QLatin1String("add") && operation != QLatin1String("remove"))
        QCOMPARE(objects.count(), 1);
}

void TestTCompound::firstFormatFile_data()
{
    QTest::addColumn<bool>("readOnly");
    QTest::newRow("read-only") << true;
    QTest::newRow("for writing") << false;
}

void TestTCompound::firstFormatFile()
{
    QFETCH(bool, readOnly);
    // A generated project (with compound objects) brought back to the first
    // format, as an older version of the application would have left it.
    const QString folder = m_fixture->makeProject(QStringLiteral("First format"));
    QVERIFY(!folder.isEmpty());
    const QString path = TDatabase::databasePath(folder);
    QString objects;
    {
        auto current = openFolder(folder, true);
        QVERIFY(!current->db->getObjectLst(KAObjectTypeCompound).isEmpty());
        objects = describe(current->db.get());
    }
    rawSql(path, {QStringLiteral("DROP TABLE compound_peaks"), QStringLiteral("PRAGMA user_version = 1")});
    QCOMPARE(pragma(path, QStringLiteral("user_version")), 1);
    QVERIFY(!hasCompoundTable(path));
    const QByteArray bytes = fileBytes(path);
    const QStringList entries = folderEntries(folder);

    auto opened = openFolder(folder, readOnly);
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(describe(db), objects);
    const QList<const TCompoundAbstract*> compounds = TDatabase::getAllCompoundinDB({opened->project.get()});
    QCOMPARE(compounds.size(), db->getObjectLst(KAObjectTypeCompound).size());
    for (const TCompoundAbstract* compound : compounds)
        QVERIFY(compound->getPeakDetectList().isEmpty());

    if (readOnly) {
        opened.reset();
        QCOMPARE(fileBytes(path), bytes);
        QCOMPARE(folderEntries(folder), entries);
        QCOMPARE(pragma(path, QStringLiteral("user_version")), 1);
        return;
    }
    // Opening for writing changes nothing: an older version of the
    // application can still open the file.
    QVERIFY(!hasCompoundTable(path));
    QCOMPARE(pragma(path, QStringLiteral("user_version")), 1);
    // The first compound entry brings the table and the current format.
    const TCompoundAbstract* compound = compounds.first();
    const qint64 pd = plainPeakDetects(db).first();
    QVERIFY(db->compoundAddPeakDetect(compound, peakDetect(db, pd)));
    QVERIFY(hasCompoundTable(path));
    QCOMPARE(pragma(path, QStringLiteral("user_version")), TDatabase::SchemaVersion);
    const QString name = compound->name();
    opened.reset();
    opened = openFolder(folder, true);
    QVERIFY2(opened->db, qPrintable(opened->error));
    QCOMPARE(describe(opened->db.get()), objects);
    QCOMPARE(entryIds(compoundNamed(opened->db.get(), name)), QList<qint64>{pd});
}

// In a batch, the table comes with the first entry and goes if the batch is
// abandoned; a batch without entries leaves the format alone.
void TestTCompound::firstFormatUpgradedByItsFirstEntryOnly()
{
    const QString folder = makeBase(QStringLiteral("First entry"));
    const QString path = TDatabase::databasePath(folder);
    rawSql(path, {QStringLiteral("DROP TABLE compound_peaks"), QStringLiteral("PRAGMA user_version = 1")});
    std::unique_ptr<Opened> opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    const qint64 well = db->getObjectLst(KAObjectTypeWell).first()->id();
    QVERIFY(db->objectRename(db->objectById(well), QStringLiteral("Renamed well")));
    QVERIFY(db->beginBatch());
    const qint64 list = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("Later list"));
    QVERIFY(list);
    QVERIFY(db->addObject(KAObjectTypeCompound, list, QStringLiteral("Without entries")));
    QVERIFY(db->commitBatch());
    QVERIFY(!hasCompoundTable(path));
    QCOMPARE(pragma(path, QStringLiteral("user_version")), 1);

    const qint64 pd = plainPeakDetects(db).first();
    QVERIFY(db->beginBatch());
    qint64 compoundId = db->addObject(KAObjectTypeCompound, list, QStringLiteral("Abandoned"));
    QVERIFY(compoundId && db->addCompoundPeakDetect(compoundId, pd));
    db->rollbackBatch();
    QVERIFY(!hasCompoundTable(path));
    QCOMPARE(pragma(path, QStringLiteral("user_version")), 1);
    QVERIFY(!compoundNamed(db, QStringLiteral("Abandoned")));

    QVERIFY(db->beginBatch());
    compoundId = db->addObject(KAObjectTypeCompound, list, QStringLiteral("Kept"));
    QVERIFY(compoundId && db->addCompoundPeakDetect(compoundId, pd));
    QVERIFY(db->commitBatch());
    QVERIFY(hasCompoundTable(path));
    QCOMPARE(pragma(path, QStringLiteral("user_version")), TDatabase::SchemaVersion);
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Kept"))), QList<qint64>{pd});

    opened.reset();
    opened = openFolder(folder, true);
    db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Kept"))), QList<qint64>{pd});
    QCOMPARE(db->objectById(well)->name(), QStringLiteral("Renamed well"));
}

void TestTCompound::currentFormatWithoutCompoundTableRefused_data()
{
    QTest::addColumn<bool>("readOnly");
    QTest::newRow("read-only") << true;
    QTest::newRow("for writing") << false;
}

void TestTCompound::currentFormatWithoutCompoundTableRefused()
{
    QFETCH(bool, readOnly);
    const QString folder = m_fixture->makeProject(QStringLiteral("Damaged"));
    const QString path = TDatabase::databasePath(folder);
    rawSql(path, {QStringLiteral("DROP TABLE compound_peaks")});
    QCOMPARE(pragma(path, QStringLiteral("user_version")), TDatabase::SchemaVersion);
    const QByteArray bytes = fileBytes(path);
    const QStringList entries = folderEntries(folder);

    auto opened = openFolder(folder, readOnly);
    QVERIFY(!opened->db);
    QVERIFY2(opened->error.contains(QStringLiteral("is damaged (table compound_peaks missing)")),
             qPrintable(opened->error));
    QVERIFY2(opened->error.contains(QDir::toNativeSeparators(path)), qPrintable(opened->error));
    QCOMPARE(opened->project->db(), nullptr);
    QCOMPARE(TDatabase::openDatabase(folder), nullptr);
    QCOMPARE(fileBytes(path), bytes);
    QCOMPARE(folderEntries(folder), entries);
}

void TestTCompound::sampleGeneratorCompounds()
{
    TSampleGenerator::Options options = TestFixture::smallOptions();
    options.projects = 3;
    options.seed = 3;
    QString error;
    const QStringList folders = TSampleGenerator::generate(m_fixture->path(), options, &error);
    QCOMPARE(folders.size(), 3);
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    mgr->setWorkspaceFolders({m_fixture->path()});
    QList<const KAObject2Project*> projects;
    for (const QString& folder : folders) {
        const KAObject2Project* project = mgr->findProject(folder);
        QVERIFY(project);
        QVERIFY(mgr->openProject(project, true, true));
        projects.append(project);
    }
    const int perProject = options.compoundLists * options.compoundsPerList;
    QCOMPARE(TDatabase::getAllCompoundinDB(projects).size(), 3 * perProject);
    QCOMPARE(TDatabase::getAllCompoundinDB({projects.at(2), projects.at(0)}).first()->db(), projects.at(2)->db());

    for (int p = 0; p < projects.size(); ++p) {
        const TDatabase* db = projects.at(p)->db();
        const QList<const KAObject2*> lists = db->getObjectLst(KAObjectTypeCompoundList);
        QCOMPARE(lists.size(), 2);
        QCOMPARE(lists.at(0)->name(), QStringLiteral("Target compounds"));
        QCOMPARE(lists.at(1)->name(), QStringLiteral("Composés étalons"));
        QCOMPARE(db->getObjectLst(KAObjectTypeCompound).size(), perProject);
        QList<QList<const KAObject2PeakDetect*>> entries[2];
        for (int l = 0; l < 2; ++l) {
            QCOMPARE(lists.at(l)->children().size(), options.compoundsPerList);
            for (const KAObject2* child : lists.at(l)->children()) {
                const auto* compound = dynamic_cast<const TCompoundAbstract*>(child);
                QVERIFY(compound);
                entries[l].append(compound->getPeakDetectList());
            }
        }
        // First list: the first two compounds share a detection; the last
        // one holds only work detections.
        QSet<const KAObject2PeakDetect*> firstSet(entries[0].at(0).cbegin(), entries[0].at(0).cend());
        bool shared = false;
        for (const KAObject2PeakDetect* pd : entries[0].at(1))
            shared = shared || firstSet.contains(pd);
        QVERIFY(shared);
        for (int c = 0; c < options.compoundsPerList - 1; ++c) {
            QVERIFY(!entries[0].at(c).isEmpty());
            for (const KAObject2PeakDetect* pd : entries[0].at(c)) {
                QVERIFY(pd);
                QCOMPARE(pd->db(), db);
                QVERIFY(!pd->name().startsWith(QLatin1String("tempPD_")));
            }
        }
        QVERIFY(!entries[0].last().isEmpty());
        for (const KAObject2PeakDetect* pd : entries[0].last()) {
            QVERIFY(pd);
            QVERIFY2(pd->name().startsWith(QLatin1String("tempPD_")), qPrintable(pd->name()));
        }
        // Second list: the first compound has none; the second also names
        // detections of the previous project of the run.
        QVERIFY(entries[1].at(0).isEmpty());
        int foreign = 0;
        for (const KAObject2PeakDetect* pd : entries[1].at(1)) {
            QVERIFY(pd);
            if (pd->db() != db) {
                QCOMPARE(pd->db(), projects.at(p - 1)->db());
                ++foreign;
            }
        }
        QCOMPARE(foreign > 0, p > 0);
        QVERIFY(entries[1].at(1).size() > foreign);
        if (p > 0) {
            const QString relative = QStringLiteral("../") + QFileInfo(folders.at(p - 1)).fileName();
            QCOMPARE(rawValue(TDatabase::databasePath(folders.at(p)),
                              QStringLiteral("SELECT COUNT(*) FROM compound_peaks WHERE project = '%1'").arg(relative)),
                     qint64(foreign));
        }
    }

    // The previous project closed, its detections no longer resolve and
    // its compounds are no longer listed.
    QVERIFY(mgr->closeProject(projects.at(0)));
    QCOMPARE(TDatabase::getAllCompoundinDB(projects).size(), 2 * perProject);
    const TDatabase* second = projects.at(1)->db();
    const auto* mixed = static_cast<const TCompoundAbstract*>(
        second->getObjectLst(KAObjectTypeCompoundList).at(1)->children().at(1));
    int nulls = 0;
    for (const KAObject2PeakDetect* pd : mixed->getPeakDetectList()) {
        if (!pd)
            ++nulls;
        else
            QCOMPARE(pd->db(), second);
    }
    QVERIFY(nulls > 0);
}

QTEST_GUILESS_MAIN(TestTCompound)
#include "tst_tcompound.moc"
