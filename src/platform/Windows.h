#pragma once

#include "Geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zelmor::platform {

using WindowHandle = std::uint64_t;

struct WindowRecord
{
    WindowHandle handle = 0; // 0: no window
    std::string title;       // UTF-8
    std::string className;
    Rect frame; // outer rectangle including the window manager's decorations
    // False where the desktop does not tell other programs where windows are (most Wayland
    // compositors); `frame` is then empty.
    bool frameKnown = true;
    bool minimized = false;
    bool maximized = false;
    bool visible = false;
    std::int64_t processId = 0; // 0 when the window does not say
};

// False when the desktop lets no other program list or manage its windows (a Wayland
// compositor without a foreign-toplevel protocol).
bool windowManagementAvailable();

// Managed top-level windows, top of the stack first, including hidden and minimized ones.
std::vector<WindowRecord> listTopLevelWindows();

// The window holding the input focus; a record with handle 0 when there is none.
WindowRecord foregroundWindow();

// The topmost shown top-level window whose frame holds the point; 0 when none.
WindowHandle windowAt(Point point);

// File name, without its folder, of the program that owns the window; empty when unknown.
std::string windowProcessName(WindowHandle window);

// Requests to the window manager, which carries them out asynchronously. False when the window
// is gone or nothing could carry the request out.
bool activateWindow(WindowHandle window); // raises, focuses and un-minimizes
bool minimizeWindow(WindowHandle window);
bool maximizeWindow(WindowHandle window); // and activates
bool restoreWindow(WindowHandle window);  // from minimized, else from maximized; and activates
bool closeWindow(WindowHandle window);    // asks the program, which may refuse

// Waits, at most `timeoutMs`, until the window manager has let go of a window this program
// hid, so that it can be shown again unmanaged. False when the wait ran out.
bool waitUntilUnmanaged(WindowHandle window, int timeoutMs);

} // namespace zelmor::platform
