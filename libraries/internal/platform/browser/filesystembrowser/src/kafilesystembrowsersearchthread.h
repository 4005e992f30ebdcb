#pragma once

#include "kabrowser_export.h"

#include <QEvent>
#include <QList>
#include <QMutex>
#include <QReadWriteLock>
#include <QRunnable>
#include <QString>
#include <atomic>

template <typename T> class TTree;
class KAAbstractBrowserCtrl;
class KAObject2;
class QObject;

// Searches project controllers taken from a queue, on as many pool threads
// as are free, and posts each project's result to the receiver. One object
// serves all searches: a new search number makes every worker stop after
// its current project.
class KABROWSER_EXPORT KAFileSystemBrowserSearchThread : public QRunnable
{
public:
    class SearchResultEvent : public QEvent
    {
    public:
        static QEvent::Type eventType();
        SearchResultEvent(int searchNumber, TTree<KAObject2*>* result)
            : QEvent(eventType()), m_searchNumber(searchNumber), m_result(result) {}
        int searchNumber() const { return m_searchNumber; }
        // The receiver takes the tree.
        TTree<KAObject2*>* result() const { return m_result; }

    private:
        int m_searchNumber;
        TTree<KAObject2*>* m_result;
    };

    explicit KAFileSystemBrowserSearchThread(QObject* receiver);
    ~KAFileSystemBrowserSearchThread() override;

    // Starts a new search over these controllers; returns its number.
    int newSearch(const QString& text, const QList<KAAbstractBrowserCtrl*>& controllers);
    // Makes the running search stale; workers stop after their project.
    void invalidate();
    void enqueue(KAAbstractBrowserCtrl* controller);
    int searchNumber() const;
    int workerCount() const { return m_workers.load(); }
    // Starts workers on the global pool while it accepts them.
    void startWorkers();
    // Takes back the runs still waiting in the pool's queue.
    void unqueue();
    bool queueEmpty();

    void run() override;

private:
    void work();
    bool tryStartOne();

    QReadWriteLock m_numberLock;             // guards m_searchNumber; taken before m_mutex
    QMutex m_mutex;                          // guards m_text and m_queue
    QObject* m_receiver;                     // not owned
    QString m_text;                          // guarded by m_mutex
    QList<KAAbstractBrowserCtrl*> m_queue;   // guarded by m_mutex; controllers not owned
    int m_searchNumber = 0;                  // guarded by m_numberLock
    std::atomic<int> m_workers{0};           // runs accepted by the pool, queued or running
};
