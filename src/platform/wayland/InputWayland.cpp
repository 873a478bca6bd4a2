// Synthetic input on a Wayland desktop through a virtual keyboard and a virtual pointer of
// this process (wlroots compositors), KWin's fake input, or the RemoteDesktop portal; no
// compositor lets a client read its pointer.

#include "../x11/KeyboardX11.h"
#include "DesktopToolsWayland.h"
#include "InputKde.h"
#include "KeymapWayland.h"
#include "WaylandConnection.h"
#include "portal/RemoteDesktopPortal.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"
#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace zelmor::platform::wayland {

namespace {

// Clients learn of a new device from the seat and ask for it; events sent sooner are lost.
constexpr int kNewDeviceDelayMs = 200;
// The discrete wheel step in axis units, as a mouse's notch.
constexpr int kNotchAxisValue = 15;

constexpr std::uint32_t kLeftButton = 0x110; // BTN_LEFT; the others follow it
constexpr std::uint32_t kRightButton = 0x111;
constexpr std::uint32_t kMiddleButton = 0x112;
constexpr std::uint32_t kSideButton = 0x113;
constexpr std::uint32_t kExtraButton = 0x114;

// This process's devices, used under the connection's mutex.
struct Devices
{
    zwp_virtual_keyboard_v1* keyboard = nullptr;
    zwlr_virtual_pointer_v1* pointer = nullptr;
    TypingKeymap keymap;         // as the compositor has it
    std::uint32_t modifiers = 0; // held through sendKeys
    std::optional<Point> cursor; // where this process last put the pointer
} devices;

std::uint32_t now()
{
    using namespace std::chrono;
    return std::uint32_t(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void welcome(WaylandConnection& c)
{
    c.roundtrip();
    pause(kNewDeviceDelayMs);
}

zwp_virtual_keyboard_v1* keyboard(WaylandConnection& c)
{
    if (!devices.keyboard && c.virtualKeyboards() && c.seat()) {
        devices.keyboard =
            zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(c.virtualKeyboards(), c.seat());
        devices.keymap.clear();
    }
    return devices.keyboard;
}

zwlr_virtual_pointer_v1* pointer(WaylandConnection& c)
{
    if (!devices.pointer && c.virtualPointers()) {
        devices.pointer =
            zwlr_virtual_pointer_manager_v1_create_virtual_pointer(c.virtualPointers(), c.seat());
        welcome(c);
    }
    return devices.pointer;
}

// Hands the compositor the keymap as it is now; the keyboard's clients get it before any key
// that follows. A new keyboard is announced with its first keymap.
bool upload(WaylandConnection& c, const TypingKeymap& keymap)
{
    const std::string text = keymap.text();
    if (text.empty()) return false;
    const int fd = memfd_create("zelmor-keymap", MFD_CLOEXEC);
    if (fd < 0) return false;
    const bool written = write(fd, text.c_str(), text.size() + 1) == ssize_t(text.size() + 1);
    const bool announced = devices.keymap.size() == 0;
    if (written)
        zwp_virtual_keyboard_v1_keymap(devices.keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd,
                                       std::uint32_t(text.size() + 1));
    close(fd);
    if (!written) return false;
    devices.keymap = keymap;
    // A new keymap starts from a fresh state.
    if (devices.modifiers)
        zwp_virtual_keyboard_v1_modifiers(devices.keyboard, devices.modifiers, 0, 0, 0);
    if (announced) welcome(c);
    return true;
}

// The keymap holding every keysym of `wanted` that fits, keeping the keys of the current one
// when all fit beside them (a key held down keeps its code); uploaded when it changed.
bool useKeysyms(WaylandConnection& c, const std::vector<std::uint32_t>& wanted)
{
    const bool known = devices.keymap.size() > 0 &&
                       std::all_of(wanted.begin(), wanted.end(),
                                   [](std::uint32_t k) { return devices.keymap.contains(k); });
    if (known) return true;
    TypingKeymap next = devices.keymap;
    for (std::uint32_t k : wanted)
        if (!next.keyFor(k)) {
            next.clear();
            break;
        }
    if (next.size() == 0)
        for (std::uint32_t k : wanted)
            next.keyFor(k);
    return upload(c, next);
}

// `code`: the keymap's key number, which is its evdev code.
void key(std::uint32_t code, bool down)
{
    zwp_virtual_keyboard_v1_key(devices.keyboard, now(), code,
                                down ? WL_KEYBOARD_KEY_STATE_PRESSED
                                     : WL_KEYBOARD_KEY_STATE_RELEASED);
}

std::uint32_t buttonCode(MouseButton button)
{
    switch (button) {
    case MouseButton::Left:
        return kLeftButton;
    case MouseButton::Right:
        return kRightButton;
    case MouseButton::Middle:
        return kMiddleButton;
    case MouseButton::X1:
        return kSideButton;
    case MouseButton::X2:
        return kExtraButton;
    }
    return kLeftButton;
}

struct LogicalPlace
{
    std::uint32_t x, y, width, height; // in the layout's logical extent
    Point origin;                      // the extent's top-left corner on the desktop
};

// A desktop point, in the outputs' pixels, as absolute motion over the logical layout wants it.
std::optional<LogicalPlace> logicalPlace(const WaylandConnection& c, Point p)
{
    Rect layout;
    std::optional<Point> logical;
    for (const auto& o : c.outputs()) {
        const Rect pixels = o->rect();
        const Rect area{pixels.x, pixels.y, pixels.width / o->scale, pixels.height / o->scale};
        layout = united(layout, area);
        if (!logical && pixels.contains(p))
            logical =
                Point{area.x + (p.x - pixels.x) / o->scale, area.y + (p.y - pixels.y) / o->scale};
    }
    if (layout.isEmpty()) return std::nullopt;
    const Point at = logical.value_or(Point{std::clamp(p.x, layout.x, layout.right() - 1),
                                            std::clamp(p.y, layout.y, layout.bottom() - 1)});
    return LogicalPlace{std::uint32_t(at.x - layout.x), std::uint32_t(at.y - layout.y),
                        std::uint32_t(layout.width), std::uint32_t(layout.height),
                        Point{layout.x, layout.y}};
}

// Which way input goes. The virtual devices of wlroots compositors need nobody's leave. KWin
// offers its fake input only to the programs it trusts, so where it is offered it is granted,
// and it asks nobody either. Elsewhere the RemoteDesktop portal, whose dialog the user answers
// once.
enum class Route { Virtual, Kde, Portal };

Route keyboardRoute(const WaylandConnection& c)
{
    if (c.virtualKeyboards() && c.seat()) return Route::Virtual;
    return c.kdeFakeInput() ? Route::Kde : Route::Portal;
}

Route pointerRoute(const WaylandConnection& c)
{
    if (c.virtualPointers()) return Route::Virtual;
    return c.kdeFakeInput() ? Route::Kde : Route::Portal;
}

bool kdeKeyboard(const WaylandConnection& c)
{
    return keyboardRoute(c) == Route::Kde;
}

bool kdePointer(const WaylandConnection& c)
{
    return pointerRoute(c) == Route::Kde;
}

InputBlocker portalBlocker()
{
    switch (remote::access()) {
    case remote::Access::Granted:
        return InputBlocker::None;
    case remote::Access::NoPortal:
        return InputBlocker::NoVirtualDevice;
    case remote::Access::Refused:
        return InputBlocker::PortalRefused;
    case remote::Access::NoAnswer:
        return InputBlocker::PortalNoAnswer;
    case remote::Access::Failed:
        break;
    }
    return InputBlocker::PortalFailed;
}

// The portal's calls wait on D-Bus, and at first on the user: never under the mutex.
bool throughPortal(bool keyboard)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    std::lock_guard<std::mutex> lock(c->mutex);
    return (keyboard ? keyboardRoute(*c) : pointerRoute(*c)) == Route::Portal;
}

bool portalKeys(const std::vector<KeyEvent>& events)
{
    bool sent = true;
    for (const KeyEvent& e : events)
        if (const std::uint32_t k = x11::keysymForVirtualKey(e.virtualKey))
            sent = remote::keysym(k, e.down) && sent;
    return sent;
}

// The portal turns a keysym into a key of the desktop's layout, and silently drops one that
// has none: such characters are left out here, and the call answers false.
bool portalText(WaylandConnection& c, const std::vector<std::uint32_t>& keysyms, int delayMs,
                const std::function<bool()>& stop)
{
    bool all = true;
    for (std::size_t i = 0; i < keysyms.size() && !(stop && stop()); ++i) {
        {
            std::lock_guard<std::mutex> lock(c.mutex);
            if (!kde::layoutTypes(c, keysyms[i])) {
                all = false;
                continue;
            }
        }
        if (!remote::keysym(keysyms[i], true) || !remote::keysym(keysyms[i], false)) return false;
        pause(delayMs);
    }
    return all;
}

} // namespace

InputBlocker inputBlocker(InputDevice device)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return InputBlocker::NoDisplay;
    return throughPortal(device == InputDevice::Keyboard) ? portalBlocker() : InputBlocker::None;
}

bool setCursorPosition(Point position)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    const bool portal = throughPortal(false);
    std::unique_lock<std::mutex> lock(c->mutex);
    const std::optional<LogicalPlace> place = logicalPlace(*c, position);
    if (place && portal) {
        lock.unlock();
        if (!remote::moveTo({place->origin.x + int(place->x), place->origin.y + int(place->y)}))
            return false;
        lock.lock();
        devices.cursor = position;
        return true;
    }
    if (place && kdePointer(*c)) {
        devices.cursor = position;
        return kde::moveTo(*c,
                           Point{place->origin.x + int(place->x), place->origin.y + int(place->y)});
    }
    if (!place || !pointer(*c)) return false;
    zwlr_virtual_pointer_v1_motion_absolute(devices.pointer, now(), place->x, place->y,
                                            place->width, place->height);
    zwlr_virtual_pointer_v1_frame(devices.pointer);
    devices.cursor = position;
    return c->roundtrip();
}

std::optional<Point> cursorPosition()
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return std::nullopt;
    std::lock_guard<std::mutex> lock(c->mutex);
    return devices.cursor;
}

bool sendMouseButtons(const std::vector<ButtonEvent>& events)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    if (throughPortal(false)) {
        bool sent = true;
        for (const ButtonEvent& e : events)
            sent = remote::button(buttonCode(e.button), e.down) && sent;
        return sent;
    }
    std::lock_guard<std::mutex> lock(c->mutex);
    if (kdePointer(*c)) return kde::sendMouseButtons(*c, events);
    if (!pointer(*c)) return false;
    for (const ButtonEvent& e : events) {
        zwlr_virtual_pointer_v1_button(devices.pointer, now(), buttonCode(e.button),
                                       e.down ? WL_POINTER_BUTTON_STATE_PRESSED
                                              : WL_POINTER_BUTTON_STATE_RELEASED);
        zwlr_virtual_pointer_v1_frame(devices.pointer);
    }
    return c->roundtrip();
}

bool sendMouseWheel(int delta, bool horizontal)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    // Whole notches, as on X; Wayland's vertical axis grows downwards, ours upwards.
    int notches = (std::abs(delta) + 60) / 120;
    if (delta != 0 && notches == 0) notches = 1;
    const int sign = (delta > 0) == horizontal ? 1 : -1;
    if (throughPortal(false)) return remote::wheel(sign * notches, horizontal);
    std::lock_guard<std::mutex> lock(c->mutex);
    if (kdePointer(*c)) return kde::sendMouseWheel(*c, sign * notches, horizontal);
    if (!pointer(*c)) return false;
    const std::uint32_t axis =
        horizontal ? WL_POINTER_AXIS_HORIZONTAL_SCROLL : WL_POINTER_AXIS_VERTICAL_SCROLL;
    const bool discrete = zwlr_virtual_pointer_v1_get_version(devices.pointer) >=
                          ZWLR_VIRTUAL_POINTER_V1_AXIS_DISCRETE_SINCE_VERSION;
    for (int i = 0; i < notches; ++i) {
        zwlr_virtual_pointer_v1_axis_source(devices.pointer, WL_POINTER_AXIS_SOURCE_WHEEL);
        const wl_fixed_t value = wl_fixed_from_int(sign * kNotchAxisValue);
        if (discrete)
            zwlr_virtual_pointer_v1_axis_discrete(devices.pointer, now(), axis, value, sign);
        else
            zwlr_virtual_pointer_v1_axis(devices.pointer, now(), axis, value);
        zwlr_virtual_pointer_v1_frame(devices.pointer);
    }
    return c->roundtrip();
}

bool sendKeys(const std::vector<KeyEvent>& events)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    if (throughPortal(true)) return portalKeys(events);
    std::lock_guard<std::mutex> lock(c->mutex);
    if (kdeKeyboard(*c)) return kde::sendKeys(*c, events);
    if (!keyboard(*c)) return false;
    std::vector<std::uint32_t> keysyms;
    for (const KeyEvent& e : events)
        if (const std::uint32_t k = x11::keysymForVirtualKey(e.virtualKey)) keysyms.push_back(k);
    if (keysyms.empty()) return true;
    if (!useKeysyms(*c, keysyms)) return false;
    for (const KeyEvent& e : events) {
        const std::uint32_t keysym = x11::keysymForVirtualKey(e.virtualKey);
        if (!keysym || !devices.keymap.contains(keysym)) continue;
        key(devices.keymap.keyFor(keysym), e.down);
        // The virtual keyboard's state is the client's to tell: keys alone set no modifier.
        if (const std::uint32_t mask = modifierMask(keysym)) {
            devices.modifiers = e.down ? devices.modifiers | mask : devices.modifiers & ~mask;
            zwp_virtual_keyboard_v1_modifiers(devices.keyboard, devices.modifiers, 0, 0, 0);
        }
    }
    return c->roundtrip();
}

unsigned virtualKeyForCharacter(char32_t character)
{
    // Any character has a key of its own in the typing keymap; a virtual key names the letters,
    // digits and named keys of the US layout only.
    return x11::virtualKeyForKeysym(x11::keysymForCharacter(character));
}

bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return false;
    std::vector<std::uint32_t> keysyms;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t ch = text[i];
        if (ch >= 0xD800 && ch < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000)
            ch = 0x10000 + ((ch - 0xD800) << 10) + (text[++i] - 0xDC00);
        if (const std::uint32_t k = x11::keysymForCharacter(ch)) keysyms.push_back(k);
    }
    if (throughPortal(true)) return portalText(*c, keysyms, delayMs, stop);
    std::lock_guard<std::mutex> lock(c->mutex);
    if (!kdeKeyboard(*c) && !keyboard(*c)) return false;
    if (kdeKeyboard(*c)) return kde::typeText(*c, keysyms, delayMs, stop);
    // A keymap per run of text whose characters fit into one.
    std::size_t start = 0;
    while (start < keysyms.size() && !(stop && stop())) {
        TypingKeymap run;
        std::size_t end = start;
        while (end < keysyms.size() && run.keyFor(keysyms[end]))
            ++end;
        if (!useKeysyms(*c, {keysyms.begin() + start, keysyms.begin() + end})) return false;
        for (; start < end && !(stop && stop()); ++start) {
            const std::uint32_t code = devices.keymap.keyFor(keysyms[start]);
            key(code, true);
            key(code, false);
            wl_display_flush(c->display());
            pause(delayMs);
        }
    }
    return c->roundtrip();
}

} // namespace zelmor::platform::wayland
