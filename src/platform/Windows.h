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
    bool minimized = false;
    bool visible = false;
    std::int64_t processId = 0; // 0 when the window does not say
};

// Managed top-level windows, top of the stack first, including hidden and minimized ones.
std::vector<WindowRecord> listTopLevelWindows();

// The window holding the input focus; a record with handle 0 when there is none.
WindowRecord foregroundWindow();

} // namespace zelmor::platform
