// Picks the X11 or the Wayland edition of the screen grab by the display server the toolkit
// talks to, and finds which display answers at all (Windows has one edition).

#include "../ScreenGrab.h"
#include "../Session.h"
#include "../x11/ScreenGrabX11.h"
#include "../x11/SessionX11.h"
#include "ScreenGrabWayland.h"
#include "ScreenStream.h"
#include "portal/ScreenshotPortal.h"

#include <wayland-client.h>

#include <atomic>

namespace zelmor::platform {

namespace {
std::atomic<DisplayServer> toolkitServer{DisplayServer::Usual};

bool onWayland()
{
    return toolkitServer == DisplayServer::Wayland;
}
} // namespace

void setDisplayServer(DisplayServer server)
{
    toolkitServer = server;
}

DisplayServer displayServer()
{
    return toolkitServer;
}

bool displayReachable(DisplayServer* server)
{
    if (server) *server = DisplayServer::Usual;
    if (x11::displayReachable()) return true;
    // A connection of its own, gone at once, as the X11 check's.
    wl_display* compositor = wl_display_connect(nullptr);
    if (!compositor) return false;
    wl_display_disconnect(compositor);
    if (server) *server = DisplayServer::Wayland;
    return true;
}

std::vector<MonitorInfo> listMonitors()
{
    return onWayland() ? wayland::listMonitors() : x11::listMonitors();
}

Rect virtualDesktopRect()
{
    Rect all;
    for (const MonitorInfo& m : listMonitors())
        all = united(all, m.rect);
    return all;
}

bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method)
{
    return onWayland() ? wayland::grabDesktopRect(rect, dest, destStride, method)
                       : method != GrabMethod::Portal &&
                             x11::grabDesktopRect(rect, dest, destStride, method);
}

bool sharedMemoryGrabAvailable()
{
    return onWayland() ? wayland::screencopyAvailable() : x11::sharedMemoryGrabAvailable();
}

GrabBlocker screenGrabBlocker()
{
    if (!onWayland()) return x11::screenGrabBlocker();
    return wayland::screencopyAvailable() || wayland::screenshotPortalAvailable()
               ? GrabBlocker::None
               : GrabBlocker::NoScreenCopy;
}

bool grabsAreSinglePictures()
{
    return onWayland() && !wayland::screencopyAvailable() && wayland::screenshotPortalAvailable() &&
           !wayland::openScreenStream();
}

PortalAnswer lastPortalAnswer()
{
    return onWayland() ? wayland::lastScreenshotAnswer() : PortalAnswer::Granted;
}

} // namespace zelmor::platform
