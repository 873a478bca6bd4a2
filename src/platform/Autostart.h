#pragma once

#include <string>

namespace zelmor::platform {

// How this system starts a program when the user signs in.
enum class AutostartKind {
    WindowsSignIn,  // a value of the Run key in the user's registry
    DesktopSession, // an entry of the desktop session's autostart folder
};
AutostartKind autostartKind();

// Whether the program is entered to start with the user's session.
bool autostartEnabled();

// Enters the program at `programUtf8`, an absolute path, to start with the user's session, or
// removes the entry. False when the entry could not be written or removed.
bool setAutostart(bool enabled, const std::string& programUtf8);

} // namespace zelmor::platform
