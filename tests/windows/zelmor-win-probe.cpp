// Prints one line per event: "ready", "text <line edit text>", "hook <virtual key>",
// "hotkey <id>", "press <Qt button> <x>,<y>" on the screen, "state minimized|normal", and
// "icons <count>" or "icon failed <path>" for the embedded icon images.
// Typed text ending in "modal" opens a Windows message box, whose own message loop runs until
// it is answered: "modal" once the box is the foreground window, then "modal ended".
// The clipboard is answered: "to probe: X" put there by another program is reported as
// "clipboard X" and replaced by "from probe: X", or by a 16x8 picture where X is "image",
// then "clipboard answered"; where X is "hold" the clipboard is kept open ("clipboard held")
// until the next press on the window ("clipboard released").
// With --log TEXT it only writes TEXT to Zelmor's log as the programs do, but without their
// manifest's UTF-8 code page: as on a Windows older than 10 1903, which ignores that.

#include "core/Log.h"
#include "core/Resources.h"
#include "manager/HotkeyService.h"
#include "platform/InputObserver.h"

#include <QApplication>
#include <QClipboard>
#include <QDirIterator>
#include <QImage>
#include <QImageReader>
#include <QLineEdit>
#include <QMetaObject>
#include <QMouseEvent>
#include <QTimer>

#include <windows.h>

#include <cstdio>
#include <utility>

namespace {

void report(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

// Every icon is readable as an image although the toolchain has no SVG reader.
void checkIcons()
{
    int count = 0;
    for (QDirIterator it(QStringLiteral(":/icons"), QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        if (!it.fileInfo().isFile()) continue;
        if (QImageReader(path).read().isNull()) report(QStringLiteral("icon failed ") + path);
        ++count;
    }
    report(QStringLiteral("icons %1").arg(count));
}

bool holdingClipboard = false;

// The presses and the window state changes of a window.
class Watcher : public QObject
{
protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonPress) {
            const auto* press = static_cast<QMouseEvent*>(event);
            const QPoint at = press->globalPosition().toPoint();
            report(QStringLiteral("press %1 %2,%3").arg(press->button()).arg(at.x()).arg(at.y()));
            if (std::exchange(holdingClipboard, false)) {
                CloseClipboard();
                report(QStringLiteral("clipboard released"));
            }
        } else if (event->type() == QEvent::WindowStateChange) {
            const bool minimized = static_cast<QWidget*>(watched)->isMinimized();
            report(minimized ? QStringLiteral("state minimized") : QStringLiteral("state normal"));
        }
        return false;
    }
};

void answerClipboard(HWND window)
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    const QString text = clipboard->text();
    if (!text.startsWith(QLatin1String("to probe: "))) return;
    const QString asked = text.mid(10);
    report(QStringLiteral("clipboard ") + asked);
    QTimer::singleShot(0, [clipboard, asked, window] {
        if (asked == QLatin1String("hold")) {
            holdingClipboard = OpenClipboard(window) != FALSE;
            report(holdingClipboard ? QStringLiteral("clipboard held")
                                    : QStringLiteral("clipboard not held"));
            return;
        }
        if (asked != QLatin1String("image")) {
            clipboard->setText(QStringLiteral("from probe: ") + asked);
            report(QStringLiteral("clipboard answered"));
            return;
        }
        QImage picture(16, 8, QImage::Format_RGB32);
        picture.fill(Qt::red);
        clipboard->setImage(picture);
        report(QStringLiteral("clipboard answered"));
    });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--log") == 0) {
        QCoreApplication app(argc, argv);
        QCoreApplication::setOrganizationName(QStringLiteral("Zelmor"));
        QCoreApplication::setApplicationName(QStringLiteral("Zelmor"));
        zelmor::core::writeLogLine(QString::fromLocal8Bit(argv[2]));
        return 0;
    }
    QApplication app(argc, argv);
    zelmor::core::initResources();
    checkIcons();

    QLineEdit edit;
    edit.setWindowTitle(QStringLiteral("Zelmor Wine probe"));
    edit.setAccessibleName(edit.windowTitle());
    edit.setGeometry(300, 300, 360, 60);
    QObject::connect(&edit, &QLineEdit::textChanged, [&edit](const QString& text) {
        report(QStringLiteral("text ") + text);
        if (!text.endsWith(QLatin1String("modal"))) return;
        QTimer::singleShot(0, [&edit] {
            // Qt's timers run on inside the box's loop.
            QTimer up;
            QObject::connect(&up, &QTimer::timeout, [&up] {
                const HWND box = FindWindowW(L"#32770", L"Zelmor Wine probe modal");
                if (!box || GetForegroundWindow() != box) return;
                up.stop();
                report(QStringLiteral("modal"));
            });
            up.start(20);
            MessageBoxW(reinterpret_cast<HWND>(edit.winId()), L"Zelmor Wine probe",
                        L"Zelmor Wine probe modal", MB_OK);
            report(QStringLiteral("modal ended"));
        });
    });
    Watcher watcher;
    edit.installEventFilter(&watcher);
    QObject::connect(QGuiApplication::clipboard(), &QClipboard::dataChanged,
                     [&edit] { answerClipboard(reinterpret_cast<HWND>(edit.winId())); });

    zelmor::manager::HotkeyService hotkeys;
    QObject::connect(&hotkeys, &zelmor::manager::HotkeyService::hotkeyTriggered,
                     [](int id) { report(QStringLiteral("hotkey %1").arg(id)); });
    if (!hotkeys.registerHotkey(1, QStringLiteral("Ctrl+Shift+K")))
        report(QStringLiteral("hotkey not registered"));

    const auto observer = zelmor::platform::observeInput(
        zelmor::platform::KeyPresses, [&app](const zelmor::platform::ObservedInput& input) {
            QMetaObject::invokeMethod(
                &app, [key = input.virtualKey] { report(QStringLiteral("hook %1").arg(key)); });
        });
    if (!observer) report(QStringLiteral("hook not installed"));

    edit.show();
    edit.activateWindow();
    QTimer::singleShot(0, [] { report(QStringLiteral("ready")); });
    return app.exec();
}
