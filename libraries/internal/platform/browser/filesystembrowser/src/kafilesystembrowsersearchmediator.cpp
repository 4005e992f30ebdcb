#include "kafilesystembrowsersearchmediator.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowseropenallthread.h"
#include "kafilesystembrowsersearchthread.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "texceptionhandler.h"
#include "tprocessprogressinterface.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QStringMatcher>
#include <QThread>
#include <QThreadPool>

namespace {
// Event types are registered when the library loads, before any worker
// can post one.
const struct RegisterEventTypes {
    RegisterEventTypes()
    {
        KAFileSystemBrowserSearchThread::SearchResultEvent::eventType();
        KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType();
        KAFileSystemBrowserOpenAllThread::LoadingCompleteEvent::eventType();
        KAFileSystemBrowserSearchMediator::ExceptionOccuredEvent::eventType();
    }
} g_registerEventTypes;

// Prunes a copy against the text: a node whose name matches stays whole;
// another stays only while some child does.
TTree<KAObject2*>* prune(TTree<KAObject2*>* node, const QStringMatcher& matcher)
{
    if (node->data() && matcher.indexIn(node->data()->name()) >= 0)
        return node;
    TTree<KAObject2*>* child = node->firstChild();
    while (child) {
        TTree<KAObject2*>* next = child->nextSibling();
        prune(child, matcher);
        child = next;
    }
    if (node->childCount() > 0)
        return node;
    delete node;
    return nullptr;
}
} // namespace

QEvent::Type KAFileSystemBrowserSearchMediator::ExceptionOccuredEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

void KAFileSystemBrowserSearchMediator::reportWorkerFailure(QObject* receiver, const char* sourceFile, int line)
{
    QCoreApplication::postEvent(receiver, new ExceptionOccuredEvent, Qt::LowEventPriority);
    TExceptionHandler::report(QStringLiteral("Unknown Exception (Thread)"), QString::fromLatin1(sourceFile), line);
}

KAFileSystemBrowserSearchMediator::KAFileSystemBrowserSearchMediator(KAFileSystemBrowserCtrl* controller)
    : m_controller(controller)
{
    m_resultTimer.setInterval(0);
    connect(&m_resultTimer, &QTimer::timeout, this, &KAFileSystemBrowserSearchMediator::showNextResult);
    m_retiredTimer.setSingleShot(true);
    m_retiredTimer.setInterval(100);
    connect(&m_retiredTimer, &QTimer::timeout, this, &KAFileSystemBrowserSearchMediator::freeRetiredResults);
}

KAFileSystemBrowserSearchMediator::~KAFileSystemBrowserSearchMediator()
{
    m_resultTimer.disconnect(this);
    m_resultTimer.stop();
    m_retiredTimer.disconnect(this);
    m_retiredTimer.stop();
    cancel(false);
    delete m_openAllThread;
    delete m_searchThread;
    // The view goes with the controller; results it showed go here.
    dropQueuedResults();
    dropShownResults();
    qDeleteAll(m_opened);
    m_opened.clear();
}

void KAFileSystemBrowserSearchMediator::search(const QString& text)
{
    m_text = text;
    if (!m_filter || !m_filter->contains(FsProjectContent)) {
        nameSearch();
        return;
    }
    if (m_filter->useCustomProjectsContent()) {
        customContentSearch();
        return;
    }
    if (!m_searchThread)
        m_searchThread = new KAFileSystemBrowserSearchThread(this);
    if (!m_openAllThread || !m_openAllThread->isRunning())
        openAllProjects();
    m_currentSearch = m_searchThread->newSearch(text, m_opened.values());
    // The workers start first: the view drops the older results meanwhile,
    // and theirs are delivered only once this returns to the event loop.
    m_searchThread->startWorkers();
    m_controller->clearEditor();
    retireShownResults();
}

void KAFileSystemBrowserSearchMediator::cancelOpenAll()
{
    if (!m_openAllThread)
        return;
    m_openAllThread->cancel();
    // A job still waiting in the pool's queue is taken back: it never runs.
    m_openAllThread->unqueue();
    m_openAllThread->wait();
    // Controllers it posted are delivered (and kept) before it goes.
    QCoreApplication::sendPostedEvents(this, KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType());
    QCoreApplication::sendPostedEvents(this, KAFileSystemBrowserOpenAllThread::LoadingCompleteEvent::eventType());
    delete m_openAllThread;
    m_openAllThread = nullptr;
    m_loading = false;
}

void KAFileSystemBrowserSearchMediator::openAllProjects()
{
    cancelOpenAll();
    QList<const KAObject2Project*> projects = ProjectMgrInterface::returnMe()->projectList();
    for (int i = projects.size() - 1; i >= 0; --i) {
        if (m_opened.contains(ulong(projects.at(i))))
            projects.removeAt(i);
    }
    if (projects.isEmpty())
        return;
    if (m_progress)
        m_progress->startProcess(projects.size(), QString(), QString());
    m_openAllThread = new KAFileSystemBrowserOpenAllThread(this, projects, m_filter);
    m_loading = true;
    m_openAllThread->start();
}

void KAFileSystemBrowserSearchMediator::nameSearch()
{
    const QStringMatcher matcher(m_text, Qt::CaseInsensitive);
    m_controller->clearEditor();
    dropShownResults();
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList()) {
        if (matcher.indexIn(project->name()) < 0)
            continue;
        auto* node = new TTree<KAObject2*>;
        node->setData(const_cast<KAObject2Project*>(project));
        m_shown.append(node);
        m_controller->fillTree(node);
    }
}

void KAFileSystemBrowserSearchMediator::customContentSearch()
{
    const QStringMatcher matcher(m_text, Qt::CaseInsensitive);
    m_controller->clearEditor();
    dropShownResults();
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList()) {
        TTree<KAObject2*>* content = m_filter->getCustomContent(project);
        if (!content)
            continue;
        if (TTree<KAObject2*>* kept = prune(content->copy(), matcher)) {
            m_shown.append(kept);
            m_controller->fillTree(kept);
        }
    }
}

void KAFileSystemBrowserSearchMediator::cancel()
{
    cancel(true);
}

void KAFileSystemBrowserSearchMediator::cancel(bool resetView)
{
    if (m_openAllThread) {
        m_openAllThread->cancel();
        m_openAllThread->unqueue();
    }
    if (m_searchThread) {
        m_searchThread->invalidate();
        // Runs queued while the pool was busy would find nothing to do.
        m_searchThread->unqueue();
    }
    m_currentSearch = 0;
    if (m_openAllThread)
        m_openAllThread->wait();
    m_loading = false;
    while (m_searchThread && m_searchThread->workerCount() != 0)
        QThread::yieldCurrentThread();
    QCoreApplication::sendPostedEvents(this, 0);
    dropQueuedResults();
    if (m_progress)
        m_progress->endProcess();
    if (resetView && m_controller) {
        m_controller->resetView();
        dropShownResults();
    }
}

void KAFileSystemBrowserSearchMediator::projectClosed(const KAObject2Project* project)
{
    const ulong key = ulong(project);
    if (!m_opened.contains(key) && !(m_openAllThread && m_openAllThread->isRunning()))
        return;
    // Workers and the open-all job stop first; the controllers it had made
    // are delivered by then.
    cancel(true);
    delete m_opened.take(key);
}

bool KAFileSystemBrowserSearchMediator::isFinished() const
{
    // Loading lasts from the job's start, queued or running, to its
    // completion event.
    if (m_loading || (m_openAllThread && m_openAllThread->isRunning()))
        return false;
    if (m_searchThread && (m_searchThread->workerCount() != 0 || !m_searchThread->queueEmpty()))
        return false;
    return m_queue.isEmpty();
}

void KAFileSystemBrowserSearchMediator::treeRebuilt()
{
    if (isActive() && !m_text.isEmpty())
        search(m_text);
}

void KAFileSystemBrowserSearchMediator::dropQueuedResults()
{
    for (const auto& entry : qAsConst(m_queue))
        delete entry.second;
    m_queue.clear();
}

// Only once the view no longer shows them.
void KAFileSystemBrowserSearchMediator::dropShownResults()
{
    qDeleteAll(m_shown);
    m_shown.clear();
    qDeleteAll(m_retired);
    m_retired.clear();
}

// Freeing a search's results takes as long as showing a good part of them
// (their nodes were made by the workers, whose memory the workers of the
// new search are using): it waits until the new search is over. Results
// retired earlier and still there go at once, so that typing fast never
// piles up more than one search's results.
void KAFileSystemBrowserSearchMediator::retireShownResults()
{
    qDeleteAll(m_retired);
    m_retired = m_shown;
    m_shown.clear();
    if (!m_retired.isEmpty())
        m_retiredTimer.start();
}

void KAFileSystemBrowserSearchMediator::freeRetiredResults()
{
    if (!isFinished()) {
        m_retiredTimer.start();
        return;
    }
    qDeleteAll(m_retired);
    m_retired.clear();
}

void KAFileSystemBrowserSearchMediator::showNextResult()
{
    if (m_queue.isEmpty()) {
        m_resultTimer.stop();
        return;
    }
    const QPair<ulong, TTree<KAObject2*>*> entry = m_queue.takeFirst();
    if (int(entry.first) != m_currentSearch || m_currentSearch == 0) {
        delete entry.second; // a result of an older search is never shown
        return;
    }
    m_shown.append(entry.second);
    m_controller->fillTree(entry.second);
}

bool KAFileSystemBrowserSearchMediator::event(QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == KAFileSystemBrowserSearchThread::SearchResultEvent::eventType()) {
        auto* result = static_cast<KAFileSystemBrowserSearchThread::SearchResultEvent*>(event);
        m_queue.append({ulong(result->searchNumber()), result->result()});
        m_resultTimer.start();
        return true;
    }
    if (type == KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType()) {
        auto* opened = static_cast<KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent*>(event);
        KAAbstractBrowserCtrl* ctrl = opened->controller();
        if (m_opened.contains(opened->projectKey())) {
            delete ctrl;
        } else {
            if (auto* project = dynamic_cast<KAProjectBrowserCtrl*>(ctrl))
                project->registerPendingCreators();
            m_opened.insert(opened->projectKey(), ctrl);
            if (isActive() && m_searchThread) {
                m_searchThread->enqueue(ctrl);
                m_searchThread->startWorkers();
            }
        }
        if (m_progress)
            m_progress->advanceProcess(1);
        return true;
    }
    if (type == KAFileSystemBrowserOpenAllThread::LoadingCompleteEvent::eventType()) {
        m_loading = false;
        if (m_progress)
            m_progress->endProcess();
        if (m_openAllThread) {
            m_openAllThread->wait();
            QCoreApplication::sendPostedEvents(this, KAFileSystemBrowserOpenAllThread::CtrlOpenedEvent::eventType());
        }
        if (isActive() && m_searchThread)
            m_searchThread->startWorkers();
        return true;
    }
    if (type == ExceptionOccuredEvent::eventType()) {
        if (isActive()) {
            cancel(true);
            MessageLoggerInterface::Error(tr("An unexpected error occurred", "Une erreur inattendue s'est produite"));
        }
        return true;
    }
    return QObject::event(event);
}
