#pragma once

#include "McpTool.h"

#include <optional>

namespace zelmor::service::mcp {

// Why a desktop tool cannot act on this desktop, naming the mechanism it lacks and the desktop;
// nullopt when it can. A tool never reports success for input that went nowhere.
std::optional<McpToolResult> keyboardUnavailable();
std::optional<McpToolResult> pointerUnavailable();
std::optional<McpToolResult> clipboardUnavailable();
std::optional<McpToolResult> windowsUnavailable();

} // namespace zelmor::service::mcp
