#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zelmor::platform {

// Modifier bits of a hotkey, with the values of the Windows hotkey interface.
enum HotkeyModifier : unsigned {
    HotkeyAlt = 0x1,
    HotkeyControl = 0x2,
    HotkeyShift = 0x4,
    HotkeyWin = 0x8,
    HotkeyNoRepeat = 0x4000,
};

// Who binds the global hotkeys in this session.
enum class HotkeyBinder {
    Program, // registerHotkey binds them system-wide (X11, Windows)
    Portal,  // the desktop binds them at this program's request, through its shortcuts portal
    Desktop, // only the desktop's own keyboard settings can; registerHotkey binds nothing
};
HotkeyBinder hotkeyBinder();

// Where the desktop binds keys in a configuration file whose syntax this program knows (sway),
// that file as the user names it, and the line of it that runs `command` on the key (empty for
// a key it cannot name); both empty elsewhere.
std::string desktopBindingFile();
std::string desktopBindingLine(unsigned modifiers, unsigned virtualKey, const std::string& command);

// Binds a key (a Windows virtual-key code) with modifiers system-wide under `id`. False when
// the key has no equivalent here, another client holds the combination, or no display is
// reachable.
bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey);
void unregisterHotkey(int id);
// The name (UTF-8) under which a desktop that binds keys at this program's request (the
// shortcuts portal) lists hotkey `id` in its own settings; given before registering.
void describeHotkey(int id, const std::string& description);

// A descriptor that becomes readable when hotkey events are waiting; -1 where there is none
// (Windows) or no display.
int hotkeyEventDescriptor();

// Where there is no descriptor, `wake` is called on the thread that registered the hotkeys
// when presses are waiting, also from within the system's modal loops. Empty to stop.
void onHotkeyPresses(std::function<void()> wake);

// The ids of the hotkeys pressed since the last call, in order.
std::vector<int> takeHotkeyPresses();

} // namespace zelmor::platform
