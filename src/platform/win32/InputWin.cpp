// Synthetic input through SendInput; characters through KEYEVENTF_UNICODE, so typing does not
// depend on the keyboard layout.

#include "../Input.h"

#include <windows.h>

namespace zelmor::platform {

namespace {

bool send(std::vector<INPUT>& inputs)
{
    return inputs.empty() ||
           SendInput(UINT(inputs.size()), inputs.data(), sizeof(INPUT)) == UINT(inputs.size());
}

INPUT mouseInput(DWORD flags, DWORD data = 0)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    input.mi.mouseData = data;
    return input;
}

INPUT keyInput(WORD vk, WORD scan, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = vk;
    input.ki.wScan = scan;
    input.ki.dwFlags = flags;
    return input;
}

DWORD buttonFlags(MouseButton button, bool down)
{
    switch (button) {
    case MouseButton::Left:
        return down ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_LEFTUP;
    case MouseButton::Right:
        return down ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_RIGHTUP;
    case MouseButton::Middle:
        return down ? MOUSEEVENTF_MIDDLEDOWN : MOUSEEVENTF_MIDDLEUP;
    case MouseButton::X1:
    case MouseButton::X2:
        return down ? MOUSEEVENTF_XDOWN : MOUSEEVENTF_XUP;
    }
    return 0;
}

// Keys of the extended block, which SendInput must flag to tell them from the keypad's.
bool isExtended(unsigned vk)
{
    switch (vk) {
    case VK_INSERT:
    case VK_DELETE:
    case VK_HOME:
    case VK_END:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_UP:
    case VK_DOWN:
    case VK_RCONTROL:
    case VK_RMENU:
    case VK_LWIN:
    case VK_RWIN:
    case VK_APPS:
    case VK_DIVIDE:
    case VK_NUMLOCK:
    case VK_SNAPSHOT:
        return true;
    }
    return false;
}

} // namespace

bool setCursorPosition(Point position)
{
    return SetCursorPos(position.x, position.y) != FALSE;
}

std::optional<Point> cursorPosition()
{
    POINT p{};
    if (!GetCursorPos(&p)) return std::nullopt;
    return Point{p.x, p.y};
}

bool sendMouseButtons(const std::vector<ButtonEvent>& events)
{
    std::vector<INPUT> inputs;
    for (const ButtonEvent& e : events) {
        const DWORD data = e.button == MouseButton::X1   ? XBUTTON1
                           : e.button == MouseButton::X2 ? XBUTTON2
                                                         : 0;
        inputs.push_back(mouseInput(buttonFlags(e.button, e.down), data));
    }
    return send(inputs);
}

bool sendMouseWheel(int delta, bool horizontal)
{
    // The whole delta in one record, however many notches: the receiver gets one message.
    std::vector<INPUT> inputs{
        mouseInput(horizontal ? MOUSEEVENTF_HWHEEL : MOUSEEVENTF_WHEEL, DWORD(delta))};
    return send(inputs);
}

bool sendKeys(const std::vector<KeyEvent>& events)
{
    std::vector<INPUT> inputs;
    for (const KeyEvent& e : events) {
        if (e.virtualKey == 0 || e.virtualKey > 0xFE) continue;
        const WORD scan = WORD(MapVirtualKeyW(e.virtualKey, MAPVK_VK_TO_VSC));
        DWORD flags = e.down ? 0 : KEYEVENTF_KEYUP;
        if (isExtended(e.virtualKey)) flags |= KEYEVENTF_EXTENDEDKEY;
        inputs.push_back(keyInput(WORD(e.virtualKey), scan, flags));
    }
    return send(inputs);
}

unsigned virtualKeyForCharacter(char32_t character)
{
    if (character > 0xFFFF) return 0;
    const SHORT result = VkKeyScanW(wchar_t(character));
    return result == -1 ? 0 : unsigned(result & 0xFF);
}

bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop)
{
    for (std::size_t i = 0; i < text.size() && !(stop && stop()); ++i) {
        const char16_t unit = text[i];
        std::vector<char16_t> units{unit};
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (low) continue; // unpaired
        if (high) {
            if (i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) continue;
            units.push_back(text[++i]);
        }
        std::vector<INPUT> inputs;
        for (char16_t u : units) {
            inputs.push_back(keyInput(0, WORD(u), KEYEVENTF_UNICODE));
            inputs.push_back(keyInput(0, WORD(u), KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
        }
        if (!send(inputs)) return false;
        if (delayMs > 0) Sleep(DWORD(delayMs));
    }
    return true;
}

InputBlocker inputBlocker(InputDevice)
{
    return InputBlocker::None;
}

bool clipboardReadable()
{
    if (!OpenClipboard(nullptr)) return false;
    CloseClipboard();
    return true;
}

} // namespace zelmor::platform
