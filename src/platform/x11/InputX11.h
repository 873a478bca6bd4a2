#pragma once

#include "../Input.h"

// The X11 edition of synthetic input; the session picks it or the Wayland one.
namespace zelmor::platform::x11 {

bool setCursorPosition(Point position);
std::optional<Point> cursorPosition();
bool sendMouseButtons(const std::vector<ButtonEvent>& events);
bool sendMouseWheel(int delta, bool horizontal);
bool sendKeys(const std::vector<KeyEvent>& events);
unsigned virtualKeyForCharacter(char32_t character);
bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop);
InputBlocker inputBlocker(InputDevice device);

} // namespace zelmor::platform::x11
