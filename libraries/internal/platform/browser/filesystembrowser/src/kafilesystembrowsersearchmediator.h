#pragma once

#include "kabrowser_export.h"

#include <QEvent>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QTimer>

template <typename T> class TTree;
class KAAbstractBrowserCtrl;
class KAFileSystemBrowserCtrl;
class KAObject2Project;
class KAFileSystemBrowserFilterPackage;
class KAFileSystemBrowserOpenAllThread;
class KAFileSystemBrowserSearchThread;
class KAObject2;
class TProcessProgressInterface;

// Runs the file-system explorer's search over every project the host knows,
// on the GUI thread's side: starts and cancels the workers, receives their
// results as posted events, keeps the opened project controllers, and hands
// the view one result per timer tick.
class KABROWSER_EXPORT KAFileSystemBrowserSearchMediator : public QObject
{
    Q_OBJECT
public:
    class ExceptionOccuredEvent : public QEvent
    {
    public:
        static QEvent::Type eventType();
        ExceptionOccuredEvent() : QEvent(eventType()) {}
    };

    explicit KAFileSystemBrowserSearchMediator(KAFileSystemBrowserCtrl* controller);

    // What a worker does with anything that leaves its loop (any thread):
    // the mediator is told with a posted event, then the host's exception
    // handler gets a report. Nothing leaves a pool thread.
    static void reportWorkerFailure(QObject* receiver, const char* sourceFile, int line);
    ~KAFileSystemBrowserSearchMediator() override;

    void setFilter(KAFileSystemBrowserFilterPackage* filter) { m_filter = filter; }
    void setProgress(TProcessProgressInterface* progress) { m_progress = progress; }

    void search(const QString& text);
    void cancel();
    bool isActive() const { return m_currentSearch != 0; }
    int currentSearch() const { return m_currentSearch; }
    const QString& text() const { return m_text; }
    QList<KAAbstractBrowserCtrl*> openedControllers() const { return m_opened.values(); }
    // The project is closing: its controller goes, and so does a search
    // that could still use it or show its objects.
    void projectClosed(const KAObject2Project* project);
    int queuedResults() const { return m_queue.size(); }
    // Nothing more will arrive for the current search: no project left to
    // open or search, no result waiting (posted events delivered first).
    bool isFinished() const;
    // Results a newer search took off the view and that are not freed yet:
    // they go once that search is over, so that freeing them never slows
    // its start.
    int retiredResultCount() const { return m_retired.size(); }
    // The controller rebuilt its tree: an active search runs again.
    void treeRebuilt();

    bool event(QEvent* event) override;

private slots:
    void showNextResult();
    void freeRetiredResults();

private:
    void openAllProjects();
    void nameSearch();
    void customContentSearch();
    void cancelOpenAll();
    void dropShownResults();
    void retireShownResults();
    void dropQueuedResults();
    void cancel(bool resetView);

    KAFileSystemBrowserCtrl* m_controller;                       // not owned: owns this mediator
    KAFileSystemBrowserSearchThread* m_searchThread = nullptr;   // owned
    KAFileSystemBrowserOpenAllThread* m_openAllThread = nullptr; // owned
    QMap<ulong, KAAbstractBrowserCtrl*> m_opened;                // owned controllers, keyed by project address
    KAFileSystemBrowserFilterPackage* m_filter = nullptr;        // not owned
    TProcessProgressInterface* m_progress = nullptr;             // not owned
    int m_currentSearch = 0;
    QList<QPair<ulong, TTree<KAObject2*>*>> m_queue;              // results not shown yet, owned
    QList<TTree<KAObject2*>*> m_shown;                           // results in the view, owned
    QList<TTree<KAObject2*>*> m_retired;                         // results taken off the view, owned
    QTimer m_resultTimer;
    QTimer m_retiredTimer; // frees the retired results once the search is over
    QString m_text;
    bool m_loading = false; // the open-all job started and has not completed
};
