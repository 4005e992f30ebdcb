// ctest-label: threads
#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2dataset.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2signal.h"
#include "kaobject2well.h"
#include "messageloggerinterface.h"
#include "tabstractmapper.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QThread>

#include <functional>
#include <memory>

using TechDB::TDatabase;

Q_DECLARE_METATYPE(QList<const KAObject2*>*)

using namespace DatabaseTest;

class TestTDatabase : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void createWritesOurFormat();
    void batchObjectsReopenAsTheRightClasses();
    void sampleProjectLinksAndLookups();
    void identificationKindNumbersBothLoad();
    void namesRoundTrip_data();
    void namesRoundTrip();
    void emptyNameRefused();
    void propertiesRoundTrip();
    void visualChildrenFollowParentProperties();
    void deleteAnnouncesAndTakesChildren();
    void headerAccessModeAndSynchronize();
    void rolledBackBatchLeavesNothing();
    void writeFromAnotherThreadAndConnectionsRemoved();

private:
    QString makeProject(const QString& name);
    std::unique_ptr<TestFixture> m_fixture;
};

void TestTDatabase::initTestCase()
{
    kaInitTestEnvironment();
    qRegisterMetaType<QList<const KAObject2*>*>();
}

void TestTDatabase::init()
{
    m_fixture.reset(new TestFixture);
    MessageLoggerInterface::returnMe()->clear();
    TDatabase::setBusyTimeout(2000);
}

void TestTDatabase::cleanup()
{
    m_fixture.reset();
    TDatabase::setBusyTimeout(2000);
}

QString TestTDatabase::makeProject(const QString& name)
{
    const QString folder = m_fixture->filePath(name);
    QString error;
    if (!TSampleGenerator::generateProject(folder, name, smallOptions(), 7, &error))
        qWarning() << "generation failed:" << error;
    return folder;
}

void TestTDatabase::createWritesOurFormat()
{
    const QString folder = m_fixture->filePath(QStringLiteral("New project"));
    QString error;
    QVERIFY2(TDatabase::createProject(folder, QStringLiteral("Fresh"), &error), qPrintable(error));
    QVERIFY(QFileInfo(TDatabase::settingsPath(folder)).isDir());
    const QString path = TDatabase::databasePath(folder);
    QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("project.kadb"));
    // The identity of the file is a contract with every other reader.
    QCOMPARE(pragma(path, QStringLiteral("application_id")), 0x4B414442);
    QCOMPARE(pragma(path, QStringLiteral("user_version")), TDatabase::SchemaVersion);

    QVERIFY(!TDatabase::createProject(folder, QStringLiteral("Again"), &error));
    QVERIFY(error.contains(QStringLiteral("already exists")));

    auto opened = openFolder(folder);
    QVERIFY2(opened->db, qPrintable(opened->error));
    QCOMPARE(opened->db->objectCount(), 0);
    QCOMPARE(opened->project->name(), QStringLiteral("Fresh"));
    QCOMPARE(opened->project->db(), opened->db.get());
    QVERIFY(opened->db->isReady());
    opened->db.reset();
    QCOMPARE(opened->project->db(), nullptr);
}

void TestTDatabase::batchObjectsReopenAsTheRightClasses()
{
    const QString folder = m_fixture->filePath(QStringLiteral("Batch"));
    QVERIFY(TDatabase::createProject(folder, QStringLiteral("Batch"), nullptr));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QVERIFY(db->beginBatch());
    const qint64 analysis = db->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("A1"), 0, true);
    const qint64 signal = db->addObject(KAObjectTypeSignal, analysis, QStringLiteral("TIC"));
    const qint64 pd = db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("PD"), 0x201);
    const qint64 group = db->addObject(KAObjectTypeIdentificationGroup, 0, QStringLiteral("G"), 0x801);
    const qint64 ident = db->addObject(KAObjectTypeIdentification, group, QStringLiteral("Caffeine"));
    const qint64 well = db->addObject(KAObjectTypeWell, 0, QStringLiteral("W"));
    const qint64 dataset = db->addObject(KAObjectTypeDataset, well, QStringLiteral("D"));
    db->addObject(KAObjectTypeVariable, dataset, QStringLiteral("V"));
    db->addObject(KAObjectTypeGlobalIndexation, 0, QStringLiteral("GI"));
    db->addObject(KAObjectType(600), 0, QStringLiteral("Compound"));
    QVERIFY(db->addLink(ident, pd));
    // A parent that does not exist, and a link between the wrong kinds.
    QCOMPARE(db->addObject(KAObjectTypeSignal, 999999, QStringLiteral("orphan")), 0);
    QVERIFY(!db->addLink(pd, ident));
    QVERIFY(db->commitBatch());

    const QString before = describe(db);
    opened.reset();
    opened = openFolder(folder);
    db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(describe(db), before);
    QCOMPARE(db->objectCount(), 10);

    const auto* a = dynamic_cast<const KAObject2Analysis*>(db->objectById(analysis));
    QVERIFY(a);
    QVERIFY(a->isMulticanal());
    QCOMPARE(db->getAnalysis(QStringLiteral("A1")), a);
    const auto* s = dynamic_cast<const KAObject2Signal*>(db->objectById(signal));
    QVERIFY(s);
    QCOMPARE(s->analysis(), a);
    const auto* p = dynamic_cast<const KAObject2PeakDetect*>(db->objectById(pd));
    QVERIFY(p);
    QCOMPARE(p->getSource(), quint16(0x201));
    QCOMPARE(p->signal(), s);
    const auto* g = dynamic_cast<const KAObject2IdentificationGroup*>(db->objectById(group));
    QVERIFY(g);
    QCOMPARE(g->getSource(), quint16(0x801));
    const auto* i = dynamic_cast<const KAObject2Identification*>(db->objectById(ident));
    QVERIFY(i);
    QCOMPARE(i->parentGroup(), g);
    QCOMPARE(i->workPDList(), QList<const KAObject2PeakDetect*>{p});
    QCOMPARE(g->child(), QList<const KAObject2Identification*>{i});
    QCOMPARE(db->getIdentificationGroup(p), g);
    const auto* w = dynamic_cast<const KAObject2Well*>(db->objectById(well));
    QVERIFY(w);
    const auto* d = dynamic_cast<const KAObject2Dataset*>(db->objectById(dataset));
    QVERIFY(d);
    QCOMPARE(d->well(), w);
    QCOMPARE(db->datasetList(w), QList<const KAObject2*>{d});
    QCOMPARE(db->getObjectLst(KAObjectType(600)).size(), 1);
    QCOMPARE(db->getObjectLst(KAObjectType(600)).first()->type(), KAObjectType(600));
    for (KAObjectType kind : db->objectTypes()) {
        for (const KAObject2* object : db->getObjectLst(kind))
            QCOMPARE(object->db(), db);
    }
    QCOMPARE(TDatabase::peakDetectMSPath(a),
             QDir(folder).filePath(QStringLiteral("Analyses/%1.mspd").arg(analysis)));
    QCOMPARE(TDatabase::objectFilePath(d), QDir(folder).filePath(QStringLiteral("Data/%1.dat").arg(dataset)));
}

void TestTDatabase::sampleProjectLinksAndLookups()
{
    auto opened = openFolder(makeProject(QStringLiteral("Sample")));
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    int linked = 0;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeIdentificationGroup)) {
        const auto* group = static_cast<const KAObject2IdentificationGroup*>(object);
        for (const KAObject2Identification* identification : group->child()) {
            for (const KAObject2PeakDetect* pd : identification->workPDList()) {
                QCOMPARE(db->getIdentificationGroup(pd), group);
                ++linked;
            }
        }
    }
    QVERIFY(linked > 0);
    // Children in database order, and only of the kind asked for.
    for (const KAObject2* analysis : db->getObjectLst(KAObjectTypeAnalysis)) {
        QCOMPARE(db->getAnalysis(analysis->name()), analysis);
        const QList<const KAObject2*> signalList = TechDB::TAbstractMapper::getObjectChildLst(analysis, KAObjectTypeSignal);
        QCOMPARE(signalList.size(), smallOptions().signalsPerAnalysis);
        for (int k = 1; k < signalList.size(); ++k)
            QVERIFY(signalList.at(k - 1)->id() < signalList.at(k)->id());
        QVERIFY(TechDB::TAbstractMapper::getObjectChildLst(analysis, KAObjectTypePeakDetect).isEmpty());
    }
    QCOMPARE(db->getAnalysis(QStringLiteral("no such analysis")), nullptr);
}

void TestTDatabase::identificationKindNumbersBothLoad()
{
    const QString folder = m_fixture->filePath(QStringLiteral("Kinds"));
    QVERIFY(TDatabase::createProject(folder, QStringLiteral("Kinds"), nullptr));
    // Rows written by another tool with the identification's own number.
    rawSql(TDatabase::databasePath(folder),
           {QStringLiteral("INSERT INTO objects (id, parent, kind, name, source) VALUES (1, 0, 281, 'G', 1)"),
            QStringLiteral("INSERT INTO objects (id, parent, kind, name) VALUES (2, 1, 282, 'I282')"),
            QStringLiteral("INSERT INTO objects (id, parent, kind, name) VALUES (3, 1, %1, 'Inative')")
                .arg(int(KAObjectTypeIdentification))});
    auto opened = openFolder(folder);
    QVERIFY2(opened->db, qPrintable(opened->error));
    const QList<const KAObject2*> identifications = opened->db->getObjectLst(KAObjectTypeIdentification);
    QCOMPARE(identifications.size(), 2);
    for (const KAObject2* object : identifications) {
        const auto* identification = dynamic_cast<const KAObject2Identification*>(object);
        QVERIFY(identification);
        QCOMPARE(identification->parentGroup(), opened->db->objectById(1));
    }
}

void TestTDatabase::namesRoundTrip_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("html") << QStringLiteral("<b>Bold</b> & <i>co</i>");
    QTest::newRow("quotes") << QStringLiteral("O'Brien \"quoted\" `back`");
    QTest::newRow("slashes") << QStringLiteral("a/b\\c/../d");
    QTest::newRow("accents") << QStringLiteral("Échantillon été – Ærø");
    QTest::newRow("non-latin") << QStringLiteral("日本語 Ωμέγα Кофеин عربى");
    QTest::newRow("outside the BMP") << QStringLiteral("Test tube \U0001F9EA");
    QTest::newRow("sql") << QStringLiteral("x'); DROP TABLE objects; --");
}

void TestTDatabase::namesRoundTrip()
{
    QFETCH(QString, name);
    const QString folder = m_fixture->filePath(QStringLiteral("Names"));
    QVERIFY(TDatabase::createProject(folder, name, nullptr));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QCOMPARE(opened->project->name(), name);
    QVERIFY(db->beginBatch());
    const qint64 created = db->addObject(KAObjectTypeWell, 0, name);
    const qint64 renamed = db->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("plain"));
    QVERIFY(db->commitBatch());
    QVERIFY(db->objectRename(db->objectById(renamed), name));
    QCOMPARE(db->getAnalysis(name), db->objectById(renamed));
    QCOMPARE(db->getAnalysis(QStringLiteral("plain")), nullptr);
    QCOMPARE(db->objectById(renamed)->foldedName(), name.toCaseFolded());

    opened.reset();
    opened = openFolder(folder);
    db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(opened->project->name(), name);
    QCOMPARE(db->objectById(created)->name(), name);
    QCOMPARE(db->objectById(renamed)->name(), name);
    QCOMPARE(db->getAnalysis(name), db->objectById(renamed));
}

void TestTDatabase::emptyNameRefused()
{
    auto opened = openFolder(makeProject(QStringLiteral("Empty name")));
    const KAObject2* analysis = opened->db->getObjectLst(KAObjectTypeAnalysis).first();
    const QString name = analysis->name();
    QVERIFY(!opened->db->objectRename(analysis, QStringLiteral("  ")));
    QCOMPARE(analysis->name(), name);
    QVERIFY(loggedContaining(QStringLiteral("cannot be empty")));
}

void TestTDatabase::propertiesRoundTrip()
{
    const QString folder = makeProject(QStringLiteral("Properties"));
    auto opened = openFolder(folder);
    const KAObject2* well = opened->db->getObjectLst(KAObjectTypeWell).first();
    const qint64 id = well->id();
    QVERIFY(opened->db->objectPropertiesAdd(well, TProperty(QStringLiteral("Volume"), QStringLiteral("12.5"),
                                                            QStringLiteral("µL"), QStringLiteral("<checked>"))));
    QVERIFY(opened->db->objectPropertiesAdd(well, TProperty(QStringLiteral("Operator"), QStringLiteral("A"))));
    QVERIFY(opened->db->objectPropertiesAdd(well, TProperty(QStringLiteral("Operator"), QStringLiteral("B"))));
    bool found = false;
    QCOMPARE(opened->db->getObjectProperties(well, QStringLiteral("Operator"), &found).value(), QStringLiteral("B"));
    QVERIFY(found);

    opened.reset();
    opened = openFolder(folder);
    well = opened->db->objectById(id);
    const TProperty volume = opened->db->getObjectProperties(well, QStringLiteral("Volume"), &found);
    QVERIFY(found);
    QCOMPARE(volume.value(), QStringLiteral("12.5"));
    QCOMPARE(volume.unit(), QStringLiteral("µL"));
    QCOMPARE(volume.comment(), QStringLiteral("<checked>"));
    QCOMPARE(opened->db->getObjectProperties(well, QStringLiteral("Operator"), &found).value(), QStringLiteral("B"));
    opened->db->getObjectProperties(well, QStringLiteral("Missing"), &found);
    QVERIFY(!found);
}

void TestTDatabase::visualChildrenFollowParentProperties()
{
    const QString folder = m_fixture->filePath(QStringLiteral("Visual"));
    QVERIFY(TDatabase::createProject(folder, QStringLiteral("Visual"), nullptr));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QVERIFY(db->beginBatch());
    const qint64 w1 = db->addObject(KAObjectTypeWell, 0, QStringLiteral("W1"));
    const qint64 w2 = db->addObject(KAObjectTypeWell, 0, QStringLiteral("W2"));
    const qint64 d1 = db->addObject(KAObjectTypeDataset, w1, QStringLiteral("d1"));
    const qint64 d2 = db->addObject(KAObjectTypeDataset, w1, QStringLiteral("d2"));
    const qint64 d3 = db->addObject(KAObjectTypeDataset, w2, QStringLiteral("d3"));
    const qint64 d4 = db->addObject(KAObjectTypeDataset, w2, QStringLiteral("d4"));
    QVERIFY(db->commitBatch());
    auto names = [&db](qint64 parent) {
        QStringList result;
        for (const KAObject2* o : db->getObjectVisualChildren(KAObjectTypeDataset, db->objectById(parent)))
            result.append(o->name());
        return result;
    };
    QCOMPARE(names(w1), (QStringList{QStringLiteral("d1"), QStringLiteral("d2")}));

    // d1 is shown under W2, d4 has lost its parent: neither stays under its well.
    QVERIFY(db->objectPropertiesAdd(db->objectById(d1), TProperty(QStringLiteral("parent"), QStringLiteral("3"))));
    QVERIFY(db->objectPropertiesAdd(db->objectById(d1), TProperty(QStringLiteral("parentID"), QStringLiteral("W2"))));
    QVERIFY(db->objectPropertiesAdd(db->objectById(d4), TProperty(QStringLiteral("parent"), QStringLiteral("3"))));
    QCOMPARE(names(w1), QStringList{QStringLiteral("d2")});
    QCOMPARE(names(w2), (QStringList{QStringLiteral("d1"), QStringLiteral("d3")}));
    // A parent kind that does not match the well's kind does not count.
    QVERIFY(db->objectPropertiesAdd(db->objectById(d2), TProperty(QStringLiteral("parent"), QStringLiteral("1"))));
    QVERIFY(db->objectPropertiesAdd(db->objectById(d2), TProperty(QStringLiteral("parentID"), QStringLiteral("W2"))));
    QCOMPARE(names(w1), QStringList());
    QCOMPARE(names(w2), (QStringList{QStringLiteral("d1"), QStringLiteral("d3")}));

    opened.reset();
    opened = openFolder(folder);
    db = opened->db.get();
    QCOMPARE(names(w1), QStringList());
    QCOMPARE(names(w2), (QStringList{QStringLiteral("d1"), QStringLiteral("d3")}));
    // Renaming the well follows: the association is by name.
    QVERIFY(db->objectRename(db->objectById(w2), QStringLiteral("W2 renamed")));
    QCOMPARE(names(w2), QStringList{QStringLiteral("d3")});
    Q_UNUSED(d3);
}

void TestTDatabase::deleteAnnouncesAndTakesChildren()
{
    const QString folder = makeProject(QStringLiteral("Delete"));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    // The first analysis: its signals and peak detections go with it, and
    // some of those peak detections are worked on by identifications.
    const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
    const QString analysisName = analysis->name();
    QList<qint64> expected{analysis->id()};
    QSet<const KAObject2*> doomedPDs;
    for (const KAObject2* signal : analysis->children()) {
        expected.append(signal->id());
        for (const KAObject2* pd : signal->children()) {
            expected.append(pd->id());
            doomedPDs.insert(pd);
        }
    }
    const int before = db->objectCount();

    QSignalSpy spy(db, &TDatabase::aboutToDeleteObjects);
    QList<qint64> announced;
    bool aliveWhenAnnounced = true;
    connect(db, &TDatabase::aboutToDeleteObjects, this, [&](QList<const KAObject2*>* objects) {
        for (const KAObject2* object : *objects) {
            announced.append(object->id());
            aliveWhenAnnounced = aliveWhenAnnounced && db->objectById(object->id()) == object;
        }
    });
    QVERIFY(db->deleteObject(analysis, true));
    QCOMPARE(spy.count(), 1);
    std::sort(announced.begin(), announced.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(announced, expected);
    QVERIFY(aliveWhenAnnounced);
    for (qint64 id : expected)
        QCOMPARE(db->objectById(id), nullptr);
    QCOMPARE(db->objectCount(), before - expected.size());
    QCOMPARE(db->getAnalysis(analysisName), nullptr);
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeIdentification)) {
        for (const KAObject2PeakDetect* pd : static_cast<const KAObject2Identification*>(object)->workPDList())
            QVERIFY(!doomedPDs.contains(pd));
    }
    const QString after = describe(db);

    // A child alone leaves its parent's children.
    const KAObject2* well = db->getObjectLst(KAObjectTypeWell).first();
    const KAObject2* dataset = db->datasetList(static_cast<const KAObject2Well*>(well)).first();
    const int datasets = well->children().size();
    QVERIFY(db->deleteObject(dataset, false));
    QCOMPARE(well->children().size(), datasets - 1);
    const QString afterDataset = describe(db);
    Q_UNUSED(after);

    opened.reset();
    opened = openFolder(folder);
    QCOMPARE(describe(opened->db.get()), afterDataset);
    QCOMPARE(opened->db->getAnalysis(analysisName), nullptr);
}

void TestTDatabase::headerAccessModeAndSynchronize()
{
    const QString folder = makeProject(QStringLiteral("Header"));
    auto first = openFolder(folder);
    auto second = openFolder(folder);
    QVERIFY(first->db && second->db);
    QCOMPARE(first->db->accessMode(), ProjectMgrInterface::AccessModeOpened);

    QVERIFY(first->db->setProjectProperties(QStringLiteral("Renamed <project>"), QStringLiteral("About"), 4));
    QCOMPARE(first->project->name(), QStringLiteral("Renamed <project>"));
    QCOMPARE(first->project->projectState(), 4);
    first->db->setAccessMode(ProjectMgrInterface::AccessModeBrowser);
    QCOMPARE(first->db->accessMode(), ProjectMgrInterface::AccessModeBrowser);

    QVERIFY(second->project->name() != QStringLiteral("Renamed <project>"));
    QVERIFY(second->db->synchronize());
    QCOMPARE(second->project->name(), QStringLiteral("Renamed <project>"));
    QCOMPARE(second->project->description(), QStringLiteral("About"));
    QVERIFY(second->project->isTerminated());
    QCOMPARE(second->db->accessMode(), ProjectMgrInterface::AccessModeBrowser);

    QString name;
    int state = 0;
    QVERIFY(TDatabase::readProjectHeader(folder, &name, nullptr, &state, nullptr));
    QCOMPARE(name, QStringLiteral("Renamed <project>"));
    QCOMPARE(state, 4);

    // A read-only session keeps its access mode to itself.
    first.reset();
    second.reset();
    const QByteArray bytes = fileBytes(TDatabase::databasePath(folder));
    auto readOnly = openFolder(folder, true);
    readOnly->db->setAccessMode(ProjectMgrInterface::AccessModeOpened);
    QCOMPARE(readOnly->db->accessMode(), ProjectMgrInterface::AccessModeOpened);
    readOnly.reset();
    QCOMPARE(fileBytes(TDatabase::databasePath(folder)), bytes);
}

void TestTDatabase::rolledBackBatchLeavesNothing()
{
    const QString folder = makeProject(QStringLiteral("Rollback"));
    auto opened = openFolder(folder);
    const QString before = describe(opened->db.get());
    QVERIFY(opened->db->beginBatch());
    QVERIFY(opened->db->addObject(KAObjectTypeWell, 0, QStringLiteral("Never")));
    opened->db->rollbackBatch();
    QCOMPARE(describe(opened->db.get()), before);
    // Writes work again after the abandoned batch.
    QVERIFY(opened->db->objectRename(opened->db->getObjectLst(KAObjectTypeWell).first(), QStringLiteral("Kept")));
    opened.reset();
    opened = openFolder(folder);
    QVERIFY(!describe(opened->db.get()).contains(QStringLiteral("Never")));
    QVERIFY(describe(opened->db.get()).contains(QStringLiteral("Kept")));
}

void TestTDatabase::writeFromAnotherThreadAndConnectionsRemoved()
{
    const QString folder = makeProject(QStringLiteral("Threads"));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    const KAObject2* well = db->getObjectLst(KAObjectTypeWell).first();
    bool renamed = false;
    std::unique_ptr<QThread> thread(QThread::create([&]() { renamed = db->objectRename(well, QStringLiteral("From a thread")); }));
    thread->start();
    QVERIFY(thread->wait(10000));
    QVERIFY(renamed);
    QVERIFY(db->objectRename(well, QStringLiteral("From the test thread")));
    QVERIFY(!QSqlDatabase::connectionNames().isEmpty());
    opened.reset();
    // Every connection the database made, on either thread, went with it.
    for (const QString& name : QSqlDatabase::connectionNames())
        QVERIFY2(!name.startsWith(QLatin1String("kadb_")), qPrintable(name));
    opened = openFolder(folder);
    QCOMPARE(opened->db->getObjectLst(KAObjectTypeWell).first()->name(), QStringLiteral("From the test thread"));
}

QTEST_GUILESS_MAIN(TestTDatabase)
#include "tst_tdatabase.moc"
