#pragma once

#include "McpTool.h"
#include "core/HistoryItem.h"
#include "service/capture/AnnotationShape.h"

#include <QList>
#include <QPixmap>

// The tools that give a model eyes and the history: silent captures, annotation of a stored
// or inline image, recognition through the active AI provider, pinning and history queries.
namespace zelmor::service::mcp {

McpToolResult captureFullscreenTool(const McpToolArgs& args);
McpToolResult captureRegionTool(const McpToolArgs& args);
McpToolResult screenshotActiveWindowTool(const McpToolArgs& args);
McpToolResult annotateImageTool(const McpToolArgs& args);
McpToolResult ocrTool(const McpToolArgs& args);
McpToolResult pinLastTool(const McpToolArgs& args);
McpToolResult listHistoryTool(const McpToolArgs& args);
McpToolResult searchHistoryTool(const McpToolArgs& args);

// The shape kind of an annotation's `kind` text; unknown texts draw a rectangle.
capture::AnnotationShape::Kind mcpAnnotationKind(const QString& kind);

// One element of `annotations`, every missing or unusable key replaced by its default.
capture::AnnotationShape readMcpAnnotation(const QVariantMap& annotation);

// {"items":[{id,kind,path,width,height,createdAt}]} as compact UTF-8 JSON text.
QString historyItemsJson(const QList<core::HistoryItem>& items);

} // namespace zelmor::service::mcp
