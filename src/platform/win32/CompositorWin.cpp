#include "../Compositor.h"

namespace zelmor::platform {

// The desktop window manager composes every window from Windows 8 on and cannot be turned
// off, so translucent pixels always show what lies behind them and nothing changes at run time.
bool compositorRunning()
{
    return true;
}

int compositorChangeDescriptor()
{
    return -1;
}

} // namespace zelmor::platform
