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
};

// Monitors in the display's own order; empty when no display can be reached.
std::vector<MonitorInfo> listMonitors();

// Bounding rectangle of all monitors (the whole desktop where no monitor is reported).
Rect virtualDesktopRect();

// Copies a physical desktop rectangle into 32-bit pixels 0xffRRGGBB, row by row, into
// `dest` with `destStride` pixels per row. Parts of `rect` outside the desktop are set to
// opaque black. Returns false, leaving `dest` untouched, when the display cannot be read.
bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride,
                     GrabMethod method = GrabMethod::Automatic);

bool sharedMemoryGrabAvailable();

} // namespace zelmor::platform
