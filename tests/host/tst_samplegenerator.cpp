#include "testfixture.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <memory>

using TechDB::TDatabase;

namespace {

TSampleGenerator::Options options(quint32 seed)
{
    TSampleGenerator::Options o;
    o.projects = 3;
    o.analyses = 6;
    o.signalsPerAnalysis = 2;
    o.peaksPerSignal = 5;
    o.wells = 4;
    o.datasetsPerWell = 2;
    o.variablesPerDataset = 3;
    o.groups = 3;
    o.seed = seed;
    return o;
}

// Everything a reader of the projects can see, as text: folders, headers,
// objects with their parents, sources, flags, links and MS files.
QString dump(const QString& dir, const QStringList& folders)
{
    QStringList lines;
    for (const QString& folder : folders) {
        KAObject2Project project(QString(), folder);
        QString error;
        std::unique_ptr<TDatabase> db(TDatabase::open(&project, true, &error));
        if (!db)
            return error;
        lines << QDir(dir).relativeFilePath(folder) << project.name() << project.description()
              << QString::number(project.projectState());
        for (KAObjectType kind : db->objectTypes()) {
            for (const KAObject2* object : db->getObjectLst(kind)) {
                QString line = QStringLiteral("%1 %2 %3 <%4>").arg(int(kind)).arg(object->id()).arg(object->name(),
                    object->parentObject() ? QString::number(object->parentObject()->id()) : QString());
                if (kind == KAObjectTypePeakDetect)
                    line += QString::number(static_cast<const KAObject2PeakDetect*>(object)->getSource(), 16);
                if (kind == KAObjectTypeIdentificationGroup)
                    line += QString::number(static_cast<const KAObject2IdentificationGroup*>(object)->getSource(), 16);
                if (kind == KAObjectTypeIdentification) {
                    for (const KAObject2PeakDetect* pd : static_cast<const KAObject2Identification*>(object)->workPDList())
                        line += QStringLiteral(" >%1").arg(pd->id());
                }
                if (kind == KAObjectTypeAnalysis) {
                    const auto* analysis = static_cast<const KAObject2Analysis*>(object);
                    line += analysis->isMulticanal() ? QStringLiteral(" multi") : QString();
                    line += QFileInfo::exists(TDatabase::peakDetectMSPath(analysis)) ? QStringLiteral(" ms") : QString();
                    bool found = false;
                    line += QStringLiteral(" op=") + db->getObjectProperties(object, QStringLiteral("Operator"), &found).value();
                }
                lines << line;
            }
        }
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace

class TestSampleGenerator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void sameSeedSameProjects();
    void contentHasWhatTheBrowserDecidesOn();
    void refusesAnExistingProject();

private:
    std::unique_ptr<TestFixture> m_fixture;
};

void TestSampleGenerator::initTestCase()
{
    kaInitTestEnvironment();
}

void TestSampleGenerator::init()
{
    m_fixture.reset(new TestFixture);
}

void TestSampleGenerator::cleanup()
{
    m_fixture.reset();
}

void TestSampleGenerator::sameSeedSameProjects()
{
    QString error;
    const QString a = m_fixture->filePath(QStringLiteral("a"));
    const QString b = m_fixture->filePath(QStringLiteral("b"));
    const QString c = m_fixture->filePath(QStringLiteral("c"));
    const QStringList foldersA = TSampleGenerator::generate(a, options(11), &error);
    QVERIFY2(foldersA.size() == 3, qPrintable(error));
    const QStringList foldersB = TSampleGenerator::generate(b, options(11), &error);
    const QStringList foldersC = TSampleGenerator::generate(c, options(12), &error);
    const QString dumpA = dump(a, foldersA);
    QVERIFY(dumpA.count(QLatin1Char('\n')) > 100);
    QCOMPARE(dump(b, foldersB), dumpA);
    QVERIFY(dump(c, foldersC) != dumpA);
}

void TestSampleGenerator::contentHasWhatTheBrowserDecidesOn()
{
    QString error;
    const TSampleGenerator::Options o = options(5);
    const QStringList folders = TSampleGenerator::generate(m_fixture->path(), o, &error);
    QCOMPARE(folders.size(), 3);
    QCOMPARE(QFileInfo(folders.at(0)).fileName(), QStringLiteral("Project 01 Caffeine"));
    QCOMPARE(QFileInfo(folders.at(2)).fileName(), QStringLiteral("Project 03 Café été"));

    KAObject2Project project(QString(), folders.at(0));
    std::unique_ptr<TDatabase> db(TDatabase::open(&project, true, &error));
    QVERIFY2(db, qPrintable(error));
    QCOMPARE(project.name(), QStringLiteral("Caffeine in beverages"));
    QVERIFY(QFileInfo(TDatabase::settingsPath(folders.at(0))).isDir());

    const QList<const KAObject2*> analyses = db->getObjectLst(KAObjectTypeAnalysis);
    QCOMPARE(analyses.size(), o.analyses);
    QCOMPARE(db->getObjectLst(KAObjectTypeSignal).size(), o.analyses * o.signalsPerAnalysis);
    QCOMPARE(db->getObjectLst(KAObjectTypePeakDetect).size(), o.analyses * o.signalsPerAnalysis * o.peaksPerSignal);
    QCOMPARE(db->getObjectLst(KAObjectTypeIdentificationGroup).size(), o.groups);
    QCOMPARE(db->getObjectLst(KAObjectTypeWell).size(), o.wells);
    QVERIFY(!db->getObjectLst(KAObjectTypeGlobalIndexation).isEmpty());

    bool accent = false, multiWithMs = false, multiWithoutMs = false, single = false;
    for (const KAObject2* object : analyses) {
        const auto* analysis = static_cast<const KAObject2Analysis*>(object);
        accent = accent || analysis->name().contains(QChar(0xE9));
        const bool ms = QFileInfo::exists(TDatabase::peakDetectMSPath(analysis));
        QVERIFY(!ms || analysis->isMulticanal());
        multiWithMs = multiWithMs || (analysis->isMulticanal() && ms);
        multiWithoutMs = multiWithoutMs || (analysis->isMulticanal() && !ms);
        single = single || !analysis->isMulticanal();
    }
    QVERIFY(accent);
    QVERIFY(multiWithMs);
    QVERIFY(multiWithoutMs);
    QVERIFY(single);

    int manual = 0, temp = 0, plain = 0, inGroup = 0;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypePeakDetect)) {
        const auto* pd = static_cast<const KAObject2PeakDetect*>(object);
        const bool flagged = pd->getSource() & 0x200;
        if (pd->name().startsWith(QLatin1String("tempPD_"))) {
            QVERIFY(flagged);
            ++temp;
        } else if (db->getIdentificationGroup(pd)) {
            ++inGroup;
        } else if (flagged) {
            ++manual;
        } else {
            ++plain;
        }
    }
    QVERIFY(manual > 0);
    QVERIFY(temp > 0);
    QVERIFY(plain > 0);
    QVERIFY(inGroup > 0);

    int indexationGroups = 0, identificationGroups = 0;
    for (const KAObject2* object : db->getObjectLst(KAObjectTypeIdentificationGroup)) {
        const auto* group = static_cast<const KAObject2IdentificationGroup*>(object);
        QVERIFY(!group->child().isEmpty());
        (group->getSource() & 0x800 ? indexationGroups : identificationGroups)++;
    }
    QVERIFY(indexationGroups > 0);
    QVERIFY(identificationGroups > 0);

    int empty = 0, filled = 0;
    for (const KAObject2* well : db->getObjectLst(KAObjectTypeWell)) {
        const QList<const KAObject2*> datasets = db->getObjectVisualChildren(KAObjectTypeDataset, well);
        QCOMPARE(datasets, db->datasetList(static_cast<const KAObject2Well*>(well)));
        if (datasets.isEmpty()) {
            ++empty;
            continue;
        }
        ++filled;
        QCOMPARE(datasets.size(), o.datasetsPerWell);
        for (const KAObject2* dataset : datasets)
            QCOMPARE(dataset->children().size(), o.variablesPerDataset);
    }
    QVERIFY(empty > 0);
    QVERIFY(filled > 0);

    // Among the first three projects one is terminated.
    int terminated = 0;
    for (const QString& folder : folders) {
        int state = 0;
        QVERIFY(TDatabase::readProjectHeader(folder, nullptr, nullptr, &state, nullptr));
        terminated += (state == 4 || state == 7) ? 1 : 0;
    }
    QCOMPARE(terminated, 1);
}

void TestSampleGenerator::refusesAnExistingProject()
{
    QString error;
    const QString folder = m_fixture->filePath(QStringLiteral("One"));
    QVERIFY(TSampleGenerator::generateProject(folder, QStringLiteral("One"), options(1), 1, &error));
    QVERIFY(!TSampleGenerator::generateProject(folder, QStringLiteral("One"), options(1), 1, &error));
    QVERIFY(error.contains(QStringLiteral("already exists")));
    QVERIFY(TSampleGenerator::generate(m_fixture->path(), TSampleGenerator::Options(), &error).size() == 3);
    QVERIFY(TSampleGenerator::generate(m_fixture->path(), TSampleGenerator::Options(), &error).isEmpty());
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(TestSampleGenerator)
#include "tst_samplegenerator.moc"
