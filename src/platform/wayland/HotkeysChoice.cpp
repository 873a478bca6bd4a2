// Picks how hotkeys are bound: X11 grabs in an X11 session; in a Wayland session, where an X11
// grab would reach only Xwayland's own windows, whatever the desktop offers.

#include "../Hotkeys.h"
#include "../Session.h"
#include "../x11/HotkeysX11.h"
#include "../x11/KeyboardX11.h"
#include "portal/ShortcutsPortal.h"

#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <cstring>

namespace zelmor::platform {

namespace {

bool waylandSession()
{
    const char* display = std::getenv("WAYLAND_DISPLAY");
    return displayServer() == DisplayServer::Wayland || (display && *display);
}

bool onSway()
{
    const char* socket = std::getenv("SWAYSOCK");
    const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
    return (socket && *socket) || (desktop && strcasestr(desktop, "sway"));
}

// sway's names of the modifiers, in the order its own configuration writes them.
std::string swayKeys(unsigned modifiers, unsigned virtualKey)
{
    char name[64];
    const xcb_keysym_t keysym = x11::keysymForVirtualKey(virtualKey);
    if (keysym == XCB_NO_SYMBOL || xkb_keysym_get_name(keysym, name, sizeof name) <= 0) return {};
    std::string keys;
    for (const auto& [bit, modifier] : {std::pair{HotkeyWin, "Mod4+"},
                                        {HotkeyControl, "Ctrl+"},
                                        {HotkeyAlt, "Mod1+"},
                                        {HotkeyShift, "Shift+"}})
        if (modifiers & bit) keys += modifier;
    return keys + name;
}

} // namespace

HotkeyBinder hotkeyBinder()
{
    if (!waylandSession()) return HotkeyBinder::Program;
    return wayland::shortcutsPortalAvailable() ? HotkeyBinder::Portal : HotkeyBinder::Desktop;
}

std::string desktopBindingFile()
{
    return waylandSession() && onSway() ? "~/.config/sway/config" : "";
}

std::string desktopBindingLine(unsigned modifiers, unsigned virtualKey, const std::string& command)
{
    if (desktopBindingFile().empty()) return {};
    const std::string keys = swayKeys(modifiers, virtualKey);
    if (keys.empty()) return {};
    // sway takes one layer of quotes off a binding's words before the shell sees the command,
    // and has no escapes: the layer is made of the quote the command lacks.
    std::string shell = command;
    const bool single = command.find('\'') != std::string::npos;
    const bool twin = command.find('"') != std::string::npos;
    if (single && twin) return {};
    if (single || twin) shell = (single ? '"' : '\'') + command + (single ? '"' : '\'');
    // Held keys run the command once, as a hotkey of this program does.
    return "bindsym --no-repeat " + keys + " exec " + shell;
}

bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey)
{
    switch (hotkeyBinder()) {
    case HotkeyBinder::Program:
        return x11::registerHotkey(id, modifiers, virtualKey);
    case HotkeyBinder::Portal:
        return wayland::bindPortalHotkey(id, modifiers, virtualKey);
    case HotkeyBinder::Desktop:
        break;
    }
    return false;
}

void describeHotkey(int id, const std::string& description)
{
    wayland::describePortalHotkey(id, description);
}

void unregisterHotkey(int id)
{
    waylandSession() ? wayland::unbindPortalHotkey(id) : x11::unregisterHotkey(id);
}

int hotkeyEventDescriptor()
{
    return waylandSession() ? -1 : x11::hotkeyEventDescriptor();
}

std::vector<int> takeHotkeyPresses()
{
    return waylandSession() ? wayland::takePortalHotkeyPresses() : x11::takeHotkeyPresses();
}

// X11 hotkeys are announced through hotkeyEventDescriptor(), the portal's by `wake`.
void onHotkeyPresses(std::function<void()> wake)
{
    if (waylandSession()) wayland::onPortalHotkeyPresses(std::move(wake));
}

} // namespace zelmor::platform
