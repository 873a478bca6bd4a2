// The shell's own entries: mouse gestures and the update check.

#include "ActionManager.h"

#include "core/Toast.h"
#include "manager/PinManager.h"
#include "service/gesture/MouseGestureService.h"
#include "service/updater/UpdateService.h"
#include "widget/MainWindow.h"

namespace zelmor::manager {

namespace {

constexpr int kToastMs = 3000;

} // namespace

void ActionManager::toggleMouseGesture(bool on)
{
    if (!m_gestureService) {
        m_gestureService = new service::gesture::MouseGestureService(this);
        connect(m_gestureService, &service::gesture::MouseGestureService::gestureDetected, this,
                &ActionManager::onGesture);
    }
    m_gestureService->setEnabled(on);
    if (on && !m_gestureService->observing())
        core::notifyUser(tr("Gestures unavailable", "tray.gesture.unavailable"),
                         tr("This desktop lets no program watch the mouse, so gestures cannot "
                            "work here.",
                            "tray.gesture.unavailable.body"),
                         kToastMs);
    else if (on)
        core::notifyUser(tr("Gestures on", "tray.gesture.on"),
                         tr("Right-drag to gesture. (R=next pin, L=prev, D=history, "
                            "DR=capture, DL=clear pins)",
                            "tray.gesture.on.body"),
                         kToastMs);
    else
        core::notifyUser(tr("Gestures off", "tray.gesture.off"),
                         tr("Mouse gestures disabled.", "tray.gesture.off.body"), kToastMs);
}

// "next-pin", "prev-pin" and "show-desktop" are recognised and have no operation.
void ActionManager::onGesture(const QString& action)
{
    if (action == QLatin1String("capture-region"))
        captureRegion();
    else if (action == QLatin1String("show-history"))
        showHistory();
    else if (action == QLatin1String("clear-pins"))
        m_pinManager->clearAll();
}

// Only tells: downloading belongs to the settings panel.
void ActionManager::checkUpdates()
{
    using service::updater::UpdateService;
    auto* updater = new UpdateService(this);
    const auto answer = [updater](const QString& title, const QString& body) {
        core::notifyUser(title, body, kToastMs);
        updater->deleteLater();
    };
    connect(updater, &UpdateService::updateAvailable, this,
            [answer](const QString& version, const QString&, const QString&) {
                answer(tr("Update available", "tray.update.available"),
                       tr("Zelmor %1 is available.").arg(version));
            });
    connect(updater, &UpdateService::upToDate, this, [answer] {
        answer(tr("Up to date", "tray.update.uptodate"), tr("You're on the latest version."));
    });
    connect(updater, &UpdateService::checkFailed, this, [answer](const QString& reason) {
        answer(tr("Update check failed", "tray.update.failed"), reason);
    });
    updater->checkForUpdates();
}

} // namespace zelmor::manager
