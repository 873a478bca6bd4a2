#pragma once

#include "../Geometry.h"

#include <cstdint>

namespace zelmor::platform::wayland {

// Opens the desktop's stream of the screen (the ScreenCast portal and PipeWire) where none is
// open yet; the stream closes itself once no grab has asked it for a while. False where the
// desktop grants none.
bool openScreenStream();

// As platform::grabDesktopRect, from the open stream's latest picture (waiting a moment for
// the first); false where no stream is open.
bool grabFromScreenStream(const Rect& rect, std::uint32_t* dest, int destStride);

} // namespace zelmor::platform::wayland
