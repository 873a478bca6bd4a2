#pragma once

#include "../ScreenGrab.h"

namespace zelmor::platform::wayland {

// The compositor's outputs; empty when no compositor answers.
std::vector<MonitorInfo> listMonitors();

// As platform::grabDesktopRect, through the wlr-screencopy protocol, else through the
// desktop's screenshot portal.
bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method);

// A compositor answers and offers wlr-screencopy.
bool screencopyAvailable();

} // namespace zelmor::platform::wayland
