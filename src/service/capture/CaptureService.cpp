#include "CaptureService.h"

#include "ScreenGrabber.h"

#include "platform/ScreenGrab.h"

#include <QGuiApplication>
#include <QScreen>

namespace zelmor::service::capture {

CaptureService::CaptureService(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<core::CaptureResult>("core::CaptureResult");
}

core::CaptureResult CaptureService::captureFullscreen()
{
    return core::makeCaptureResult(grabVirtualDesktop());
}

core::CaptureResult CaptureService::captureRegion(const QRect& rect)
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    const QPoint origin = primary ? primary->virtualGeometry().topLeft() : QPoint();
    const QPixmap canvas = grabAllScreens();
    if (canvas.isNull()) return core::makeCaptureResult(canvas);
    // QImage::copy keeps the full size and fills what lies outside the canvas; QPixmap::copy
    // would clip.
    return core::makeCaptureResult(
        QPixmap::fromImage(canvas.toImage().copy(rect.translated(-origin))));
}

QPixmap CaptureService::grabScreens()
{
    return grabAllScreens();
}

QString CaptureService::failureReason()
{
    switch (platform::screenGrabBlocker()) {
    case platform::GrabBlocker::Xwayland:
        return tr("Zelmor runs through Xwayland here, which cannot see the Wayland desktop. "
                  "Start Zelmor on Wayland itself (QT_QPA_PLATFORM=wayland).",
                  "capture.failed.xwayland");
    case platform::GrabBlocker::NoScreenCopy:
        return tr("This Wayland desktop lets Zelmor copy no screen: it offers no screen copy "
                  "protocol (wlr-screencopy) and no screenshot portal. Use a wlroots desktop "
                  "such as sway, or install xdg-desktop-portal with your desktop's portal "
                  "backend.",
                  "capture.failed.noScreencopy");
    case platform::GrabBlocker::None:
        break;
    }
    switch (platform::lastPortalAnswer()) {
    case platform::PortalAnswer::Refused:
        return tr("The desktop's screenshot portal was refused or its dialog was closed. "
                  "Capture again and allow Zelmor to take the screenshot.",
                  "capture.failed.portalRefused");
    case platform::PortalAnswer::Failed:
        return tr("The desktop's screenshot portal could not take a screenshot. Check that "
                  "xdg-desktop-portal and your desktop's portal backend are installed.",
                  "capture.failed.portalFailed");
    case platform::PortalAnswer::NoAnswer:
        return tr("The desktop's screenshot portal did not answer within 30 seconds; its "
                  "dialog may have waited for you. Capture again and answer the dialog.",
                  "capture.failed.portalNoAnswer");
    case platform::PortalAnswer::Granted:
        break;
    }
    return tr("Failed to grab screens.", "capture.failed.body");
}

} // namespace zelmor::service::capture
