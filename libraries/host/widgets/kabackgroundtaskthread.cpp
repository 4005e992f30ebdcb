#include "kabackgroundtaskthread.h"

#include <QElapsedTimer>

KABackgroundTaskThread::KABackgroundTaskThread(QObject* parent)
    : QThread(parent)
{
}

KABackgroundTaskThread::~KABackgroundTaskThread()
{
    setRunFlag(false);
    wait();
}

void KABackgroundTaskThread::run()
{
    QElapsedTimer clock;
    clock.start();
    qint64 nextTick = TickInterval;
    int tick = 0;
    // Short sleeps rather than one per tick: a cleared flag ends the loop
    // within PollInterval.
    while (m_runFlag.load()) {
        QThread::msleep(PollInterval);
        const qint64 elapsed = clock.elapsed();
        if (elapsed < nextTick || !m_runFlag.load())
            continue;
        emit updateWork(++tick);
        // A late tick does not cause a burst of catching-up ticks.
        nextTick += TickInterval;
        if (nextTick <= elapsed)
            nextTick = elapsed + TickInterval;
    }
}
