#include "testfixture.h"

#include "kaobject2analysis.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "tdatabase.h"

#include <QDirIterator>
#include <QTest>

using TechDB::TDatabase;

// Every file below a folder with its bytes, by relative path.
static QMap<QString, QByteArray> filesBelow(const QString& root)
{
    QMap<QString, QByteArray> files;
    for (QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();) {
        QFile file(it.next());
        files.insert(QDir(root).relativeFilePath(file.fileName()), file.open(QIODevice::ReadOnly) ? file.readAll() : "?");
    }
    return files;
}

class TestSampleGenerator : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;
    TSampleGenerator::Options m_options = TestFixture::smallOptions();

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture.reset(new TestFixture); }
    void cleanup() { m_fixture.reset(); }

    // Tests, benchmarks and the demo rely on it: the same seed writes the same
    // bytes, another seed other projects; existing projects are never replaced.
    void sameSeedSameProjectsNeverOverwritten()
    {
        QMap<QString, QByteArray> written[3];
        QString error;
        m_options.projects = 3;
        for (int i = 0; i < 3; ++i) {
            m_options.seed = i < 2 ? 11 : 12;
            QCOMPARE(TSampleGenerator::generate(m_fixture->filePath(QString::number(i)), m_options, &error).size(), 3);
            written[i] = filesBelow(m_fixture->filePath(QString::number(i)));
        }
        QVERIFY(written[0].size() > 3); // the databases and MS files
        QVERIFY(written[1] == written[0]);
        QVERIFY(written[2] != written[0]);
        QVERIFY(TSampleGenerator::generate(m_fixture->filePath(QStringLiteral("0")), m_options, &error).isEmpty());
        QVERIFY(!error.isEmpty());
        QVERIFY(!TSampleGenerator::generateProject(m_fixture->filePath(QStringLiteral("0/Project 01 Caffeine")),
                                                   QStringLiteral("One"), m_options, 1, &error));
        QVERIFY(error.contains(QStringLiteral("already exists")));
        QVERIFY(filesBelow(m_fixture->filePath(QStringLiteral("0"))) == written[0]);
    }

    // Every case the browsers decide on is present.
    void contentHasWhatTheBrowserDecidesOn()
    {
        QString error;
        m_options.projects = 3;
        m_options.seed = 5;
        const QStringList folders = TSampleGenerator::generate(m_fixture->path(), m_options, &error);
        QCOMPARE(folders.size(), 3);
        QCOMPARE(QFileInfo(folders.at(2)).fileName(), QStringLiteral("Project 03 Café été"));
        KAObject2Project project(QString(), folders.at(0));
        std::unique_ptr<TDatabase> db(TDatabase::open(&project, true, &error));
        QVERIFY2(db, qPrintable(error));
        QSet<QString> seen = {db->getObjectLst(KAObjectTypeGlobalIndexation).isEmpty() ? "" : "indexation"};
        for (const KAObject2* object : db->getObjectLst(KAObjectTypeAnalysis)) {
            const auto* analysis = static_cast<const KAObject2Analysis*>(object);
            const bool ms = QFileInfo::exists(TDatabase::peakDetectMSPath(analysis));
            seen << (analysis->isMulticanal() ? (ms ? "several, MS file" : "several") : ms ? "one, MS file" : "one")
                 << (analysis->name().contains(QChar(0xE9)) ? "accent" : "");
        }
        for (const KAObject2* object : db->getObjectLst(KAObjectTypePeakDetect)) {
            const auto* pd = static_cast<const KAObject2PeakDetect*>(object);
            const bool manual = pd->getSource() & 0x200;
            seen << (pd->name().startsWith(QLatin1String("tempPD_")) ? (manual ? "tempPD_" : "tempPD_ without 0x200")
                     : db->getIdentificationGroup(pd) ? "identified" : manual ? "manual" : "plain");
        }
        for (const KAObject2* object : db->getObjectLst(KAObjectTypeIdentificationGroup)) {
            const auto* group = static_cast<const KAObject2IdentificationGroup*>(object);
            seen << (group->getSource() & 0x800 ? "0x800" : "no 0x800") << (group->child().isEmpty() ? "empty group" : "");
        }
        for (const KAObject2* well : db->getObjectLst(KAObjectTypeWell))
            seen << (db->datasetList(static_cast<const KAObject2Well*>(well)).isEmpty() ? "no datasets" : "datasets");
        seen.remove(QString());
        const QSet<QString> expected = {"0x800", "accent", "datasets", "identified", "indexation", "manual", "no 0x800",
                                        "no datasets", "one", "plain", "several", "several, MS file", "tempPD_"};
        QVERIFY2(seen == expected, qPrintable(QStringList(seen.values()).join(QLatin1String(", "))));
        // Exactly one of the three projects is terminated.
        int state = 0, terminated = 0;
        for (const QString& folder : folders)
            terminated += TDatabase::readProjectHeader(folder, nullptr, nullptr, &state, nullptr) && (state == 4 || state == 7);
        QCOMPARE(terminated, 1);
    }
};

QTEST_GUILESS_MAIN(TestSampleGenerator)
#include "tst_samplegenerator.moc"
