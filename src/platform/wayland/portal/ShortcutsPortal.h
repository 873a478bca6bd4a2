#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zelmor::platform::wayland {

// The desktop offers the GlobalShortcuts portal (KDE).
bool shortcutsPortalAvailable();

// As the hotkey functions of Hotkeys.h, through the portal: the keys are the preferred
// triggers of one shortcut each, which the desktop binds (and the user may change there). The
// whole table goes to the portal once the caller's event loop turns.
bool bindPortalHotkey(int id, unsigned modifiers, unsigned virtualKey);
void unbindPortalHotkey(int id);
void describePortalHotkey(int id, const std::string& description);
void onPortalHotkeyPresses(std::function<void()> wake);
std::vector<int> takePortalHotkeyPresses();

} // namespace zelmor::platform::wayland
