#pragma once

#include <vector>

namespace zelmor::platform {

// A point in physical desktop pixels.
struct Point
{
    int x = 0;
    int y = 0;

    bool operator==(const Point& o) const { return x == o.x && y == o.y; }
    bool operator!=(const Point& o) const { return !(*this == o); }
};

// A rectangle in physical desktop pixels, top-left origin.
struct Rect
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Rect& o) const
    {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool contains(Point p) const { return p.x >= x && p.y >= y && p.x < right() && p.y < bottom(); }
};

Rect intersected(const Rect& a, const Rect& b);
Rect united(const Rect& a, const Rect& b);

// Which of `monitors` shows the screen whose physical rectangle is `screen`, `index` being its
// place in the toolkit's list: the monitor of the same rectangle, else the one under the
// screen's top-left corner, else the one at `index`; -1 when there is none. Names cannot be
// matched (Windows names the device, the toolkit the model), nor need the orders agree.
int monitorForScreen(const std::vector<Rect>& monitors, const Rect& screen, int index);

} // namespace zelmor::platform
