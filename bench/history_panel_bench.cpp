// The history page over 500 full-HD captures: time to its first paint, and the longest
// stall of the GUI thread while the list is scrolled through, in grid and in list mode.
//   scripts/x-session.sh build/bench/zelmor-bench-history-panel [items] [folder to keep the files
//   in]

#include "BenchSupport.h"
#include "core/Resources.h"
#include "service/history/HistoryService.h"
#include "widget/HistoryGrid.h"
#include "widget/HistoryPanel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLinearGradient>
#include <QPainter>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <cstdio>
#include <vector>

using zelmor::bench::FirstPaint;
using zelmor::bench::spinUntil;
using zelmor::bench::StallMeter;
using zelmor::core::HistoryCategory;
using zelmor::service::history::HistoryService;
using zelmor::widget::HistoryPanel;
using zelmor::widget::HistoryThumbnailView;

namespace {

constexpr int kScrollStepPx = 60;
constexpr int kStepIntervalMs = 16;

QString capturePath(const QString& folder, int n)
{
    return QStringLiteral("%1/capture-%2.png").arg(folder).arg(n, 3, 10, QLatin1Char('0'));
}

// Screen-like content: a gradient, window-like panels and lines of text, different per item,
// so that each file is a few hundred kilobytes and not a trivially small PNG.
void writeCapture(const QString& path, int n)
{
    QImage image(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient background(0, 0, 1920, 1080);
    background.setColorAt(0, QColor::fromHsv((n * 37) % 360, 90, 230));
    background.setColorAt(1, QColor::fromHsv((n * 53 + 120) % 360, 140, 120));
    painter.fillRect(image.rect(), background);
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 11));
    for (int w = 0; w < 4; ++w) {
        const QRect window(80 + w * 420 + n % 50, 90 + w * 160, 760, 560);
        painter.fillRect(window, QColor(250, 250, 252));
        painter.fillRect(window.adjusted(0, 0, 0, -530),
                         QColor::fromHsv((n * 11 + w * 60) % 360, 160, 200));
        painter.setPen(QColor(40, 40, 48));
        for (int line = 0; line < 24; ++line)
            painter.drawText(window.left() + 16, window.top() + 56 + line * 20,
                             QStringLiteral("item %1 window %2 line %3: the quick brown fox %4")
                                 .arg(n)
                                 .arg(w)
                                 .arg(line)
                                 .arg(n * 7919 + line * 104729, 0, 16));
    }
    painter.end();
    image.save(path, "PNG");
}

// Times each event the GUI thread handles, to tell a slow handler from time the scheduler
// gives to other processes on a loaded machine.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;
    double longestEventMs = 0;
    int longestEventType = 0;
    void resetLongest() { longestEventMs = 0; }

    bool notify(QObject* receiver, QEvent* event) override
    {
        const int type = event->type();
        QElapsedTimer timer;
        timer.start();
        const bool handled = QApplication::notify(receiver, event);
        const double ms = timer.nsecsElapsed() / 1e6;
        if (ms > longestEventMs && QThread::currentThread() == thread()) {
            longestEventMs = ms;
            longestEventType = type;
        }
        return handled;
    }
};

struct ScrollResult
{
    qint64 firstPaintMs = 0;
    qint64 tilesShownMs = 0;
    double longestStallMs = 0;
    double longestEventMs = 0;
    int longestEventType = 0;
    int stallsOver16 = 0;
    int steps = 0;
    double medianPaintMs = 0;
};

bool visibleTilesReady(HistoryThumbnailView* view)
{
    const QRect area = view->viewport()->rect();
    for (int row = 0; row < view->model()->rowCount(); ++row) {
        const QModelIndex index = view->model()->index(row, 0);
        if (view->visualRect(index).intersects(area) && index.data(Qt::DecorationRole).isNull())
            return false;
    }
    return true;
}

ScrollResult run(bool listMode)
{
    ScrollResult result;
    QElapsedTimer clock;
    clock.start();
    FirstPaint firstPaint(clock);
    HistoryPanel panel;
    auto* view = panel.findChild<HistoryThumbnailView*>();
    view->viewport()->installEventFilter(&firstPaint);
    if (listMode) view->setListMode(true);
    panel.resize(1200, 740);
    panel.show();
    spinUntil([&] { return firstPaint.at >= 0; });
    result.firstPaintMs = firstPaint.at;
    spinUntil([&] { return visibleTilesReady(view); });
    result.tilesShownMs = clock.elapsed();
    std::vector<double> paints;
    for (int i = 0; i < 41; ++i) {
        QElapsedTimer paint;
        paint.start();
        view->viewport()->repaint();
        paints.push_back(paint.nsecsElapsed() / 1e6);
    }
    std::sort(paints.begin(), paints.end());
    result.medianPaintMs = paints[paints.size() / 2];

    StallMeter stalls;
    QScrollBar* bar = view->verticalScrollBar();
    bool atEnd = false;
    QTimer stepper;
    stepper.setInterval(kStepIntervalMs);
    QObject::connect(&stepper, &QTimer::timeout, [&] {
        bar->setValue(bar->value() + kScrollStepPx);
        ++result.steps;
        atEnd = bar->value() >= bar->maximum();
    });
    auto* timedApp = static_cast<TimedApplication*>(qApp);
    timedApp->resetLongest();
    stalls.start();
    stepper.start();
    spinUntil([&] { return atEnd; });
    stepper.stop();
    spinUntil([&] { return visibleTilesReady(view); });
    stalls.stop();
    result.longestStallMs = stalls.longestMs;
    result.longestEventMs = timedApp->longestEventMs;
    result.longestEventType = timedApp->longestEventType;
    result.stallsOver16 = stalls.over16;
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    // The panel reads the store in the data folder: a private one, never the user's.
    QTemporaryDir sandbox;
    zelmor::bench::useSandbox(sandbox);
    TimedApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("Zelmor"));
    app.setApplicationName(QStringLiteral("Zelmor"));
    zelmor::core::initResources();
    const int count = argc > 1 ? std::clamp(atoi(argv[1]), 1, 500) : 500;

    QElapsedTimer timer;
    timer.start();
    std::vector<int> numbers(count);
    for (int n = 0; n < count; ++n)
        numbers[n] = n;
    const QString folder = argc > 2 ? QString::fromLocal8Bit(argv[2]) : sandbox.path();
    QDir().mkpath(folder);
    QtConcurrent::blockingMap(numbers, [&](int n) {
        if (!QFileInfo::exists(capturePath(folder, n))) writeCapture(capturePath(folder, n), n);
    });
    qint64 bytes = 0;
    const QPixmap fullHd(1920, 1080);
    for (int n = 0; n < count; ++n) {
        const QString path = capturePath(folder, n);
        bytes += QFileInfo(path).size();
        HistoryService::instance().insert(fullHd, path, HistoryCategory::Screenshot);
    }
    std::printf("%d captures of 1920x1080, %.1f MB, ready in %.1f s\n", count, bytes / 1e6,
                timer.elapsed() / 1000.0);

    // What the machine's other load alone costs the loop, as a baseline for the stalls.
    StallMeter idle;
    idle.start();
    QElapsedTimer idleClock;
    idleClock.start();
    spinUntil([&] { return idleClock.elapsed() >= 3000; });
    idle.stop();
    std::printf("idle event loop for 3 s: longest stall %.1f ms, %d over 16 ms\n", idle.longestMs,
                idle.over16);

    std::printf("%6s %15s %18s %16s %14s %7s %24s %13s\n", "mode", "first paint ms",
                "tiles on screen ms", "longest stall ms", "stalls >16 ms", "steps",
                "longest event ms (type)", "one paint ms");
    for (bool listMode : {false, true}) {
        zelmor::widget::HistoryGridModel::thumbnailCache().clear();
        const ScrollResult r = run(listMode);
        std::printf("%6s %15lld %18lld %16.1f %14d %7d %16.1f (%d) %13.2f\n",
                    listMode ? "list" : "grid", r.firstPaintMs, r.tilesShownMs, r.longestStallMs,
                    r.stallsOver16, r.steps, r.longestEventMs, r.longestEventType, r.medianPaintMs);
    }
    return 0;
}
