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

int monitorForScreen(const std::vector<Rect>& monitors, const Rect& screen, int index)
{
    const auto first = [&monitors](auto matches) {
        const auto found = std::find_if(monitors.begin(), monitors.end(), matches);
        return found == monitors.end() ? -1 : int(found - monitors.begin());
    };
    if (const int same = first([&screen](const Rect& m) { return m == screen; }); same >= 0)
        return same;
    const Point corner{screen.x, screen.y};
    if (const int under = first([&corner](const Rect& m) { return m.contains(corner); });
        under >= 0)
        return under;
    return index >= 0 && index < int(monitors.size()) ? index : -1;
}

} // namespace zelmor::platform
