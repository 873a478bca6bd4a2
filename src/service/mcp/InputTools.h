#pragma once

#include "McpTool.h"

namespace zelmor::service::mcp {

// The virtual-key code of a key name ("ctrl", "F5", "a", ...); 0 when the name is unknown.
// A single character names the plain key that types it in the current layout, without shift.
unsigned mcpKeyCode(const QString& name);

McpToolResult mouseClickTool(const McpToolArgs& args);
McpToolResult mouseMoveTool(const McpToolArgs& args);
McpToolResult mouseScrollTool(const McpToolArgs& args);
McpToolResult mouseDragTool(const McpToolArgs& args);
McpToolResult keyDownTool(const McpToolArgs& args);
McpToolResult keyUpTool(const McpToolArgs& args);
McpToolResult sendHotkeyTool(const McpToolArgs& args);
McpToolResult typeTextTool(const McpToolArgs& args);
McpToolResult pasteTextToFocusedTool(const McpToolArgs& args);
McpToolResult readClipboardTool(const McpToolArgs& args);
McpToolResult writeClipboardTool(const McpToolArgs& args);

} // namespace zelmor::service::mcp
