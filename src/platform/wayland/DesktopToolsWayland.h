#pragma once

#include "../Clipboard.h"
#include "../Input.h"
#include "../Windows.h"

// The Wayland edition of the desktop tools: input through the virtual keyboard and pointer,
// windows through wlr-foreign-toplevel-management, the clipboard through wlr-data-control.
// The session picks it or the X11 one.
namespace zelmor::platform::wayland {

bool setCursorPosition(Point position);
std::optional<Point> cursorPosition();
bool sendMouseButtons(const std::vector<ButtonEvent>& events);
bool sendMouseWheel(int delta, bool horizontal);
bool sendKeys(const std::vector<KeyEvent>& events);
unsigned virtualKeyForCharacter(char32_t character);
bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop);
InputBlocker inputBlocker(InputDevice device);

bool windowManagementAvailable();
std::vector<WindowRecord> listTopLevelWindows();
WindowRecord foregroundWindow();
bool activateWindow(WindowHandle window);
bool minimizeWindow(WindowHandle window);
bool maximizeWindow(WindowHandle window);
bool restoreWindow(WindowHandle window);
bool closeWindow(WindowHandle window);

bool clipboardReachable();
bool setClipboardContent(const std::vector<ClipboardFormat>& formats);
std::vector<std::string> clipboardTypes();
std::optional<std::string> clipboardData(const std::string& mimeType);

} // namespace zelmor::platform::wayland
