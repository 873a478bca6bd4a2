#pragma once

namespace zelmor::platform {

// The display server the toolkit talks to, told once right after the toolkit started; the
// desktop's usual one (X11 on Linux) until then. A native Wayland client reads the screen
// through the compositor's protocols, an X11 one through the X server.
enum class DisplayServer { Usual, Wayland };
void setDisplayServer(DisplayServer server);
DisplayServer displayServer();

// Where the desktop places every window and tells a program where the pointer is only over the
// program's own windows (Wayland): an overlay covers outputs as full-screen windows, and nothing
// is put at a place of the program's choosing.
inline bool desktopPlacesWindows()
{
    return displayServer() == DisplayServer::Wayland;
}

// True when the display this process was started for accepts a connection: the usual one, or
// on Linux a Wayland compositor, which `server` then names when no X server answers. A process
// started by a console client may have none at all.
bool displayReachable(DisplayServer* server = nullptr);

} // namespace zelmor::platform
