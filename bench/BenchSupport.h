#pragma once

// Measuring helpers shared by the benchmarks.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>

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

// Measures how long the event loop is away between two of its turns, with a 0 ms timer.
class StallMeter
{
public:
    double longestMs = 0;
    int over16 = 0;

    StallMeter()
    {
        m_ticker.setInterval(0);
        QObject::connect(&m_ticker, &QTimer::timeout, [this] {
            const double gap = m_sinceTick.nsecsElapsed() / 1e6;
            longestMs = std::max(longestMs, gap);
            over16 += gap > 16.0;
            m_sinceTick.restart();
        });
    }
    void start()
    {
        m_sinceTick.start();
        m_ticker.start();
    }
    void stop() { m_ticker.stop(); }

private:
    QTimer m_ticker;
    QElapsedTimer m_sinceTick;
};

// The time on `clock` of the first paint of the widgets it filters.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(const QElapsedTimer& clock) : m_clock(clock) {}
    qint64 at = -1;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && at < 0) at = m_clock.elapsed();
        return false;
    }

private:
    const QElapsedTimer& m_clock;
};

// Turns the event loop until `done` holds.
inline void spinUntil(const std::function<bool()>& done)
{
    while (!done())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

// Points the data, configuration and cache folders into the sandbox, never the user's.
inline void useSandbox(const QTemporaryDir& sandbox)
{
    for (const char* name : {"data", "config", "cache"}) {
        const QByteArray variable = "XDG_" + QByteArray(name).toUpper() + "_HOME";
        qputenv(variable.constData(), sandbox.filePath(QLatin1String(name)).toUtf8());
    }
}

} // namespace zelmor::bench
