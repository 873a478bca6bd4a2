#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/HotkeyBindings.h"
#include "app/SingleInstance.h"
#include "core/ConfigManager.h"
#include "core/DisplaySession.h"
#include "core/EventBus.h"
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

#include <cstring>

using namespace zelmor;

namespace {

// Runs the first capture switch of argv once the event loop serves timers.
void armCommandLine(int argc, char** argv, manager::ActionManager& actions)
{
    const char* captureSwitch = app::firstCaptureSwitch(argc, argv);
    if (!captureSwitch) return;
    const bool region = std::strcmp(captureSwitch, "--capture-region") == 0;
    QTimer::singleShot(800, &actions,
                       region ? &manager::ActionManager::captureRegion
                              : &manager::ActionManager::captureFullscreen);
}

} // namespace

int main(int argc, char** argv)
{
    if (app::printInformation(argc, argv)) return 0;
    app::Application application(argc, argv);
    core::initResources();
    core::startupTrace("app constructed");

    application.reloadTranslators();
    core::startupTrace("translators loaded");

    using Request = app::SingleInstance::Request;
    const bool quit = app::quitRequested(argc, argv);
    if (!app::SingleInstance::tryAcquire()) {
        app::SingleInstance::notifyRunningInstance(quit ? Request::Quit : Request::Raise);
        return 0;
    }
    if (quit) return 0; // none was running
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

    if (argc >= 2) armCommandLine(argc, argv, actionManager);

    manager::HotkeyService hotkeys(nullptr);
    app::HotkeyBindings bindings(hotkeys,
                                 actionManager); // the callback table, owned by the service
    bindings.registerAll();
    core::startupTrace("hotkeys registered");

    QObject::connect(&core::EventBus::instance(), &core::EventBus::emitted, &mainWindow,
                     [&mainWindow, &actionManager](const QString& name, const QVariantMap&) {
                         if (name == QLatin1String("singleInstanceRaiseRequested"))
                             mainWindow.showHistory();
                         else if (name == QLatin1String("singleInstanceQuitRequested"))
                             actionManager.quit();
                     });
    core::startupTrace("entering event loop");
    return application.exec();
}
