#include "testfixture.h"

#include "tdatabasetesthelpers.h"

#include "tcompound.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

using namespace DatabaseTest;

Q_DECLARE_METATYPE(QList<const KAObject2*>*)

namespace {

// Compounds by name, each with its detections as ids in order.
using Entries = QList<QPair<QString, QList<qint64>>>;

// A compound's detections as ids in order; 0 stands for an entry that does
// not resolve.
QList<qint64> entryIds(const TCompoundAbstract* compound)
{
    QList<qint64> ids;
    for (const KAObject2PeakDetect* pd : compound->getPeakDetectList())
        ids.append(pd ? pd->id() : 0);
    return ids;
}

// The database each entry resolves in; null where it does not resolve.
QList<const TDatabase*> entryDatabases(const TCompoundAbstract* compound)
{
    QList<const TDatabase*> dbs;
    for (const KAObject2PeakDetect* pd : compound->getPeakDetectList())
        dbs.append(pd ? pd->db() : nullptr);
    return dbs;
}

QString text(const Entries& entries)
{
    QStringList lines;
    for (const auto& entry : entries) {
        QStringList ids;
        for (qint64 id : entry.second)
            ids.append(QString::number(id));
        lines.append(entry.first + QLatin1Char(':') + ids.join(QLatin1Char(',')));
    }
    return lines.join(QLatin1Char('\n'));
}

// Every compound of a database with its entries, in database order; a
// compound loaded as another class reads as "-1".
QString compoundState(const TDatabase* db)
{
    Entries entries;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeCompound)) {
        const auto* compound = dynamic_cast<const TCompound*>(object);
        entries.append({object->name(), compound ? entryIds(compound) : QList<qint64>{-1}});
    }
    return text(entries);
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

QList<qint64> pick(const QList<qint64>& ids, std::initializer_list<int> indexes)
{
    QList<qint64> picked;
    for (int index : indexes)
        picked.append(ids.at(index));
    return picked;
}

QStringList names(const QList<const TCompoundAbstract*>& compounds)
{
    QStringList result;
    for (const TCompoundAbstract* compound : compounds)
        result.append(compound->name());
    return result;
}

// The version a file declares and whether it holds the compound table, as
// another program reads them.
QString fileFormat(const QString& path)
{
    const bool table = rawColumn(path, QStringLiteral("SELECT name FROM sqlite_master WHERE name = 'compound_peaks'"))
                           .size() == 1;
    return QString::number(pragma(path, QStringLiteral("user_version")))
        + (table ? QStringLiteral(" with compound_peaks") : QString());
}

// Writes a compound list of the compounds of `entries` in one batch; the ids
// of the list and of its compounds, or the list's alone on failure.
QList<qint64> writeCompounds(TDatabase* db, const QString& list, const Entries& entries)
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

// One edit of a project holding list `ids[0]` with compound `ids[1]` of
// detections 0 and 1; false when the database refused it.
bool applyEdit(TDatabase* db, const QString& edit, const QList<qint64>& ids, const QList<qint64>& pds)
{
    const auto* compound = static_cast<const TCompoundAbstract*>(db->objectById(ids.at(1)));
    const QString what = edit.section(QLatin1Char(' '), 1);
    const KAObject2* target = what == QLatin1String("compound") ? compound
        : what == QLatin1String("list")                         ? db->objectById(ids.at(0))
        : what == QLatin1String("peak")                         ? db->objectById(pds.at(0))
        : what == QLatin1String("analysis")                     ? db->getObjectLst(KAObjectTypeAnalysis).first()
                                                                : db->getObjectLst(KAObjectTypeWell).first();
    if (edit == QLatin1String("add"))
        return db->compoundAddPeakDetect(compound, peakDetect(db, pds.at(2)));
    if (edit == QLatin1String("remove"))
        return db->compoundRemovePeakDetect(compound, peakDetect(db, pds.at(0)));
    if (edit.startsWith(QLatin1String("rename")))
        return db->objectRename(target, QStringLiteral("Renamed"));
    if (edit.startsWith(QLatin1String("delete")))
        return db->deleteObject(target, true);
    bool ok = db->beginBatch();
    if (edit == QLatin1String("batch list")) {
        const qint64 newList = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("New list"));
        ok = ok && db->addObject(KAObjectTypeCompound, newList, QStringLiteral("New compound"));
    } else if (edit == QLatin1String("batch entries")) {
        ok = ok && db->addCompoundPeakDetect(compound->id(), pds.at(2));
    } else {
        const qint64 newWell = db->addObject(KAObjectTypeWell, 0, QStringLiteral("New well"));
        ok = ok && db->addObject(KAObjectTypeDataset, newWell, QStringLiteral("New dataset"));
    }
    return db->commitBatch() && ok;
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

    void entriesEditedAndReadBack();
    void otherProjectResolvesWhileOpen_data();
    void otherProjectResolvesWhileOpen();
    void allCompoundsOfProjects();
    void editsSignalledOrRefused_data();
    void editsSignalledOrRefused();
    void fileWithoutCompoundTable_data();
    void fileWithoutCompoundTable();
    void sampleGeneratorCompounds();

private:
    // A generated project without compounds, in the sub-folder `name`.
    QString makeBase(const QString& name)
    {
        TSampleGenerator::Options options = smallOptions();
        options.compoundLists = 0;
        return m_fixture->makeProject(name, options);
    }
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
}

void TestTCompound::cleanup()
{
    m_fixture.reset();
}

// Entries written by a batch and by live edits keep the order given: out of
// database order, a detection shared by two compounds, one listed twice in
// the same compound, a compound that had none, detections since deleted,
// compounds and lists since deleted. Read back, they are as they were, and
// a new entry still goes after the last one kept.
void TestTCompound::entriesEditedAndReadBack()
{
    const QString folder = makeBase(QStringLiteral("Entries"));
    auto opened = openFolder(folder);
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    const QList<qint64> pds = plainPeakDetects(db);
    QVERIFY(pds.size() >= 7);
    const QList<qint64> ids = writeCompounds(db, QStringLiteral("Targets"),
                                             {{QStringLiteral("Caffeine"), pick(pds, {4, 1, 3, 1})},
                                              {QStringLiteral("Theobromine"), pick(pds, {3, 0})},
                                              {QStringLiteral("Doomed"), pick(pds, {3, 2})},
                                              {QStringLiteral("Empty"), {}}});
    const QList<qint64> dropped = writeCompounds(db, QStringLiteral("Dropped"),
                                                 {{QStringLiteral("Gone"), pick(pds, {3})}});
    QCOMPARE(ids.size() + dropped.size(), 7);
    const TCompoundAbstract* c = compoundNamed(db, QStringLiteral("Caffeine"));
    auto add = [&](const TCompoundAbstract* compound, int pd) {
        return db->compoundAddPeakDetect(compound, peakDetect(db, pds.at(pd)));
    };
    QVERIFY(add(compoundNamed(db, QStringLiteral("Empty")), 5));
    QVERIFY(add(c, 2));
    QCOMPARE(entryIds(c), pick(pds, {4, 1, 3, 1, 2}));
    // A detection listed twice leaves the list entirely; then there is
    // nothing left to remove.
    QVERIFY(db->compoundRemovePeakDetect(c, peakDetect(db, pds.at(1))));
    QVERIFY(!db->compoundRemovePeakDetect(c, peakDetect(db, pds.at(1))));
    QCOMPARE(entryIds(c), pick(pds, {4, 3, 2}));
    // The shared detection stays, in its signal and in the other compound.
    const KAObject2PeakDetect* shared = peakDetect(db, pds.at(3));
    QVERIFY(db->compoundRemovePeakDetect(c, shared));
    QCOMPARE(db->objectById(pds.at(3)), shared);
    // Positions now have gaps; the next entry goes after the last.
    QVERIFY(add(c, 6));
    // A deleted detection leaves a null entry, even once a newer object
    // exists: the newest object's id is not given again.
    const qint64 signal = db->objectById(pds.at(0))->parentObject()->id();
    QVERIFY(db->beginBatch());
    const qint64 newest = db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Newest"));
    QVERIFY(db->commitBatch());
    QVERIFY(db->compoundAddPeakDetect(compoundNamed(db, QStringLiteral("Theobromine")), peakDetect(db, newest)));
    QVERIFY(db->deleteObject(db->objectById(pds.at(0)), true));
    QVERIFY(db->deleteObject(db->objectById(newest), true));
    QVERIFY(db->beginBatch());
    QVERIFY(db->addObject(KAObjectTypePeakDetect, signal, QStringLiteral("Replacement")) != newest);
    QVERIFY(db->commitBatch());
    // A compound or a list deleted takes its entries with it, not their
    // detections.
    QVERIFY(db->deleteObject(db->objectById(ids.at(3)), true));
    QVERIFY(db->deleteObject(db->objectById(dropped.at(0)), true));
    const QString orphans = QStringLiteral(
        "SELECT COUNT(*) FROM compound_peaks WHERE compound NOT IN (SELECT id FROM objects)");
    QCOMPARE(rawColumn(TDatabase::databasePath(folder), orphans), QStringList{QStringLiteral("0")});
    const Entries expected = {{QStringLiteral("Caffeine"), pick(pds, {4, 2, 6})},
                              {QStringLiteral("Theobromine"), {pds.at(3), 0, 0}},
                              {QStringLiteral("Empty"), pick(pds, {5})}};
    QCOMPARE(compoundState(db), text(expected));
    const QString objects = describe(db);

    opened.reset();
    opened = openFolder(folder);
    db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(describe(db), objects);
    QCOMPARE(compoundState(db), text(expected));
    QVERIFY(add(compoundNamed(db, QStringLiteral("Caffeine")), 1));
    QCOMPARE(entryIds(compoundNamed(db, QStringLiteral("Caffeine"))), pick(pds, {4, 2, 6, 1}));
}

void TestTCompound::otherProjectResolvesWhileOpen_data()
{
    QTest::addColumn<bool>("moveWorkspace");
    QTest::newRow("in place") << false;
    QTest::newRow("workspace moved") << true;
}

// Both projects are generated alike, so their detections share ids: only
// the database an entry resolves in tells them apart.
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
    QCOMPARE(entryDatabases(compound).at(1), otherDb->db.get());
    // Another project is named by its folder relative to this one.
    QCOMPARE(rawColumn(TDatabase::databasePath(home),
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
    QCOMPARE(entryIds(compound), all);
    const TDatabase* h = homeDb->db.get();
    const TDatabase* o = otherDb->db.get();
    QCOMPARE(entryDatabases(compound), (QList<const TDatabase*>{h, o, h, o}));

    otherDb.reset();
    QCOMPARE(TDatabase::openDatabase(other), nullptr);
    QCOMPARE(entryIds(compound), unresolved);
}

void TestTCompound::allCompoundsOfProjects()
{
    auto a = openFolder(makeBase(QStringLiteral("A")));
    auto b = openFolder(makeBase(QStringLiteral("B")));
    auto c = openFolder(makeBase(QStringLiteral("C")));
    QVERIFY(a->db && b->db && c->db);
    // Two lists in A: database order runs across them.
    const QString a1 = QStringLiteral("A1"), a2 = QStringLiteral("A2");
    const QString b1 = QStringLiteral("B1"), b2 = QStringLiteral("B2");
    QCOMPARE(writeCompounds(a->db.get(), QStringLiteral("First"), {{a1, {}}, {a2, {}}}).size(), 3);
    QCOMPARE(writeCompounds(b->db.get(), QStringLiteral("Only"), {{b1, {}}, {b2, {}}}).size(), 3);
    QCOMPARE(writeCompounds(a->db.get(), QStringLiteral("Second"), {{QStringLiteral("A3"), {}}}).size(), 2);
    QCOMPARE(writeCompounds(c->db.get(), QStringLiteral("Closed"), {{QStringLiteral("C1"), {}}}).size(), 2);
    c->db.reset();

    // The order given, each project once, closed projects and null entries
    // skipped.
    const KAObject2Project* pa = a->project.get();
    const KAObject2Project* pb = b->project.get();
    const QStringList inA = {a1, a2, QStringLiteral("A3")};
    const QStringList inB = {b1, b2};
    QCOMPARE(names(TDatabase::getAllCompoundinDB({pb, pa})), inB + inA);
    QCOMPARE(names(TDatabase::getAllCompoundinDB({pa, pb, pa, pb})), inA + inB);
    QCOMPARE(names(TDatabase::getAllCompoundinDB({c->project.get(), nullptr, pb, c->project.get(), pa})), inB + inA);
}

void TestTCompound::editsSignalledOrRefused_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<bool>("compoundsChanged");
    QTest::newRow("batch with a compound list") << QStringLiteral("batch list") << false << true;
    QTest::newRow("batch with entries only") << QStringLiteral("batch entries") << false << true;
    QTest::newRow("batch without compounds") << QStringLiteral("batch well") << false << false;
    QTest::newRow("add detection") << QStringLiteral("add") << false << true;
    QTest::newRow("remove detection") << QStringLiteral("remove") << false << true;
    QTest::newRow("rename compound") << QStringLiteral("rename compound") << false << true;
    QTest::newRow("rename compound list") << QStringLiteral("rename list") << false << true;
    QTest::newRow("rename peak detection") << QStringLiteral("rename peak") << false << true;
    QTest::newRow("rename well") << QStringLiteral("rename well") << false << false;
    QTest::newRow("delete compound list") << QStringLiteral("delete list") << false << true;
    QTest::newRow("delete analysis") << QStringLiteral("delete analysis") << false << true;
    QTest::newRow("delete well") << QStringLiteral("delete well") << false << false;
    QTest::newRow("read-only: add detection") << QStringLiteral("add") << true << false;
    QTest::newRow("read-only: remove detection") << QStringLiteral("remove") << true << false;
    QTest::newRow("read-only: rename compound") << QStringLiteral("rename compound") << true << false;
    QTest::newRow("read-only: delete compound list") << QStringLiteral("delete list") << true << false;
}

void TestTCompound::editsSignalledOrRefused()
{
    QFETCH(QString, edit);
    QFETCH(bool, readOnly);
    QFETCH(bool, compoundsChanged);
    const QString folder = makeBase(QStringLiteral("Edits"));
    auto opened = openFolder(folder);
    const QList<qint64> pds = plainPeakDetects(opened->db.get());
    const QList<qint64> ids = writeCompounds(opened->db.get(), QStringLiteral("L"),
                                             {{QStringLiteral("C"), pick(pds, {0, 1})}});
    QCOMPARE(ids.size(), 2);
    opened.reset();
    const FolderSnapshot file(folder);
    opened = openFolder(folder, readOnly);
    TDatabase* db = opened->db.get();
    QVERIFY2(db, qPrintable(opened->error));
    const QString objects = describe(db);
    const QString compounds = compoundState(db);
    QSignalSpy compoundSpy(db, &TDatabase::compoundsChanged);
    QSignalSpy objectSpy(db, &TDatabase::objectsChanged);
    QSignalSpy deleting(db, &TDatabase::aboutToDeleteObjects);

    QCOMPARE(applyEdit(db, edit, ids, pds), !readOnly);
    QCOMPARE(compoundSpy.count(), compoundsChanged ? 1 : 0);
    if (!readOnly) {
        // Object edits are announced as such whatever they touch.
        if (edit != QLatin1String("add") && edit != QLatin1String("remove"))
            QCOMPARE(objectSpy.count(), 1);
        return;
    }
    QVERIFY(loggedContaining(QStringLiteral("is open read-only")));
    QCOMPARE(deleting.count(), 0);
    QCOMPARE(describe(db), objects);
    QCOMPARE(compoundState(db), compounds);
    opened.reset();
    QVERIFY(file.unchanged());
}

void TestTCompound::fileWithoutCompoundTable_data()
{
    // The version the file is left with, and how its first compound entry
    // is written: none when the file is opened read-only.
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("entry");
    QTest::newRow("first format, read-only") << 1 << QString();
    QTest::newRow("first format, live edit") << 1 << QStringLiteral("live");
    QTest::newRow("first format, batch") << 1 << QStringLiteral("batch");
    QTest::newRow("current format, read-only") << int(TDatabase::SchemaVersion) << QString();
    QTest::newRow("current format, for writing") << int(TDatabase::SchemaVersion) << QStringLiteral("live");
}

// A generated project, compound objects included, without its compound
// table. In the first format, as an older version of the application left
// it, the file stays readable by that version until its first compound
// entry, which brings the table and the current format in its own
// transaction. In the current format the file is damaged and refused.
void TestTCompound::fileWithoutCompoundTable()
{
    QFETCH(int, version);
    QFETCH(QString, entry);
    const bool readOnly = entry.isEmpty();
    const QString folder = m_fixture->makeProject(QStringLiteral("No compound table"));
    QVERIFY(!folder.isEmpty());
    const QString path = TDatabase::databasePath(folder);
    auto opened = openFolder(folder, true);
    QVERIFY(!opened->db->getObjectLst(KAObjectTypeCompound).isEmpty());
    const QString objects = describe(opened->db.get());
    opened.reset();
    rawSql(path,
           {QStringLiteral("DROP TABLE compound_peaks"), QStringLiteral("PRAGMA user_version = %1").arg(version)});
    const QString firstFormat = QStringLiteral("1");
    QCOMPARE(fileFormat(path), QString::number(version));
    const FolderSnapshot file(folder);

    opened = openFolder(folder, readOnly);
    TDatabase* db = opened->db.get();
    if (version != 1) {
        QVERIFY(!db);
        QVERIFY2(opened->error.contains(QStringLiteral("is damaged (table compound_peaks missing)")),
                 qPrintable(opened->error));
        QVERIFY2(opened->error.contains(QDir::toNativeSeparators(path)), qPrintable(opened->error));
        QCOMPARE(opened->project->db(), nullptr);
        QCOMPARE(TDatabase::openDatabase(folder), nullptr);
        QVERIFY(file.unchanged());
        return;
    }
    QVERIFY2(db, qPrintable(opened->error));
    QCOMPARE(describe(db), objects);
    const QList<const TCompoundAbstract*> compounds = TDatabase::getAllCompoundinDB({opened->project.get()});
    for (const TCompoundAbstract* compound : compounds)
        QVERIFY(compound->getPeakDetectList().isEmpty());
    if (readOnly) {
        opened.reset();
        QVERIFY(file.unchanged());
        return;
    }

    // Opening for writing, other edits and a batch without entries leave
    // the format alone.
    QVERIFY(db->objectRename(db->getObjectLst(KAObjectTypeWell).first(), QStringLiteral("Renamed well")));
    QVERIFY(db->beginBatch());
    const qint64 list = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("Later list"));
    QVERIFY(list && db->addObject(KAObjectTypeCompound, list, QStringLiteral("Without entries")));
    QVERIFY(db->commitBatch());
    QCOMPARE(fileFormat(path), firstFormat);
    // An abandoned batch takes its entry and the table back with it.
    const TCompoundAbstract* target = compounds.first();
    const qint64 pd = plainPeakDetects(db).first();
    QVERIFY(db->beginBatch());
    QVERIFY(db->addCompoundPeakDetect(target->id(), pd));
    db->rollbackBatch();
    QCOMPARE(fileFormat(path), firstFormat);
    QVERIFY(entryIds(target).isEmpty());

    if (entry == QLatin1String("live")) {
        QVERIFY(db->compoundAddPeakDetect(target, peakDetect(db, pd)));
    } else {
        QVERIFY(db->beginBatch());
        QVERIFY(db->addCompoundPeakDetect(target->id(), pd));
        QVERIFY(db->commitBatch());
    }
    QCOMPARE(fileFormat(path), QStringLiteral("%1 with compound_peaks").arg(TDatabase::SchemaVersion));
    QCOMPARE(entryIds(target), QList<qint64>{pd});
    const QString edited = describe(db);
    const QString entries = compoundState(db);
    opened.reset();
    opened = openFolder(folder, true);
    QVERIFY2(opened->db, qPrintable(opened->error));
    QCOMPARE(describe(opened->db.get()), edited);
    QCOMPARE(compoundState(opened->db.get()), entries);
}

// What the generator promises: in the first list the first two compounds
// share a detection and the last holds only work detections; in the second
// the first compound has none and the second also names detections of the
// previous project of the run.
void TestTCompound::sampleGeneratorCompounds()
{
    TSampleGenerator::Options options = TestFixture::smallOptions();
    options.projects = 3;
    options.seed = 3;
    const QStringList folders = TSampleGenerator::generate(m_fixture->path(), options);
    QCOMPARE(folders.size(), 3);
    std::vector<std::unique_ptr<Opened>> projects;
    for (int p = 0; p < 3; ++p) {
        projects.push_back(openFolder(folders.at(p), true));
        const TDatabase* db = projects.back()->db.get();
        QVERIFY2(db, qPrintable(projects.back()->error));
        const QList<const KAObject2*> lists = db->getObjectLst(KAObjectTypeCompoundList);
        QCOMPARE(lists.size(), 2);
        QCOMPARE(lists.at(0)->name(), QStringLiteral("Target compounds"));
        QCOMPARE(lists.at(1)->name(), QStringLiteral("Composés étalons"));
        QCOMPARE(lists.at(0)->children().size(), options.compoundsPerList);
        QCOMPARE(lists.at(1)->children().size(), options.compoundsPerList);
        auto entries = [&](int list, int compound) {
            return static_cast<const TCompoundAbstract*>(lists.at(list)->children().at(compound))->getPeakDetectList();
        };
        const auto second = entries(0, 1);
        QVERIFY(std::any_of(second.cbegin(), second.cend(),
                            [&](const KAObject2PeakDetect* pd) { return entries(0, 0).contains(pd); }));
        for (int c = 0; c < options.compoundsPerList; ++c) {
            const bool work = c == options.compoundsPerList - 1;
            QVERIFY(!entries(0, c).isEmpty());
            for (const KAObject2PeakDetect* pd : entries(0, c)) {
                QVERIFY(pd && pd->db() == db);
                QVERIFY2(pd->name().startsWith(QLatin1String("tempPD_")) == work, qPrintable(pd->name()));
            }
        }
        QVERIFY(entries(1, 0).isEmpty());
        const QList<const TDatabase*> dbs =
            entryDatabases(static_cast<const TCompoundAbstract*>(lists.at(1)->children().at(1)));
        const int foreign = dbs.size() - dbs.count(db);
        QCOMPARE(foreign > 0, p > 0);
        QVERIFY(dbs.size() > foreign);
        if (p > 0)
            QCOMPARE(dbs.count(projects.at(p - 1)->db.get()), foreign);
    }
}

QTEST_GUILESS_MAIN(TestTCompound)
#include "tst_tcompound.moc"
