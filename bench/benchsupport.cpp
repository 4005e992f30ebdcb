#include "benchsupport.h"

#include <QAbstractEventDispatcher>

#include "kaobject2project.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace Bench {

double medianMs(QVector<double> samples)
{
    if (samples.isEmpty())
        return 0.0;
    std::sort(samples.begin(), samples.end());
    const int n = samples.size();
    return n % 2 ? samples[n / 2] : (samples[n / 2 - 1] + samples[n / 2]) / 2.0;
}

double timeMs(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1.0e6;
}

void compare(const QString& name, int rounds, const std::function<void()>& ours,
             const std::function<void()>& baseline, const std::function<void()>& setup)
{
    QVector<double> a, b;
    for (int i = 0; i < rounds; ++i) {
        if (setup)
            setup();
        a.append(timeMs(ours));
        if (setup)
            setup();
        b.append(timeMs(baseline));
    }
    report(name, medianMs(a), medianMs(b));
}

void report(const QString& name, double oursMs, double baselineMs)
{
    std::printf("bench: %s ours=%.3f baseline=%.3f ratio=%.3f\n", qPrintable(name), oursMs,
                baselineMs, baselineMs > 0 ? oursMs / baselineMs : 0.0);
    std::fflush(stdout);
}

void initEnvironment()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
}

TSampleGenerator::Options projectOptions(int scale)
{
    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = 150 * scale;
    options.signalsPerAnalysis = 4;
    options.peaksPerSignal = 30;
    options.wells = 30 * scale;
    options.datasetsPerWell = 10;
    options.variablesPerDataset = 5;
    options.groups = 4 * scale;
    options.seed = 42;
    return options;
}

int settle()
{
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    int passes = 0;
    while (passes < 1000 && dispatcher->processEvents(QEventLoop::AllEvents))
        ++passes;
    return passes;
}

bool waitUntil(const std::function<bool()>& done, int limitMs, int pollMs)
{
    QElapsedTimer clock;
    clock.start();
    QTimer tick;
    tick.setInterval(pollMs);
    tick.start();
    while (!done()) {
        if (clock.elapsed() > limitMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void note(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

SampleProject::SampleProject(const QString& name, const TSampleGenerator::Options& options, quint32 seed)
{
    if (!m_dir.isValid()) {
        m_error = QStringLiteral("no temporary folder");
        return;
    }
    m_folder = QDir(m_dir.path()).filePath(name);
    QElapsedTimer timer;
    timer.start();
    if (!TSampleGenerator::generateProject(m_folder, name, options, seed, &m_error))
        return;
    m_generationMs = timer.nsecsElapsed() / 1.0e6;
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    m_project = mgr->discoverProject(m_folder);
    if (!m_project) {
        m_error = QStringLiteral("the project manager does not know %1").arg(m_folder);
        return;
    }
    if (!mgr->openProject(m_project)) {
        m_error = QStringLiteral("the project manager refused to open %1").arg(m_folder);
        return;
    }
    m_db = m_project->db();
}

SampleProject::~SampleProject()
{
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    if (m_project && mgr->isOpen(m_project))
        mgr->closeProject(m_project);
}

int SampleProject::objectCount() const
{
    return m_db ? m_db->objectCount() : 0;
}

} // namespace Bench
