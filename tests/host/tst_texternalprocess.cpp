#include "testfixture.h"
#include "texternalprocess.h"

#include <QDir>
#include <QTest>
#include <QUrl>

class TestTExternalProcess : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { TExternalProcess::setOpener({}); }

    void opens_data()
    {
        QTest::addColumn<bool>("document"); // else the file manager
        QTest::addColumn<QString>("path");   // relative to the fixture folder
        QTest::addColumn<QString>("opened"); // empty when nothing opens
        QTest::addColumn<bool>("systemOpens");
        const QString folder = QStringLiteral("Projects/Run 1"), file = folder + QStringLiteral("/report 1.pdf");
        QTest::newRow("a folder opens itself") << false << folder << folder << true;
        QTest::newRow("a file opens its folder") << false << file << folder << true;
        QTest::newRow("a missing folder opens nothing") << false << "Projects/Missing" << "" << true;
        QTest::newRow("an empty path opens no folder") << false << "" << "" << true;
        QTest::newRow("the system's refusal is reported") << false << folder << folder << false;
        QTest::newRow("a document opens") << true << file << file << true;
        QTest::newRow("a folder is not a document") << true << folder << "" << true;
        QTest::newRow("a missing document opens nothing") << true << "Projects/missing.pdf" << "" << true;
        QTest::newRow("an empty path opens no document") << true << "" << "" << true;
    }

    void opens()
    {
        QFETCH(bool, document);
        QFETCH(QString, path);
        QFETCH(QString, opened);
        QFETCH(bool, systemOpens);
        TestFixture fixture;
        QVERIFY(QDir(fixture.path()).mkpath(QStringLiteral("Projects/Run 1")));
        QVERIFY(QFile(fixture.filePath(QStringLiteral("Projects/Run 1/report 1.pdf"))).open(QIODevice::WriteOnly));
        QList<QUrl> urls; // recorded instead of launching a program
        TExternalProcess::setOpener([&](const QUrl& url) { urls << url; return systemOpens; });
        const QString full = path.isEmpty() ? QString() : fixture.filePath(path);
        QCOMPARE(document ? TExternalProcess::openDocument(full) : TExternalProcess::startWindowsExplorer(full),
                 !opened.isEmpty() && systemOpens);
        QCOMPARE(urls, opened.isEmpty() ? QList<QUrl>() : QList<QUrl>{QUrl::fromLocalFile(fixture.filePath(opened))});
    }
};

QTEST_MAIN(TestTExternalProcess)
#include "tst_texternalprocess.moc"
