// Preloaded into the ThreadSanitizer suite (LD_PRELOAD): tells
// ThreadSanitizer about the synchronisation that the system's Qt performs
// where it cannot see it. That Qt is not built with ThreadSanitizer: its
// mutexes wait on futexes, its event queue and thread pool hand objects over
// under those mutexes, so every correct hand-over looks like a race. Instead
// of suppressing the reports (which would hide real races on the same
// stacks), the calls our code makes into Qt are wrapped here and annotated
// with the ordering that Qt documents:
//
//   QMutex lock/unlock               acquire / release on the mutex
//   QReadWriteLock                   writers order everybody, readers only
//                                    follow writers (as for pthread rwlocks)
//   QCoreApplication::postEvent      everything the poster did before posting
//                                    happens before the event is handled
//   QWaitCondition::wait             the wait unlocks the mutex (or read-write
//                                    lock) and locks it again, inside Qt
//   QThread::wait / isFinished       a thread's whole run, up to its finished
//                                    signal, happens before a successful wait
//                                    (Qt's threads are detached: no join to see)
//   QThreadPool::start / tryStart    everything done before handing a task
//                                    over happens before it runs: the task
//                                    travels in a wrapper that acquires what
//                                    the starting thread released (a pool
//                                    thread that is busy takes the next task
//                                    under the pool's mutex, out of sight)
//
// The wrapper runs the task exactly as the pool would (a task that deletes
// itself is deleted after its run), and tryTake() finds a task through its
// wrappers still waiting in the queue; our code never starts one
// self-deleting task twice at once, which the wrapper would not support.
//
// Only calls that reach Qt through the dynamic linker are wrapped (ours and
// those of other Qt libraries); Qt's calls inside one of its own libraries
// are bound directly and stay unseen, which is what the suppressions file
// covers. Anything done after a hand-over stays unordered: the canary checks
// that such races are still reported.
#include <QCoreApplication>
#include <QEvent>
#include <QHash>
#include <QMutex>
#include <QReadWriteLock>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>
#include <QWaitCondition>

#include <sanitizer/tsan_interface.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace {

template <typename Function>
Function realFunction(const char* symbol)
{
    void* address = dlsym(RTLD_NEXT, symbol);
    if (!address) {
        std::fprintf(stderr, "qtsyncannotations: %s not found\n", symbol);
        std::abort();
    }
    return reinterpret_cast<Function>(address);
}

#define REAL(type, symbol) static const auto real = realFunction<type>(symbol)

// A read-write lock has two clocks: writers release to and acquire both,
// readers acquire the writers' one and release to the readers' one.
void* writerClock(const QReadWriteLock* lock) { return const_cast<QReadWriteLock*>(lock); }
void* readerClock(const QReadWriteLock* lock) { return reinterpret_cast<char*>(const_cast<QReadWriteLock*>(lock)) + 1; }

// Read locks held by this thread, so that unlock() knows which side it ends.
QHash<const QReadWriteLock*, int>& readLocksHeld()
{
    static thread_local QHash<const QReadWriteLock*, int> held;
    return held;
}

void acquiredForRead(QReadWriteLock* lock)
{
    __tsan_acquire(writerClock(lock));
    ++readLocksHeld()[lock];
}

void acquiredForWrite(QReadWriteLock* lock)
{
    __tsan_acquire(writerClock(lock));
    __tsan_acquire(readerClock(lock));
}

// A wait condition gives the lock up while it waits and takes it back.
void releasedForWait(QReadWriteLock* lock)
{
    __tsan_release(readLocksHeld().contains(lock) ? readerClock(lock) : writerClock(lock));
}

void retakenAfterWait(QReadWriteLock* lock)
{
    __tsan_acquire(writerClock(lock));
    if (!readLocksHeld().contains(lock))
        __tsan_acquire(readerClock(lock));
}

// Handling a posted event: whatever its poster released is acquired.
class DeliveryOrder : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        __tsan_acquire(event);
        return false;
    }
};

void installDeliveryOrder()
{
    QCoreApplication::instance()->installEventFilter(new DeliveryOrder);
}

class OrderedTask;

// Wrappers handed to a pool and not running yet, by the task they carry.
std::mutex g_waitingMutex;
std::unordered_multimap<QRunnable*, OrderedTask*> g_waiting; // guarded by g_waitingMutex

class OrderedTask : public QRunnable
{
public:
    explicit OrderedTask(QRunnable* task)
        : m_task(task), m_deleteTask(task->autoDelete())
    {
        setAutoDelete(true);
        __tsan_release(this);
    }
    // Waiting in a pool's queue (or about to be handed to a thread).
    void enlist()
    {
        std::lock_guard<std::mutex> lock(g_waitingMutex);
        g_waiting.emplace(m_task, this);
    }
    void delist()
    {
        std::lock_guard<std::mutex> lock(g_waitingMutex);
        auto range = g_waiting.equal_range(m_task);
        for (auto it = range.first; it != range.second; ++it) {
            if (it->second == this) {
                g_waiting.erase(it);
                return;
            }
        }
    }
    void run() override
    {
        __tsan_acquire(this);
        delist();
        m_task->run();
        if (m_deleteTask)
            delete m_task;
    }

private:
    QRunnable* m_task; // owned only when it deletes itself
    bool m_deleteTask;
};

const struct RegisterDeliveryOrder {
    RegisterDeliveryOrder() { qAddPreRoutine(installDeliveryOrder); }
} g_registerDeliveryOrder;

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    REAL(void (*)(QMutex*), "_ZN6QMutex4lockEv");
    real(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    REAL(bool (*)(QMutex*, int), "_ZN6QMutex7tryLockEi");
    const bool locked = real(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    REAL(void (*)(QMutex*), "_ZN6QMutex6unlockEv");
    __tsan_release(this);
    real(this);
}

void QReadWriteLock::lockForRead()
{
    REAL(void (*)(QReadWriteLock*), "_ZN14QReadWriteLock11lockForReadEv");
    real(this);
    acquiredForRead(this);
}

bool QReadWriteLock::tryLockForRead()
{
    REAL(bool (*)(QReadWriteLock*), "_ZN14QReadWriteLock14tryLockForReadEv");
    const bool locked = real(this);
    if (locked)
        acquiredForRead(this);
    return locked;
}

bool QReadWriteLock::tryLockForRead(int timeout)
{
    REAL(bool (*)(QReadWriteLock*, int), "_ZN14QReadWriteLock14tryLockForReadEi");
    const bool locked = real(this, timeout);
    if (locked)
        acquiredForRead(this);
    return locked;
}

void QReadWriteLock::lockForWrite()
{
    REAL(void (*)(QReadWriteLock*), "_ZN14QReadWriteLock12lockForWriteEv");
    real(this);
    acquiredForWrite(this);
}

bool QReadWriteLock::tryLockForWrite()
{
    REAL(bool (*)(QReadWriteLock*), "_ZN14QReadWriteLock15tryLockForWriteEv");
    const bool locked = real(this);
    if (locked)
        acquiredForWrite(this);
    return locked;
}

bool QReadWriteLock::tryLockForWrite(int timeout)
{
    REAL(bool (*)(QReadWriteLock*, int), "_ZN14QReadWriteLock15tryLockForWriteEi");
    const bool locked = real(this, timeout);
    if (locked)
        acquiredForWrite(this);
    return locked;
}

void QReadWriteLock::unlock()
{
    REAL(void (*)(QReadWriteLock*), "_ZN14QReadWriteLock6unlockEv");
    auto held = readLocksHeld().find(this);
    if (held != readLocksHeld().end()) {
        __tsan_release(readerClock(this));
        if (--held.value() == 0)
            readLocksHeld().erase(held);
    } else {
        __tsan_release(writerClock(this));
    }
    real(this);
}

void QCoreApplication::postEvent(QObject* receiver, QEvent* event, int priority)
{
    REAL(void (*)(QObject*, QEvent*, int), "_ZN16QCoreApplication9postEventEP7QObjectP6QEventi");
    __tsan_release(event);
    real(receiver, event, priority);
}

void QThread::start(Priority priority)
{
    REAL(void (*)(QThread*, Priority), "_ZN7QThread5startENS_8PriorityE");
    // Released by the thread itself once its run is over (a direct
    // connection runs in the finishing thread), once per start.
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(this, &QThread::finished, [this, connection] {
        QObject::disconnect(*connection); // reads the thread object: before the release
        __tsan_release(this);
    });
    real(this, priority);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    REAL(bool (*)(QThread*, QDeadlineTimer), "_ZN7QThread4waitE14QDeadlineTimer");
    const bool finished = real(this, deadline);
    if (finished)
        __tsan_acquire(this);
    return finished;
}

bool QThread::wait(unsigned long time)
{
    REAL(bool (*)(QThread*, unsigned long), "_ZN7QThread4waitEm");
    const bool finished = real(this, time);
    if (finished)
        __tsan_acquire(this);
    return finished;
}

bool QThread::isFinished() const
{
    REAL(bool (*)(const QThread*), "_ZNK7QThread10isFinishedEv");
    const bool finished = real(this);
    if (finished)
        __tsan_acquire(const_cast<QThread*>(this));
    return finished;
}

void QThreadPool::start(QRunnable* runnable, int priority)
{
    REAL(void (*)(QThreadPool*, QRunnable*, int), "_ZN11QThreadPool5startEP9QRunnablei");
    if (!runnable)
        return;
    auto* task = new OrderedTask(runnable);
    task->enlist();
    real(this, task, priority);
}

bool QThreadPool::tryStart(QRunnable* runnable)
{
    REAL(bool (*)(QThreadPool*, QRunnable*), "_ZN11QThreadPool8tryStartEP9QRunnable");
    if (!runnable)
        return real(this, nullptr);
    auto* task = new OrderedTask(runnable);
    task->enlist();
    if (real(this, task))
        return true;
    task->delist();
    delete task; // refused: the caller keeps its task
    return false;
}

// Takes back one waiting wrapper of the task: the task goes back to the
// caller, as Qt's own tryTake() gives it.
bool QThreadPool::tryTake(QRunnable* runnable)
{
    REAL(bool (*)(QThreadPool*, QRunnable*), "_ZN11QThreadPool7tryTakeEP9QRunnable");
    {
        // Held across Qt's tryTake: a wrapper that a pool thread has just
        // taken waits in delist() and cannot run (nor be freed) meanwhile.
        // Qt never calls back into this file under its pool's mutex.
        std::lock_guard<std::mutex> lock(g_waitingMutex);
        auto range = g_waiting.equal_range(runnable);
        for (auto it = range.first; it != range.second; ++it) {
            OrderedTask* task = it->second;
            if (real(this, task)) {
                g_waiting.erase(it);
                delete task;
                return true;
            }
        }
    }
    return real(this, runnable);
}

bool QWaitCondition::wait(QMutex* lockedMutex, QDeadlineTimer deadline)
{
    REAL(bool (*)(QWaitCondition*, QMutex*, QDeadlineTimer), "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer");
    __tsan_release(lockedMutex);
    const bool woken = real(this, lockedMutex, deadline);
    __tsan_acquire(lockedMutex);
    return woken;
}

bool QWaitCondition::wait(QMutex* lockedMutex, unsigned long time)
{
    REAL(bool (*)(QWaitCondition*, QMutex*, unsigned long), "_ZN14QWaitCondition4waitEP6QMutexm");
    __tsan_release(lockedMutex);
    const bool woken = real(this, lockedMutex, time);
    __tsan_acquire(lockedMutex);
    return woken;
}

bool QWaitCondition::wait(QReadWriteLock* lockedReadWriteLock, QDeadlineTimer deadline)
{
    REAL(bool (*)(QWaitCondition*, QReadWriteLock*, QDeadlineTimer),
         "_ZN14QWaitCondition4waitEP14QReadWriteLock14QDeadlineTimer");
    releasedForWait(lockedReadWriteLock);
    const bool woken = real(this, lockedReadWriteLock, deadline);
    retakenAfterWait(lockedReadWriteLock);
    return woken;
}

bool QWaitCondition::wait(QReadWriteLock* lockedReadWriteLock, unsigned long time)
{
    REAL(bool (*)(QWaitCondition*, QReadWriteLock*, unsigned long), "_ZN14QWaitCondition4waitEP14QReadWriteLockm");
    releasedForWait(lockedReadWriteLock);
    const bool woken = real(this, lockedReadWriteLock, time);
    retakenAfterWait(lockedReadWriteLock);
    return woken;
}

// The function forms wrap the function in a task and go through the forms
// above (Qt's own would call its internal start, out of reach).
void QThreadPool::start(std::function<void()> functionToRun, int priority)
{
    if (functionToRun)
        start(QRunnable::create(std::move(functionToRun)), priority);
}

bool QThreadPool::tryStart(std::function<void()> functionToRun)
{
    if (!functionToRun)
        return false;
    QRunnable* task = QRunnable::create(std::move(functionToRun));
    if (tryStart(task))
        return true;
    delete task;
    return false;
}
