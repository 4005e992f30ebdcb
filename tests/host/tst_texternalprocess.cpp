#include "testfixture.h"
#include "texternalprocess.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

class TestTExternalProcess : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void opensTheFolder_data();
    void opensTheFolder();
    void systemRefusalIsReported();
    void opensADocument_data();
    void opensADocument();

private:
    QList<QUrl> m_opened;
    bool m_answer = true;
};

void TestTExternalProcess::init()
{
    m_opened.clear();
    m_answer = true;
    TExternalProcess::setOpener([this](const QUrl& url) {
        m_opened << url;
        return m_answer;
    });
}

void TestTExternalProcess::cleanup()
{
    TExternalProcess::setOpener({});
}

void TestTExternalProcess::opensTheFolder_data()
{
    QTest::addColumn<QString>("path");    // relative to the fixture folder
    QTest::addColumn<QString>("opened");  // relative folder; "-" when nothing opens
    QTest::addColumn<bool>("result");

    QTest::newRow("a folder opens itself") << "Projects/Run 1" << "Projects/Run 1" << true;
    QTest::newRow("a file opens its folder") << "Projects/Run 1/project.kadb" << "Projects/Run 1" << true;
    QTest::newRow("a missing path opens nothing") << "Projects/Missing" << "-" << false;
    QTest::newRow("an empty path opens nothing") << "" << "-" << false;
}

void TestTExternalProcess::opensTheFolder()
{
    QFETCH(QString, path);
    QFETCH(QString, opened);
    QFETCH(bool, result);

    TestFixture fixture;
    QVERIFY(QDir(fixture.path()).mkpath(QStringLiteral("Projects/Run 1")));
    QFile file(fixture.filePath(QStringLiteral("Projects/Run 1/project.kadb")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    const QString full = path.isEmpty() ? QString() : fixture.filePath(path);
    QCOMPARE(TExternalProcess::startWindowsExplorer(full), result);
    if (opened == QLatin1String("-")) {
        QVERIFY(m_opened.isEmpty());
    } else {
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened[0], QUrl::fromLocalFile(fixture.filePath(opened)));
    }
}

void TestTExternalProcess::systemRefusalIsReported()
{
    m_answer = false;
    QVERIFY(!TExternalProcess::startWindowsExplorer(QDir::tempPath()));
    QCOMPARE(m_opened.size(), 1);
}

void TestTExternalProcess::opensADocument_data()
{
    QTest::addColumn<QString>("path"); // relative to the fixture folder
    QTest::addColumn<bool>("result");

    QTest::newRow("a file opens") << "Data/report 1.pdf" << true;
    QTest::newRow("a folder is not a document") << "Data" << false;
    QTest::newRow("a missing file opens nothing") << "Data/missing.pdf" << false;
    QTest::newRow("an empty path opens nothing") << "" << false;
}

void TestTExternalProcess::opensADocument()
{
    QFETCH(QString, path);
    QFETCH(bool, result);

    TestFixture fixture;
    QVERIFY(QDir(fixture.path()).mkpath(QStringLiteral("Data")));
    QFile file(fixture.filePath(QStringLiteral("Data/report 1.pdf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    const QString full = path.isEmpty() ? QString() : fixture.filePath(path);
    QCOMPARE(TExternalProcess::openDocument(full), result);
    if (result) {
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened[0], QUrl::fromLocalFile(fixture.filePath(path)));
    } else {
        QVERIFY(m_opened.isEmpty());
    }
}

QTEST_MAIN(TestTExternalProcess)
#include "tst_texternalprocess.moc"
