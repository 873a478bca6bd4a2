#include "../ScreenStrip.h"

namespace zelmor::platform {

// Windows puts a window where the program asks: the strip is an ordinary window there.
std::unique_ptr<ScreenStrip> makeScreenStrip(Point, ScreenStrip::PointerCallback)
{
    return nullptr;
}

} // namespace zelmor::platform
