#pragma once

#include <cstdint>

namespace zelmor::platform {

// Memory the system could give this process now without swapping, in bytes; the physical
// memory when that cannot be told, and 0 when neither can.
std::uint64_t availableMemoryBytes();

} // namespace zelmor::platform
