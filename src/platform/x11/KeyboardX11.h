#pragma once

#include <xcb/xcb.h>

#include <vector>

namespace zelmor::platform::x11 {

// The X keysym of a Windows virtual key, in the meaning of the US layout; XCB_NO_SYMBOL when
// the key has none.
xcb_keysym_t keysymForVirtualKey(unsigned virtualKey);
// The virtual key whose keysym that is; 0 when none. Shift, Ctrl and Alt give their generic
// codes, or with `sidedModifiers` their left and right ones, as a keyboard hook reports them.
unsigned virtualKeyForKeysym(xcb_keysym_t keysym, bool sidedModifiers = false);

// The keysym that types a Unicode character; XCB_NO_SYMBOL for control characters other than
// the few that have keys.
xcb_keysym_t keysymForCharacter(char32_t character);

// A snapshot of the core keyboard map.
class KeyboardMap
{
public:
    static KeyboardMap read(xcb_connection_t* c);

    bool isValid() const { return m_perKeycode > 0; }
    int keysymsPerKeycode() const { return m_perKeycode; }

    // The symbol a key types with no modifier held.
    xcb_keysym_t plainKeysym(xcb_keycode_t keycode) const;
    // The key whose plain symbol that is; 0 when none.
    xcb_keycode_t plainKeycode(xcb_keysym_t keysym) const;
    // The key that types `character` at any shift level, main keys before the keypad; 0 when none.
    xcb_keycode_t keycodeTyping(char32_t character) const;
    // Keys with no symbol at all, free to borrow; highest first.
    std::vector<xcb_keycode_t> unusedKeycodes() const;

private:
    xcb_keysym_t at(xcb_keycode_t keycode, int index) const;

    xcb_keycode_t m_minKeycode = 0;
    xcb_keycode_t m_maxKeycode = 0;
    int m_perKeycode = 0;
    std::vector<xcb_keysym_t> m_keysyms;
};

} // namespace zelmor::platform::x11
