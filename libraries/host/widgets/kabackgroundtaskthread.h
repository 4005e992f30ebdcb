#pragma once

#include "kahost_export.h"

#include <QThread>

#include <atomic>

// A pacing thread: while its run flag is set it emits updateWork() every
// TickInterval ms; it returns from run() soon after the flag is cleared.
// Receivers connect updateWork() queued, so their slot runs on their own
// (GUI) thread. Destroying the thread clears the flag and waits for it.
class KAHOST_EXPORT KABackgroundTaskThread : public QThread
{
    Q_OBJECT
public:
    static const int TickInterval = 40; // ms between two updateWork()
    static const int PollInterval = 5;  // ms between two looks at the flag

    explicit KABackgroundTaskThread(QObject* parent = nullptr);
    ~KABackgroundTaskThread() override;

    void setRunFlag(bool run) { m_runFlag.store(run); }
    bool runFlag() const { return m_runFlag.load(); }

signals:
    // tick counts the ticks since run() started, from 1.
    void updateWork(int tick);

protected:
    void run() override;

private:
    std::atomic<bool> m_runFlag{false}; // written by the owner, read by run()
};
