#pragma once

#include "../../Geometry.h"

#include <cstdint>

namespace zelmor::platform::wayland {

// A stream of the screen that the desktop's ScreenCast portal granted: the PipeWire remote to
// read it from (a file descriptor the caller then owns), its node, and the part of the desktop
// it shows.
struct ScreenCastGrant
{
    int remote = -1;
    std::uint32_t node = 0;
    Rect area;
};

// Asks the portal for a stream of one whole monitor without the pointer. The desktop asks the
// user the first time; the answer is kept (the portal's restore token) so that it asks once.
// False where there is no ScreenCast portal, or it failed or the user said no.
bool openScreenCast(ScreenCastGrant* grant);

// Ends the portal's session, which ends the stream.
void closeScreenCast();

} // namespace zelmor::platform::wayland
