// Whether the X server named by DISPLAY accepts us (Windows: always true).

#include "SessionX11.h"

#include <xcb/xcb.h>

namespace zelmor::platform::x11 {

bool displayReachable()
{
    // A connection of its own: the shared one is kept for the life of the process, and this
    // check runs before Qt picks its platform.
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    const bool reachable = c && !xcb_connection_has_error(c);
    if (c) xcb_disconnect(c);
    return reachable;
}

} // namespace zelmor::platform::x11
