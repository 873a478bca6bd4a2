#pragma once

namespace zelmor::platform {

// True when the display this process was started for accepts a connection. A process
// started by a console client may have none at all.
bool displayReachable();

// The display server the toolkit talks to, told once right after the toolkit started; the
// desktop's usual one (X11 on Linux) until then. A native Wayland client reads the screen
// through the compositor's protocols, an X11 one through the X server.
enum class DisplayServer { Usual, Wayland };
void setDisplayServer(DisplayServer server);
DisplayServer displayServer();

} // namespace zelmor::platform
