#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "tcompound.h"

#include <QSignalSpy>

#include <algorithm>
#include <vector>

using namespace DatabaseTest;

namespace {

// A compound's detections as "id@database" in order; "0" for an entry that
// does not resolve. `dbs` names the databases.
QString entries(const TCompoundAbstract* compound, const QList<const TDatabase*>& dbs = {})
{
    QStringList result;
    for (const KAObject2PeakDetect* pd : compound->getPeakDetectList()) {
        result << (pd ? QString::number(pd->id()) : QStringLiteral("0"));
        if (pd && !dbs.isEmpty())
            result.last() += QStringLiteral("@%1").arg(dbs.indexOf(pd->db()));
    }
    return result.join(QLatin1Char(','));
}

// Every compound with its entries, in database order; "-1" for a compound
// loaded as another class.
QString compoundState(const TDatabase* db)
{
    QStringList lines;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeCompound)) {
        const auto* compound = dynamic_cast<const TCompound*>(object);
        lines << object->name() + QLatin1Char(':') + (compound ? entries(compound) : QStringLiteral("-1"));
    }
    return lines.join(QLatin1Char(' '));
}

const TCompoundAbstract* compound(const TDatabase* db, qint64 id) { return dynamic_cast<const TCompoundAbstract*>(db->objectById(id)); }
const KAObject2PeakDetect* peakDetect(const TDatabase* db, qint64 id) { return dynamic_cast<const KAObject2PeakDetect*>(db->objectById(id)); }

// The project's detections that are not work files, as text ids in
// database order.
QStringList plainPeakDetects(const TDatabase* db)
{
    QStringList ids;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypePeakDetect)) {
        if (!object->name().startsWith(QLatin1String("tempPD_")))
            ids << QString::number(object->id());
    }
    return ids;
}

// The version a file declares and whether it holds the compound table, as
// another program reads them.
QString fileFormat(const QString& path)
{
    const bool table = rawColumn(path, QStringLiteral("SELECT name FROM sqlite_master WHERE name = 'compound_peaks'")).size() == 1;
    return QString::number(pragma(path, QStringLiteral("user_version"))) + QLatin1String(table ? " with compound_peaks" : "");
}

// Writes in one batch a compound list holding compounds named "C0", "C1"...
// with these detections; the ids of the list and its compounds, or none.
QList<qint64> writeCompounds(TDatabase* db, const QList<QList<qint64>>& compounds)
{
    QList<qint64> ids{db->beginBatch() ? db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("List")) : 0};
    for (const QList<qint64>& pds : compounds) {
        ids << db->addObject(KAObjectTypeCompound, ids.first(), QStringLiteral("C%1").arg(ids.size() - 1));
        for (qint64 pd : pds)
            db->addCompoundPeakDetect(ids.last(), pd);
    }
    return db->commitBatch() ? ids : QList<qint64>();
}

} // namespace

// Compounds of the project database: their lists of peak detections across
// reopening and across projects, their edits and signals, the upgrade of
// files of the first format, and what the sample generator writes.
class TestTCompound : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;

    // A generated project without compounds, in the sub-folder `name`.
    QString makeBase(const QString& name)
    {
        TSampleGenerator::Options options = smallOptions();
        options.compoundLists = 0;
        return m_fixture->makeProject(name, options);
    }

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture.reset(new TestFixture); MessageLoggerInterface::returnMe()->clear(); }
    void cleanup() { m_fixture.reset(); }

    // Entries keep the order given: out of database order, a detection shared
    // by two compounds or listed twice in one, a compound that had none,
    // detections and compounds since deleted. Read back, they are as they
    // were, and a new entry still goes after the last one kept.
    void entriesEditedAndReadBack()
    {
        const QString folder = makeBase(QStringLiteral("Entries"));
        auto opened = openFolder(folder);
        TDatabase* db = opened->db.get();
        const QStringList p = plainPeakDetects(db);
        QVERIFY(p.size() >= 7);
        auto pd = [&](int i) { return p.at(i).toLongLong(); };
        const QList<qint64> ids = writeCompounds(db, {{pd(4), pd(1), pd(3), pd(1)}, {pd(3), pd(0)}, {pd(3), pd(2)}, {}});
        QCOMPARE(ids.size(), 5);
        const TCompoundAbstract* c = compound(db, ids.at(1));
        QVERIFY(db->compoundAddPeakDetect(compound(db, ids.at(4)), peakDetect(db, pd(5))));
        QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pd(2))));
        QCOMPARE(entries(c), QStringList({p[4], p[1], p[3], p[1], p[2]}).join(QLatin1Char(',')));
        // A detection listed twice leaves the list entirely; then there is
        // nothing left to remove. The shared one stays in the other compound.
        QVERIFY(db->compoundRemovePeakDetect(c, peakDetect(db, pd(1))) && !db->compoundRemovePeakDetect(c, peakDetect(db, pd(1))));
        QVERIFY(db->compoundRemovePeakDetect(c, peakDetect(db, pd(3))) && peakDetect(db, pd(3)));
        // Positions now have gaps; the next entry goes after the last.
        QVERIFY(db->compoundAddPeakDetect(c, peakDetect(db, pd(6))));
        // A deleted detection leaves a null entry, even once a newer object
        // exists: the newest object's id is not given again.
        const qint64 signal = db->objectById(pd(0))->parentObject()->id();
        QVERIFY(db->beginBatch());
        const qint64 newest = db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Newest"));
        QVERIFY(db->commitBatch() && db->compoundAddPeakDetect(compound(db, ids.at(2)), peakDetect(db, newest)));
        QVERIFY(db->deleteObject(db->objectById(pd(0)), true) && db->deleteObject(db->objectById(newest), true));
        QVERIFY(db->beginBatch() && db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Replacement")) != newest);
        QVERIFY(db->commitBatch());
        // A compound deleted takes its entries with it, not their detections.
        QVERIFY(db->deleteObject(db->objectById(ids.at(3)), true) && peakDetect(db, pd(2)));
        const QString orphans = QStringLiteral("SELECT COUNT(*) FROM compound_peaks WHERE compound NOT IN (SELECT id FROM objects)");
        QCOMPARE(rawColumn(TDatabase::databasePath(folder), orphans), QStringList{QStringLiteral("0")});
        const QString expected = QStringLiteral("C0:%1,%2,%3 C1:%4,0,0 C3:%5").arg(p[4], p[2], p[6], p[3], p[5]);
        QCOMPARE(compoundState(db), expected);
        const QString objects = describe(db);
        opened.reset();
        opened = openFolder(folder);
        db = opened->db.get();
        QVERIFY2(db, qPrintable(opened->error));
        QCOMPARE(describe(db), objects);
        QCOMPARE(compoundState(db), expected);
        QVERIFY(db->compoundAddPeakDetect(compound(db, ids.at(1)), peakDetect(db, pd(1))));
        QCOMPARE(entries(compound(db, ids.at(1))), QStringList({p[4], p[2], p[6], p[1]}).join(QLatin1Char(',')));
    }

    void otherProjectResolvesWhileOpen_data()
    {
        QTest::addColumn<bool>("moveWorkspace");
        QTest::newRow("in place") << false;
        QTest::newRow("workspace moved") << true;
    }

    // Both projects are generated alike, so their detections share ids: only
    // the database an entry resolves in tells them apart. Another project is
    // named by its folder relative to this one, and resolves only while open.
    void otherProjectResolvesWhileOpen()
    {
        QFETCH(bool, moveWorkspace);
        QString home = makeBase(QStringLiteral("ws/Home")), other = makeBase(QStringLiteral("ws/Other project"));
        auto homeDb = openFolder(home);
        auto otherDb = openFolder(other);
        TDatabase* h = homeDb->db.get();
        const QStringList own = plainPeakDetects(h), foreign = plainPeakDetects(otherDb->db.get());
        // Through the batch and through the live edit, between detections of
        // this project.
        const QList<qint64> ids = writeCompounds(h, {{own[0].toLongLong()}});
        QVERIFY(h->beginBatch() && h->addCompoundPeakDetect(ids.at(1), foreign[2].toLongLong(), other));
        QVERIFY(h->addCompoundPeakDetect(ids.at(1), own[1].toLongLong()) && h->commitBatch());
        QVERIFY(h->compoundAddPeakDetect(compound(h, ids.at(1)), peakDetect(otherDb->db.get(), foreign[3].toLongLong())));
        const QString all = QStringLiteral("%1@0,%2@1,%3@0,%4@1").arg(own[0], foreign[2], own[1], foreign[3]);
        QCOMPARE(entries(compound(h, ids.at(1)), {h, otherDb->db.get()}), all);
        QCOMPARE(rawColumn(TDatabase::databasePath(home), QStringLiteral("SELECT project FROM compound_peaks ORDER BY position")),
                 (QStringList{QString(), QStringLiteral("../Other project"), QString(), QStringLiteral("../Other project")}));
        homeDb.reset();
        otherDb.reset();
        if (moveWorkspace) {
            QVERIFY(QDir(m_fixture->path()).rename(QStringLiteral("ws"), QStringLiteral("moved")));
            home = m_fixture->filePath(QStringLiteral("moved/Home"));
            other = m_fixture->filePath(QStringLiteral("moved/Other project"));
        }
        homeDb = openFolder(home);
        QVERIFY2(homeDb->db, qPrintable(homeDb->error));
        const TCompoundAbstract* c = compound(homeDb->db.get(), ids.at(1));
        const QString unresolved = QStringLiteral("%1,0,%2,0").arg(own[0], own[1]);
        QCOMPARE(entries(c), unresolved);
        otherDb = openFolder(other, true);
        QVERIFY2(otherDb->db, qPrintable(otherDb->error));
        QCOMPARE(entries(c, {homeDb->db.get(), otherDb->db.get()}), all);
        otherDb.reset();
        QVERIFY(!TDatabase::openDatabase(other));
        QCOMPARE(entries(c), unresolved);
    }

    // In the order of the projects given, each project once, closed projects
    // and null entries skipped; database order runs across lists.
    void allCompoundsOfProjects()
    {
        auto a = openFolder(makeBase(QStringLiteral("A")));
        auto b = openFolder(makeBase(QStringLiteral("B")));
        auto c = openFolder(makeBase(QStringLiteral("C")));
        QVERIFY(writeCompounds(a->db.get(), {{}, {}}).size() == 3 && writeCompounds(b->db.get(), {{}}).size() == 2);
        QVERIFY(writeCompounds(a->db.get(), {{}}).size() == 2 && writeCompounds(c->db.get(), {{}}).size() == 2);
        QVERIFY(b->db->objectRename(b->db->getObjectLst(KAObjectTypeCompound).first(), QStringLiteral("B0")));
        c->db.reset();
        auto names = [](const QList<const KAObject2Project*>& projects) {
            QStringList result;
            for (const TCompoundAbstract* compound : TDatabase::getAllCompoundinDB(projects))
                result << compound->name();
            return result.join(QLatin1Char(' '));
        };
        const KAObject2Project *pa = a->project.get(), *pb = b->project.get();
        QCOMPARE(names({pb, pa}), QStringLiteral("B0 C0 C1 C0"));
        QCOMPARE(names({pa, pb, pa, pb}), QStringLiteral("C0 C1 C0 B0"));
        QCOMPARE(names({c->project.get(), nullptr, pb, c->project.get(), pa}), QStringLiteral("B0 C0 C1 C0"));
    }

    // A batch of entries alone and a renamed detection are changes of
    // compounds, a renamed well is not. Read-only, entry edits are refused
    // and change nothing, in memory or on disk.
    void entryEditsSignalledOrRefused()
    {
        const QString folder = makeBase(QStringLiteral("Edits"));
        auto opened = openFolder(folder);
        TDatabase* db = opened->db.get();
        const QStringList p = plainPeakDetects(db);
        const QList<qint64> ids = writeCompounds(db, {{p[0].toLongLong(), p[1].toLongLong()}});
        QSignalSpy changed(db, &TDatabase::compoundsChanged);
        QVERIFY(db->objectRename(db->getObjectLst(KAObjectTypeWell).first(), QStringLiteral("Renamed")));
        QCOMPARE(changed.count(), 0);
        QVERIFY(db->beginBatch() && db->addCompoundPeakDetect(ids.at(1), p[3].toLongLong()) && db->commitBatch());
        QVERIFY(db->objectRename(db->objectById(p[0].toLongLong()), QStringLiteral("Renamed")));
        QCOMPARE(changed.count(), 2);
        opened.reset();
        const FolderSnapshot file(folder);
        opened = openFolder(folder, true);
        db = opened->db.get();
        const QString before = describe(db) + compoundState(db);
        QSignalSpy refused(db, &TDatabase::compoundsChanged);
        QVERIFY(!db->compoundAddPeakDetect(compound(db, ids.at(1)), peakDetect(db, p[2].toLongLong())));
        QVERIFY(!db->compoundRemovePeakDetect(compound(db, ids.at(1)), peakDetect(db, p[0].toLongLong())));
        QVERIFY(loggedContaining(QStringLiteral("is open read-only")));
        QCOMPARE(refused.count(), 0);
        QCOMPARE(describe(db) + compoundState(db), before);
        opened.reset();
        QVERIFY(file.unchanged());
    }

    void fileWithoutCompoundTable_data()
    {
        // The version the file is left with, and how its first compound
        // entry is written: none when the file is opened read-only.
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("entry");
        QTest::newRow("first format, read-only") << 1 << QString();
        QTest::newRow("first format, live edit") << 1 << QStringLiteral("live");
        QTest::newRow("first format, batch") << 1 << QStringLiteral("batch");
        QTest::newRow("current format, read-only") << int(TDatabase::SchemaVersion) << QString();
    }

    // A generated project, compound objects included, without its compound
    // table. In the first format, as an older version of the application
    // left it, the file stays readable by that version until its first
    // compound entry, which brings the table and the current format in its
    // own transaction. In the current format the file is damaged and refused.
    void fileWithoutCompoundTable()
    {
        QFETCH(int, version);
        QFETCH(QString, entry);
        const QString folder = m_fixture->makeProject(QStringLiteral("No compound table"));
        const QString path = TDatabase::databasePath(folder);
        auto opened = openFolder(folder, true);
        const QString objects = describe(opened->db.get());
        QVERIFY(objects.contains(QStringLiteral("600|")));
        opened.reset();
        rawSql(path, {QStringLiteral("DROP TABLE compound_peaks"), QStringLiteral("PRAGMA user_version = %1").arg(version)});
        QCOMPARE(fileFormat(path), QString::number(version));
        const FolderSnapshot file(folder);
        opened = openFolder(folder, entry.isEmpty());
        TDatabase* db = opened->db.get();
        if (version != 1) {
            QVERIFY(!db && !opened->project->db() && !TDatabase::openDatabase(folder));
            QVERIFY2(opened->error.contains(QStringLiteral("is damaged (table compound_peaks missing)"))
                         && opened->error.contains(QDir::toNativeSeparators(path)), qPrintable(opened->error));
            QVERIFY(file.unchanged());
            return;
        }
        QVERIFY2(db, qPrintable(opened->error));
        QCOMPARE(describe(db), objects);
        const QList<const TCompoundAbstract*> compounds = TDatabase::getAllCompoundinDB({opened->project.get()});
        for (const TCompoundAbstract* compound : compounds)
            QVERIFY(compound->getPeakDetectList().isEmpty());
        const TCompoundAbstract* target = compounds.first();
        if (entry.isEmpty()) {
            opened.reset();
            QVERIFY(file.unchanged());
            return;
        }
        // Other edits and a batch without entries leave the format alone; an
        // abandoned batch takes its entry and the table back with it.
        QVERIFY(db->objectRename(db->getObjectLst(KAObjectTypeWell).first(), QStringLiteral("Renamed well")));
        QCOMPARE(writeCompounds(db, {{}}).size(), 2);
        const qint64 pd = plainPeakDetects(db).first().toLongLong();
        QVERIFY(db->beginBatch() && db->addCompoundPeakDetect(target->id(), pd));
        db->rollbackBatch();
        QCOMPARE(fileFormat(path) + entries(target), QStringLiteral("1"));
        if (entry == QLatin1String("live"))
            QVERIFY(db->compoundAddPeakDetect(target, peakDetect(db, pd)));
        else
            QVERIFY(db->beginBatch() && db->addCompoundPeakDetect(target->id(), pd) && db->commitBatch());
        QCOMPARE(fileFormat(path), QStringLiteral("%1 with compound_peaks").arg(TDatabase::SchemaVersion));
        QCOMPARE(entries(target), QString::number(pd));
        const QString edited = describe(db) + compoundState(db);
        opened.reset();
        opened = openFolder(folder, true);
        QVERIFY2(opened->db, qPrintable(opened->error));
        QCOMPARE(describe(opened->db.get()) + compoundState(opened->db.get()), edited);
    }

    // What the generator promises: in the first list the first two compounds
    // share a detection and the last holds only work detections; in the
    // second the first compound has none and the second also names
    // detections of the previous project of the run, beside its own.
    void sampleGeneratorCompounds()
    {
        TSampleGenerator::Options options = TestFixture::smallOptions();
        options.projects = 3;
        options.seed = 3;
        const QStringList folders = TSampleGenerator::generate(m_fixture->path(), options);
        std::vector<std::unique_ptr<Opened>> projects;
        for (int p = 0; p < 3; ++p) {
            projects.push_back(openFolder(folders.value(p), true));
            const TDatabase* db = projects.back()->db.get();
            const QList<const KAObject2*> lists = db->getObjectLst(KAObjectTypeCompoundList);
            QCOMPARE(lists.size(), 2);
            QCOMPARE(lists.at(0)->name() + QLatin1Char('|') + lists.at(1)->name(), QStringLiteral("Target compounds|Composés étalons"));
            QVERIFY(lists.at(0)->children().size() == options.compoundsPerList && lists.at(1)->children().size() == options.compoundsPerList);
            auto pds = [&](int l, int c) { return static_cast<const TCompoundAbstract*>(lists.at(l)->children().at(c))->getPeakDetectList(); };
            const auto first = pds(0, 0), second = pds(0, 1);
            QVERIFY(std::any_of(second.cbegin(), second.cend(), [&](const KAObject2PeakDetect* pd) { return first.contains(pd); }));
            for (int c = 0; c < options.compoundsPerList; ++c) {
                QVERIFY(!pds(0, c).isEmpty());
                for (const KAObject2PeakDetect* pd : pds(0, c))
                    QVERIFY(pd && pd->db() == db && pd->name().startsWith(QLatin1String("tempPD_")) == (c == options.compoundsPerList - 1));
            }
            QVERIFY(pds(1, 0).isEmpty());
            const QString text = entries(static_cast<const TCompoundAbstract*>(lists.at(1)->children().at(1)),
                                         {db, p > 0 ? projects.at(p - 1)->db.get() : nullptr});
            QVERIFY2(text.contains(QLatin1String("@0")) && text.contains(QLatin1String("@1")) == (p > 0) && !text.contains(QLatin1String("@-1"))
                         && !text.split(QLatin1Char(',')).contains(QStringLiteral("0")),
                     qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestTCompound)
#include "tst_tcompound.moc"
