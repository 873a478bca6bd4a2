#pragma once

namespace zelmor::core {

// Registers the resources compiled into the static library; call once, before any
// ":/icons/..." path is used.
void initResources();

} // namespace zelmor::core
