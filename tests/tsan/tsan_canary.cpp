// Deliberately racy program. Run under ThreadSanitizer with the suppressions
// of scripts/tsan.supp, it must still be reported: a suppression broad enough
// to hide one of these races would hide the same mistake in the browser.
//
// Each mode makes one classic mistake of threaded Qt code, with Qt's own
// frames (pool thread, event dispatch) on the racing stacks:
//   pool          a pool task and the GUI thread write one unguarded counter;
//   posted-event  a worker changes an event's payload after posting it, while
//                 the receiver reads it on the GUI thread;
//   list          a pool task and the GUI thread append to one QList without
//                 a lock (Qt grows the list out of sight: the report must come
//                 from our side of it).
#include <QCoreApplication>
#include <QEvent>
#include <QList>
#include <QObject>
#include <QRunnable>
#include <QThreadPool>

#include <cstdio>
#include <cstring>

namespace {

int g_counter = 0; // deliberately unguarded

__attribute__((noinline)) void canaryUnguardedWrite()
{
    ++g_counter;
}

class CanaryTask : public QRunnable
{
public:
    void run() override { canaryUnguardedWrite(); }
};

const QEvent::Type CanaryEventType = QEvent::Type(QEvent::User + 417);

class CanaryEvent : public QEvent
{
public:
    CanaryEvent() : QEvent(CanaryEventType) {}
    int payload = 0;
};

__attribute__((noinline)) void canaryWriteAfterPost(CanaryEvent* event)
{
    event->payload = 42; // too late: the receiver may already read it
}

__attribute__((noinline)) int canaryReadPayload(const CanaryEvent* event)
{
    return event->payload;
}

class CanaryReceiver : public QObject
{
public:
    bool event(QEvent* event) override
    {
        if (event->type() != CanaryEventType)
            return QObject::event(event);
        seen = canaryReadPayload(static_cast<CanaryEvent*>(event));
        return true;
    }
    int seen = -1;
};

class CanaryPoster : public QRunnable
{
public:
    explicit CanaryPoster(CanaryReceiver* receiver) : m_receiver(receiver) {}
    void run() override
    {
        auto* event = new CanaryEvent;
        QCoreApplication::postEvent(m_receiver, event);
        canaryWriteAfterPost(event);
    }

private:
    CanaryReceiver* m_receiver; // not owned
};

QList<int> g_list; // deliberately unguarded

__attribute__((noinline)) void canaryUnguardedAppend(int value)
{
    g_list.append(value);
}

class ListTask : public QRunnable
{
public:
    void run() override
    {
        for (int i = 0; i < 100; ++i)
            canaryUnguardedAppend(i);
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const char* mode = argc > 1 ? argv[1] : "";
    if (std::strcmp(mode, "pool") == 0) {
        QThreadPool::globalInstance()->start(new CanaryTask);
        canaryUnguardedWrite(); // no lock, no ordering against the task
        QThreadPool::globalInstance()->waitForDone();
        return 0;
    }
    if (std::strcmp(mode, "posted-event") == 0) {
        CanaryReceiver receiver;
        QThreadPool::globalInstance()->start(new CanaryPoster(&receiver));
        // Read as soon as it arrives, before anything orders it after the
        // worker's late write.
        while (receiver.seen < 0)
            QCoreApplication::sendPostedEvents(&receiver);
        QThreadPool::globalInstance()->waitForDone();
        return 0;
    }
    if (std::strcmp(mode, "list") == 0) {
        QThreadPool::globalInstance()->start(new ListTask);
        for (int i = 0; i < 100; ++i)
            canaryUnguardedAppend(-i);
        QThreadPool::globalInstance()->waitForDone();
        return 0;
    }
    std::fprintf(stderr, "usage: tsan_canary pool|posted-event|list\n");
    return 2;
}
