// ctest-label: threads
#include "kabackgroundtaskthread.h"
#include "testfixture.h"

#include <QPointer>
#include <QTest>

class TestKABackgroundTaskThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    // Without the flag run() ends at once; with it, ticks count from 1 on each start and none comes
    // after run() ends (counted on the GUI thread, queued as the views do). Deleted with its parent
    // while running, the thread clears its flag and waits: no "destroyed while running".
    void ticksWhileRunningThenStops()
    {
        auto* owner = new QObject;
        auto* thread = new KABackgroundTaskThread(owner);
        const QPointer<KABackgroundTaskThread> watch(thread);
        QList<int> ticks;
        connect(thread, &KABackgroundTaskThread::updateWork, this, [&](int t) { ticks << t; }, Qt::QueuedConnection);
        thread->start();
        QVERIFY(thread->wait(5000));
        QCoreApplication::processEvents();
        QVERIFY(ticks.isEmpty());
        for (int round = 0; round < 2; ++round) {
            ticks.clear();
            thread->setRunFlag(true);
            thread->start(QThread::LowPriority);
            QTRY_VERIFY(ticks.size() >= 3);
            thread->setRunFlag(false);
            QVERIFY(thread->wait(5000)); // returns as soon as run() ends
            QCoreApplication::processEvents();
            for (int i = 0; i < ticks.size(); ++i)
                QCOMPARE(ticks[i], i + 1);
            const int total = ticks.size();
            QCoreApplication::processEvents();
            QCOMPARE(ticks.size(), total);
        }
        thread->setRunFlag(true);
        thread->start();
        QTRY_VERIFY(thread->isRunning());
        delete owner;
        QVERIFY(watch.isNull());
    }
};

QTEST_MAIN(TestKABackgroundTaskThread)
#include "tst_kabackgroundtaskthread.moc"
