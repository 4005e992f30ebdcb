#pragma once

#include "kabrowser_export.h"

#include <QEvent>
#include <QList>
#include <QMutex>
#include <QRunnable>
#include <atomic>

class KAAbstractBrowserCtrl;
class KAFileSystemBrowserFilterPackage;
class KAObject2Project;
class QObject;

// Opens every project of a list on the global pool (as many workers as are
// free), builds a project controller for each, and posts it to the
// receiver, which takes it.
class KABROWSER_EXPORT KAFileSystemBrowserOpenAllThread : public QRunnable
{
public:
    class CtrlOpenedEvent : public QEvent
    {
    public:
        static QEvent::Type eventType();
        CtrlOpenedEvent(ulong projectKey, KAAbstractBrowserCtrl* controller)
            : QEvent(eventType()), m_projectKey(projectKey), m_controller(controller) {}
        ulong projectKey() const { return m_projectKey; }
        KAAbstractBrowserCtrl* controller() const { return m_controller; }

    private:
        ulong m_projectKey;
        KAAbstractBrowserCtrl* m_controller; // handed to the receiver
    };

    class LoadingCompleteEvent : public QEvent
    {
    public:
        static QEvent::Type eventType();
        LoadingCompleteEvent() : QEvent(eventType()) {}
    };

    KAFileSystemBrowserOpenAllThread(QObject* receiver, const QList<const KAObject2Project*>& projects,
                                     KAFileSystemBrowserFilterPackage* filter);
    ~KAFileSystemBrowserOpenAllThread() override;

    // Hands the job to the global pool.
    void start();
    // Takes back the runs still waiting in the pool's queue.
    void unqueue();
    void cancel();
    // Queued or running.
    bool isRunning() const { return m_running.load() != 0; }
    // Returns once no worker runs (yielding the processor meanwhile).
    void wait() const;

    void run() override;

private:
    void work();
    bool cancelled();

    QMutex m_mutex;                              // guards m_projects and m_cancelled
    QObject* m_receiver;                         // not owned
    QList<const KAObject2Project*> m_projects;   // guarded by m_mutex
    KAFileSystemBrowserFilterPackage* m_filter;  // not owned; read only by the workers
    bool m_cancelled = false;                    // guarded by m_mutex
    std::atomic<int> m_running{0};               // runs accepted by the pool, queued or running
};
