// Hotkeys as passive key grabs on the root window, on a connection of their own so that no
// other request can swallow their events (Windows: RegisterHotKey and WM_HOTKEY).

#include "HotkeysX11.h"
#include "KeyboardX11.h"
#include "X11Connection.h"

#include <xcb/xcb_keysyms.h>
// The XKB header names a member "explicit", which C++ reserves.
#define explicit xkb_explicit
#include <xcb/xkb.h>
#undef explicit

#include <X11/keysym.h>

#include <map>
#include <mutex>
#include <set>

namespace zelmor::platform::x11 {

namespace {

struct Binding
{
    xcb_keycode_t keycode;
    std::uint16_t modifiers;
    bool noRepeat;
};

// NumLock (Mod2) and CapsLock (Lock) must not stop a hotkey: every combination of them is grabbed.
constexpr std::uint16_t kIgnoredModifiers[] = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                               XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
constexpr std::uint16_t kRelevantModifiers =
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;

std::uint16_t x11Modifiers(unsigned modifiers)
{
    std::uint16_t mask = 0;
    if (modifiers & HotkeyAlt) mask |= XCB_MOD_MASK_1;
    if (modifiers & HotkeyControl) mask |= XCB_MOD_MASK_CONTROL;
    if (modifiers & HotkeyShift) mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers & HotkeyWin) mask |= XCB_MOD_MASK_4;
    return mask;
}

class HotkeyConnection
{
public:
    static HotkeyConnection* instance()
    {
        static HotkeyConnection* connection = []() -> HotkeyConnection* {
            xcb_connection_t* c = openConnection();
            return c ? new HotkeyConnection(c) : nullptr;
        }();
        return connection;
    }

    std::mutex mutex;
    std::map<int, Binding> bindings;
    std::set<xcb_keycode_t> keysDown;

    xcb_connection_t* c;
    xcb_window_t root;
    xcb_key_symbols_t* symbols;

private:
    explicit HotkeyConnection(xcb_connection_t* connection)
        : c(connection), root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
          symbols(xcb_key_symbols_alloc(connection))
    {
        // Held keys then repeat as presses alone, without releases in between, so a repeat
        // can be told from a new press.
        Reply<xcb_xkb_use_extension_reply_t> xkb(
            xcb_xkb_use_extension_reply(c, xcb_xkb_use_extension(c, 1, 0), nullptr));
        if (xkb && xkb->supported) {
            const std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
            free(xcb_xkb_per_client_flags_reply(
                c, xcb_xkb_per_client_flags(c, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0),
                nullptr));
        }
    }
};

void ungrab(HotkeyConnection& h, const Binding& b)
{
    for (std::uint16_t ignored : kIgnoredModifiers)
        xcb_ungrab_key(h.c, b.keycode, h.root, std::uint16_t(b.modifiers | ignored));
    xcb_flush(h.c);
}

} // namespace

bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey)
{
    HotkeyConnection* h = HotkeyConnection::instance();
    const xcb_keysym_t keysym = x11::keysymForVirtualKey(virtualKey);
    if (!h || keysym == XCB_NO_SYMBOL) return false;
    std::lock_guard<std::mutex> lock(h->mutex);
    if (h->bindings.count(id)) return false;
    Reply<xcb_keycode_t> keycodes(xcb_key_symbols_get_keycode(h->symbols, keysym));
    if (!keycodes || keycodes.get()[0] == XCB_NO_SYMBOL) return false;

    const Binding binding{keycodes.get()[0], x11Modifiers(modifiers),
                          (modifiers & HotkeyNoRepeat) != 0};
    // X lets one client grab a combination twice; the second binding must fail as elsewhere.
    for (const auto& [other, b] : h->bindings)
        if (b.keycode == binding.keycode && b.modifiers == binding.modifiers) return false;
    bool granted = true;
    for (std::uint16_t ignored : kIgnoredModifiers) {
        Reply<xcb_generic_error_t> error(xcb_request_check(
            h->c, xcb_grab_key_checked(h->c, 1, h->root, std::uint16_t(binding.modifiers | ignored),
                                       binding.keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        granted = granted && !error; // BadAccess: another client holds the combination
    }
    if (!granted) {
        ungrab(*h, binding);
        return false;
    }
    h->bindings[id] = binding;
    return true;
}

void unregisterHotkey(int id)
{
    HotkeyConnection* h = HotkeyConnection::instance();
    if (!h) return;
    std::lock_guard<std::mutex> lock(h->mutex);
    const auto found = h->bindings.find(id);
    if (found == h->bindings.end()) return;
    ungrab(*h, found->second);
    h->bindings.erase(found);
}

int hotkeyEventDescriptor()
{
    HotkeyConnection* h = HotkeyConnection::instance();
    return h ? xcb_get_file_descriptor(h->c) : -1;
}

std::vector<int> takeHotkeyPresses()
{
    std::vector<int> pressed;
    HotkeyConnection* h = HotkeyConnection::instance();
    if (!h) return pressed;
    std::lock_guard<std::mutex> lock(h->mutex);
    while (xcb_generic_event_t* event = xcb_poll_for_event(h->c)) {
        const std::uint8_t type = event->response_type & 0x7f;
        if (type == XCB_KEY_RELEASE) {
            h->keysDown.erase(reinterpret_cast<xcb_key_release_event_t*>(event)->detail);
        } else if (type == XCB_KEY_PRESS) {
            const auto* key = reinterpret_cast<xcb_key_press_event_t*>(event);
            const bool repeat = !h->keysDown.insert(key->detail).second;
            const std::uint16_t state = key->state & kRelevantModifiers;
            for (const auto& [id, b] : h->bindings)
                if (b.keycode == key->detail && b.modifiers == state && !(repeat && b.noRepeat))
                    pressed.push_back(id);
        } else if (type == XCB_MAPPING_NOTIFY) {
            xcb_refresh_keyboard_mapping(h->symbols,
                                         reinterpret_cast<xcb_mapping_notify_event_t*>(event));
        }
        free(event);
    }
    return pressed;
}

} // namespace zelmor::platform::x11
