#pragma once

// Measuring helpers shared by the benchmarks.

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <vector>

namespace zelmor::bench {

// The median wall time of `rounds` runs of `work`, in milliseconds.
inline double medianMs(int rounds, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < std::max(1, rounds); ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// The process's peak resident memory so far, in KiB; 0 where the system does not tell.
inline qint64 peakResidentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    const auto match =
        QRegularExpression(QStringLiteral("VmHWM:\\s+(\\d+)")).match(status.readAll());
    return match.captured(1).toLongLong();
}

} // namespace zelmor::bench
