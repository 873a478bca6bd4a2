#pragma once

#include "Geometry.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace zelmor::platform {

// A press, release or move of the pointer over a strip, in the strip's logical coordinates.
struct StripPointer
{
    enum Kind { Press, Release, Motion, Leave };
    Kind kind = Motion;
    Point position;
};

// A picture that stands above every window at a place of the program's choosing, on a desktop
// that places the program's own windows itself (Wayland). Only the picture takes the pointer;
// it never takes the keyboard. Its events are served on the thread that calls dispatch().
class ScreenStrip
{
public:
    using PointerCallback = std::function<void(const StripPointer&)>;

    virtual ~ScreenStrip() = default;
    // Shows `pixels` (premultiplied 0xAARRGGBB rows, `stride` pixels apart), `scale` device
    // pixels to a logical one; the strip's logical size follows.
    virtual void show(const std::uint32_t* pixels, int width, int height, int stride,
                      int scale) = 0;
    // Readable when the desktop has something to say; dispatch() then serves it.
    virtual int descriptor() const = 0;
    // False once the connection to the desktop broke.
    virtual bool dispatch() = 0;
};

// A strip whose top-left corner stands at `place` (logical desktop coordinates), or null where
// the desktop cannot put a program's surface at a place: there an ordinary window serves.
std::unique_ptr<ScreenStrip> makeScreenStrip(Point place, ScreenStrip::PointerCallback onPointer);

} // namespace zelmor::platform
