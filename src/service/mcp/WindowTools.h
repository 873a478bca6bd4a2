#pragma once

#include "McpTool.h"

namespace zelmor::service::mcp {

McpToolResult getActiveWindowInfoTool(const McpToolArgs& args);
McpToolResult listWindowsTool(const McpToolArgs& args);
McpToolResult focusWindowTool(const McpToolArgs& args);
McpToolResult windowActionTool(const McpToolArgs& args);
McpToolResult activateWindowAndPasteTool(const McpToolArgs& args);
McpToolResult launchAppTool(const McpToolArgs& args);
McpToolResult openFolderAndSelectTool(const McpToolArgs& args);
McpToolResult getFileInfoTool(const McpToolArgs& args);

} // namespace zelmor::service::mcp
