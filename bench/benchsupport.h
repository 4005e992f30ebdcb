#pragma once

#include "tsamplegenerator.h"

#include <QString>
#include <QTemporaryDir>
#include <QVector>
#include <functional>

class KAObject2Project;
namespace TechDB { class TDatabase; }

// Side-by-side timing: runs ours and the baseline alternately for several
// rounds and reports the medians.
namespace Bench {
double medianMs(QVector<double> samples);
double timeMs(const std::function<void()>& work);
// Runs setup (untimed) then each side, `rounds` times, alternating.
void compare(const QString& name, int rounds,
             const std::function<void()>& ours, const std::function<void()>& baseline,
             const std::function<void()>& setup = {});
void report(const QString& name, double oursMs, double baselineMs);

// Call first in main, before the application object: the offscreen
// platform unless the caller chose one, and standard paths in test mode so
// that no benchmark touches the user's own settings.
void initEnvironment();

// Generator options of the analysis-heavy mix used by the project
// benchmarks: scale 1 gives about 20,000 objects, scale 10 about 200,000
// (mostly peak detections under the signals; about a third of the objects
// end up in the project tree).
TSampleGenerator::Options projectOptions(int scale);

// Runs the event loop until done() answers true or the time limit passes;
// false on time-out. The thread sleeps between events (woken every pollMs
// milliseconds to ask done()), so that a waiting GUI thread does not take a
// core from the workers it waits for.
bool waitUntil(const std::function<bool()>& done, int limitMs, int pollMs = 1);

// Runs the event loop until a pass finds nothing to do (no posted event,
// timer or window-system event handled), so that work a call leaves to the
// event loop is counted with it; bounded, in case something keeps ticking.
// Returns the number of passes.
int settle();

// Prints a line that is not a bench result (to stderr, so that a parser of
// the bench lines never sees it).
void note(const char* format, ...);

// One sample project written by the project's own generator into a
// temporary folder and opened through the host project manager (it becomes
// the current project). Closed, and its folder removed, on destruction.
class SampleProject
{
public:
    SampleProject(const QString& name, const TSampleGenerator::Options& options, quint32 seed = 42);
    ~SampleProject();
    SampleProject(const SampleProject&) = delete;
    SampleProject& operator=(const SampleProject&) = delete;

    bool isValid() const { return m_project && m_db; }
    const QString& error() const { return m_error; }
    const KAObject2Project* project() const { return m_project; }
    TechDB::TDatabase* db() const { return m_db; }
    QString folder() const { return m_folder; }
    int objectCount() const;
    double generationMs() const { return m_generationMs; }

private:
    QTemporaryDir m_dir;
    QString m_folder;
    QString m_error;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
    TechDB::TDatabase* m_db = nullptr;           // not owned: the project's
    double m_generationMs = 0;
};
}
