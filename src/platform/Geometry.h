#pragma once

namespace zelmor::platform {

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
};

Rect intersected(const Rect& a, const Rect& b);
Rect united(const Rect& a, const Rect& b);

} // namespace zelmor::platform
