#pragma once

#include <string>

namespace zelmor::platform {

enum class Elevation { Started, Refused, Unavailable };

// Whether this system can start a program with administrator rights at the user's word.
bool elevationAvailable();

// Starts the program once more with administrator rights, after the system has asked the
// user. The caller quits when it was started.
Elevation relaunchElevated(const std::string& programUtf8);

} // namespace zelmor::platform
