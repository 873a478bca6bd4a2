// Virtual keys, keysyms and the core keyboard map (Windows: the layout's own VK tables).

#include "KeyboardX11.h"
#include "X11Connection.h"

#include <X11/XF86keysym.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace zelmor::platform::x11 {

namespace {

struct VirtualKeySymbol
{
    unsigned virtualKey;
    xcb_keysym_t keysym;
};

// Letters, digits, F-keys and the keypad are ranges, handled in code. Where several virtual keys
// share a keysym, the first listed is the one a keysym maps back to. The punctuation codes are
// named after the US layout's characters, which is what Windows layouts mostly put there too.
constexpr VirtualKeySymbol kTable[] = {
    {0x08, XK_BackSpace},
    {0x09, XK_Tab},
    {0x0C, XK_Clear},
    {0x0D, XK_Return},
    {0x10, XK_Shift_L},
    {0x11, XK_Control_L},
    {0x12, XK_Alt_L},
    {0x13, XK_Pause},
    {0x14, XK_Caps_Lock},
    {0x1B, XK_Escape},
    {0x20, XK_space},
    {0x21, XK_Prior},
    {0x22, XK_Next},
    {0x23, XK_End},
    {0x24, XK_Home},
    {0x25, XK_Left},
    {0x26, XK_Up},
    {0x27, XK_Right},
    {0x28, XK_Down},
    {0x29, XK_Select},
    {0x2B, XK_Execute},
    {0x2C, XK_Print},
    {0x2D, XK_Insert},
    {0x2E, XK_Delete},
    {0x2F, XK_Help},
    {0x5B, XK_Super_L},
    {0x5C, XK_Super_R},
    {0x5D, XK_Menu},
    {0x5F, XF86XK_Sleep},
    {0x6A, XK_KP_Multiply},
    {0x6B, XK_KP_Add},
    {0x6C, XK_KP_Separator},
    {0x6D, XK_KP_Subtract},
    {0x6E, XK_KP_Decimal},
    {0x6F, XK_KP_Divide},
    {0x90, XK_Num_Lock},
    {0x91, XK_Scroll_Lock},
    {0xA0, XK_Shift_L},
    {0xA1, XK_Shift_R},
    {0xA2, XK_Control_L},
    {0xA3, XK_Control_R},
    {0xA4, XK_Alt_L},
    {0xA5, XK_Alt_R},
    {0xA6, XF86XK_Back},
    {0xA7, XF86XK_Forward},
    {0xA8, XF86XK_Refresh},
    {0xA9, XF86XK_Stop},
    {0xAA, XF86XK_Search},
    {0xAB, XF86XK_Favorites},
    {0xAC, XF86XK_HomePage},
    {0xAD, XF86XK_AudioMute},
    {0xAE, XF86XK_AudioLowerVolume},
    {0xAF, XF86XK_AudioRaiseVolume},
    {0xB0, XF86XK_AudioNext},
    {0xB1, XF86XK_AudioPrev},
    {0xB2, XF86XK_AudioStop},
    {0xB3, XF86XK_AudioPlay},
    {0xB4, XF86XK_Mail},
    {0xBA, XK_semicolon},
    {0xBB, XK_equal},
    {0xBC, XK_comma},
    {0xBD, XK_minus},
    {0xBE, XK_period},
    {0xBF, XK_slash},
    {0xC0, XK_grave},
    {0xDB, XK_bracketleft},
    {0xDC, XK_backslash},
    {0xDD, XK_bracketright},
    {0xDE, XK_apostrophe},
    {0xE2, XK_less},
};

bool isKeypad(xcb_keysym_t keysym)
{
    return keysym >= XK_KP_Space && keysym <= XK_KP_Equal;
}

} // namespace

xcb_keysym_t keysymForVirtualKey(unsigned vk)
{
    if (vk >= '0' && vk <= '9') return XK_0 + (vk - '0');
    if (vk >= 'A' && vk <= 'Z') return XK_a + (vk - 'A');
    if (vk >= 0x60 && vk <= 0x69) return XK_KP_0 + (vk - 0x60);
    if (vk >= 0x70 && vk <= 0x87) return XK_F1 + (vk - 0x70);
    for (const VirtualKeySymbol& entry : kTable)
        if (entry.virtualKey == vk) return entry.keysym;
    return XCB_NO_SYMBOL;
}

unsigned virtualKeyForKeysym(xcb_keysym_t keysym, bool sidedModifiers)
{
    if (keysym >= XK_0 && keysym <= XK_9) return '0' + (keysym - XK_0);
    if (keysym >= XK_a && keysym <= XK_z) return 'A' + (keysym - XK_a);
    if (keysym >= XK_A && keysym <= XK_Z) return 'A' + (keysym - XK_A);
    if (keysym >= XK_KP_0 && keysym <= XK_KP_9) return 0x60 + (keysym - XK_KP_0);
    if (keysym >= XK_F1 && keysym <= XK_F24) return 0x70 + (keysym - XK_F1);
    // A modifier's generic code is listed before its sided ones.
    unsigned found = 0;
    for (const VirtualKeySymbol& entry : kTable)
        if (entry.keysym == keysym) {
            found = entry.virtualKey;
            if (!sidedModifiers) break;
        }
    return found;
}

xcb_keysym_t keysymForCharacter(char32_t c)
{
    switch (c) {
    case 0x08:
        return XK_BackSpace;
    case 0x09:
        return XK_Tab;
    case 0x0A:
    case 0x0D:
        return XK_Return;
    case 0x1B:
        return XK_Escape;
    case 0x7F:
        return XK_Delete;
    }
    if (c < 0x20 || (c >= 0x80 && c < 0xA0) || (c >= 0xD800 && c < 0xE000) || c > 0x10FFFF)
        return XCB_NO_SYMBOL;
    // Latin-1 keysyms are the code points themselves; the rest of Unicode is offset by 0x1000000.
    return c < 0x100 ? xcb_keysym_t(c) : xcb_keysym_t(0x01000000 | c);
}

KeyboardMap KeyboardMap::read(xcb_connection_t* c)
{
    KeyboardMap map;
    const xcb_setup_t* setup = xcb_get_setup(c);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    Reply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        c, xcb_get_keyboard_mapping(c, setup->min_keycode, count), nullptr));
    if (!reply || reply->keysyms_per_keycode == 0) return map;
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply.get());
    map.m_minKeycode = setup->min_keycode;
    map.m_maxKeycode = setup->max_keycode;
    map.m_perKeycode = reply->keysyms_per_keycode;
    map.m_keysyms.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
    return map;
}

xcb_keysym_t KeyboardMap::at(xcb_keycode_t keycode, int index) const
{
    if (keycode < m_minKeycode || keycode > m_maxKeycode || index >= m_perKeycode)
        return XCB_NO_SYMBOL;
    const std::size_t i = std::size_t(keycode - m_minKeycode) * m_perKeycode + index;
    return i < m_keysyms.size() ? m_keysyms[i] : xcb_keysym_t(XCB_NO_SYMBOL);
}

xcb_keysym_t KeyboardMap::plainKeysym(xcb_keycode_t keycode) const
{
    return at(keycode, 0);
}

xcb_keycode_t KeyboardMap::plainKeycode(xcb_keysym_t keysym) const
{
    if (keysym == XCB_NO_SYMBOL || !isValid()) return 0;
    for (int k = m_minKeycode; k <= m_maxKeycode; ++k)
        if (at(xcb_keycode_t(k), 0) == keysym) return xcb_keycode_t(k);
    return 0;
}

xcb_keycode_t KeyboardMap::keycodeTyping(char32_t character) const
{
    if (!isValid()) return 0;
    // The keypad comes last, so '*' is the key of '8', as on Windows.
    for (bool keypad : {false, true})
        for (int index = 0; index < m_perKeycode; ++index)
            for (int k = m_minKeycode; k <= m_maxKeycode; ++k) {
                const xcb_keysym_t keysym = at(xcb_keycode_t(k), index);
                if (keysym != XCB_NO_SYMBOL && isKeypad(keysym) == keypad &&
                    xkb_keysym_to_utf32(keysym) == character)
                    return xcb_keycode_t(k);
            }
    return 0;
}

std::vector<xcb_keycode_t> KeyboardMap::unusedKeycodes() const
{
    std::vector<xcb_keycode_t> unused;
    if (!isValid()) return unused;
    for (int k = m_maxKeycode; k >= m_minKeycode; --k) {
        bool empty = true;
        for (int index = 0; index < m_perKeycode && empty; ++index)
            empty = at(xcb_keycode_t(k), index) == XCB_NO_SYMBOL;
        if (empty) unused.push_back(xcb_keycode_t(k));
    }
    return unused;
}

} // namespace zelmor::platform::x11
