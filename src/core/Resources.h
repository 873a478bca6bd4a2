#pragma once

namespace zelmor::core {

// Registers the resources compiled into the static library, and lets pictures be decoded up
// to the memory budget rather than Qt's default of 128 MiB, so that a very large capture still
// opens. Call once at start, before any ":/icons/..." path or picture is read.
void initResources();

} // namespace zelmor::core
