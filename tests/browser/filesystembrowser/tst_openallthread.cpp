// ctest-label: threads
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowseropenallthread.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaprojectbrowserabstract.h"
#include "kaprojectbrowserctrl.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "tprocessprogressinterface.h"
#include "ttree.h"

#include <QFile>
#include <QTest>
#include <QThreadPool>

#include <memory>

namespace {

// Records what the open-all job posts, in order, and takes the controllers.
class Receiver : public QObject
{
public:
    ~Receiver() override { qDeleteAll(controllers); }
    bool event(QEvent* event) override
    {
        if (event->type() == KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType()) {
            auto* opened = static_cast<KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent*>(event);
            types << QStringLiteral("opened");
            keys << opened->projectKey();
            controllers << opened->controller();
            return true;
        }
        if (event->type() == KAFileSystemBrowserOpenAllThread::LoadingCompleteEvent::eventType()) {
            types << QStringLiteral("complete");
            return true;
        }
        if (event->type() >= QEvent::User) {
            types << QStringLiteral("other");
            return true;
        }
        return QObject::event(event);
    }
    QStringList types;
    QList<ulong> keys;
    QList<KAAbstractBrowserCtrl*> controllers; // owned
};

class TrackedCtrl : public KAProjectBrowserCtrl
{
public:
    explicit TrackedCtrl(int* deletions) : m_deletions(deletions) {}
    ~TrackedCtrl() override { ++*m_deletions; }

private:
    int* m_deletions; // not owned
};

class RecordingProgress : public TProcessProgressInterface
{
public:
    void startProcess(int steps, const QString&, const QString&) override { log << QStringLiteral("start %1").arg(steps); }
    void advanceProcess(int) override { log << QStringLiteral("step"); }
    void endProcess() override { log << QStringLiteral("end"); }
    QStringList log;
};

} // namespace

// The job that opens every project on the pool and hands each project
// controller to the search mediator.
class tst_OpenAllThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void emptyListPostsOneCompletePerWorker_data();
    void emptyListPostsOneCompletePerWorker();
    void projectsThenComplete();
    void cancelBeforeRunPostsNothing_data();
    void cancelBeforeRunPostsNothing();
    void projectThatFailsToOpenIsSkipped();
    void twoCtrlOpenedEventsKeepFirst();

private:
    void runToEnd(KAFileSystemBrowserOpenAllThread* job);

    std::unique_ptr<TestFixture> m_workspace;
    QString m_broken;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    int m_maxThreads = 0;
};

void tst_OpenAllThread::initTestCase()
{
    kaInitTestEnvironment();
    m_maxThreads = QThreadPool::globalInstance()->maxThreadCount();
    m_workspace = std::make_unique<TestFixture>();
    TSampleGenerator::Options options = TestFixture::smallOptions();
    options.projects = 2;
    QString error;
    QVERIFY2(!TSampleGenerator::generate(m_workspace->path(), options, &error).isEmpty(), qPrintable(error));
    m_broken = m_workspace->filePath("Broken");
    QVERIFY2(TSampleGenerator::generateProject(m_broken, QStringLiteral("Broken"), options, 3, &error),
             qPrintable(error));
    QFile database(TechDB::TDatabase::databasePath(m_broken));
    QVERIFY(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, '\x5a'));
    database.close();
}

void tst_OpenAllThread::cleanupTestCase()
{
    ProjectMgrInterface::returnMe()->closeAll();
    m_workspace.reset();
}

void tst_OpenAllThread::init()
{
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_workspace->path()});
    QCOMPARE(ProjectMgrInterface::returnMe()->projectList().size(), 3);
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
}

void tst_OpenAllThread::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    QThreadPool::globalInstance()->setMaxThreadCount(m_maxThreads);
    ProjectMgrInterface::returnMe()->closeAll();
    m_filter.reset();
}

void tst_OpenAllThread::runToEnd(KAFileSystemBrowserOpenAllThread* job)
{
    job->start();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(!job->isRunning());
}

void tst_OpenAllThread::emptyListPostsOneCompletePerWorker_data()
{
    QTest::addColumn<int>("threads");
    QTest::newRow("one pool thread: one worker") << 1;
    QTest::newRow("four pool threads") << 4;
}

void tst_OpenAllThread::emptyListPostsOneCompletePerWorker()
{
    QFETCH(int, threads);
    QThreadPool::globalInstance()->setMaxThreadCount(threads);
    Receiver receiver;
    KAFileSystemBrowserOpenAllThread job(&receiver, {}, m_filter.get());
    runToEnd(&job);
    QCoreApplication::sendPostedEvents(&receiver);
    QVERIFY(!receiver.types.isEmpty());
    QCOMPARE(receiver.types.count(QStringLiteral("complete")), receiver.types.size());
    // With more threads a worker that ends frees a thread for the next one
    // that another worker starts: how many run depends on timing.
    if (threads == 1)
        QCOMPARE(receiver.types.size(), 1);
}

void tst_OpenAllThread::projectsThenComplete()
{
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    QList<const KAObject2Project*> projects;
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList()) {
        if (project->folder() != m_broken)
            projects << project;
    }
    QCOMPARE(projects.size(), 2);
    // One already open, one to open.
    QVERIFY(ProjectMgrInterface::returnMe()->openProject(projects.first(), false, true));

    Receiver receiver;
    KAFileSystemBrowserOpenAllThread job(&receiver, projects, m_filter.get());
    runToEnd(&job);
    QCoreApplication::sendPostedEvents(&receiver);
    QCOMPARE(receiver.types, (QStringList{"opened", "opened", "complete"}));
    QCOMPARE(receiver.keys, (QList<ulong>{ulong(projects.at(0)), ulong(projects.at(1))}));
    for (int i = 0; i < 2; ++i) {
        QVERIFY(receiver.controllers.at(i)->getTree());
        QCOMPARE(receiver.controllers.at(i)->getTree()->data(), static_cast<const KAObject2*>(projects.at(i)));
        QVERIFY(projects.at(i)->db() && projects.at(i)->db()->isReady());
    }
}

void tst_OpenAllThread::cancelBeforeRunPostsNothing_data()
{
    QTest::addColumn<bool>("withProjects");
    QTest::newRow("empty list") << false;
    QTest::newRow("projects waiting") << true;
}

void tst_OpenAllThread::cancelBeforeRunPostsNothing()
{
    QFETCH(bool, withProjects);
    Receiver receiver;
    const QList<const KAObject2Project*> projects =
        withProjects ? ProjectMgrInterface::returnMe()->projectList() : QList<const KAObject2Project*>{};
    KAFileSystemBrowserOpenAllThread job(&receiver, projects, m_filter.get());
    job.cancel();
    runToEnd(&job);
    QCoreApplication::sendPostedEvents(&receiver);
    QVERIFY(receiver.types.isEmpty());
    QVERIFY(ProjectMgrInterface::returnMe()->openProjects().isEmpty());
}

void tst_OpenAllThread::projectThatFailsToOpenIsSkipped()
{
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    // The broken project first: the next one is still handled.
    QList<const KAObject2Project*> projects;
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList()) {
        if (project->folder() == m_broken)
            projects.prepend(project);
        else
            projects.append(project);
    }
    QCOMPARE(projects.first()->folder(), m_broken);
    Receiver receiver;
    KAFileSystemBrowserOpenAllThread job(&receiver, projects, m_filter.get());
    runToEnd(&job);
    QCoreApplication::sendPostedEvents(&receiver);
    QCOMPARE(receiver.types, (QStringList{"opened", "opened", "complete"}));
    QVERIFY(!receiver.keys.contains(ulong(projects.first())));
}

void tst_OpenAllThread::twoCtrlOpenedEventsKeepFirst()
{
    int firstDeleted = 0; // outlive the controller, which deletes the kept one
    int secondDeleted = 0;
    KAFileSystemBrowserCtrl ctrl(QStringLiteral("tst_openall"));
    ctrl.init(m_filter.get(), nullptr, false);
    RecordingProgress progress;
    ctrl.setSearchProcessProgress(&progress);
    KAFileSystemBrowserSearchMediator* mediator = ctrl.mediator();
    const ulong key = ulong(ProjectMgrInterface::returnMe()->projectList().first());

    auto* first = new TrackedCtrl(&firstDeleted);
    auto* second = new TrackedCtrl(&secondDeleted);
    QCoreApplication::postEvent(mediator, new KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent(key, first));
    QCoreApplication::postEvent(mediator, new KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent(key, second));
    QCoreApplication::sendPostedEvents(mediator);

    QCOMPARE(mediator->openedControllers(), QList<KAAbstractBrowserCtrl*>{first});
    QCOMPARE(secondDeleted, 1);
    QCOMPARE(firstDeleted, 0);
    QCOMPARE(progress.log, (QStringList{"step", "step"}));
    ctrl.setSearchProcessProgress(nullptr);
}

QTEST_MAIN(tst_OpenAllThread)
#include "tst_openallthread.moc"
