// ctest-label: threads
#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "kaobject2analysis.h"
#include "kaobject2dataset.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2well.h"

#include <QThread>

using namespace DatabaseTest;

// The project database: its file format, what it writes and reads back as
// the right objects, and its use from another thread.
class TestTDatabase : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;

    // An empty project in the sub-folder `name`, opened for writing.
    std::unique_ptr<Opened> create(const QString& name, const QString& projectName = QString())
    {
        const QString folder = m_fixture->filePath(name);
        if (!TDatabase::createProject(folder, projectName.isNull() ? name : projectName, nullptr))
            return nullptr;
        return openFolder(folder);
    }

    // Closes and opens again: everything read back from the file.
    static void reopen(std::unique_ptr<Opened>& opened)
    {
        const QString folder = opened->project->folder();
        opened.reset();
        opened = openFolder(folder);
        QVERIFY2(opened->db, qPrintable(opened->error));
    }

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture.reset(new TestFixture); MessageLoggerInterface::returnMe()->clear(); }
    void cleanup() { m_fixture.reset(); }

    // The file's name and identity are a contract with every other reader;
    // rows another tool wrote with the identification's other number load.
    void createWritesOurFormat()
    {
        const QString folder = m_fixture->filePath(QStringLiteral("New project"));
        QString error;
        QVERIFY2(TDatabase::createProject(folder, QStringLiteral("Fresh"), &error), qPrintable(error));
        QVERIFY(QFileInfo(TDatabase::settingsPath(folder)).isDir());
        const QString path = TDatabase::databasePath(folder);
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("project.kadb"));
        QCOMPARE(pragma(path, QStringLiteral("application_id")), 0x4B414442);
        QCOMPARE(pragma(path, QStringLiteral("user_version")), TDatabase::SchemaVersion);
        QVERIFY(!TDatabase::createProject(folder, QStringLiteral("Again"), &error) && error.contains(QStringLiteral("already exists")));
        rawSql(path, {QStringLiteral("INSERT INTO objects (id, parent, kind, name, source) VALUES (1, 0, 281, 'G', 1)"),
                      QStringLiteral("INSERT INTO objects (id, parent, kind, name) VALUES (2, 1, 282, 'I282')"),
                      QStringLiteral("INSERT INTO objects (id, parent, kind, name) VALUES (3, 1, %1, 'I')")
                          .arg(int(KAObjectTypeIdentification))});
        auto opened = openFolder(folder);
        QVERIFY2(opened->db && opened->db->isReady(), qPrintable(opened->error));
        QCOMPARE(opened->project->name(), QStringLiteral("Fresh"));
        QCOMPARE(opened->db->getObjectLst(KAObjectTypeIdentification).size(), 2);
        for (const KAObject2* object : opened->db->getObjectLst(KAObjectTypeIdentification)) {
            const auto* identification = dynamic_cast<const KAObject2Identification*>(object);
            QVERIFY(identification && identification->parentGroup() == opened->db->objectById(1));
        }
        opened->db.reset();
        QCOMPARE(opened->project->db(), nullptr);
    }

    // Every kind reopens as its class with its links, sources and file
    // paths; a batch refuses a missing parent and a link between the wrong
    // kinds, and an abandoned batch leaves nothing behind.
    void batchObjectsReopenAsTheRightClasses()
    {
        auto opened = create(QStringLiteral("Batch"));
        TDatabase* db = opened->db.get();
        QVERIFY(db->beginBatch() && db->addObject(KAObjectTypeWell, 0, QStringLiteral("Never")));
        db->rollbackBatch();
        QVERIFY(db->beginBatch());
        const qint64 analysis = db->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("A1"), 0, true);
        const qint64 pd = db->addObject(KAObjectTypePeakDetect, db->addObject(KAObjectTypeSignal, analysis, QStringLiteral("TIC")),
                                        QStringLiteral("PD"), 0x201);
        const qint64 group = db->addObject(KAObjectTypeIdentificationGroup, 0, QStringLiteral("G"), 0x801);
        const qint64 ident = db->addObject(KAObjectTypeIdentification, group, QStringLiteral("Caffeine"));
        const qint64 dataset = db->addObject(KAObjectTypeDataset, db->addObject(KAObjectTypeWell, 0, QStringLiteral("W")), QStringLiteral("D"));
        db->addObject(KAObjectTypeVariable, dataset, QStringLiteral("V"));
        db->addObject(KAObjectTypeGlobalIndexation, 0, QStringLiteral("GI"));
        db->addObject(KAObjectTypeCompound, 0, QStringLiteral("Compound"));
        QVERIFY(db->addLink(ident, pd) && !db->addLink(pd, ident));
        QCOMPARE(db->addObject(KAObjectTypeSignal, 999999, QStringLiteral("orphan")), 0);
        QVERIFY(db->commitBatch());
        const QString before = describe(db);
        QVERIFY(!before.contains(QStringLiteral("Never")));
        reopen(opened);
        db = opened->db.get();
        QCOMPARE(describe(db), before); // links included
        const auto* a = dynamic_cast<const KAObject2Analysis*>(db->objectById(analysis));
        const auto* p = dynamic_cast<const KAObject2PeakDetect*>(db->objectById(pd));
        const auto* g = dynamic_cast<const KAObject2IdentificationGroup*>(db->objectById(group));
        QVERIFY(a && p && g && dynamic_cast<const KAObject2Identification*>(db->objectById(ident)) && a->isMulticanal() && p->signal());
        QVERIFY(dynamic_cast<const KAObject2Dataset*>(db->objectById(dataset)) && db->getObjectLst(KAObjectTypeCompound).size() == 1);
        QCOMPARE(p->getSource(), quint16(0x201));
        QCOMPARE(g->getSource(), quint16(0x801));
        QCOMPARE(db->getIdentificationGroup(p), g);
        const QDir folder(opened->project->folder());
        QCOMPARE(TDatabase::peakDetectMSPath(a), folder.filePath(QStringLiteral("Analyses/%1.mspd").arg(analysis)));
        QCOMPARE(TDatabase::objectFilePath(db->objectById(dataset)), folder.filePath(QStringLiteral("Data/%1.dat").arg(dataset)));
    }

    void namesRoundTrip_data()
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

    // Written, renamed to and looked up as typed; a blank name is refused.
    void namesRoundTrip()
    {
        QFETCH(QString, name);
        auto opened = create(QStringLiteral("Names"), name);
        TDatabase* db = opened->db.get();
        QVERIFY(db->beginBatch());
        const qint64 created = db->addObject(KAObjectTypeWell, 0, name);
        const qint64 renamed = db->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("plain"));
        QVERIFY(db->commitBatch() && db->objectRename(db->objectById(renamed), name));
        QVERIFY(db->getAnalysis(name) == db->objectById(renamed) && !db->getAnalysis(QStringLiteral("plain")));
        QCOMPARE(db->objectById(renamed)->foldedName(), name.toCaseFolded());
        QVERIFY(!db->objectRename(db->objectById(created), QStringLiteral("  ")));
        QVERIFY(loggedContaining(QStringLiteral("cannot be empty")));
        reopen(opened);
        QCOMPARE(opened->project->name(), name);
        QCOMPARE(opened->db->objectById(created)->name(), name);
        QCOMPARE(opened->db->getAnalysis(name), opened->db->objectById(renamed));
    }

    // Properties come back as written, a second value replacing the first.
    // A dataset shows under the well its "parent" (kind 3) and "parentID"
    // (its name) properties name, not under its own well once they name
    // another or no well.
    void propertiesAndVisualChildren()
    {
        auto opened = create(QStringLiteral("Visual"));
        TDatabase* db = opened->db.get();
        QVERIFY(db->beginBatch());
        const qint64 w1 = db->addObject(KAObjectTypeWell, 0, QStringLiteral("W1"));
        const qint64 w2 = db->addObject(KAObjectTypeWell, 0, QStringLiteral("W2"));
        QList<qint64> d;
        for (const char* name : {"d1", "d2", "d3", "d4"})
            d << db->addObject(KAObjectTypeDataset, d.size() < 2 ? w1 : w2, QLatin1String(name));
        QVERIFY(db->commitBatch());
        auto names = [&db](qint64 parent) {
            QStringList result;
            for (const KAObject2* o : db->getObjectVisualChildren(KAObjectTypeDataset, db->objectById(parent)))
                result.append(o->name());
            return result.join(QLatin1Char(' '));
        };
        auto set = [&db](qint64 id, const char* key, const char* value) {
            return db->objectPropertiesAdd(db->objectById(id), TProperty(QLatin1String(key), QLatin1String(value)));
        };
        QCOMPARE(names(w1), QStringLiteral("d1 d2"));
        QVERIFY(db->objectPropertiesAdd(db->objectById(w1), TProperty(QStringLiteral("Volume"), QStringLiteral("12.5"),
                                                                      QStringLiteral("µL"), QStringLiteral("<checked>"))));
        QVERIFY(set(w1, "Operator", "A") && set(w1, "Operator", "B"));
        // d1 under W2, d4 without a well, d2 naming a kind other than the well's.
        QVERIFY(set(d[0], "parent", "3") && set(d[0], "parentID", "W2") && set(d[3], "parent", "3"));
        QCOMPARE(names(w1), QStringLiteral("d2"));
        QVERIFY(set(d[1], "parent", "1") && set(d[1], "parentID", "W2"));
        reopen(opened);
        db = opened->db.get();
        QCOMPARE(names(w1), QString());
        QCOMPARE(names(w2), QStringLiteral("d1 d3"));
        bool found = false;
        const TProperty volume = db->getObjectProperties(db->objectById(w1), QStringLiteral("Volume"), &found);
        QVERIFY(found && volume.value() == QStringLiteral("12.5") && volume.unit() == QStringLiteral("µL"));
        QCOMPARE(volume.comment(), QStringLiteral("<checked>"));
        QCOMPARE(db->getObjectProperties(db->objectById(w1), QStringLiteral("Operator"), &found).value(), QStringLiteral("B"));
        db->getObjectProperties(db->objectById(w1), QStringLiteral("Missing"), &found);
        QVERIFY(!found);
        // Renaming the well follows: the association is by name.
        QVERIFY(db->objectRename(db->objectById(w2), QStringLiteral("W2 renamed")));
        QCOMPARE(names(w2), QStringLiteral("d3"));
    }

    // Deleting an analysis announces it with its signals and detections
    // while they still exist, takes them from the identifications working
    // on them, and holds after reopening; a child goes alone.
    void deleteAnnouncesAndTakesChildren()
    {
        auto opened = openFolder(m_fixture->makeProject(QStringLiteral("Delete")));
        TDatabase* db = opened->db.get();
        const KAObject2* analysis = db->getObjectLst(KAObjectTypeAnalysis).first();
        QSet<const KAObject2*> expected{analysis};
        QList<const KAObject2*> announced;
        for (const KAObject2* signal : analysis->children())
            expected += QSet<const KAObject2*>{signal} + QSet<const KAObject2*>(signal->children().cbegin(), signal->children().cend());
        const int before = db->objectCount();
        int announcements = 0;
        connect(db, &TDatabase::aboutToDeleteObjects, this, [&](QList<const KAObject2*>* objects) {
            ++announcements;
            for (const KAObject2* object : *objects)
                announced << (db->objectById(object->id()) == object ? object : nullptr); // alive when announced
        });
        QVERIFY(db->deleteObject(analysis, true));
        QCOMPARE(announcements, 1);
        QVERIFY(announced.size() == expected.size() && QSet<const KAObject2*>(announced.cbegin(), announced.cend()) == expected);
        QCOMPARE(db->objectCount(), before - expected.size());
        for (const KAObject2* object : db->getObjectLst(KAObjectTypeIdentification)) {
            for (const KAObject2PeakDetect* pd : static_cast<const KAObject2Identification*>(object)->workPDList())
                QVERIFY(!expected.contains(pd));
        }
        const KAObject2* well = db->getObjectLst(KAObjectTypeWell).first();
        const int datasets = well->children().size();
        QVERIFY(db->deleteObject(db->datasetList(static_cast<const KAObject2Well*>(well)).first(), false));
        QCOMPARE(well->children().size(), datasets - 1);
        const QString after = describe(db);
        reopen(opened);
        QCOMPARE(describe(opened->db.get()), after);
    }

    // The header and access mode reach another session through
    // synchronize; a read-only session keeps its access mode to itself.
    void headerAccessModeAndSynchronize()
    {
        const QString folder = m_fixture->makeProject(QStringLiteral("Header"));
        auto first = openFolder(folder);
        auto second = openFolder(folder);
        const QString name = QStringLiteral("Renamed <project>");
        QCOMPARE(first->db->accessMode(), ProjectMgrInterface::AccessModeOpened);
        QVERIFY(first->db->setProjectProperties(name, QStringLiteral("About"), 4));
        QVERIFY(first->project->name() == name && first->project->projectState() == 4);
        first->db->setAccessMode(ProjectMgrInterface::AccessModeBrowser);
        QVERIFY(second->project->name() != name && second->db->synchronize());
        QVERIFY(second->project->name() == name && second->project->description() == QStringLiteral("About"));
        QVERIFY(second->project->isTerminated());
        QCOMPARE(second->db->accessMode(), ProjectMgrInterface::AccessModeBrowser);
        first.reset();
        second.reset();
        const FolderSnapshot file(folder);
        auto readOnly = openFolder(folder, true);
        readOnly->db->setAccessMode(ProjectMgrInterface::AccessModeOpened);
        QCOMPARE(readOnly->db->accessMode(), ProjectMgrInterface::AccessModeOpened);
        readOnly.reset();
        QVERIFY(file.unchanged());
    }

    // One connection per thread: a write from another thread lands, and
    // every connection goes with the database.
    void writeFromAnotherThreadAndConnectionsRemoved()
    {
        auto opened = openFolder(m_fixture->makeProject(QStringLiteral("Threads")));
        TDatabase* db = opened->db.get();
        const KAObject2* well = db->getObjectLst(KAObjectTypeWell).first();
        bool renamed = false;
        std::unique_ptr<QThread> thread(QThread::create([&]() { renamed = db->objectRename(well, QStringLiteral("From a thread")); }));
        thread->start();
        QVERIFY(thread->wait(10000) && renamed);
        QVERIFY(db->objectRename(well, QStringLiteral("From the test thread")));
        const QString folder = opened->project->folder();
        opened.reset();
        for (const QString& name : QSqlDatabase::connectionNames())
            QVERIFY2(!name.startsWith(QLatin1String("kadb_")), qPrintable(name));
        opened = openFolder(folder);
        QCOMPARE(opened->db->getObjectLst(KAObjectTypeWell).first()->name(), QStringLiteral("From the test thread"));
    }
};

QTEST_GUILESS_MAIN(TestTDatabase)
#include "tst_tdatabase.moc"
