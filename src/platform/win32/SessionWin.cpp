#include "../Session.h"

#include <windows.h>

namespace zelmor::platform {

// A process of an interactive session always has its desktop; a service has none.
bool displayReachable(DisplayServer* server)
{
    if (server) *server = DisplayServer::Usual;
    return GetDesktopWindow() != nullptr && GetSystemMetrics(SM_CXSCREEN) > 0;
}

namespace {
DisplayServer toolkitServer = DisplayServer::Usual;
}

// Windows has one display server; the value is kept as told.
void setDisplayServer(DisplayServer server)
{
    toolkitServer = server;
}

DisplayServer displayServer()
{
    return toolkitServer;
}

} // namespace zelmor::platform
