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
                  "protocol (wlr-screencopy). Use a wlroots desktop such as sway, or an X11 "
                  "session.",
                  "capture.failed.noScreencopy");
    case platform::GrabBlocker::None:
        break;
    }
    return tr("Failed to grab screens.", "capture.failed.body");
}

} // namespace zelmor::service::capture
