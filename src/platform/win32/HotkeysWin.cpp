// RegisterHotKey on the GUI thread: presses come as WM_HOTKEY messages of that thread, which
// the hotkey service reads from Qt's native event filter.

#include "../Hotkeys.h"

#include <windows.h>

namespace zelmor::platform {

bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey)
{
    return RegisterHotKey(nullptr, id, modifiers, virtualKey) != FALSE;
}

void unregisterHotkey(int id)
{
    UnregisterHotKey(nullptr, id);
}

int hotkeyEventDescriptor()
{
    return -1;
}

std::vector<int> takeHotkeyPresses()
{
    return {};
}

int hotkeyIdFromNativeMessage(const void* message)
{
    const auto* msg = static_cast<const MSG*>(message);
    return msg && msg->message == WM_HOTKEY ? int(static_cast<unsigned>(msg->wParam)) : -1;
}

} // namespace zelmor::platform
