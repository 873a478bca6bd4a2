#include "AnnotationShape.h"

namespace zelmor::service::capture {

int shapeKindForTool(int tool)
{
    return tool >= 1 && tool <= 11 ? tool - 1 : -1;
}

const std::array<PaletteColour, 9>& annotationPalette()
{
    static const std::array<PaletteColour, 9> palette{{
        {"red", 0xFFFF5252},
        {"yellow", 0xFFFFEB3B},
        {"green", 0xFF4CAF50},
        {"blue", 0xFF4CC2FF},
        {"orange", 0xFFFF9800},
        {"pink", 0xFFE91E63},
        {"purple", 0xFF9C27B0},
        {"black", 0xFF000000},
        {"white", 0xFFFFFFFF},
    }};
    return palette;
}

} // namespace zelmor::service::capture
