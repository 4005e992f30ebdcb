#include "tdirectorylisting.h"
#include "testfixture.h"

#include <QDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

// The explorer's folder listing gives what QDir gives for the same folder and
// filters (accents, hidden entries, links to a folder, a file, nowhere and back
// up, a pipe), and tells whether the folder holds a project file or a link to one.
class tst_TDirectoryListing : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;
    QString m_folder;

private slots:
    void initTestCase()
    {
        kaInitTestEnvironment();
        m_fixture.reset(new TestFixture);
        m_folder = m_fixture->filePath(QStringLiteral("listing")) + QLatin1Char('/');
        for (const char* folder : {"Folder A", "Été 試料", ".hidden folder", "Project/Settings",
                                   "Not a project/project.kadb", "Linked project", "Broken project"})
            QVERIFY(QDir().mkpath(m_folder + QString::fromUtf8(folder)));
        for (const char* file : {"Project/project.kadb", "run.CSV", "notes.txt", "data.csv.bak", ".hidden.csv"})
            QVERIFY(QFile(m_folder + QLatin1String(file)).open(QIODevice::WriteOnly));
#ifdef Q_OS_UNIX
        const char* links[][2] = {{"Folder A", "link to folder"}, {"notes.txt", "link to notes.txt"}, {"nowhere", "broken.csv"},
            {".", "Folder A/back to parent"}, {"Project/project.kadb", "Linked project/project.kadb"},
            {"nowhere.kadb", "Broken project/project.kadb"}};
        for (const auto& link : links)
            QVERIFY(QFile::link(QDir::cleanPath(m_folder + QLatin1String(link[0])), m_folder + QLatin1String(link[1])));
        QCOMPARE(mkfifo(QFile::encodeName(m_folder + QStringLiteral("pipe.csv")).constData(), 0600), 0);
#endif
    }

    void sameEntriesAsQDir_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QStringList>("patterns");
        QTest::addColumn<bool>("files");
        QTest::addColumn<bool>("holds");
        const QStringList none;
        QTest::newRow("folders only") << QString() << none << false << false;
        QTest::newRow("every file, project file deeper down") << QString() << none << true << false;
        const QStringList patterns = {QStringLiteral("*.csv"), QStringLiteral("n*.txt")};
        QTest::newRow("patterns, any case") << QString() << patterns << true << false;
        QTest::newRow("project, files listed") << QStringLiteral("Project") << none << true << true;
        QTest::newRow("project, folders only") << QStringLiteral("Project") << none << false << true;
        QTest::newRow("project file is a folder") << QStringLiteral("Not a project") << none << false << false;
        QTest::newRow("vanished folder") << QStringLiteral("missing") << none << true << false;
#ifdef Q_OS_UNIX
        QTest::newRow("project file is a link") << QStringLiteral("Linked project") << none << false << true;
        QTest::newRow("project file is a broken link") << QStringLiteral("Broken project") << none << true << false;
#endif
    }

    void sameEntriesAsQDir()
    {
        QFETCH(QString, folder);
        QFETCH(QStringList, patterns);
        QFETCH(bool, files);
        QFETCH(bool, holds);
        const QString path = QDir::cleanPath(m_folder + folder);
        const QDir::Filters filters = QDir::AllDirs | QDir::NoDotAndDotDot | (files ? QDir::Files : QDir::Filters());
        QStringList expected, listed; // path, then "/" for a folder and "@" for a link
        for (const QFileInfo& info : QDir(path).entryInfoList(patterns, filters))
            expected << info.absoluteFilePath() + QLatin1String(info.isDir() ? "/" : "") + QLatin1String(info.isSymLink() ? "@" : "");
        bool found = !holds;
        for (const auto& entry : TDirectoryListing::list(path, patterns, files, QStringLiteral("project.kadb"), &found))
            listed << entry.info.absoluteFilePath() + QLatin1String(entry.isDir ? "/" : "") + QLatin1String(entry.isSymLink ? "@" : "");
        QCOMPARE(found, holds);
        expected.sort();
        listed.sort();
        QCOMPARE(listed, expected);
    }
};

QTEST_MAIN(tst_TDirectoryListing)
#include "tst_tdirectorylisting.moc"
