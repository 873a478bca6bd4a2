#include "ShapeEditor.h"

#include <cmath>

namespace zelmor::widget::overlay {

namespace {

using Shape = ShapeEditor::Shape;

bool isTwoPointKind(int kind)
{
    return (kind >= Shape::Rect && kind <= Shape::Line) || kind == Shape::Mosaic ||
           kind == Shape::Blur;
}

bool isPathKind(int kind)
{
    return kind == Shape::Brush || kind == Shape::Highlight;
}

} // namespace

void ShapeEditor::begin(int tool, const QPointF& point, const QColor& colour, int width,
                        int fontSize)
{
    m_drawing = true;
    m_current = Shape();
    m_current.color = colour;
    m_current.width = width;
    m_current.fontSize = fontSize;
    m_current.kind = service::capture::shapeKindForTool(tool);
    m_current.points = {point};
    if (isTwoPointKind(m_current.kind)) m_current.points.append(point);
    if (m_current.kind == Shape::Mosaic) m_current.blockSize = 12;
    if (m_current.kind == Shape::Blur) m_current.blockSize = 16;
}

void ShapeEditor::extend(const QPointF& point)
{
    if (isTwoPointKind(m_current.kind)) {
        m_current.points[1] = point;
    } else if (isPathKind(m_current.kind)) {
        m_current.points.append(point);
    } else {
        m_current.points[0] = point;
    }
}

ShapeEditor::Finish ShapeEditor::finish()
{
    m_drawing = false;
    if (m_current.kind == Shape::Text || m_current.kind == Shape::Stamp) return Finish::NeedsText;
    if (m_current.kind == Shape::Counter) {
        m_current.text = QString::number(m_nextCounter++);
        commit();
        return Finish::Committed;
    }
    const QList<QPointF>& points = m_current.points;
    if (points.size() >= 2) {
        const QPointF d = points.last() - points.first();
        if (std::hypot(d.x(), d.y()) < 4.0) return Finish::Dropped; // or a closed loop
    }
    commit();
    return Finish::Committed;
}

void ShapeEditor::commitText(const QString& text)
{
    if (text.isEmpty()) return;
    m_current.text = text;
    commit();
}

void ShapeEditor::commit()
{
    m_annotations.append(m_current);
    m_redoStack.clear();
}

void ShapeEditor::undo()
{
    if (!m_annotations.isEmpty()) m_redoStack.append(m_annotations.takeLast());
}

void ShapeEditor::redo()
{
    if (!m_redoStack.isEmpty()) m_annotations.append(m_redoStack.takeLast());
}

void ShapeEditor::clear()
{
    m_annotations.clear();
    m_redoStack.clear();
    m_drawing = false;
}

void ShapeEditor::shiftBack(const QPointF& delta)
{
    for (Shape& shape : m_annotations)
        for (QPointF& p : shape.points)
            p -= delta;
}

} // namespace zelmor::widget::overlay
