#pragma once

#include "McpTool.h"

namespace zelmor::service::mcp {

// The name of a UI Automation control-type id; "Custom(id)" for the ids without one.
QString mcpControlTypeName(int controlType);

McpToolResult inspectUiElementTool(const McpToolArgs& args);
McpToolResult findUiElementsTool(const McpToolArgs& args);
McpToolResult clickUiElementTool(const McpToolArgs& args);
McpToolResult setUiElementTextTool(const McpToolArgs& args);

} // namespace zelmor::service::mcp
