#pragma once

#include <QString>
#include <QVector>
#include <functional>

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
}
