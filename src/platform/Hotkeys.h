#pragma once

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

// Binds a key (a Windows virtual-key code) with modifiers system-wide under `id`. False when
// the key has no equivalent here, another client holds the combination, or no display is
// reachable.
bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey);
void unregisterHotkey(int id);

// A descriptor that becomes readable when hotkey events are waiting; -1 without a display.
int hotkeyEventDescriptor();

// The ids of the hotkeys pressed since the last call, in order.
std::vector<int> takeHotkeyPresses();

// Where presses arrive as messages of the GUI thread instead (Windows: WM_HOTKEY), the id a
// native message reports; -1 for any other message.
int hotkeyIdFromNativeMessage(const void* message);

} // namespace zelmor::platform
