#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

namespace zelmor::service::mcp {

// What a model behind a client is shown of a picture: scaled down to a size models read
// well, aspect kept, as PNG small enough for the reply line a client accepts.
struct McpModelImage
{
    QByteArray png;   // empty for a null source
    double scale = 1; // of the source's sides, for mapping the picture back to the screen
    QSize size;
};

McpModelImage makeModelImage(const QImage& source);

} // namespace zelmor::service::mcp
