#include "InputKde.h"

#include "../x11/KeyboardX11.h"
#include "WaylandConnection.h"
#include "kde-fake-input-client-protocol.h"

#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace zelmor::platform::wayland::kde {

namespace {

constexpr std::uint32_t kShiftKey = 42;       // KEY_LEFTSHIFT
constexpr std::uint32_t kFirstButton = 0x110; // BTN_LEFT; right, middle, side, extra follow
constexpr int kNotchAxisValue = 15;
constexpr std::uint32_t kPressed = 1;
constexpr std::uint32_t kReleased = 0;

org_kde_kwin_fake_input* device(WaylandConnection& c)
{
    static bool introduced = false;
    if (c.kdeFakeInput() && !introduced) {
        org_kde_kwin_fake_input_authenticate(c.kdeFakeInput(), "Zelmor",
                                             "Desktop automation asked for by an AI client");
        introduced = true;
    }
    return c.kdeFakeInput();
}

// The keymap every client of the seat is handed; the keyboard library's defaults when none
// comes (a seat without a keyboard yet).
xkb_keymap* seatKeymap(WaylandConnection& c)
{
    static xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    static xkb_keymap* keymap = nullptr;
    static bool asked = false;
    if (asked || !context) return keymap;
    asked = true;
    static const wl_keyboard_listener listener = {
        [](void*, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size) {
            void* text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
            if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 && text != MAP_FAILED)
                keymap = xkb_keymap_new_from_string(context, static_cast<const char*>(text),
                                                    XKB_KEYMAP_FORMAT_TEXT_V1,
                                                    XKB_KEYMAP_COMPILE_NO_FLAGS);
            if (text != MAP_FAILED) munmap(text, size);
            close(fd);
        },
        [](void*, wl_keyboard*, uint32_t, wl_surface*, wl_array*) {},
        [](void*, wl_keyboard*, uint32_t, wl_surface*) {},
        [](void*, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t) {},
        [](void*, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t) {},
        [](void*, wl_keyboard*, int32_t, int32_t) {},
    };
    if (c.seat()) {
        wl_keyboard* keyboard = wl_seat_get_keyboard(c.seat());
        wl_keyboard_add_listener(keyboard, &listener, nullptr);
        c.roundtrip();
        wl_keyboard_destroy(keyboard);
    }
    if (!keymap) keymap = xkb_keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
    return keymap;
}

struct Key
{
    std::uint32_t code = 0; // evdev
    bool shifted = false;
};

// The key of the first layout that types the keysym, plain or with Shift.
std::optional<Key> keyTyping(xkb_keymap* keymap, std::uint32_t keysym)
{
    if (!keymap) return std::nullopt;
    for (xkb_keycode_t k = xkb_keymap_min_keycode(keymap); k <= xkb_keymap_max_keycode(keymap); ++k)
        for (xkb_level_index_t level = 0; level < 2; ++level) {
            const xkb_keysym_t* syms = nullptr;
            const int n = xkb_keymap_key_get_syms_by_level(keymap, k, 0, level, &syms);
            for (int i = 0; i < n; ++i)
                if (syms[i] == keysym) return Key{k - 8, level == 1};
        }
    return std::nullopt;
}

void key(WaylandConnection& c, std::uint32_t code, bool down)
{
    org_kde_kwin_fake_input_keyboard_key(device(c), code, down ? kPressed : kReleased);
}

} // namespace

bool moveTo(WaylandConnection& c, Point logical)
{
    if (!device(c)) return false;
    org_kde_kwin_fake_input_pointer_motion_absolute(device(c), wl_fixed_from_int(logical.x),
                                                    wl_fixed_from_int(logical.y));
    return c.roundtrip();
}

bool sendMouseButtons(WaylandConnection& c, const std::vector<ButtonEvent>& events)
{
    if (!device(c)) return false;
    for (const ButtonEvent& e : events) {
        const std::uint32_t offset = e.button == MouseButton::Left     ? 0
                                     : e.button == MouseButton::Right  ? 1
                                     : e.button == MouseButton::Middle ? 2
                                     : e.button == MouseButton::X1     ? 3
                                                                       : 4;
        org_kde_kwin_fake_input_button(device(c), kFirstButton + offset,
                                       e.down ? kPressed : kReleased);
    }
    return c.roundtrip();
}

bool sendMouseWheel(WaylandConnection& c, int notches, bool horizontal)
{
    if (!device(c)) return false;
    const std::uint32_t axis =
        horizontal ? WL_POINTER_AXIS_HORIZONTAL_SCROLL : WL_POINTER_AXIS_VERTICAL_SCROLL;
    for (int i = 0; i < std::abs(notches); ++i)
        org_kde_kwin_fake_input_axis(
            device(c), axis, wl_fixed_from_int(notches > 0 ? kNotchAxisValue : -kNotchAxisValue));
    return c.roundtrip();
}

bool sendKeys(WaylandConnection& c, const std::vector<KeyEvent>& events)
{
    if (!device(c)) return false;
    xkb_keymap* keymap = seatKeymap(c);
    for (const KeyEvent& e : events)
        if (const std::optional<Key> k = keyTyping(keymap, x11::keysymForVirtualKey(e.virtualKey)))
            key(c, k->code, e.down);
    return c.roundtrip();
}

bool layoutTypes(WaylandConnection& c, std::uint32_t keysym)
{
    return keyTyping(seatKeymap(c), keysym).has_value();
}

bool typeText(WaylandConnection& c, const std::vector<std::uint32_t>& keysyms, int delayMs,
              const std::function<bool()>& stop)
{
    if (!device(c)) return false;
    xkb_keymap* keymap = seatKeymap(c);
    bool all = true;
    for (std::size_t i = 0; i < keysyms.size() && !(stop && stop()); ++i) {
        const std::optional<Key> k = keyTyping(keymap, keysyms[i]);
        if (!k) {
            all = false;
            continue;
        }
        if (k->shifted) key(c, kShiftKey, true);
        key(c, k->code, true);
        key(c, k->code, false);
        if (k->shifted) key(c, kShiftKey, false);
        wl_display_flush(c.display());
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    }
    return c.roundtrip() && all;
}

} // namespace zelmor::platform::wayland::kde
