#include "benchsupport.h"

#include <QElapsedTimer>
#include <algorithm>
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

} // namespace Bench
