#include "kafilesystembrowseropenallthread.h"

#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kamdiinterfaceblocker.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "texceptionhandler.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

namespace {
const char* const SourceFile =
    "libraries\\internal\\platform\\browser\\filesystembrowser\\src\\kafilesystembrowseropenallthread";
} // namespace

QEvent::Type KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

QEvent::Type KAFileSystemBrowserOpenAllThread::LoadingCompleteEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

KAFileSystemBrowserOpenAllThread::KAFileSystemBrowserOpenAllThread(QObject* receiver,
                                                                   const QList<const KAObject2Project*>& projects,
                                                                   KAFileSystemBrowserFilterPackage* filter)
    : m_receiver(receiver)
    , m_projects(projects)
    , m_filter(filter)
{
    setAutoDelete(false);
}

KAFileSystemBrowserOpenAllThread::~KAFileSystemBrowserOpenAllThread()
{
    cancel();
    unqueue();
    wait();
}

void KAFileSystemBrowserOpenAllThread::cancel()
{
    QMutexLocker lock(&m_mutex);
    m_cancelled = true;
}

bool KAFileSystemBrowserOpenAllThread::cancelled()
{
    QMutexLocker lock(&m_mutex);
    return m_cancelled;
}

void KAFileSystemBrowserOpenAllThread::wait() const
{
    while (m_running.load() != 0)
        QThread::yieldCurrentThread();
}

// A run counts from the moment the pool accepts it to the end of run().
void KAFileSystemBrowserOpenAllThread::start()
{
    ++m_running;
    QThreadPool::globalInstance()->start(this);
}

void KAFileSystemBrowserOpenAllThread::unqueue()
{
    while (QThreadPool::globalInstance()->tryTake(this))
        --m_running;
}

void KAFileSystemBrowserOpenAllThread::run()
{
    try {
        work();
    } catch (...) {
        KAFileSystemBrowserSearchMediator::reportWorkerFailure(m_receiver, SourceFile, __LINE__);
    }
    --m_running;
}

void KAFileSystemBrowserOpenAllThread::work()
{
    QThreadPool* pool = QThreadPool::globalInstance();
    pool->reserveThread();
    for (;;) {
        ++m_running;
        if (!pool->tryStart(this)) {
            --m_running;
            break;
        }
    }
    pool->releaseThread();

    const KAMdiInterfaceBlocker blocker;
    if (cancelled())
        return;
    QThread* guiThread = QCoreApplication::instance() ? QCoreApplication::instance()->thread() : nullptr;
    for (;;) {
        const KAObject2Project* project = nullptr;
        {
            QMutexLocker lock(&m_mutex);
            if (m_projects.isEmpty())
                break;
            project = m_projects.takeFirst();
        }
        TechDB::TDatabase* db = project->db();
        if (!db || !db->isReady()) {
            if (!ProjectMgrInterface::returnMe()->openProject(project, false, true))
                continue; // skipped without a message
        }
        auto* ctrl = new KAProjectBrowserCtrl;
        ctrl->init(m_filter, project, true);
        if (guiThread)
            ctrl->moveToThread(guiThread);
        QCoreApplication::postEvent(m_receiver, new CtrlOpenedEvent(ulong(project), ctrl), Qt::LowEventPriority);
        if (cancelled())
            return;
    }
    QCoreApplication::postEvent(m_receiver, new LoadingCompleteEvent, Qt::LowEventPriority);
}
