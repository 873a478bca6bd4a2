#pragma once

namespace zelmor::widget::overlay {

// The overlay's tools by number: 0 selects and moves, 1 to 11 draw the shape kinds 0 to 10.
constexpr int kSelectTool = 0;
constexpr int kTextTool = 9;
constexpr int kCounterTool = 10;
constexpr int kStampTool = 11;

// The tools whose shapes are sized by the font size rather than the pen width.
constexpr bool isFontTool(int tool)
{
    return tool == kTextTool || tool == kCounterTool || tool == kStampTool;
}

} // namespace zelmor::widget::overlay
