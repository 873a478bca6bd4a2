#pragma once

#include "../Hotkeys.h"

// Hotkeys as X11 grabs them; a Wayland session binds them its own way.
namespace zelmor::platform::x11 {

bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey);
void unregisterHotkey(int id);
int hotkeyEventDescriptor();
std::vector<int> takeHotkeyPresses();

} // namespace zelmor::platform::x11
