#pragma once

#include <array>
#include <cstring>

namespace zelmor::core {

// What a global hotkey runs. Each is a command-line switch too, which a running Zelmor performs
// when a second start passes it on: a desktop that binds keys itself runs these commands.
struct HotkeyAction
{
    int id;             // the hotkey's id with the system
    const char* name;   // its setting's name, without "hotkeys/"
    const char* option; // the switch
    const char* help;   // what --help says of the switch
};

inline constexpr std::array<HotkeyAction, 10> kHotkeyActions{{
    {1, "region", "--capture-region", "open the region capture"},
    {2, "fullscreen", "--capture-fullscreen", "capture all screens"},
    {3, "window", "--capture-window", "capture the active window"},
    {4, "delayed", "--capture-delayed", "capture all screens in 3 seconds"},
    {5, "gif", "--record-gif", "choose a region to record as a GIF"},
    {6, "scroll", "--capture-scroll", "choose a region to capture while it scrolls"},
    {7, "pinClickThrough", "--toggle-pin-click-through",
     "let clicks through the pin under the cursor, or stop"},
    {8, "pinFromClipboard", "--pin-from-clipboard", "pin the clipboard's image"},
    {9, "history", "--show-history", "show the history"},
    {10, "shortcutSheet", "--show-shortcut-sheet", "show the shortcut sheet"},
}};

// The action of a switch, or of a setting's name; null when none has it.
inline const HotkeyAction* hotkeyActionForOption(const char* option)
{
    for (const HotkeyAction& action : kHotkeyActions)
        if (option && std::strcmp(action.option, option) == 0) return &action;
    return nullptr;
}
inline const HotkeyAction* hotkeyActionNamed(const char* name)
{
    for (const HotkeyAction& action : kHotkeyActions)
        if (name && std::strcmp(action.name, name) == 0) return &action;
    return nullptr;
}

} // namespace zelmor::core
