#pragma once

#include "../../ScreenGrab.h"

namespace zelmor::platform::wayland {

// The desktop offers the Screenshot portal.
bool screenshotPortalAvailable();

// As platform::grabDesktopRect, from the Screenshot portal's picture of `desktop`, the
// bounding rectangle of all outputs. One picture serves the grabs of one capture.
bool grabThroughScreenshotPortal(const Rect& rect, const Rect& desktop, std::uint32_t* dest,
                                 int destStride);

// How the last request for a picture ended.
PortalAnswer lastScreenshotAnswer();

} // namespace zelmor::platform::wayland
