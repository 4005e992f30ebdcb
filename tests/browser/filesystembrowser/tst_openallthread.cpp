// ctest-label: threads
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowseropenallthread.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "ttree.h"

#include <QTest>
#include <QThreadPool>

namespace {

using Job = KAFileSystemBrowserOpenAllThread;

// Runs the open-all job to its end and records what it posted, in order
// ("opened:KEY" or "complete"); takes the controllers.
struct Receiver : QObject {
    Receiver(const QList<const KAObject2Project*>& projects, KAFileSystemBrowserFilterPackage* filter)
    {
        Job job(this, projects, filter);
        job.start();
        QThreadPool::globalInstance()->waitForDone();
        QVERIFY(!job.isRunning());
        QCoreApplication::sendPostedEvents(this);
    }
    ~Receiver() override { qDeleteAll(controllers); }
    bool event(QEvent* event) override
    {
        if (event->type() == Job::CtrlOpenedEvent::eventType()) {
            auto* opened = static_cast<Job::CtrlOpenedEvent*>(event);
            types << QStringLiteral("opened:%1").arg(opened->projectKey());
            controllers << opened->controller();
        } else if (event->type() >= QEvent::User) {
            types << (event->type() == Job::LoadingCompleteEvent::eventType() ? "complete" : "other");
        }
        return event->type() >= QEvent::User || QObject::event(event);
    }
    QStringList types;
    QList<KAAbstractBrowserCtrl*> controllers; // owned
};

struct TrackedCtrl : KAProjectBrowserCtrl {
    explicit TrackedCtrl(int* deletions) : m_deletions(deletions) {}
    ~TrackedCtrl() override { ++*m_deletions; }
    int* m_deletions; // not owned
};

} // namespace

// The job that opens every project on the pool for the search mediator.
class tst_OpenAllThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup() { ProjectMgrInterface::returnMe()->closeAll(); }
    void jobPostsEachOpenedProjectThenComplete();
    void twoCtrlOpenedEventsKeepFirst();

private:
    TestFixture m_workspace;
    KAFileSystemBrowserFilterPackage m_filter;
};

void tst_OpenAllThread::initTestCase()
{
    kaInitTestEnvironment();
    QVERIFY(!m_workspace.makeProject(QStringLiteral("First")).isEmpty());
    QVERIFY(!m_workspace.makeProject(QStringLiteral("Second"), TestFixture::smallOptions(), 8).isEmpty());
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_workspace.path()});
    QCOMPARE(ProjectMgrInterface::returnMe()->projectList().size(), 2);
}

void tst_OpenAllThread::jobPostsEachOpenedProjectThenComplete()
{
    // An empty list: each worker posts its completion and nothing else. With
    // more threads, how many workers run depends on timing.
    for (int threads : {4, 1}) {
        QThreadPool::globalInstance()->setMaxThreadCount(threads);
        const Receiver receiver({}, &m_filter);
        QVERIFY2(!receiver.types.isEmpty() && receiver.types.count(QStringLiteral("complete")) == receiver.types.size()
                     && (threads > 1 || receiver.types.size() == 1),
                 qPrintable(receiver.types.join(' ')));
    }

    // On one pool thread: a project already open, one to open, then the completion.
    const QList<const KAObject2Project*> projects = ProjectMgrInterface::returnMe()->projectList();
    QVERIFY(ProjectMgrInterface::returnMe()->openProject(projects.at(0), false, true));
    const Receiver receiver(projects, &m_filter);
    QCOMPARE(receiver.types, (QStringList{QStringLiteral("opened:%1").arg(ulong(projects.at(0))),
                                          QStringLiteral("opened:%1").arg(ulong(projects.at(1))), "complete"}));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(receiver.controllers.at(i)->getTree()->data(), static_cast<const KAObject2*>(projects.at(i)));
    QVERIFY(projects.at(1)->db() && projects.at(1)->db()->isReady());
}

void tst_OpenAllThread::twoCtrlOpenedEventsKeepFirst()
{
    int firstDeleted = 0, secondDeleted = 0; // outlive the controller, which deletes the kept one
    KAFileSystemBrowserCtrl ctrl(QStringLiteral("tst_openall"));
    ctrl.init(&m_filter, nullptr, false);
    const ulong key = ulong(ProjectMgrInterface::returnMe()->projectList().first());
    auto* first = new TrackedCtrl(&firstDeleted);
    QCoreApplication::postEvent(ctrl.mediator(), new Job::CtrlOpenedEvent(key, first));
    QCoreApplication::postEvent(ctrl.mediator(), new Job::CtrlOpenedEvent(key, new TrackedCtrl(&secondDeleted)));
    QCoreApplication::sendPostedEvents(ctrl.mediator());
    QCOMPARE(ctrl.mediator()->openedControllers(), QList<KAAbstractBrowserCtrl*>{first});
    QVERIFY(secondDeleted == 1 && firstDeleted == 0);
}

QTEST_MAIN(tst_OpenAllThread)
#include "tst_openallthread.moc"
