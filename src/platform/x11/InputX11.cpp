// Synthetic input through the XTest extension (Windows: SendInput, SetCursorPos, VkKeyScanW).

#include "InputX11.h"
#include "KeyboardX11.h"
#include "X11Connection.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace zelmor::platform::x11 {

namespace {

// X applications read a changed keyboard map when they next handle events; a key pressed
// sooner is read with the old map, so every remapping is followed by this pause at least.
constexpr int kMinimumRemapDelayMs = 5;
// A program that lags behind reads the map as it is when it catches up; a keycode keeps its
// symbol this long after its release, and typing rotates through this many keycodes.
constexpr int kGiveBackDelayMs = 20;
constexpr int kTypingKeycodes = 4;

X11Connection* injector()
{
    X11Connection* x = X11Connection::shared();
    if (!x) return nullptr;
    static const bool present = [x] {
        const xcb_query_extension_reply_t* ext =
            xcb_get_extension_data(x->connection(), &xcb_test_id);
        return ext && ext->present;
    }();
    return present ? x : nullptr;
}

void fake(X11Connection& x, std::uint8_t type, std::uint8_t detail, std::int16_t rootX = 0,
          std::int16_t rootY = 0)
{
    xcb_test_fake_input(x.connection(), type, detail, XCB_CURRENT_TIME, x.root(), rootX, rootY, 0);
}

// A round trip: everything sent before has been handled by the server when it returns.
void sync(X11Connection& x)
{
    xcb_connection_t* c = x.connection();
    std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    // The connection selects no events, but every client is told of each keyboard-map change;
    // nothing reads those notices, so they are dropped before they pile up.
    while (xcb_generic_event_t* event = xcb_poll_for_queued_event(c))
        std::free(event);
}

void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::uint8_t buttonNumber(MouseButton button)
{
    switch (button) {
    case MouseButton::Left:
        return 1;
    case MouseButton::Middle:
        return 2;
    case MouseButton::Right:
        return 3;
    case MouseButton::X1:
        return 8;
    case MouseButton::X2:
        return 9;
    }
    return 1;
}

// Keys that have no key of their own, and characters being typed, borrow keycodes that the
// map leaves empty; they are lent out here and emptied again on return (Windows types any
// character as a KEYEVENTF_UNICODE event and needs no key for it).
std::mutex borrowMutex;
std::set<xcb_keycode_t> borrowed;
std::map<unsigned, xcb_keycode_t> heldBorrowedKeys; // virtual key -> keycode, while down

xcb_keycode_t borrowKeycode(const KeyboardMap& map)
{
    for (xcb_keycode_t k : map.unusedKeycodes())
        if (borrowed.insert(k).second) return k;
    return 0;
}

void remap(X11Connection& x, const KeyboardMap& map, xcb_keycode_t keycode, xcb_keysym_t keysym)
{
    // Every level gets the symbol, so no held modifier or lock changes what the key types.
    const std::vector<xcb_keysym_t> row(map.keysymsPerKeycode(), keysym);
    xcb_change_keyboard_mapping(x.connection(), 1, keycode, std::uint8_t(row.size()), row.data());
}

void giveBack(X11Connection& x, const KeyboardMap& map, xcb_keycode_t keycode)
{
    remap(x, map, keycode, XCB_NO_SYMBOL);
    borrowed.erase(keycode);
}

} // namespace

bool setCursorPosition(Point position)
{
    X11Connection* x = injector();
    if (!x) return false;
    // Detail 0: absolute coordinates on the root window.
    fake(*x, XCB_MOTION_NOTIFY, 0, std::int16_t(position.x), std::int16_t(position.y));
    sync(*x);
    return true;
}

std::optional<Point> cursorPosition()
{
    X11Connection* x = X11Connection::shared();
    if (!x) return std::nullopt;
    Reply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
        x->connection(), xcb_query_pointer(x->connection(), x->root()), nullptr));
    if (!pointer || !pointer->same_screen) return std::nullopt;
    return Point{pointer->root_x, pointer->root_y};
}

bool sendMouseButtons(const std::vector<ButtonEvent>& events)
{
    X11Connection* x = injector();
    if (!x) return false;
    for (const ButtonEvent& e : events)
        fake(*x, e.down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, buttonNumber(e.button));
    sync(*x);
    return true;
}

bool sendMouseWheel(int delta, bool horizontal)
{
    X11Connection* x = injector();
    if (!x) return false;
    // X wheels move in whole notches, buttons 4/5 up/down and 6/7 left/right; any non-zero
    // delta moves at least one (Windows passes the delta on as it is).
    int notches = (std::abs(delta) + 60) / 120;
    if (delta != 0 && notches == 0) notches = 1;
    const std::uint8_t button = horizontal ? (delta > 0 ? 7 : 6) : (delta > 0 ? 4 : 5);
    for (int i = 0; i < notches; ++i) {
        fake(*x, XCB_BUTTON_PRESS, button);
        fake(*x, XCB_BUTTON_RELEASE, button);
    }
    sync(*x);
    return true;
}

bool sendKeys(const std::vector<KeyEvent>& events)
{
    X11Connection* x = injector();
    if (!x) return false;
    std::lock_guard<std::mutex> lock(borrowMutex);
    const KeyboardMap map = KeyboardMap::read(x->connection());
    for (const KeyEvent& e : events) {
        const xcb_keysym_t keysym = keysymForVirtualKey(e.virtualKey);
        if (keysym == XCB_NO_SYMBOL) continue;
        xcb_keycode_t keycode = map.plainKeycode(keysym);
        const auto held = heldBorrowedKeys.find(e.virtualKey);
        if (held != heldBorrowedKeys.end()) {
            keycode = held->second;
        } else if (!keycode) {
            // A key this keyboard lacks (F13, the keypad's digits without NumLock) is lent a
            // keycode for as long as it is down.
            if (!e.down || !(keycode = borrowKeycode(map))) continue;
            remap(*x, map, keycode, keysym);
            sync(*x);
            pause(kMinimumRemapDelayMs);
            heldBorrowedKeys[e.virtualKey] = keycode;
        }
        fake(*x, e.down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode);
        if (!e.down && held != heldBorrowedKeys.end()) {
            sync(*x);
            pause(kGiveBackDelayMs);
            giveBack(*x, map, keycode);
            heldBorrowedKeys.erase(held);
        }
    }
    sync(*x);
    return true;
}

unsigned virtualKeyForCharacter(char32_t character)
{
    X11Connection* x = X11Connection::shared();
    if (!x) return 0;
    const KeyboardMap map = KeyboardMap::read(x->connection());
    const xcb_keycode_t keycode = map.keycodeTyping(character);
    return keycode ? virtualKeyForKeysym(map.plainKeysym(keycode)) : 0;
}

bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop)
{
    X11Connection* x = injector();
    if (!x) return false;
    delayMs = std::max(delayMs, kMinimumRemapDelayMs);
    std::lock_guard<std::mutex> lock(borrowMutex);
    const KeyboardMap map = KeyboardMap::read(x->connection());
    // Keycodes take turns, so a key still being read under its symbol is not remapped under it
    // by the next character.
    std::vector<xcb_keycode_t> keys;
    for (int i = 0; i < kTypingKeycodes; ++i)
        if (xcb_keycode_t k = borrowKeycode(map)) keys.push_back(k);
    if (keys.empty()) return false;

    std::size_t typed = 0;
    for (std::size_t i = 0; i < text.size() && !(stop && stop()); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        const xcb_keysym_t keysym = keysymForCharacter(c);
        if (keysym == XCB_NO_SYMBOL) continue;
        const xcb_keycode_t keycode = keys[typed++ % keys.size()];
        remap(*x, map, keycode, keysym);
        sync(*x);
        pause(delayMs);
        fake(*x, XCB_KEY_PRESS, keycode);
        fake(*x, XCB_KEY_RELEASE, keycode);
        sync(*x);
        pause(delayMs);
    }
    pause(std::max(kGiveBackDelayMs - delayMs, 0));
    for (xcb_keycode_t k : keys)
        giveBack(*x, map, k);
    sync(*x);
    return true;
}

InputBlocker inputBlocker(InputDevice)
{
    if (!X11Connection::shared()) return InputBlocker::NoDisplay;
    return injector() ? InputBlocker::None : InputBlocker::NoInjection;
}

} // namespace zelmor::platform::x11
