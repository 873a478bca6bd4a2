#pragma once

#include "../../Geometry.h"

#include <cstdint>

namespace zelmor::platform::wayland::remote {

// Input through the desktop's RemoteDesktop portal, where the compositor lets no client send
// input of its own (KDE). The user grants it once: the portal's restore token, kept in the
// app's data folder, lets a later start go on without asking where the desktop honours it.

enum class Access { Granted, NoPortal, Refused, NoAnswer, Failed };

// Starts the portal's session, asking the user when no earlier grant is restored; a session
// refused or not answered is asked for again at the next call.
Access access();

// `logical`: a point in the desktop's logical layout, as the portal's screen streams place it.
bool moveTo(Point logical);
bool button(std::uint32_t evdevButton, bool down);
bool wheel(int notches, bool horizontal);
bool keysym(std::uint32_t keysym, bool down);

} // namespace zelmor::platform::wayland::remote
