#include "kafilesystembrowsersearchthread.h"

#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "texceptionhandler.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QStringMatcher>
#include <QThreadPool>

namespace {
const char* const SourceFile =
    "libraries\\internal\\platform\\browser\\filesystembrowser\\src\\kafilesystembrowsersearchthread";
} // namespace

QEvent::Type KAFileSystemBrowserSearchThread::SearchResultEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

KAFileSystemBrowserSearchThread::KAFileSystemBrowserSearchThread(QObject* receiver)
    : m_receiver(receiver)
{
    setAutoDelete(false);
}

KAFileSystemBrowserSearchThread::~KAFileSystemBrowserSearchThread() = default;

int KAFileSystemBrowserSearchThread::newSearch(const QString& text, const QList<KAAbstractBrowserCtrl*>& controllers)
{
    QWriteLocker numberLock(&m_numberLock);
    QMutexLocker lock(&m_mutex);
    m_text = text;
    m_queue = controllers;
    return ++m_searchNumber;
}

void KAFileSystemBrowserSearchThread::invalidate()
{
    QWriteLocker numberLock(&m_numberLock);
    ++m_searchNumber;
    QMutexLocker lock(&m_mutex);
    m_queue.clear();
}

void KAFileSystemBrowserSearchThread::enqueue(KAAbstractBrowserCtrl* controller)
{
    QMutexLocker lock(&m_mutex);
    m_queue.append(controller);
}

int KAFileSystemBrowserSearchThread::searchNumber() const
{
    QReadLocker lock(const_cast<QReadWriteLock*>(&m_numberLock));
    return m_searchNumber;
}

// A run counts from the moment the pool accepts it (queued or started) to
// the end of run(): a count of zero means the pool holds no run of this
// object, so it may be deleted.
bool KAFileSystemBrowserSearchThread::tryStartOne()
{
    ++m_workers;
    if (QThreadPool::globalInstance()->tryStart(this))
        return true;
    --m_workers;
    return false;
}

// Workers of an older search may hold every thread and leave without
// touching the queue: a run is queued whenever none could start.
void KAFileSystemBrowserSearchThread::startWorkers()
{
    bool started = false;
    while (tryStartOne())
        started = true;
    if (!started && !queueEmpty()) {
        ++m_workers;
        QThreadPool::globalInstance()->start(this);
    }
}

void KAFileSystemBrowserSearchThread::unqueue()
{
    while (QThreadPool::globalInstance()->tryTake(this))
        --m_workers;
}

bool KAFileSystemBrowserSearchThread::queueEmpty()
{
    QMutexLocker lock(&m_mutex);
    return m_queue.isEmpty();
}

void KAFileSystemBrowserSearchThread::run()
{
    try {
        work();
    } catch (...) {
        KAFileSystemBrowserSearchMediator::reportWorkerFailure(m_receiver, SourceFile, __LINE__);
    }
    --m_workers;
}

void KAFileSystemBrowserSearchThread::work()
{
    QReadLocker numberLock(&m_numberLock);
    const int number = m_searchNumber;
    for (;;) {
        KAAbstractBrowserCtrl* controller = nullptr;
        QString text;
        {
            QMutexLocker lock(&m_mutex);
            if (m_queue.isEmpty())
                return;
            controller = m_queue.takeFirst();
            text = m_text;
        }
        // Every free pool thread takes a project of its own.
        while (tryStartOne()) {
        }
        auto* project = dynamic_cast<KAProjectBrowserCtrl*>(controller);
        TTree<KAObject2*>* result = project ? project->takeSearchResult(text) : controller->search(text);
        TTree<KAObject2*>* root = controller->getTree();
        KAObject2* projectObject = root ? root->data() : nullptr;
        if (result && projectObject) {
            bool keep = result->childCount() > 0;
            if (!keep) {
                const KAProjectBrowserFilterPackage* filter = controller->getFilter();
                const QStringMatcher matcher(text, Qt::CaseInsensitive);
                keep = filter && filter->contains(KAObjectTypeProject) && matcher.indexIn(projectObject->name()) >= 0;
            }
            if (keep) {
                // The result is headed by its project.
                if (!result->ownsData())
                    delete result->data();
                result->setData(projectObject);
                if (text.size() < 3) {
                    auto* first = new TTree<KAObject2*>(result, -1);
                    first->setData(projectObject);
                }
                QCoreApplication::postEvent(m_receiver, new SearchResultEvent(number, result), Qt::LowEventPriority);
                result = nullptr;
            }
        }
        if (result) {
            if (!result->ownsData())
                delete result->data();
            delete result;
        }
        // Let a writer (a new search, a cancel) in between two projects.
        numberLock.unlock();
        numberLock.relock();
        if (m_searchNumber != number)
            return;
    }
}
