#pragma once

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

    bool isEmpty() const { return width <= 0 || height <= 0; }
    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool contains(Point p) const { return p.x >= x && p.y >= y && p.x < right() && p.y < bottom(); }
};

Rect intersected(const Rect& a, const Rect& b);
Rect united(const Rect& a, const Rect& b);

} // namespace zelmor::platform
