// ctest-label: threads
#include "testfixture.h"

#include "kaobject2.h"
#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "tprojectmgrobserver.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

using TechDB::TDatabase;

namespace {

// Writes what it hears into a shared log, as "<tag>:<event>:<project>"; at
// closing, ":db" says the database was still there for observers to look.
class RecordingObserver : public TProjectMgrObserver
{
public:
    RecordingObserver(const QString& tag, QStringList* log) : m_tag(tag + QLatin1Char(':')), m_log(log) {}
    void projectCreated(const KAObject2Project* project) override { *m_log << m_tag + QStringLiteral("created:") + project->name(); }
    void projectOpened() override
    {
        const KAObject2Project* current = ProjectMgrInterface::returnMe()->currentProject();
        *m_log << m_tag + QStringLiteral("opened:") + (current ? current->name() : QString());
    }
    void projectClosed(const KAObject2Project* project) override
    {
        *m_log << m_tag + QStringLiteral("closed:") + project->name() + QLatin1String(project->db() ? ":db" : "");
    }
    const QString m_tag;
    QStringList* m_log; // not owned
};

bool logged(const QString& fragment)
{
    return MessageLoggerInterface::returnMe()->texts().join(QLatin1Char('\n')).contains(fragment);
}

QStringList names(const QList<const KAObject2Project*>& projects)
{
    QStringList result;
    for (const KAObject2Project* project : projects)
        result << project->name();
    return result;
}

} // namespace

class TestProjectMgr : public QObject
{
    Q_OBJECT
    ProjectMgrInterface* m_mgr = nullptr; // not owned
    std::unique_ptr<TestFixture> m_fixture;
    QString m_workspace;

    // Projects generated in the workspace, as the manager knows them.
    QList<const KAObject2Project*> generate(int projects)
    {
        TSampleGenerator::Options options = TestFixture::smallOptions();
        options.projects = projects;
        const QStringList folders = TSampleGenerator::generate(m_workspace, options);
        m_mgr->rescan();
        QList<const KAObject2Project*> result;
        for (const QString& folder : folders)
            result << m_mgr->findProject(folder);
        return result;
    }

private slots:
    void initTestCase()
    {
        kaInitTestEnvironment();
        m_mgr = ProjectMgrInterface::returnMe();
    }
    void init()
    {
        m_fixture.reset(new TestFixture);
        QDir().mkpath(m_workspace = m_fixture->filePath(QStringLiteral("workspace")));
        m_mgr->setWorkspaceFolders({m_workspace});
        MessageLoggerInterface::returnMe()->clear();
    }
    void cleanup()
    {
        m_mgr->closeAll();
        m_mgr->setWorkspaceFolders({});
        m_fixture.reset();
    }

    // Projects are listed by their header names, sorted without regard to
    // case ("é" after "f" in code unit order); one whose file is unreadable
    // under its folder's name, refused at opening with a message (the name
    // escaped) unless silent; a workspace folder may itself be a project; a
    // project removed from the disk leaves the list, its object still
    // readable.
    void discoversProjectsOfTheWorkspace()
    {
        const QList<const KAObject2Project*> generated = generate(3);
        const QString broken = m_workspace + QStringLiteral("/Bad <b>one");
        QDir().mkpath(broken);
        QFile file(TDatabase::databasePath(broken));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(4096, 'x')) == 4096);
        file.close();
        const QString rootProject = m_fixture->filePath(QStringLiteral("root project"));
        QVERIFY(TDatabase::createProject(rootProject, QStringLiteral("alpha root"), nullptr));
        QSignalSpy changed(m_mgr, &ProjectMgrInterface::projectListChanged);
        m_mgr->setWorkspaceFolders({m_workspace, rootProject});
        QVERIFY(changed.count() >= 1);
        QCOMPARE(names(m_mgr->projectList()), (QStringList{QStringLiteral("alpha root"), QStringLiteral("Bad <b>one"),
                                                           QStringLiteral("Caffeine in beverages"), QStringLiteral("Café été — arômes"),
                                                           QStringLiteral("Pesticide screening")}));
        QVERIFY(generated.at(2)->isTerminated() && generated.at(2)->projectState() == int(KAObject2Project::StateTerminated));
        QCOMPARE(m_mgr->projectOfPath(generated.at(1)->folder() + QStringLiteral("/Settings/some.xml")), generated.at(1));
        QVERIFY(ProjectMgrInterface::isProjectFolder(generated.at(0)->folder()) && !ProjectMgrInterface::isProjectFolder(m_workspace));

        const KAObject2Project* bad = m_mgr->findProject(broken);
        QVERIFY(bad && !m_mgr->openProject(bad, false, true));
        QVERIFY(MessageLoggerInterface::returnMe()->texts().isEmpty());
        QVERIFY(!m_mgr->openProject(bad));
        QVERIFY(logged(QStringLiteral("Cannot open project <b>Bad &lt;b&gt;one</b>: ")) && logged(QStringLiteral("unknown file format")));
        QVERIFY(!bad->db() && !m_mgr->currentProject() && m_mgr->openProjects().isEmpty());

        QVERIFY(QDir(generated.at(0)->folder()).removeRecursively());
        m_mgr->rescan();
        QVERIFY(!m_mgr->projectList().contains(generated.at(0)));
        QCOMPARE(generated.at(0)->name(), QStringLiteral("Caffeine in beverages"));
    }

    void scanDepth_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<QStringList>("names");
        const QString one = QStringLiteral("One level down"), two = QStringLiteral("Two levels down");
        QTest::newRow("the folder only") << 0 << QStringList();
        QTest::newRow("one level") << 1 << QStringList{one};
        QTest::newRow("two levels") << 2 << QStringList{one, two};
        QTest::newRow("any depth") << -1 << QStringList{one, QStringLiteral("Three levels down"), two};
    }

    // Projects kept in folders of folders are found as deep as asked, never
    // inside another project, and a link back up does not loop.
    void scanDepth()
    {
        QFETCH(int, depth);
        QFETCH(QStringList, names);
        QVERIFY(TDatabase::createProject(m_workspace + QStringLiteral("/a"), QStringLiteral("One level down"), nullptr));
        QVERIFY(TDatabase::createProject(m_workspace + QStringLiteral("/a/inner"), QStringLiteral("Inside a project"), nullptr));
        QVERIFY(TDatabase::createProject(m_workspace + QStringLiteral("/b/c"), QStringLiteral("Two levels down"), nullptr));
        QVERIFY(TDatabase::createProject(m_workspace + QStringLiteral("/b/d/e"), QStringLiteral("Three levels down"), nullptr));
#ifdef Q_OS_UNIX
        QVERIFY(QFile::link(m_workspace, m_workspace + QStringLiteral("/b/d/back up")));
#endif
        m_mgr->setWorkspaceFolders({m_workspace}, depth);
        QCOMPARE(::names(m_mgr->projectList()), names);
    }

    // Asking for a folder never reads the disk; discovering it does, once,
    // under any spelling of its path. A project of the same folder name,
    // forgotten once its folder is gone, leaves the first one found.
    void discoverProjectAddsProjectsFoundElsewhere()
    {
        const QString parent = m_fixture->filePath(QStringLiteral("elsewhere"));
        const QString elsewhere = parent + QStringLiteral("/Outside");
        QVERIFY(TDatabase::createProject(elsewhere, QStringLiteral("Outside"), nullptr));
        QCOMPARE(m_mgr->findProject(elsewhere), nullptr);
        QCOMPARE(m_mgr->discoverProject(parent), nullptr);
        const KAObject2Project* project = m_mgr->discoverProject(elsewhere + QStringLiteral("/"));
        QVERIFY(project);
        QCOMPARE(m_mgr->discoverProject(elsewhere), project);
        for (const QString& spelling : {elsewhere, elsewhere + QStringLiteral("/./"), elsewhere + QStringLiteral("/../Outside"),
                                        parent + QStringLiteral("//Outside")})
            QCOMPARE(m_mgr->findProject(spelling), project);
        m_mgr->rescan();
        QCOMPARE(m_mgr->projectList(), QList<const KAObject2Project*>{project});
        const QString twin = m_workspace + QStringLiteral("/Outside");
        QVERIFY(TDatabase::createProject(twin, QStringLiteral("Twin"), nullptr));
        m_mgr->rescan();
        QVERIFY(m_mgr->findProject(twin));
        QVERIFY(QDir(twin).removeRecursively());
        m_mgr->rescan();
        QCOMPARE(m_mgr->findProject(twin), nullptr);
        QCOMPARE(m_mgr->findProject(elsewhere), project);
    }

    // Opening an open project makes it current again with the same
    // database; closing the current one leaves none; a read-only open
    // refuses writes and says so to the application.
    void openCloseAndCurrent()
    {
        const QList<const KAObject2Project*> projects = generate(2);
        const KAObject2Project *first = projects.at(0), *second = projects.at(1);
        QVERIFY(m_mgr->openProject(first) && first->db()->objectCount() > 0);
        QVERIFY(m_mgr->currentDatabase() == first->db() && !TApplicationData::getInstance()->isCurrentProjectReadOnly());
        QVERIFY(m_mgr->openProject(second) && m_mgr->currentProject() == second);
        TDatabase* firstDb = first->db();
        QVERIFY(m_mgr->openProject(first) && first->db() == firstDb && m_mgr->currentProject() == first);
        QCOMPARE(m_mgr->openProjects(), (QList<const KAObject2Project*>{first, second}));
        QVERIFY(m_mgr->closeProject(first) && !first->db() && !m_mgr->currentProject() && !m_mgr->currentDatabase());
        QCOMPARE(m_mgr->openProjects(), QList<const KAObject2Project*>{second});
        QVERIFY(!m_mgr->closeProject(first));
        m_mgr->closeAll();
        QVERIFY(m_mgr->openProjects().isEmpty() && !second->db());

        QVERIFY(m_mgr->openProject(first, true) && first->db()->isReadOnly());
        QVERIFY(TApplicationData::getInstance()->isCurrentProjectReadOnly());
        QVERIFY(!first->db()->objectRename(first->db()->getObjectLst(KAObjectTypeAnalysis).first(), QStringLiteral("x")));
        QVERIFY(m_mgr->closeProject(first) && !TApplicationData::getInstance()->isCurrentProjectReadOnly());
    }

    // Each observer hears each event once, in registration order, with the
    // database still there at closing; silent opens and opening an open
    // project tell nobody; a destroyed observer is forgotten; a project
    // created is announced, an existing one refused with a message. Deleting
    // an open project closes it first; its folder goes, the other stays, and
    // the forgotten object is still safe to read.
    void observersHearEachEventOnce()
    {
        const QList<const KAObject2Project*> projects = generate(2);
        const KAObject2Project* project = projects.first();
        const QString name = project->name(), projectFolder = project->folder();
        QStringList log;
        RecordingObserver a(QStringLiteral("A"), &log), b(QStringLiteral("B"), &log);
        m_mgr->registerObserver(&a);
        m_mgr->registerObserver(&b);
        m_mgr->registerObserver(&a);
        {
            RecordingObserver shortLived(QStringLiteral("gone"), &log);
            m_mgr->registerObserver(&shortLived);
        }
        QVERIFY(m_mgr->openProject(project));
        QVERIFY(m_mgr->openProject(project, false, true));
        QVERIFY(m_mgr->closeProject(project));
        QVERIFY(m_mgr->openProject(project, false, true));
        const QString folder = m_workspace + QStringLiteral("/Created");
        const KAObject2Project* created = m_mgr->createProject(folder, QStringLiteral("Created & new"));
        QVERIFY(created && m_mgr->projectList().contains(created));
        QVERIFY(ProjectMgrInterface::isProjectFolder(folder) && QFileInfo(TDatabase::settingsPath(folder)).isDir());
        QCOMPARE(m_mgr->createProject(folder, QStringLiteral("Again")), nullptr);
        QVERIFY(logged(QStringLiteral("Cannot create project <b>Again</b>")));
        QVERIFY(m_mgr->deleteProjects({project}, true));
        const QString closed = QStringLiteral(":closed:") + name + QStringLiteral(":db");
        QCOMPARE(log, (QStringList{QStringLiteral("A:opened:") + name, QStringLiteral("B:opened:") + name, QLatin1Char('A') + closed,
                                   QLatin1Char('B') + closed, QStringLiteral("A:created:Created & new"),
                                   QStringLiteral("B:created:Created & new"), QLatin1Char('A') + closed, QLatin1Char('B') + closed}));
        QVERIFY(!QFileInfo::exists(projectFolder) && QFileInfo::exists(projects.at(1)->folder()));
        QCOMPARE(m_mgr->projectList(), (QList<const KAObject2Project*>{created, projects.at(1)}));
        QVERIFY(m_mgr->openProjects().isEmpty() && !m_mgr->currentProject() && !m_mgr->findProject(projectFolder));
        QVERIFY(!project->db() && project->name() == name);
        m_mgr->unregisterObserver(&a);
        m_mgr->unregisterObserver(&b);
    }

    // Two pool workers race to open each project silently while the GUI
    // thread reads the lists: each project opens once, on the GUI thread's
    // side, nobody is told, and the databases take writes here.
    void silentOpensFromPoolThreadsWhileListing()
    {
        const QList<const KAObject2Project*> projects = generate(4);
        QStringList log;
        RecordingObserver observer(QStringLiteral("O"), &log);
        m_mgr->registerObserver(&observer);
        QAtomicInt succeeded(0);
        for (int round = 0; round < 2; ++round) {
            for (const KAObject2Project* project : projects) {
                QThreadPool::globalInstance()->start([this, project, &succeeded]() {
                    if (m_mgr->openProject(project, false, true))
                        succeeded.fetchAndAddRelaxed(1);
                });
            }
        }
        while (!QThreadPool::globalInstance()->waitForDone(1)) {
            names(m_mgr->projectList());
            m_mgr->openProjects();
            QCoreApplication::processEvents();
        }
        QCOMPARE(int(succeeded), 2 * projects.size());
        QCOMPARE(m_mgr->openProjects().size(), projects.size());
        for (const KAObject2Project* project : projects)
            QVERIFY(project->db() && project->db()->thread() == QCoreApplication::instance()->thread() && project->db()->objectCount() > 0);
        QCoreApplication::processEvents();
        QVERIFY(!m_mgr->currentProject() && log.isEmpty());
        const KAObject2* well = projects.first()->db()->getObjectLst(KAObjectTypeWell).first();
        QVERIFY(projects.first()->db()->objectRename(well, QStringLiteral("Renamed on the GUI thread")));
        m_mgr->unregisterObserver(&observer);
    }
};

QTEST_GUILESS_MAIN(TestProjectMgr)
#include "tst_projectmgr.moc"
