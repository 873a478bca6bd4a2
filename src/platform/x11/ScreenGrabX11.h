#pragma once

#include "../ScreenGrab.h"

// The X11 edition of the screen grab; the session picks it or the Wayland one.
namespace zelmor::platform::x11 {

std::vector<MonitorInfo> listMonitors();
bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method);
bool sharedMemoryGrabAvailable();
GrabBlocker screenGrabBlocker();

} // namespace zelmor::platform::x11
