// Time from pressing the region hotkey (F6, through XTest) to the first changed pixel on the
// screen, for zelmor and for a bare Qt floor built here: a program that grabs the screen and
// shows a new full-screen window with it, dimmed. Median, first run and maximum.
//   scripts/x-session.sh build/bench/zelmor-bench-hotkey [runs]
// With --command, in the session it runs in, the time from `zelmor --capture-region` (a second
// start, passing the switch to the running zelmor) to the first changed pixel, and from F6: on
// X11 zelmor's own grab, on Wayland sway's binding of F6 to that command line. One tab-separated
// row each (bench/hotkey-sessions.sh runs it in both sessions and prints them side by side).
//   scripts/wayland-session.sh env QT_QPA_PLATFORM=wayland build/bench/zelmor-bench-hotkey
//   --command [runs]

#include "core/DisplaySession.h"
#include "platform/Hotkeys.h"
#include "platform/Input.h"
#include "platform/ScreenGrab.h"
#include "platform/Session.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <memory>
#include <vector>

using namespace zelmor;

namespace {

constexpr unsigned kF6 = 0x75, kEscape = 0x1B;
const platform::Rect kProbe{952, 532, 16, 16}; // the middle of a 1920x1080 screen

// The floor: the least a program must do between the key and the frozen screen.
class FloorOverlay : public QWidget
{
public:
    explicit FloorOverlay(const QPixmap& frozen) : m_frozen(frozen)
    {
        setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        setAttribute(Qt::WA_DeleteOnClose);
        setGeometry(QGuiApplication::primaryScreen()->geometry());
        // It goes by itself: the window manager need not give it the focus for an Escape.
        QTimer::singleShot(300, this, &QWidget::close);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.drawPixmap(0, 0, m_frozen);
        painter.fillRect(rect(), QColor(0, 0, 0, 100));
        // A mark in the middle, as an overlay shows its crosshair: the test session's desktop
        // is black, and a dimmed black would change no pixel.
        painter.fillRect(QRect(rect().center() - QPoint(20, 20), QSize(40, 40)), Qt::white);
    }

private:
    QPixmap m_frozen;
};

int runFloor(int argc, char** argv)
{
    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    // The server lets go of zelmor's grab a moment after zelmor has gone.
    bool bound = false;
    for (int i = 0;
         i < 100 && !(bound = platform::registerHotkey(1, platform::HotkeyNoRepeat, kF6)); ++i)
        QThread::msleep(30);
    if (!bound) return 1;
    QSocketNotifier presses(platform::hotkeyEventDescriptor(), QSocketNotifier::Read);
    QObject::connect(&presses, &QSocketNotifier::activated, [] {
        if (platform::takeHotkeyPresses().empty()) return;
        auto* overlay = new FloorOverlay(QGuiApplication::primaryScreen()->grabWindow(0));
        overlay->show();
        overlay->activateWindow();
    });
    std::cout << "ready" << std::endl;
    return app.exec();
}

std::vector<std::uint32_t> probe()
{
    std::vector<std::uint32_t> pixels(std::size_t(kProbe.width * kProbe.height));
    platform::grabDesktopRect(kProbe, pixels.data(), kProbe.width);
    return pixels;
}

bool onWayland()
{
    return platform::displayServer() == platform::DisplayServer::Wayland;
}

// Through a virtual keyboard on Wayland, where no program may inject keys otherwise. Each is a
// new keyboard of the seat: the overlay needs a moment to learn of it, sway's bindings none.
bool pressKey(unsigned key)
{
    if (onWayland())
        return QProcess::execute(QStringLiteral("wtype"),
                                 key == kF6 ? QStringList{"-k", "F6"}
                                            : QStringList{"-s", "300", "-k", "Escape"}) == 0;
    return platform::sendKeys({{key, true}, {key, false}});
}

// Polls until the probe differs from (or equals) `before`; false after two seconds.
bool waitForProbe(const std::vector<std::uint32_t>& before, bool changed)
{
    QElapsedTimer limit;
    limit.start();
    while (limit.elapsed() < 2000)
        if ((probe() != before) == changed) return true;
    return false;
}

struct Result
{
    double median = 0, first = 0, max = 0;
    int missed = 0;
};

// `trigger` opens the overlay, Escape closes it.
Result measure(const std::function<void()>& trigger, int runs)
{
    Result result;
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const std::vector<std::uint32_t> before = probe();
        QElapsedTimer clock;
        clock.start();
        trigger();
        if (!waitForProbe(before, true)) {
            std::fprintf(stderr, "run %d: nothing changed\n", i);
            ++result.missed;
            continue;
        }
        times.push_back(clock.nsecsElapsed() / 1e6);
        pressKey(kEscape);
        if (!waitForProbe(before, false)) std::fprintf(stderr, "run %d: the overlay stayed\n", i);
        QThread::msleep(150); // the window manager settles before the next press
    }
    if (times.empty()) return result;
    result.first = times.front();
    result.max = *std::max_element(times.begin(), times.end());
    std::sort(times.begin(), times.end());
    result.median = times[times.size() / 2];
    return result;
}

// CPU time the process has used so far, in clock ticks.
long cpuTicks(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return -1;
    const QList<QByteArray> fields = stat.readAll().split(')').value(1).split(' ');
    return fields.value(12).toLong() + fields.value(13).toLong(); // utime, stime
}

// Until the process has used no CPU for 200 ms: start-up is over, as it is when a user
// first reaches for the hotkey.
void waitUntilSettled(qint64 pid)
{
    for (int i = 0; i < 100; ++i) {
        const long before = cpuTicks(pid);
        QThread::msleep(200);
        if (cpuTicks(pid) == before) return;
    }
}

// zelmor with a home of its own, once it is ready for a capture (its hotkeys registered and,
// in its first idle moment after start, the overlay prepared) and settled.
QString zelmorPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/zelmor");
}

bool startZelmor(QProcess& process, const QTemporaryDir& home)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    process.setProcessEnvironment(env);
    process.start(zelmorPath(), {});
    const QString log = home.filePath(QStringLiteral("data/Zelmor/Zelmor/zelmor.log"));
    for (int i = 0; i < 1000; ++i) {
        QFile file(log);
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains("capture overlay prepared")) {
            waitUntilSettled(process.processId());
            return true;
        }
        QThread::msleep(10);
    }
    return false;
}

void printRow(const char* name, const Result& r)
{
    std::printf("%s\t%.1f\t%.1f\t%.1f\t%d\n", name, r.median, r.first, r.max, r.missed);
}

int runCommandLine(int argc, char** argv)
{
    QApplication app(argc, argv);
    core::tellDisplayServer();
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 20;
    QTemporaryDir home;
    QProcess zelmor;
    if (!startZelmor(zelmor, home)) return std::fprintf(stderr, "zelmor did not start\n"), 1;
    // The second start as a desktop's binding makes it: the same user and session.
    QProcess second;
    second.setProcessEnvironment(zelmor.processEnvironment());
    second.setProgram(zelmorPath());
    second.setArguments({QStringLiteral("--capture-region")});
    printRow("zelmor --capture-region", measure([&second] { second.startDetached(); }, runs));
    if (onWayland()) {
        const QString command =
            QStringLiteral("exec env QT_QPA_PLATFORM=wayland %1 --capture-region")
                .arg(zelmorPath());
        QProcess::execute(
            QStringLiteral("swaymsg"),
            {QStringLiteral("-q"), QStringLiteral("bindsym --no-repeat F6 ") + command});
    }
    printRow(onWayland() ? "F6, bound in sway" : "F6, Zelmor's own grab",
             measure([] { pressKey(kF6); }, runs));
    zelmor.terminate();
    zelmor.waitForFinished(3000);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && QByteArray(argv[1]) == "--floor") return runFloor(argc, argv);
    if (argc > 1 && QByteArray(argv[1]) == "--command") return runCommandLine(argc, argv);
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 20;
    QTemporaryDir home;
    QProcess zelmor;
    if (!startZelmor(zelmor, home)) {
        std::fprintf(stderr, "zelmor did not start\n");
        return 1;
    }
    const auto f6 = [] { pressKey(kF6); };
    const Result ours = measure(f6, runs);
    zelmor.terminate();
    zelmor.waitForFinished(3000);
    QProcess floor;
    floor.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--floor")});
    floor.waitForReadyRead(10000);
    const Result bare = measure(f6, runs);
    floor.terminate();
    floor.waitForFinished(3000);

    std::printf("F6 to the first changed pixel, %d runs (ms)\n", runs);
    std::printf("%-22s%10s%10s%10s%8s\n", "program", "median", "first", "max", "missed");
    for (const auto& [name, r] : {std::pair{"zelmor", ours}, std::pair{"bare Qt floor", bare}})
        std::printf("%-22s%10.1f%10.1f%10.1f%8d\n", name, r.median, r.first, r.max, r.missed);
    return 0;
}
