// Picks the X11 or the Wayland edition of input, windows and the clipboard by the display
// server the toolkit talks to, as the screen grab is picked.

#include "../Clipboard.h"
#include "../Session.h"
#include "../x11/InputX11.h"
#include "../x11/WindowsX11.h"
#include "DesktopToolsWayland.h"

namespace zelmor::platform {

namespace {
bool onWayland()
{
    return displayServer() == DisplayServer::Wayland;
}
} // namespace

bool setCursorPosition(Point position)
{
    return onWayland() ? wayland::setCursorPosition(position) : x11::setCursorPosition(position);
}

std::optional<Point> cursorPosition()
{
    return onWayland() ? wayland::cursorPosition() : x11::cursorPosition();
}

bool sendMouseButtons(const std::vector<ButtonEvent>& events)
{
    return onWayland() ? wayland::sendMouseButtons(events) : x11::sendMouseButtons(events);
}

bool sendMouseWheel(int delta, bool horizontal)
{
    return onWayland() ? wayland::sendMouseWheel(delta, horizontal)
                       : x11::sendMouseWheel(delta, horizontal);
}

bool sendKeys(const std::vector<KeyEvent>& events)
{
    return onWayland() ? wayland::sendKeys(events) : x11::sendKeys(events);
}

unsigned virtualKeyForCharacter(char32_t character)
{
    return onWayland() ? wayland::virtualKeyForCharacter(character)
                       : x11::virtualKeyForCharacter(character);
}

bool typeText(const std::u16string& text, int delayMs, const std::function<bool()>& stop)
{
    return onWayland() ? wayland::typeText(text, delayMs, stop)
                       : x11::typeText(text, delayMs, stop);
}

InputBlocker inputBlocker(InputDevice device)
{
    return onWayland() ? wayland::inputBlocker(device) : x11::inputBlocker(device);
}

bool windowManagementAvailable()
{
    return !onWayland() || wayland::windowManagementAvailable();
}

std::vector<WindowRecord> listTopLevelWindows()
{
    return onWayland() ? wayland::listTopLevelWindows() : x11::listTopLevelWindows();
}

WindowRecord foregroundWindow()
{
    return onWayland() ? wayland::foregroundWindow() : x11::foregroundWindow();
}

// The focused window first, where the compositor tells windows' places at all (KWin).
WindowHandle windowAt(Point point)
{
    if (!onWayland()) return x11::windowAt(point);
    for (const WindowRecord& w : wayland::listTopLevelWindows())
        if (w.frameKnown && !w.minimized && w.frame.contains(point)) return w.handle;
    return 0;
}

std::string windowProcessName(WindowHandle window)
{
    return onWayland() ? std::string() : x11::windowProcessName(window);
}

bool activateWindow(WindowHandle window)
{
    return onWayland() ? wayland::activateWindow(window) : x11::activateWindow(window);
}

bool minimizeWindow(WindowHandle window)
{
    return onWayland() ? wayland::minimizeWindow(window) : x11::minimizeWindow(window);
}

bool maximizeWindow(WindowHandle window)
{
    return onWayland() ? wayland::maximizeWindow(window) : x11::maximizeWindow(window);
}

bool restoreWindow(WindowHandle window)
{
    return onWayland() ? wayland::restoreWindow(window) : x11::restoreWindow(window);
}

bool closeWindow(WindowHandle window)
{
    return onWayland() ? wayland::closeWindow(window) : x11::closeWindow(window);
}

// A Wayland window this program hid is unmapped at once; no manager holds on to it.
bool waitUntilUnmanaged(WindowHandle window, int timeoutMs)
{
    return onWayland() || x11::waitUntilUnmanaged(window, timeoutMs);
}

// X has nothing to open: the owner is asked for its data.
bool clipboardReadable()
{
    return true;
}

ClipboardRoute clipboardRoute()
{
    if (!onWayland()) return ClipboardRoute::Toolkit;
    return wayland::clipboardReachable() ? ClipboardRoute::Direct : ClipboardRoute::FocusOnly;
}

bool setClipboardContent(const std::vector<ClipboardFormat>& formats)
{
    return onWayland() && wayland::setClipboardContent(formats);
}

std::vector<std::string> clipboardTypes()
{
    return onWayland() ? wayland::clipboardTypes() : std::vector<std::string>();
}

std::optional<std::string> clipboardData(const std::string& mimeType)
{
    return onWayland() ? wayland::clipboardData(mimeType) : std::nullopt;
}

} // namespace zelmor::platform
