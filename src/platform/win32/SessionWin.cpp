#include "../Session.h"

#include <windows.h>

namespace zelmor::platform {

// A process of an interactive session always has its desktop; a service has none.
bool displayReachable()
{
    return GetDesktopWindow() != nullptr && GetSystemMetrics(SM_CXSCREEN) > 0;
}

} // namespace zelmor::platform
