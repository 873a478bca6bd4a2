// RegisterHotKey to a message-only window of the GUI thread: WM_HOTKEY then reaches its window
// procedure from any message loop, the system's modal ones too (a window dragged or resized, a
// native dialog), where a message of the thread itself would be dropped.

#include "../Hotkeys.h"

#include <windows.h>

#include <utility>

namespace zelmor::platform {

namespace {

std::vector<int> pressed; // by the window procedure, on the GUI thread
std::function<void()> wakeCallback;

LRESULT CALLBACK hotkeyWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_HOTKEY) return DefWindowProcW(window, message, wParam, lParam);
    pressed.push_back(int(wParam));
    if (wakeCallback) wakeCallback();
    return 0;
}

// Made on the first registration, on the thread that registers, which owns it from then on.
HWND hotkeyWindow()
{
    static const HWND window = [] {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = hotkeyWindowProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"ZelmorHotkeys";
        RegisterClassW(&windowClass);
        return CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                               nullptr, windowClass.hInstance, nullptr);
    }();
    return window;
}

} // namespace

HotkeyBinder hotkeyBinder()
{
    return HotkeyBinder::Program;
}

std::string desktopBindingFile()
{
    return {};
}

std::string desktopBindingLine(unsigned, unsigned, const std::string&)
{
    return {};
}

bool registerHotkey(int id, unsigned modifiers, unsigned virtualKey)
{
    const HWND window = hotkeyWindow();
    return window && RegisterHotKey(window, id, modifiers, virtualKey) != FALSE;
}

void unregisterHotkey(int id)
{
    if (const HWND window = hotkeyWindow()) UnregisterHotKey(window, id);
}

int hotkeyEventDescriptor()
{
    return -1;
}

void onHotkeyPresses(std::function<void()> wake)
{
    wakeCallback = std::move(wake);
}

std::vector<int> takeHotkeyPresses()
{
    return std::exchange(pressed, {});
}

void describeHotkey(int, const std::string&) {} // Windows lists no program's hotkeys

} // namespace zelmor::platform
