#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zelmor::platform::wayland {

// A keyboard map made for what is being typed: key i (evdev code i + 1) types `keysyms[i]` at
// every level, and the modifier keysyms among them act on their modifiers. A virtual keyboard
// uploads it, so that any character has a key, whatever the user's layout.
class TypingKeymap
{
public:
    // Keycodes 9 to 254, as far as every client's keyboard library reaches; 255 ends the map.
    static constexpr std::size_t kMaxKeys = 246;

    // The key that types the keysym, added when the map has room; 0 when it has none.
    std::uint32_t keyFor(std::uint32_t keysym);
    bool contains(std::uint32_t keysym) const;
    std::size_t size() const { return m_keysyms.size(); }
    void clear() { m_keysyms.clear(); }

    // The map in the XKB text format; empty when the keyboard library rejects it.
    std::string text() const;

private:
    std::vector<std::uint32_t> m_keysyms;
};

// The wl_keyboard modifier mask a modifier keysym sets; 0 for other keysyms.
std::uint32_t modifierMask(std::uint32_t keysym);

} // namespace zelmor::platform::wayland
