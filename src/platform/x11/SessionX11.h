#pragma once

// The X11 side of platform::displayReachable.
namespace zelmor::platform::x11 {

bool displayReachable();

} // namespace zelmor::platform::x11
