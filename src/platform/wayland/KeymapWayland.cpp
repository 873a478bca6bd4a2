#include "KeymapWayland.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <memory>

namespace zelmor::platform::wayland {

namespace {

constexpr int kFirstKeycode = 9; // evdev code 1
// A key of no symbols that ends every map: GTK 3 looks a keysym's keys up below the map's
// highest keycode only, and missed its last key, whose bindings (BackSpace, ctrl+a) then
// never acted.
constexpr const char* kEndKey = "  <LAST> = 255;\n";

struct Modifier
{
    std::uint32_t keysym;
    const char* name;
    std::uint32_t mask; // by the fixed order of real modifiers: Shift, Lock, Control, Mod1...
};

constexpr Modifier kModifiers[] = {
    {XKB_KEY_Shift_L, "Shift", 1u << 0},     {XKB_KEY_Shift_R, "Shift", 1u << 0},
    {XKB_KEY_Control_L, "Control", 1u << 2}, {XKB_KEY_Control_R, "Control", 1u << 2},
    {XKB_KEY_Alt_L, "Mod1", 1u << 3},        {XKB_KEY_Alt_R, "Mod1", 1u << 3},
    {XKB_KEY_Super_L, "Mod4", 1u << 6},      {XKB_KEY_Super_R, "Mod4", 1u << 6},
};

const Modifier* modifierOf(std::uint32_t keysym)
{
    for (const Modifier& m : kModifiers)
        if (m.keysym == keysym) return &m;
    return nullptr;
}

std::string keyName(std::size_t index)
{
    return "<K" + std::to_string(index + 1) + ">";
}

bool compiles(const std::string& text)
{
    std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
    if (!context) return false;
    xkb_keymap* keymap = xkb_keymap_new_from_string(
        context.get(), text.c_str(), XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    xkb_keymap_unref(keymap);
    return keymap != nullptr;
}

} // namespace

std::uint32_t modifierMask(std::uint32_t keysym)
{
    const Modifier* m = modifierOf(keysym);
    return m ? m->mask : 0;
}

bool TypingKeymap::contains(std::uint32_t keysym) const
{
    return std::find(m_keysyms.begin(), m_keysyms.end(), keysym) != m_keysyms.end();
}

std::uint32_t TypingKeymap::keyFor(std::uint32_t keysym)
{
    auto it = std::find(m_keysyms.begin(), m_keysyms.end(), keysym);
    if (it == m_keysyms.end()) {
        if (m_keysyms.size() >= kMaxKeys) return 0;
        it = m_keysyms.insert(m_keysyms.end(), keysym);
    }
    return std::uint32_t(it - m_keysyms.begin()) + 1;
}

std::string TypingKeymap::text() const
{
    std::string codes, symbols;
    for (std::size_t i = 0; i < m_keysyms.size(); ++i) {
        char name[64];
        if (xkb_keysym_get_name(m_keysyms[i], name, sizeof name) <= 0) return {};
        codes += "  " + keyName(i) + " = " + std::to_string(kFirstKeycode + i) + ";\n";
        symbols += "  key " + keyName(i) + " { [ " + name + " ] };\n";
        if (const Modifier* m = modifierOf(m_keysyms[i]))
            symbols += "  modifier_map " + std::string(m->name) + " { " + keyName(i) + " };\n";
    }
    const std::string text = "xkb_keymap {\nxkb_keycodes \"zelmor\" {\n  minimum = 8;\n"
                             "  maximum = 255;\n" +
                             codes + kEndKey +
                             "};\nxkb_types \"zelmor\" { include \"complete\" };\n"
                             "xkb_compatibility \"zelmor\" { include \"complete\" };\n"
                             "xkb_symbols \"zelmor\" {\n" +
                             symbols + "};\n};\n";
    return compiles(text) ? text : std::string();
}

} // namespace zelmor::platform::wayland
