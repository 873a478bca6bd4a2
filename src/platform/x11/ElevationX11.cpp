// An X11 desktop has no elevation prompt for a graphical program: pkexec strips the display
// from the environment, and a root client of the user's display would keep its settings and
// history in root's home.

#include "../Elevation.h"

namespace zelmor::platform {

bool elevationAvailable()
{
    return false;
}

Elevation relaunchElevated(const std::string&)
{
    return Elevation::Unavailable;
}

} // namespace zelmor::platform
