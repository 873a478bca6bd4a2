#pragma once

#include "service/capture/AnnotationShape.h"

#include <QList>

namespace zelmor::widget::overlay {

// The marks drawn on a selection: the one in hand, the drawn ones oldest first and the undone
// ones. Points are relative to the selection's top left. A shape grows and ends by its own
// kind, whatever tool is picked while it is dragged.
class ShapeEditor
{
public:
    using Shape = service::capture::AnnotationShape;
    enum class Finish { Committed, Dropped, NeedsText };

    const QList<Shape>& annotations() const { return m_annotations; }
    // The shape being dragged; null when none.
    const Shape* shapeInHand() const { return m_drawing ? &m_current : nullptr; }
    bool drawing() const { return m_drawing; }
    // The kind of the last shape begun, also once its drag has ended.
    int currentKind() const { return m_current.kind; }

    void begin(int tool, const QPointF& point, const QColor& colour, int width, int fontSize);
    void extend(const QPointF& point);
    // Ends the drag: a counter takes the next number, a text or stamp waits for its text, and
    // a shape whose ends lie under 4 px apart is dropped as a slip of the hand.
    Finish finish();
    // Commits the waiting text or stamp shape with `text`; an empty text leaves no shape.
    void commitText(const QString& text);
    // Drops the shape being dragged.
    void drop() { m_drawing = false; }

    void undo();
    void redo();
    // Forgets every shape, drawn and undone.
    void clear();
    // The drawn shapes follow a selection corner moved by `delta`, so that they stay where they
    // are on the desktop; undone ones stay as they were.
    void shiftBack(const QPointF& delta);
    // The newest drawn shape, for the wheel to edit; null when none.
    Shape* newest() { return m_annotations.isEmpty() ? nullptr : &m_annotations.last(); }

private:
    void commit();

    QList<Shape> m_annotations;
    QList<Shape> m_redoStack;
    Shape m_current;
    bool m_drawing = false;
    int m_nextCounter = 1; // runs on across selections and undos
};

} // namespace zelmor::widget::overlay
