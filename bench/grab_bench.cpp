// Median time of one full-screen grab through each path, side by side.
//   scripts/x-session.sh build/bench/zelmor-bench-grab [rounds]
//   scripts/wayland-session.sh env QT_QPA_PLATFORM=wayland build/bench/zelmor-bench-grab [rounds]
//   (the portal figure needs a portal that answers without asking: xdg-desktop-portal-wlr)

#include "core/DisplaySession.h"
#include "platform/ScreenGrab.h"
#include "platform/Session.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

// `settle` runs before each grab, untimed.
double medianMs(
    int rounds, const std::function<bool()>& grab, const std::function<void()>& settle = [] {})
{
    std::vector<double> times;
    grab(); // warm-up: connection, segment, first allocation
    for (int i = 0; i < rounds; ++i) {
        settle();
        QElapsedTimer timer;
        timer.start();
        if (!grab()) return -1;
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

bool platformGrab(const QRect& r, zelmor::platform::GrabMethod method)
{
    QImage image(r.size(), QImage::Format_RGB32);
    return zelmor::platform::grabDesktopRect({r.x(), r.y(), r.width(), r.height()},
                                             reinterpret_cast<std::uint32_t*>(image.bits()),
                                             int(image.bytesPerLine() / 4), method);
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 30;
    QScreen* screen = QGuiApplication::primaryScreen();
    const QRect r(QPoint(0, 0), screen->size() * screen->devicePixelRatio());

    using zelmor::platform::GrabMethod;
    zelmor::core::tellDisplayServer();
    if (zelmor::platform::displayServer() == zelmor::platform::DisplayServer::Wayland) {
        const QRect part(100, 100, 400, 300);
        const double shot =
            medianMs(rounds, [&] { return platformGrab(r, GrabMethod::SharedMemory); });
        const double region =
            medianMs(rounds, [&] { return platformGrab(part, GrabMethod::Automatic); });
        // A portal that asks the user each time has no figure of its own: few rounds suffice.
        // Past the time one portal picture serves the grabs of a capture.
        const double portal = medianMs(
            std::min(rounds, 5), [&] { return platformGrab(r, GrabMethod::Portal); },
            [] { QThread::msleep(1100); });
        std::printf("Wayland grab, median of %d rounds (ms; -1 = path unavailable)\n", rounds);
        const QString output = QStringLiteral("output %1x%2").arg(r.width()).arg(r.height());
        std::printf("%-34s %8.2f\n", qPrintable(output + QStringLiteral(", screencopy")), shot);
        std::printf("%-34s %8.2f\n", "region 400x300, screencopy", region);
        std::printf("%-34s %8.2f\n", qPrintable(output + QStringLiteral(", Screenshot portal")),
                    portal);
        return 0;
    }
    const double plain = medianMs(rounds, [&] { return platformGrab(r, GrabMethod::Plain); });
    const double qt = medianMs(rounds, [&] { return !screen->grabWindow(0).toImage().isNull(); });
    const double shm = medianMs(rounds, [&] { return platformGrab(r, GrabMethod::SharedMemory); });

    std::printf("full-screen grab %dx%d, median of %d rounds (ms; -1 = path unavailable)\n",
                r.width(), r.height(), rounds);
    std::printf("%-28s %8.2f\n", "platform, shared memory", shm);
    std::printf("%-28s %8.2f\n", "platform, plain GetImage", plain);
    std::printf("%-28s %8.2f\n", "QScreen::grabWindow+toImage", qt);
    return 0;
}
