#pragma once

#include "Geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zelmor::platform {

struct MonitorInfo
{
    std::string name; // X11: the output, as Qt names the screen; Windows: the device
    Rect rect;
};

enum class GrabMethod {
    Automatic,    // shared memory where the display offers it, else a plain copy
    SharedMemory, // fails where shared memory is unavailable
    Plain,
    Portal, // the desktop's screenshot portal alone (Wayland); fails where there is none
};

// Monitors in the display's own order; empty when no display can be reached.
std::vector<MonitorInfo> listMonitors();

// Bounding rectangle of all monitors (the whole desktop where no monitor is reported).
Rect virtualDesktopRect();

// What keeps every grab from seeing the screen, known from the session itself.
enum class GrabBlocker {
    None,
    Xwayland,     // an X11 client of a Wayland desktop, which shows it nothing but black
    NoScreenCopy, // a Wayland client of a compositor that offers no screen copy protocol
                  // and no screenshot portal
};
GrabBlocker screenGrabBlocker();

// How the last grab that asked the desktop's screenshot portal for a picture (Wayland without
// a screen copy protocol) ended; Granted where none did.
enum class PortalAnswer {
    Granted,
    Refused,  // the user said no, or closed the portal's dialog
    Failed,   // the portal could not take the picture
    NoAnswer, // the portal did not answer in time; its dialog may still stand unanswered
};
PortalAnswer lastPortalAnswer();

// True where every grab asks the desktop for one picture (its screenshot portal, which may ask
// the user): enough for a capture, not for the frames of a recording or a scroll capture.
// Where the desktop streams the screen instead (its ScreenCast portal, which asks the user the
// first time), that stream is opened here and false returned; it closes once unused.
bool grabsAreSinglePictures();

// Copies a physical desktop rectangle into 32-bit pixels 0xffRRGGBB, row by row, into
// `dest` with `destStride` pixels per row. Parts of `rect` outside the desktop are set to
// opaque black. Returns false when the display cannot be read, and where a blocker hands
// out black instead of the screen, when the copy holds nothing but black; `dest` may then
// have been written.
bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride,
                     GrabMethod method = GrabMethod::Automatic);

bool sharedMemoryGrabAvailable();

} // namespace zelmor::platform
