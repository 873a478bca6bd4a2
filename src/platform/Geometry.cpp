#include "Geometry.h"

#include <algorithm>

namespace zelmor::platform {

Rect intersected(const Rect& a, const Rect& b)
{
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.right(), b.right());
    const int bottom = std::min(a.bottom(), b.bottom());
    if (right <= left || bottom <= top) return {};
    return {left, top, right - left, bottom - top};
}

Rect united(const Rect& a, const Rect& b)
{
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    const int left = std::min(a.x, b.x);
    const int top = std::min(a.y, b.y);
    return {left, top, std::max(a.right(), b.right()) - left,
            std::max(a.bottom(), b.bottom()) - top};
}

} // namespace zelmor::platform
