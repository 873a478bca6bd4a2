#pragma once

#include "Geometry.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zelmor::platform {

// Synthetic input, delivered to whatever holds the pointer or the keyboard focus. Every call
// returns false when no display or no input injection is available; events of one call are
// sent in order, back to back, and have reached the display server when the call returns.

enum class MouseButton { Left, Right, Middle, X1, X2 };

struct ButtonEvent
{
    MouseButton button = MouseButton::Left;
    bool down = true;
};

// Keys are Windows virtual-key codes (0x11 Ctrl, 0x41 'A', 0x70 F1 ...).
struct KeyEvent
{
    unsigned virtualKey = 0;
    bool down = true;
};

bool setCursorPosition(Point position);
std::optional<Point> cursorPosition();

// Presses and releases at the cursor's position.
bool sendMouseButtons(const std::vector<ButtonEvent>& events);

// `delta` in wheel units, 120 to a notch; positive scrolls up, or right when `horizontal`.
bool sendMouseWheel(int delta, bool horizontal = false);

// Unknown virtual keys are skipped.
bool sendKeys(const std::vector<KeyEvent>& events);

// The virtual key of the key that types `character` in the current layout, ignoring the shift
// state it needs ('!' gives the key of '1'); 0 when no key types it.
unsigned virtualKeyForCharacter(char32_t character);

// Types text as characters, whatever the keyboard layout, taking at least `delayMs` for each
// character. Unpaired surrogates are skipped. `stop`, when given, is asked before each
// character, and typing ends as soon as it answers true.
bool typeText(const std::u16string& text, int delayMs = 5,
              const std::function<bool()>& stop = nullptr);

// What keeps synthetic input of one device from reaching the desktop: no display, no
// injection extension (XTest), a Wayland compositor that offers no virtual device of that
// kind to its clients nor a RemoteDesktop portal, or a portal that the user refused, left
// unanswered, or that failed. Asking may show the portal's dialog and wait for the user.
enum class InputDevice { Keyboard, Pointer };
enum class InputBlocker {
    None,
    NoDisplay,
    NoInjection,
    NoVirtualDevice,
    PortalRefused,
    PortalNoAnswer,
    PortalFailed
};
InputBlocker inputBlocker(InputDevice device);

// False while the clipboard cannot be read: Windows opens it, which fails while another
// program holds it open. X has nothing to open: the owner is asked for its data.
bool clipboardReadable();

} // namespace zelmor::platform
