// Prints one line per event: "ready", "text <line edit text>", "hook <virtual key>",
// "hotkey <id>", and "icons <count>" or "icon failed <path>" for the embedded icon images.

#include "core/Resources.h"
#include "manager/HotkeyService.h"
#include "platform/InputObserver.h"

#include <QApplication>
#include <QDirIterator>
#include <QImageReader>
#include <QLineEdit>
#include <QMetaObject>
#include <QTimer>

#include <cstdio>

namespace {

void report(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
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

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    zelmor::core::initResources();
    checkIcons();

    QLineEdit edit;
    edit.setWindowTitle(QStringLiteral("Zelmor Wine probe"));
    edit.setAccessibleName(edit.windowTitle());
    edit.setGeometry(300, 300, 360, 60);
    QObject::connect(&edit, &QLineEdit::textChanged,
                     [](const QString& text) { report(QStringLiteral("text ") + text); });

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
