#pragma once

namespace zelmor::platform {

// True when the display this process was started for accepts a connection. A process
// started by a console client may have none at all.
bool displayReachable();

} // namespace zelmor::platform
