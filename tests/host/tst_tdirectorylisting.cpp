#include "tdirectorylisting.h"
#include "testfixture.h"

#include <QDir>
#include <QFile>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <sys/types.h>
#endif

namespace {

void touch(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

// "name/" for a folder, "name" for a file, sorted.
QStringList describe(const QVector<TDirectoryListing::Entry>& entries)
{
    QStringList names;
    for (const TDirectoryListing::Entry& entry : entries)
        names.append(entry.info.fileName() + (entry.isDir ? QStringLiteral("/") : QString()));
    names.sort();
    return names;
}

QStringList describe(const QFileInfoList& infos)
{
    QStringList names;
    for (const QFileInfo& info : infos)
        names.append(info.fileName() + (info.isDir() ? QStringLiteral("/") : QString()));
    names.sort();
    return names;
}

} // namespace

// The explorer's folder listing gives what QDir gives for the same folder
// and filters, and tells whether the folder holds a project file.
class tst_TDirectoryListing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void sameEntriesAsQDir_data();
    void sameEntriesAsQDir();
    void markerMustBeARegularFile_data();
    void markerMustBeARegularFile();
    void unreadableFolderListsNothing();

private:
    std::unique_ptr<TestFixture> m_fixture;
    QString m_folder;
};

void tst_TDirectoryListing::initTestCase()
{
    kaInitTestEnvironment();
    m_fixture.reset(new TestFixture);
    m_folder = m_fixture->filePath(QStringLiteral("listing"));
    QDir dir;
    QVERIFY(dir.mkpath(m_folder + QStringLiteral("/Folder A")));
    QVERIFY(dir.mkpath(m_folder + QStringLiteral("/Été 試料")));
    QVERIFY(dir.mkpath(m_folder + QStringLiteral("/.hidden folder")));
    QVERIFY(dir.mkpath(m_folder + QStringLiteral("/Project/Settings")));
    touch(m_folder + QStringLiteral("/Project/project.kadb"));
    touch(m_folder + QStringLiteral("/run.CSV"));
    touch(m_folder + QStringLiteral("/notes.txt"));
    touch(m_folder + QStringLiteral("/data.csv.bak"));
    touch(m_folder + QStringLiteral("/.hidden.csv"));
#ifdef Q_OS_UNIX
    QVERIFY(QFile::link(m_folder + QStringLiteral("/Folder A"), m_folder + QStringLiteral("/link to folder")));
    QVERIFY(QFile::link(m_folder + QStringLiteral("/notes.txt"), m_folder + QStringLiteral("/link to notes.txt")));
    QVERIFY(QFile::link(m_folder + QStringLiteral("/nowhere"), m_folder + QStringLiteral("/broken.csv")));
    QVERIFY(QFile::link(m_folder, m_folder + QStringLiteral("/Folder A/back to parent")));
    QCOMPARE(mkfifo(QFile::encodeName(m_folder + QStringLiteral("/pipe.csv")).constData(), 0600), 0);
#endif
}

void tst_TDirectoryListing::sameEntriesAsQDir_data()
{
    QTest::addColumn<QStringList>("patterns");
    QTest::addColumn<bool>("files");
    QTest::newRow("folders only") << QStringList() << false;
    QTest::newRow("every file") << QStringList() << true;
    QTest::newRow("patterns, any case") << QStringList({QStringLiteral("*.csv")}) << true;
    QTest::newRow("several patterns") << QStringList({QStringLiteral("*.txt"), QStringLiteral("run.*")}) << true;
    QTest::newRow("pattern matching nothing") << QStringList({QStringLiteral("*.none")}) << true;
}

void tst_TDirectoryListing::sameEntriesAsQDir()
{
    QFETCH(QStringList, patterns);
    QFETCH(bool, files);
    QDir::Filters filters = QDir::AllDirs | QDir::NoDotAndDotDot;
    if (files)
        filters |= QDir::Files;
    const QFileInfoList expected = QDir(m_folder).entryInfoList(patterns, filters, QDir::NoSort);
    const QVector<TDirectoryListing::Entry> entries = TDirectoryListing::list(m_folder, patterns, files, QString());
    QCOMPARE(describe(entries), describe(expected));
    for (const TDirectoryListing::Entry& entry : entries) {
        const QFileInfo fresh(entry.info.absoluteFilePath());
        QCOMPARE(entry.isDir, fresh.isDir());
        QCOMPARE(entry.isSymLink, fresh.isSymLink());
        QCOMPARE(entry.info.absoluteFilePath(), QDir::cleanPath(m_folder + QLatin1Char('/') + entry.info.fileName()));
    }
}

void tst_TDirectoryListing::markerMustBeARegularFile_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("files");
    QTest::addColumn<bool>("holds");
    QTest::addColumn<bool>("listed"); // the marker among the entries
    QTest::newRow("project, files listed") << QStringLiteral("Project") << true << true << true;
    QTest::newRow("project, folders only") << QStringLiteral("Project") << false << true << false;
    QTest::newRow("marker only deeper down") << QString() << true << false << false;
    QTest::newRow("marker is a folder") << QStringLiteral("Not a project") << false << false << true;
#ifdef Q_OS_UNIX
    QTest::newRow("marker is a link to a file") << QStringLiteral("Linked project") << false << true << false;
    QTest::newRow("marker is a broken link") << QStringLiteral("Broken project") << true << false << false;
#endif
}

// The folder listed tells whether it holds the marker, whatever else is
// asked of the listing; the folders it lists are not looked into.
void tst_TDirectoryListing::markerMustBeARegularFile()
{
    QFETCH(QString, folder);
    QFETCH(bool, files);
    QFETCH(bool, holds);
    QFETCH(bool, listed);
    const QString marker = QStringLiteral("project.kadb");
    QVERIFY(QDir().mkpath(m_folder + QStringLiteral("/Not a project/project.kadb")));
#ifdef Q_OS_UNIX
    QVERIFY(QDir().mkpath(m_folder + QStringLiteral("/Linked project")));
    QFile::link(m_folder + QStringLiteral("/Project/project.kadb"), m_folder + QStringLiteral("/Linked project/project.kadb"));
    QVERIFY(QDir().mkpath(m_folder + QStringLiteral("/Broken project")));
    QFile::link(m_folder + QStringLiteral("/nowhere.kadb"), m_folder + QStringLiteral("/Broken project/project.kadb"));
#endif
    const QString path = folder.isEmpty() ? m_folder : m_folder + QLatin1Char('/') + folder;
    bool found = !holds;
    const QVector<TDirectoryListing::Entry> entries = TDirectoryListing::list(path, {}, files, marker, &found);
    QCOMPARE(found, holds);
    bool markerListed = false;
    for (const TDirectoryListing::Entry& entry : entries)
        markerListed = markerListed || entry.info.fileName() == marker;
    QCOMPARE(markerListed, listed);
    for (const char* made : {"Not a project", "Linked project", "Broken project"})
        QDir(m_folder + QLatin1Char('/') + QLatin1String(made)).removeRecursively();
}

void tst_TDirectoryListing::unreadableFolderListsNothing()
{
    QVERIFY(TDirectoryListing::list(m_folder + QStringLiteral("/missing"), {}, true, QString()).isEmpty());
    QVERIFY(TDirectoryListing::list(m_folder + QStringLiteral("/notes.txt"), {}, true, QString()).isEmpty());
}

QTEST_MAIN(tst_TDirectoryListing)
#include "tst_tdirectorylisting.moc"
