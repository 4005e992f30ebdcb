// ctest-label: threads
#include "testfixture.h"

#include "kaobject2.h"
#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "tprojectmgrobserver.h"
#include "tsamplegenerator.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <memory>

using TechDB::TDatabase;

namespace {

// Writes what it hears into a shared log, as "<tag>:<event>".
class RecordingObserver : public TProjectMgrObserver
{
public:
    RecordingObserver(const QString& tag, QStringList* log) : m_tag(tag), m_log(log) {}
    void projectCreated(const KAObject2Project* project) override
    {
        m_log->append(m_tag + QStringLiteral(":created:") + project->name());
    }
    void projectOpened() override
    {
        const KAObject2Project* current = ProjectMgrInterface::returnMe()->currentProject();
        m_log->append(m_tag + QStringLiteral(":opened:") + (current ? current->name() : QString()));
    }
    void projectClosed(const KAObject2Project* project) override
    {
        // The database must still be there while observers look.
        m_log->append(m_tag + QStringLiteral(":closed:") + project->name()
                      + (project->db() ? QStringLiteral(":db") : QStringLiteral(":nodb")));
    }

private:
    QString m_tag;
    QStringList* m_log; // not owned
};

TSampleGenerator::Options tinyOptions(int projects)
{
    TSampleGenerator::Options options;
    options.projects = projects;
    options.analyses = 3;
    options.signalsPerAnalysis = 2;
    options.peaksPerSignal = 3;
    options.wells = 2;
    options.datasetsPerWell = 1;
    options.variablesPerDataset = 1;
    options.groups = 2;
    return options;
}

bool logged(const QString& fragment)
{
    for (const QString& text : MessageLoggerInterface::returnMe()->texts()) {
        if (text.contains(fragment))
            return true;
    }
    return false;
}

} // namespace

class TestProjectMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void discoversProjectsOfTheWorkspace();
    void scanDepth_data();
    void scanDepth();
    void discoverProjectAddsProjectsFoundElsewhere();
    void openCloseAndCurrent();
    void observersHearEachEventOnceInOrder();
    void destroyedObserverIsForgotten();
    void readOnlyOpen();
    void refusedDatabaseIsLoggedUnlessSilent();
    void createProjectTellsObservers();
    void deleteProjectsRemovesFolders();
    void silentOpensFromPoolThreadsWhileListing();

private:
    QStringList generate(int projects);
    ProjectMgrInterface* m_mgr = nullptr; // not owned
    std::unique_ptr<TestFixture> m_fixture;
};

void TestProjectMgr::initTestCase()
{
    kaInitTestEnvironment();
    m_mgr = ProjectMgrInterface::returnMe();
}

void TestProjectMgr::init()
{
    m_fixture.reset(new TestFixture);
    QDir().mkpath(m_fixture->filePath(QStringLiteral("workspace")));
    m_mgr->closeAll();
    m_mgr->setWorkspaceFolders({m_fixture->filePath(QStringLiteral("workspace"))});
    MessageLoggerInterface::returnMe()->clear();
}

void TestProjectMgr::cleanup()
{
    m_mgr->closeAll();
    m_mgr->setWorkspaceFolders({});
    m_fixture.reset();
}

QStringList TestProjectMgr::generate(int projects)
{
    QString error;
    const QStringList folders =
        TSampleGenerator::generate(m_fixture->filePath(QStringLiteral("workspace")), tinyOptions(projects), &error);
    if (folders.isEmpty())
        qWarning() << error;
    m_mgr->rescan();
    return folders;
}

void TestProjectMgr::discoversProjectsOfTheWorkspace()
{
    const QStringList folders = generate(3);
    QCOMPARE(folders.size(), 3);
    // Not projects: a plain folder, and a project two levels down.
    QDir().mkpath(m_fixture->filePath(QStringLiteral("workspace/Plain folder")));
    QVERIFY(TDatabase::createProject(m_fixture->filePath(QStringLiteral("workspace/Plain folder/Deep")),
                                     QStringLiteral("Too deep"), nullptr));
    // A project whose file is not readable is listed under its folder name.
    const QString broken = m_fixture->filePath(QStringLiteral("workspace/broken project"));
    QDir().mkpath(broken);
    QFile file(TDatabase::databasePath(broken));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a database");
    file.close();
    // A workspace folder that is itself a project.
    const QString rootProject = m_fixture->filePath(QStringLiteral("root project"));
    QVERIFY(TDatabase::createProject(rootProject, QStringLiteral("alpha root"), nullptr));
    QSignalSpy changed(m_mgr, &ProjectMgrInterface::projectListChanged);
    m_mgr->setWorkspaceFolders({m_fixture->filePath(QStringLiteral("workspace")), rootProject});
    QVERIFY(changed.count() >= 1);

    QStringList names;
    for (const KAObject2Project* project : m_mgr->projectList())
        names.append(project->name());
    // Header names, not folder names, sorted without regard to case (code
    // unit order otherwise: "f" comes before "é").
    QCOMPARE(names, (QStringList{QStringLiteral("alpha root"), QStringLiteral("broken project"),
                                 QStringLiteral("Caffeine in beverages"), QStringLiteral("Café été — arômes"),
                                 QStringLiteral("Pesticide screening")}));
    const KAObject2Project* terminated = m_mgr->findProject(folders.at(2));
    QVERIFY(terminated);
    QCOMPARE(terminated->projectState(), int(KAObject2Project::StateTerminated));
    QVERIFY(terminated->isTerminated());
    QVERIFY(terminated->description().contains(QStringLiteral("seed")));
    QCOMPARE(m_mgr->projectOfPath(QDir(folders.at(1)).filePath(QStringLiteral("Settings/some.xml"))),
             m_mgr->findProject(folders.at(1)));
    QVERIFY(ProjectMgrInterface::isProjectFolder(folders.at(0)));
    QVERIFY(!ProjectMgrInterface::isProjectFolder(m_fixture->filePath(QStringLiteral("workspace/Plain folder"))));

    // A project removed from the disk leaves the list on the next scan; the
    // object handed out stays readable.
    const KAObject2Project* gone = m_mgr->findProject(folders.at(0));
    QVERIFY(QDir(folders.at(0)).removeRecursively());
    m_mgr->rescan();
    QVERIFY(!m_mgr->projectList().contains(gone));
    QCOMPARE(gone->name(), QStringLiteral("Caffeine in beverages"));
}

void TestProjectMgr::scanDepth_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<QStringList>("names");
    const QString one = QStringLiteral("One level down");
    const QString two = QStringLiteral("Two levels down");
    const QString three = QStringLiteral("Three levels down");
    QTest::newRow("the folder only") << 0 << QStringList();
    QTest::newRow("one level") << 1 << QStringList{one};
    QTest::newRow("two levels") << 2 << QStringList{one, two};
    QTest::newRow("any depth") << -1 << QStringList{one, three, two};
}

// Projects kept in folders of folders are found as deep as asked, never
// inside another project, and a link back up does not loop.
void TestProjectMgr::scanDepth()
{
    QFETCH(int, depth);
    QFETCH(QStringList, names);
    const QString workspace = m_fixture->filePath(QStringLiteral("workspace"));
    QVERIFY(TDatabase::createProject(workspace + QStringLiteral("/a"), QStringLiteral("One level down"), nullptr));
    QVERIFY(TDatabase::createProject(workspace + QStringLiteral("/a/inner"), QStringLiteral("Inside a project"), nullptr));
    QVERIFY(TDatabase::createProject(workspace + QStringLiteral("/b/c"), QStringLiteral("Two levels down"), nullptr));
    QVERIFY(TDatabase::createProject(workspace + QStringLiteral("/b/d/e"), QStringLiteral("Three levels down"), nullptr));
#ifdef Q_OS_UNIX
    QVERIFY(QFile::link(workspace, workspace + QStringLiteral("/b/d/back up")));
#endif
    m_mgr->setWorkspaceFolders({workspace}, depth);
    QStringList found;
    for (const KAObject2Project* project : m_mgr->projectList())
        found.append(project->name());
    QCOMPARE(found, names);
}

// Asking for a folder never reads the disk; discovering it does, once.
void TestProjectMgr::discoverProjectAddsProjectsFoundElsewhere()
{
    const QString elsewhere = m_fixture->filePath(QStringLiteral("elsewhere/Outside"));
    QVERIFY(TDatabase::createProject(elsewhere, QStringLiteral("Outside"), nullptr));
    QCOMPARE(m_mgr->projectList().size(), 0);
    QCOMPARE(m_mgr->findProject(elsewhere), nullptr);
    QCOMPARE(m_mgr->projectList().size(), 0);
    QCOMPARE(m_mgr->discoverProject(m_fixture->filePath(QStringLiteral("elsewhere"))), nullptr);
    const KAObject2Project* project = m_mgr->discoverProject(elsewhere + QStringLiteral("/"));
    QVERIFY(project);
    QCOMPARE(m_mgr->discoverProject(elsewhere), project);
    const QString parent = m_fixture->filePath(QStringLiteral("elsewhere"));
    for (const QString& spelling : {elsewhere, elsewhere + QStringLiteral("/"), elsewhere + QStringLiteral("/./"),
                                    elsewhere + QStringLiteral("/../Outside"), parent + QStringLiteral("//Outside")})
        QCOMPARE(m_mgr->findProject(spelling), project);
    QCOMPARE(m_mgr->projectList(), QList<const KAObject2Project*>{project});
    m_mgr->rescan();
    QCOMPARE(m_mgr->projectList(), QList<const KAObject2Project*>{project});

    // A project of the same folder name elsewhere, forgotten once its folder
    // is gone, leaves the first one found.
    const QString twin = m_fixture->filePath(QStringLiteral("workspace/Outside"));
    QVERIFY(TDatabase::createProject(twin, QStringLiteral("Twin"), nullptr));
    m_mgr->rescan();
    QVERIFY(m_mgr->findProject(twin));
    QVERIFY(QDir(twin).removeRecursively());
    m_mgr->rescan();
    QCOMPARE(m_mgr->findProject(twin), nullptr);
    QCOMPARE(m_mgr->findProject(elsewhere), project);
}

void TestProjectMgr::openCloseAndCurrent()
{
    const QStringList folders = generate(2);
    const KAObject2Project* first = m_mgr->findProject(folders.at(0));
    const KAObject2Project* second = m_mgr->findProject(folders.at(1));
    QVERIFY(m_mgr->openProject(first));
    QCOMPARE(m_mgr->currentProject(), first);
    QVERIFY(first->db());
    QCOMPARE(m_mgr->currentDatabase(), first->db());
    QVERIFY(first->db()->objectCount() > 0);
    QVERIFY(!TApplicationData::getInstance()->isCurrentProjectReadOnly());

    QVERIFY(m_mgr->openProject(second));
    QCOMPARE(m_mgr->currentProject(), second);
    TDatabase* firstDb = first->db();
    QVERIFY(m_mgr->openProject(first));
    QCOMPARE(first->db(), firstDb);
    QCOMPARE(m_mgr->currentProject(), first);
    QCOMPARE(m_mgr->openProjects(), (QList<const KAObject2Project*>{first, second}));

    QVERIFY(m_mgr->closeProject(first));
    QCOMPARE(first->db(), nullptr);
    QCOMPARE(m_mgr->currentProject(), nullptr);
    QCOMPARE(m_mgr->currentDatabase(), nullptr);
    QCOMPARE(m_mgr->openProjects(), QList<const KAObject2Project*>{second});
    QVERIFY(!m_mgr->closeProject(first));
    m_mgr->closeAll();
    QVERIFY(m_mgr->openProjects().isEmpty());
    QCOMPARE(second->db(), nullptr);
}

void TestProjectMgr::observersHearEachEventOnceInOrder()
{
    const QStringList folders = generate(1);
    const KAObject2Project* project = m_mgr->findProject(folders.at(0));
    QStringList log;
    RecordingObserver a(QStringLiteral("A"), &log);
    RecordingObserver b(QStringLiteral("B"), &log);
    m_mgr->registerObserver(&a);
    m_mgr->registerObserver(&b);
    m_mgr->registerObserver(&a);

    QVERIFY(m_mgr->openProject(project));
    QVERIFY(m_mgr->openProject(project, false, true)); // already open: nothing to tell
    QVERIFY(m_mgr->closeProject(project));
    // Silent opens tell nobody.
    QVERIFY(m_mgr->openProject(project, false, true));
    const QString name = project->name();
    QCOMPARE(log, (QStringList{QStringLiteral("A:opened:") + name, QStringLiteral("B:opened:") + name,
                               QStringLiteral("A:closed:") + name + QStringLiteral(":db"),
                               QStringLiteral("B:closed:") + name + QStringLiteral(":db")}));
    m_mgr->unregisterObserver(&a);
    m_mgr->unregisterObserver(&b);
}

void TestProjectMgr::destroyedObserverIsForgotten()
{
    const QStringList folders = generate(1);
    const KAObject2Project* project = m_mgr->findProject(folders.at(0));
    QStringList log;
    RecordingObserver kept(QStringLiteral("kept"), &log);
    m_mgr->registerObserver(&kept);
    {
        RecordingObserver shortLived(QStringLiteral("gone"), &log);
        m_mgr->registerObserver(&shortLived);
    }
    QVERIFY(m_mgr->openProject(project));
    QCOMPARE(log, QStringList{QStringLiteral("kept:opened:") + project->name()});
    m_mgr->unregisterObserver(&kept);
}

void TestProjectMgr::readOnlyOpen()
{
    const QStringList folders = generate(1);
    const KAObject2Project* project = m_mgr->findProject(folders.at(0));
    QVERIFY(m_mgr->openProject(project, true));
    QVERIFY(project->db()->isReadOnly());
    QVERIFY(TApplicationData::getInstance()->isCurrentProjectReadOnly());
    const KAObject2* analysis = project->db()->getObjectLst(KAObjectTypeAnalysis).first();
    QVERIFY(!project->db()->objectRename(analysis, QStringLiteral("x")));
    QVERIFY(m_mgr->closeProject(project));
    QVERIFY(!TApplicationData::getInstance()->isCurrentProjectReadOnly());
}

void TestProjectMgr::refusedDatabaseIsLoggedUnlessSilent()
{
    const QString folder = m_fixture->filePath(QStringLiteral("workspace/Bad <b>one"));
    QDir().mkpath(folder);
    QFile file(TDatabase::databasePath(folder));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    m_mgr->rescan();
    const KAObject2Project* project = m_mgr->findProject(folder);
    QVERIFY(project);

    QVERIFY(!m_mgr->openProject(project, false, true));
    QVERIFY(MessageLoggerInterface::returnMe()->texts().isEmpty());
    QVERIFY(!m_mgr->openProject(project));
    QVERIFY(logged(QStringLiteral("Cannot open project <b>Bad &lt;b&gt;one</b>: ")));
    QVERIFY(logged(QStringLiteral("unknown file format")));
    QCOMPARE(project->db(), nullptr);
    QCOMPARE(m_mgr->currentProject(), nullptr);
    QVERIFY(m_mgr->openProjects().isEmpty());
}

void TestProjectMgr::createProjectTellsObservers()
{
    QStringList log;
    RecordingObserver observer(QStringLiteral("O"), &log);
    m_mgr->registerObserver(&observer);
    const QString folder = m_fixture->filePath(QStringLiteral("workspace/Created"));
    const KAObject2Project* project = m_mgr->createProject(folder, QStringLiteral("Created & new"));
    QVERIFY(project);
    QCOMPARE(log, QStringList{QStringLiteral("O:created:Created & new")});
    QVERIFY(m_mgr->projectList().contains(project));
    QVERIFY(ProjectMgrInterface::isProjectFolder(folder));
    QVERIFY(QFileInfo(TDatabase::settingsPath(folder)).isDir());
    // An existing project is refused with a message.
    QCOMPARE(m_mgr->createProject(folder, QStringLiteral("Again")), nullptr);
    QVERIFY(logged(QStringLiteral("Cannot create project <b>Again</b>")));
    m_mgr->unregisterObserver(&observer);
}

void TestProjectMgr::deleteProjectsRemovesFolders()
{
    const QStringList folders = generate(2);
    const KAObject2Project* doomed = m_mgr->findProject(folders.at(0));
    const KAObject2Project* kept = m_mgr->findProject(folders.at(1));
    QStringList log;
    RecordingObserver observer(QStringLiteral("O"), &log);
    m_mgr->registerObserver(&observer);
    QVERIFY(m_mgr->openProject(doomed));
    log.clear();

    QVERIFY(m_mgr->deleteProjects({doomed}, true));
    QCOMPARE(log, QStringList{QStringLiteral("O:closed:") + doomed->name() + QStringLiteral(":db")});
    QVERIFY(!QFileInfo::exists(folders.at(0)));
    QVERIFY(QFileInfo::exists(folders.at(1)));
    QCOMPARE(m_mgr->projectList(), QList<const KAObject2Project*>{kept});
    QVERIFY(m_mgr->openProjects().isEmpty());
    QCOMPARE(m_mgr->currentProject(), nullptr);
    // The forgotten object is still safe to read.
    QCOMPARE(doomed->db(), nullptr);
    QCOMPARE(doomed->name(), QStringLiteral("Caffeine in beverages"));
    QCOMPARE(m_mgr->findProject(folders.at(0)), nullptr);
    m_mgr->unregisterObserver(&observer);
}

void TestProjectMgr::silentOpensFromPoolThreadsWhileListing()
{
    const QStringList folders = generate(4);
    QList<const KAObject2Project*> projects;
    for (const QString& folder : folders)
        projects.append(m_mgr->findProject(folder));
    QStringList log;
    RecordingObserver observer(QStringLiteral("O"), &log);
    m_mgr->registerObserver(&observer);

    QThreadPool* pool = QThreadPool::globalInstance();
    QAtomicInt succeeded(0);
    // Each project twice: two workers race to open the same project.
    for (int round = 0; round < 2; ++round) {
        for (const KAObject2Project* project : projects) {
            pool->start([this, project, &succeeded]() {
                if (m_mgr->openProject(project, false, true))
                    succeeded.fetchAndAddRelaxed(1);
            });
        }
    }
    // Meanwhile the GUI thread keeps reading the lists.
    int reads = 0;
    while (!pool->waitForDone(1)) {
        for (const KAObject2Project* project : m_mgr->projectList())
            reads += project->name().size() > 0 ? 1 : 0;
        reads += m_mgr->openProjects().size();
        QCoreApplication::processEvents();
    }
    QCOMPARE(int(succeeded), 2 * projects.size());
    QCOMPARE(m_mgr->openProjects().size(), projects.size());
    for (const KAObject2Project* project : projects) {
        QVERIFY(project->db());
        QCOMPARE(project->db()->thread(), QCoreApplication::instance()->thread());
        QVERIFY(project->db()->objectCount() > 0);
    }
    QCOMPARE(m_mgr->currentProject(), nullptr);
    QCoreApplication::processEvents();
    QVERIFY(log.isEmpty());
    // The databases opened on pool threads still take writes on this one.
    const KAObject2* well = projects.first()->db()->getObjectLst(KAObjectTypeWell).first();
    QVERIFY(projects.first()->db()->objectRename(well, QStringLiteral("Renamed on the GUI thread")));
    m_mgr->unregisterObserver(&observer);
    Q_UNUSED(reads);
}

QTEST_GUILESS_MAIN(TestProjectMgr)
#include "tst_projectmgr.moc"
