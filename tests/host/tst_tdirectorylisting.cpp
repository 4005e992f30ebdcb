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
// and filters, and tells which folders hold a project file.
class tst_TDirectoryListing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void sameEntriesAsQDir_data();
    void sameEntriesAsQDir();
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
        QVERIFY(!entry.holdsMarker);
    }
}

void tst_TDirectoryListing::markerMustBeARegularFile()
{
    QVERIFY(QDir().mkpath(m_folder + QStringLiteral("/Not a project/project.kadb")));
    const QVector<TDirectoryListing::Entry> entries =
        TDirectoryListing::list(m_folder, {}, false, QStringLiteral("project.kadb"));
    QStringList marked;
    for (const TDirectoryListing::Entry& entry : entries) {
        if (entry.holdsMarker)
            marked.append(entry.info.fileName());
    }
    QCOMPARE(marked, QStringList({QStringLiteral("Project")}));
    QVERIFY(QDir(m_folder + QStringLiteral("/Not a project")).removeRecursively());
}

void tst_TDirectoryListing::unreadableFolderListsNothing()
{
    QVERIFY(TDirectoryListing::list(m_folder + QStringLiteral("/missing"), {}, true, QString()).isEmpty());
    QVERIFY(TDirectoryListing::list(m_folder + QStringLiteral("/notes.txt"), {}, true, QString()).isEmpty());
}

QTEST_MAIN(tst_TDirectoryListing)
#include "tst_tdirectorylisting.moc"
