#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/SingleInstance.h"
#include "core/ConfigManager.h"
#include "core/EventBus.h"
#include "core/Log.h"
#include "service/capture/CaptureService.h"
#include "service/capture/OutputFile.h"

#include <QFont>
#include <QTimer>

#include <cstring>

using namespace zelmor;

namespace {

// Until the action dispatcher exists, a command-line full-screen capture goes straight
// to a file in the output folder.
void captureFullscreenToOutputDir(service::capture::CaptureService& service)
{
    const core::CaptureResult result = service.captureFullscreen();
    if (result.pixmap.isNull()) {
        core::writeLogLine(QStringLiteral("[capture] fullscreen grab failed"));
        return;
    }
    core::ConfigManager& config = core::ConfigManager::instance();
    const QString path = service::capture::makeOutputPath(config.outputDir(), config.fileNaming(),
                                                          QStringLiteral("png"));
    const bool saved = service::capture::savePixmapFile(result.pixmap, path);
    core::writeLogLine(
        (saved ? QStringLiteral("[capture] saved ") : QStringLiteral("[capture] cannot save ")) +
        path);
}

} // namespace

int main(int argc, char** argv)
{
    app::Application application(argc, argv);
    core::startupTrace("app constructed");

    application.reloadTranslators();
    core::startupTrace("translators loaded");

    if (!app::SingleInstance::tryAcquire()) {
        app::SingleInstance::notifyRunningInstance();
        return 0;
    }
    core::startupTrace("single-instance locked");

    QFont font(QStringLiteral("Segoe UI Variable"));
    font.setPointSize(10);
    // The Windows families first; the rest are what Linux desktops ship.
    QFont::insertSubstitutions(QStringLiteral("Segoe UI Variable"),
                               {QStringLiteral("Segoe UI"), QStringLiteral("Microsoft YaHei UI"),
                                QStringLiteral("Noto Sans"), QStringLiteral("Noto Sans CJK SC"),
                                QStringLiteral("DejaVu Sans")});
    QApplication::setFont(font);

    service::capture::CaptureService captureService;

    QObject::connect(&core::ConfigManager::instance(), &core::ConfigManager::languageChanged,
                     &application, &app::Application::reloadTranslators);

    if (argc >= 2) {
        const char* captureSwitch = app::firstCaptureSwitch(argc, argv);
        if (captureSwitch && std::strcmp(captureSwitch, "--capture-fullscreen") == 0) {
            QTimer::singleShot(800, &captureService,
                               [&captureService] { captureFullscreenToOutputDir(captureService); });
        } else if (captureSwitch) {
            core::writeLogLine(QStringLiteral(
                "[startup] --capture-region: region capture is not available in this build yet"));
        }
    }

    QObject::connect(&core::EventBus::instance(), &core::EventBus::emitted, &application,
                     [](const QString& name, const QVariantMap&) {
                         if (name == QLatin1String("singleInstanceRaiseRequested"))
                             core::writeLogLine(QStringLiteral("[instance] raise requested"));
                     });
    core::startupTrace("entering event loop");
    return application.exec();
}
