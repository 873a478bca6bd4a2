// The overlay's input: the selection's state machine under the mouse, the wheel, the keys,
// and the shapes drawn with them.

#include "CaptureOverlay.h"

#include "InlineTextEdit.h"
#include "OverlayGeometry.h"
#include "OverlayPanels.h"
#include "OverlayTools.h"
#include "core/DesktopClipboard.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

namespace zelmor::widget {

using service::capture::AnnotationShape;
using namespace overlay;

// --- Selection -------------------------------------------------------------------------

void CaptureOverlay::beginSelection(const QPoint& pos)
{
    m_selecting = true;
    m_hasSelection = false;
    m_dragStart = m_dragCurrent = m_mousePos = pos;
    m_selection = QRect(pos, QSize(0, 0));
    collectSnapRects();
    m_shapes.clear();
    m_panels->hideAll();
    setCursor(Qt::CrossCursor);
}

// Shapes are relative to the selection's corner; moving the corner shifts them back so
// that they stay where they are on the desktop.
void CaptureOverlay::changeSelection(const QRect& rect)
{
    const QPointF delta = QPointF(rect.topLeft()) - m_annotationAnchor;
    if (!delta.isNull()) {
        m_shapes.shiftBack(delta);
        m_annotationAnchor = rect.topLeft();
    }
    m_selection = rect;
    renewSelectionImage();
    refreshSidePanel();
    placePanels();
}

void CaptureOverlay::completeSelection(bool withSidePanel)
{
    m_hasSelection = true;
    renewSelectionImage();
    if (m_tool == kSelectTool) setTool(kSelectTool);
    m_panels->setButtonsForMode(m_mode);
    placePanels();
    if (withSidePanel) refreshSidePanel();
}

void CaptureOverlay::updateHover(const QPoint& pos)
{
    if (m_hasSelection || m_selecting || m_mode != Region) return;
    const QRect hit = smallestContaining(m_windowRects, pos);
    if (hit == m_hoverRect) return;
    m_hoverRect = hit;
    update();
}

void CaptureOverlay::updateCursorAt(const QPoint& pos)
{
    const int handle = handleAt(m_selection, pos);
    if (handle >= 0) {
        setCursor(handleCursor(handle));
    } else if (m_tool == kSelectTool) {
        setCursor(m_selection.contains(pos) ? Qt::SizeAllCursor : Qt::CrossCursor);
    } else if (cursor().shape() != Qt::IBeamCursor && m_tool != kTextTool) {
        setTool(m_tool);
    }
}

void CaptureOverlay::reselect()
{
    m_hasSelection = false;
    m_shapes.clear();
    m_selection = QRect();
    m_panels->hideAll();
    setCursor(Qt::CrossCursor);
    update();
}

// --- Mouse -----------------------------------------------------------------------------

void CaptureOverlay::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const QPoint pos = event->position().toPoint();
    const bool region = m_mode == Region;
    if (m_inlineEdit && m_inlineEdit->isVisible()) {
        m_inlineEdit->finish(true);
    } else if (const int handle = m_hasSelection && region ? handleAt(m_selection, pos) : -1;
               handle >= 0) {
        m_resizeHandle = handle;
        m_resizeStartRect = m_selection;
        m_annotationAnchor = m_selection.topLeft();
        setCursor(handleCursor(handle));
    } else if (m_hasSelection && region && m_tool == kSelectTool && m_selection.contains(pos)) {
        m_moving = true;
        m_movePressPos = pos;
        m_moveStartRect = m_selection;
        m_annotationAnchor = m_selection.topLeft();
        setCursor(Qt::SizeAllCursor);
    } else if (!m_hasSelection && !m_hoverRect.isNull() && m_hoverRect.contains(pos) && region) {
        m_hoverPressed = true;
        m_hoverPressPos = pos;
        m_selection = m_hoverRect;
        update();
    } else if (m_hasSelection && m_tool != kSelectTool && m_selection.contains(pos)) {
        beginShape(pos);
    } else {
        beginSelection(pos);
    }
    event->accept();
}

void CaptureOverlay::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    m_mousePos = pos;
    if (m_hoverPressed) {
        if ((pos - m_hoverPressPos).manhattanLength() < 9) {
            update();
            return;
        }
        m_hoverPressed = false;
        m_selecting = true;
        m_hasSelection = false;
        m_dragStart = m_dragCurrent = m_hoverPressPos;
        collectSnapRects();
        m_panels->hideAll();
        m_selection = snapRect(QRect(m_dragStart, pos), m_snapRects);
        update();
        return;
    }
    updateHover(pos);
    const bool idle = !m_selecting && !m_moving && m_resizeHandle < 0;
    if (idle && m_hasSelection && m_mode == Region && !m_shapes.drawing()) {
        updateCursorAt(pos);
    } else if (m_moving) {
        QRect moved = m_moveStartRect.translated(pos - m_movePressPos);
        if (const QScreen* primary = QGuiApplication::primaryScreen())
            moved = moved.intersected(primary->virtualGeometry());
        changeSelection(moved.width() < 4 || moved.height() < 4 ? m_selection : moved);
    } else if (m_resizeHandle >= 0) {
        changeSelection(resizedByHandle(m_resizeStartRect, m_resizeHandle, pos));
    } else if (m_shapes.drawing()) {
        m_shapes.extend(pos - m_selection.topLeft());
    } else if (m_selecting) {
        m_dragCurrent = pos;
        m_selection = snapRect(QRect(m_dragStart, m_dragCurrent).normalized(), m_snapRects);
    }
    update();
}

void CaptureOverlay::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    if (m_moving) {
        m_moving = false;
        setCursor(Qt::SizeAllCursor);
    } else if (m_hoverPressed) {
        m_hoverPressed = false;
        completeSelection(false);
        m_hoverRect = QRect();
    } else if (m_resizeHandle >= 0) {
        m_resizeHandle = -1;
        setCursor(m_tool == kTextTool ? Qt::IBeamCursor : Qt::CrossCursor);
    } else if (m_shapes.drawing()) {
        finishShape(pos);
    } else if (m_selecting) {
        m_selecting = false;
        // The snapped rectangle shown during the drag gives way to the one really dragged.
        m_selection = QRect(m_dragStart, m_dragCurrent).normalized();
        if (m_selection.width() > 4 && m_selection.height() > 4) {
            completeSelection(true);
            releaseKeyboard();
            if (QWindow* window = windowHandle()) window->setKeyboardGrabEnabled(false);
            m_keyboardGrabbed = false;
        } else {
            m_panels->hideAll();
        }
    }
    update();
    event->accept();
}

void CaptureOverlay::wheelEvent(QWheelEvent* event)
{
    const int dy = event->angleDelta().y();
    if (!(event->modifiers() & Qt::ControlModifier) || m_tool == kSelectTool || !m_hasSelection ||
        dy == 0) {
        QWidget::wheelEvent(event);
        return;
    }
    const int step = dy > 0 ? 1 : -1;
    if (AnnotationShape* last = m_shapes.newest()) {
        const int kind = last->kind;
        if (kind == AnnotationShape::Text || kind == AnnotationShape::Counter ||
            kind == AnnotationShape::Stamp) {
            last->fontSize = qBound(8, last->fontSize + step, 96);
            m_fontSize = last->fontSize;
            m_panels->setFontSize(m_fontSize);
            if (m_inlineEdit && m_inlineEdit->isVisible()) m_inlineEdit->setFontSize(m_fontSize);
        } else if (kind == AnnotationShape::Mosaic || kind == AnnotationShape::Blur) {
            last->blockSize = qBound(2, last->blockSize + step, 64);
        } else {
            last->width = qBound(1, last->width + step, 40);
            m_penWidth = last->width;
            m_panels->setPenWidth(m_penWidth);
        }
    } else if (isFontTool(m_tool)) {
        m_fontSize = qBound(8, m_fontSize + step, 96);
        m_panels->setFontSize(m_fontSize);
    } else {
        m_penWidth = qBound(1, m_penWidth + step, 40);
        m_panels->setPenWidth(m_penWidth);
    }
    event->accept();
    update();
}

// --- Keyboard --------------------------------------------------------------------------

void CaptureOverlay::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key == Qt::Key_Alt) {
        m_altHeld = true;
        update();
        return;
    }
    if (key == Qt::Key_Shift) {
        if (!event->isAutoRepeat()) {
            m_hexColor = !m_hexColor;
            update();
        }
        return;
    }
    if (key == Qt::Key_C && !m_hasSelection) {
        copyColourUnderPointer();
        return;
    }
    if (key == Qt::Key_Escape) {
        if (m_shapes.drawing()) {
            m_shapes.drop();
            update();
        } else {
            Q_EMIT cancelled();
            close();
        }
        return;
    }
    if (m_hasSelection && event->matches(QKeySequence::Undo)) {
        undo();
        return;
    }
    // Ctrl+Y redoes on every system, besides the platform's own redo sequence.
    const bool ctrlY = key == Qt::Key_Y && event->modifiers() == Qt::ControlModifier;
    if (m_hasSelection && (event->matches(QKeySequence::Redo) || ctrlY)) {
        redo();
        return;
    }
    if (m_hasSelection && m_mode == Region && event->matches(QKeySequence::Copy)) {
        finishWith(&CaptureOverlay::copyRequested);
        return;
    }
    if (m_hasSelection && m_mode == Region && event->matches(QKeySequence::Save)) {
        finishWith(&CaptureOverlay::saveRequested);
        return;
    }
    if (!event->text().isEmpty() && m_hasSelection && m_panels->annotationBar()->isVisible() &&
        handleToolKey(event->text().toLower()))
        return;
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && m_mode == Region && m_hasSelection &&
        !m_selection.isNull()) {
        finishWith(&CaptureOverlay::copyRequested);
        return;
    }
    QWidget::keyPressEvent(event);
}

void CaptureOverlay::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Alt && !event->isAutoRepeat()) {
        m_altHeld = false;
        update();
        return;
    }
    QWidget::keyReleaseEvent(event);
}

bool CaptureOverlay::handleToolKey(const QString& text)
{
    static const QHash<QString, int> toolKeys = {
        {QStringLiteral("r"), 1},  {QStringLiteral("e"), 2}, {QStringLiteral("a"), 3},
        {QStringLiteral("l"), 4},  {QStringLiteral("b"), 5}, {QStringLiteral("h"), 6},
        {QStringLiteral("m"), 7},  {QStringLiteral("t"), 9}, {QStringLiteral("c"), 10},
        {QStringLiteral("s"), 11},
    };
    const auto tool = toolKeys.constFind(text);
    if (tool != toolKeys.cend()) {
        if (QToolButton* button = m_panels->toolButton(*tool)) {
            button->setChecked(true);
            setTool(*tool);
        }
        return true;
    }
    bool digit = false;
    const int number = text.toInt(&digit);
    if (digit && text.size() == 1 && number >= 1 && number <= 9) {
        m_penColor = m_panels->pickPaletteColour(number);
        return true;
    }
    return false;
}

void CaptureOverlay::copyColourUnderPointer()
{
    const QString text = colourText(m_frozenImage, m_mousePos, m_hexColor);
    if (text.isEmpty()) return;
    core::setClipboardText(text);
    m_copiedColorText = text;
    refreshSidePanel();
    QTimer::singleShot(900, this, [this] {
        m_copiedColorText.clear();
        refreshSidePanel();
    });
}

// --- Shapes ----------------------------------------------------------------------------

void CaptureOverlay::beginShape(const QPoint& pos)
{
    m_shapes.begin(m_tool, pos - m_selection.topLeft(), m_penColor, m_penWidth, m_fontSize);
}

void CaptureOverlay::finishShape(const QPoint& pos)
{
    if (m_shapes.finish() != ShapeEditor::Finish::NeedsText) return;
    const bool stamp = m_shapes.currentKind() == AnnotationShape::Stamp;
    if (!m_inlineEdit) {
        m_inlineEdit = new InlineTextEdit(this);
        connect(m_inlineEdit, &InlineTextEdit::closed, this, [this](const QString& text, int tool) {
            m_shapes.commitText(text);
            setFocus();
            update();
            setTool(tool);
        });
    }
    m_inlineEdit->open(pos, stamp ? QStringLiteral("✓") : QString(), stamp ? kStampTool : kTextTool,
                       m_penColor, m_fontSize);
}

} // namespace zelmor::widget
