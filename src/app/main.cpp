#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/HotkeyBindings.h"
#include "app/SingleInstance.h"
#include "core/ConfigManager.h"
#include "core/DisplaySession.h"
#include "core/EventBus.h"
#include "core/HotkeyActions.h"
#include "core/Log.h"
#include "core/Resources.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/ThemeManager.h"
#include "manager/TrayService.h"
#include "widget/MainWindow.h"

#include <QFont>
#include <QSystemTrayIcon>
#include <QTimer>

using namespace zelmor;

namespace {

// Runs the first action switch of argv once the event loop serves timers.
void armCommandLine(const core::HotkeyAction* action, manager::ActionManager& actions)
{
    if (!action) return;
    const int id = action->id;
    QTimer::singleShot(800, &actions,
                       [&actions, id] { app::HotkeyBindings::perform(actions, id); });
}

// Quit, the action of a switch, or else to come forward.
bool notifyRunningInstance(bool quit, const core::HotkeyAction* action)
{
    using Request = app::SingleInstance::Request;
    if (quit) return app::SingleInstance::notifyRunningInstance(Request::Quit);
    if (action) return app::SingleInstance::notifyRunningInstance(Request::Run, action->name);
    return app::SingleInstance::notifyRunningInstance(Request::Raise);
}

// A running Zelmor gets the request before this process reaches a display: quick for a key
// the desktop binds to a switch, and possible where no display is at hand.
bool passedToRunningInstance(char* program, bool quit, const core::HotkeyAction* action)
{
    int argc = 1;
    char* argv[] = {program, nullptr};
    QCoreApplication probe(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Zelmor"));
    QCoreApplication::setApplicationName(QStringLiteral("Zelmor"));
    return notifyRunningInstance(quit, action);
}

} // namespace

int main(int argc, char** argv)
{
    if (app::printInformation(argc, argv)) return 0;
    const bool quit = app::quitRequested(argc, argv);
    const core::HotkeyAction* action =
        core::hotkeyActionForOption(app::firstCaptureSwitch(argc, argv));
    if (passedToRunningInstance(argv[0], quit, action)) return 0;
    if (quit) return 0; // none was running

    app::Application application(argc, argv);
    core::initResources();
    core::startupTrace("app constructed");

    application.reloadTranslators();
    core::startupTrace("translators loaded");

    // Another start may have come first since the probe.
    if (!app::SingleInstance::tryAcquire()) {
        notifyRunningInstance(quit, action);
        return 0;
    }
    core::startupTrace("single-instance locked");
    core::recordDisplaySession();

    QFont font(QStringLiteral("Segoe UI Variable"));
    font.setPointSize(10);
    // The Windows families first; the rest are what Linux desktops ship.
    QFont::insertSubstitutions(QStringLiteral("Segoe UI Variable"),
                               {QStringLiteral("Segoe UI"), QStringLiteral("Microsoft YaHei UI"),
                                QStringLiteral("Noto Sans"), QStringLiteral("Noto Sans CJK SC"),
                                QStringLiteral("DejaVu Sans"), QStringLiteral("Noto Color Emoji")});
    QApplication::setFont(font);

    manager::ThemeManager::instance().apply(core::ConfigManager::instance().theme());
    core::startupTrace("theme applied");

    widget::MainWindow mainWindow(nullptr);
    core::startupTrace("MainWindow constructed (panels built)");

    manager::ActionManager actionManager(&mainWindow, nullptr);
    core::startupTrace("ActionManager constructed");

    manager::TrayService tray(&actionManager, nullptr);
    core::setNotificationTrayIcon(tray.trayIcon());
    core::startupTrace("tray ready");

    core::ConfigManager& config = core::ConfigManager::instance();
    QObject::connect(&config, &core::ConfigManager::themeChanged, &mainWindow, [] {
        manager::ThemeManager::instance().apply(core::ConfigManager::instance().theme());
    });
    application.followLanguage(tray, mainWindow);

    tray.show();

    armCommandLine(action, actionManager);

    manager::HotkeyService hotkeys(nullptr);
    app::HotkeyBindings bindings(hotkeys,
                                 actionManager); // the callback table, owned by the service
    bindings.registerAll();
    core::startupTrace("hotkeys registered");

    QObject::connect(
        &core::EventBus::instance(), &core::EventBus::emitted, &mainWindow,
        [&mainWindow, &actionManager](const QString& name, const QVariantMap& payload) {
            if (name == QLatin1String("singleInstanceRaiseRequested"))
                mainWindow.showHistory();
            else if (name == QLatin1String("singleInstanceQuitRequested"))
                actionManager.quit();
            else if (name == QLatin1String("singleInstanceActionRequested"))
                app::HotkeyBindings::perform(actionManager,
                                             payload.value(QStringLiteral("id")).toInt());
        });
    core::startupTrace("entering event loop");
    return application.exec();
}
