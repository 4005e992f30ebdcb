// ctest-label: threads
#include "kabackgroundtaskthread.h"
#include "testfixture.h"

#include <QPointer>
#include <QTest>

// Counts ticks on the GUI thread, connected queued as the views do.
class TickCounter : public QObject
{
    Q_OBJECT
public:
    QList<int> ticks;
public slots:
    void onTick(int tick) { ticks << tick; }
};

class TestKABackgroundTaskThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    void ticksWhileRunningThenStops();
    void clearedFlagEndsRunAtOnce();
    void restartsAfterStop();
    void destroyedWhileRunningStopsAndWaits();
    void destroyedWithItsParentAfterStop();

private:
    static void connectCounter(KABackgroundTaskThread* thread, TickCounter* counter)
    {
        QObject::connect(thread, &KABackgroundTaskThread::updateWork, counter, &TickCounter::onTick,
                         Qt::QueuedConnection);
    }
};

void TestKABackgroundTaskThread::ticksWhileRunningThenStops()
{
    KABackgroundTaskThread thread;
    TickCounter counter;
    connectCounter(&thread, &counter);
    thread.setRunFlag(true);
    QVERIFY(thread.runFlag());
    thread.start(QThread::LowPriority);
    QTRY_VERIFY(counter.ticks.size() >= 3);

    thread.setRunFlag(false);
    QVERIFY(thread.wait(5000)); // returns as soon as run() ends
    QCoreApplication::processEvents();
    const int total = counter.ticks.size();
    for (int i = 0; i < total; ++i)
        QCOMPARE(counter.ticks[i], i + 1);
    // No tick after the end of run().
    QCoreApplication::processEvents();
    QCOMPARE(counter.ticks.size(), total);
}

void TestKABackgroundTaskThread::clearedFlagEndsRunAtOnce()
{
    KABackgroundTaskThread thread;
    TickCounter counter;
    connectCounter(&thread, &counter);
    QVERIFY(!thread.runFlag());
    thread.start();
    QVERIFY(thread.wait(5000)); // returns as soon as run() ends
    QCoreApplication::processEvents();
    QVERIFY(counter.ticks.isEmpty());
}

void TestKABackgroundTaskThread::restartsAfterStop()
{
    KABackgroundTaskThread thread;
    TickCounter counter;
    connectCounter(&thread, &counter);
    for (int round = 0; round < 2; ++round) {
        counter.ticks.clear();
        thread.setRunFlag(true);
        thread.start(QThread::LowPriority);
        QTRY_VERIFY(!counter.ticks.isEmpty());
        QCOMPARE(counter.ticks.first(), 1);
        thread.setRunFlag(false);
        QVERIFY(thread.wait(5000)); // returns as soon as run() ends
    }
}

void TestKABackgroundTaskThread::destroyedWhileRunningStopsAndWaits()
{
    auto* thread = new KABackgroundTaskThread;
    TickCounter counter;
    connectCounter(thread, &counter);
    thread->setRunFlag(true);
    thread->start();
    QTRY_VERIFY(!counter.ticks.isEmpty());
    delete thread; // clears the flag and waits: no "destroyed while running"
    QCoreApplication::processEvents();
}

void TestKABackgroundTaskThread::destroyedWithItsParentAfterStop()
{
    auto* owner = new QObject;
    auto* thread = new KABackgroundTaskThread(owner);
    QPointer<KABackgroundTaskThread> watch(thread);
    thread->setRunFlag(true);
    thread->start();
    QTRY_VERIFY(thread->isRunning());
    thread->setRunFlag(false);
    QVERIFY(thread->wait(5000));
    delete owner;
    QVERIFY(watch.isNull());
}

QTEST_MAIN(TestKABackgroundTaskThread)
#include "tst_kabackgroundtaskthread.moc"
