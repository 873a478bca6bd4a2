#pragma once

#include "../Input.h"

namespace zelmor::platform::wayland {

class WaylandConnection;

// Input through KWin's own fake input device, where KWin offers no virtual keyboard or
// pointer. Keys are those of the desktop's layout: a character it has no key for cannot be
// typed. Every call wants the connection's mutex held.
namespace kde {

bool moveTo(WaylandConnection& c, Point logical);
bool sendMouseButtons(WaylandConnection& c, const std::vector<ButtonEvent>& events);
bool sendMouseWheel(WaylandConnection& c, int notches, bool horizontal);
bool sendKeys(WaylandConnection& c, const std::vector<KeyEvent>& events);
// The desktop's layout has a key for the keysym, plain or with Shift.
bool layoutTypes(WaylandConnection& c, std::uint32_t keysym);
// False when a character had no key.
bool typeText(WaylandConnection& c, const std::vector<std::uint32_t>& keysyms, int delayMs,
              const std::function<bool()>& stop);

} // namespace kde

} // namespace zelmor::platform::wayland
