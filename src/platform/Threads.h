#pragma once

namespace zelmor::platform {

// Lets the calling thread yield the CPU to the rest of the process (the GUI thread above all)
// while still making progress on a busy machine.
void lowerCurrentThreadPriority();

} // namespace zelmor::platform
