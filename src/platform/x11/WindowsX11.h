#pragma once

#include "../Windows.h"

// The X11 edition of the window list; the session picks it or the Wayland one.
namespace zelmor::platform::x11 {

std::vector<WindowRecord> listTopLevelWindows();
WindowRecord foregroundWindow();
WindowHandle windowAt(Point point);
std::string windowProcessName(WindowHandle window);
bool activateWindow(WindowHandle window);
bool minimizeWindow(WindowHandle window);
bool maximizeWindow(WindowHandle window);
bool restoreWindow(WindowHandle window);
bool closeWindow(WindowHandle window);
bool waitUntilUnmanaged(WindowHandle window, int timeoutMs);

} // namespace zelmor::platform::x11
