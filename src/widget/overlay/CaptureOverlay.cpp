#include "CaptureOverlay.h"

#include "OverlayGeometry.h"
#include "OverlayPainter.h"
#include "OverlayPanels.h"
#include "service/capture/AnnotationPainter.h"
#include "service/capture/WindowList.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include <cmath>

namespace zelmor::widget {

using service::capture::AnnotationShape;
using namespace overlay;

namespace {

constexpr int kSelectTool = 0;
constexpr int kTextTool = 9;
constexpr int kCounterTool = 10;
constexpr int kStampTool = 11;
constexpr int kGrabTries = 20;

QRect unitedScreens()
{
    QRect all;
    for (const QScreen* s : QGuiApplication::screens())
        all = all.united(s->geometry());
    if (all.isEmpty() && QGuiApplication::primaryScreen())
        all = QGuiApplication::primaryScreen()->virtualGeometry();
    return all;
}

// A shape grows by its own kind: the tool may change while it is being dragged.
bool isTwoPointKind(int kind)
{
    return (kind >= AnnotationShape::Rect && kind <= AnnotationShape::Line) ||
           kind == AnnotationShape::Mosaic || kind == AnnotationShape::Blur;
}

bool isPathKind(int kind)
{
    return kind == AnnotationShape::Brush || kind == AnnotationShape::Highlight;
}

bool isFontTool(int tool)
{
    return tool == kTextTool || tool == kCounterTool || tool == kStampTool;
}

QString hintFor(int mode)
{
    switch (mode) {
    case CaptureOverlay::Gif:
        return CaptureOverlay::tr("Drag a region to record", "overlay.hint.gif");
    case CaptureOverlay::Scroll:
        return CaptureOverlay::tr("Drag a region for scrolling capture", "overlay.hint.scroll");
    default:
        return CaptureOverlay::tr("Drag a region to capture", "overlay.hint.region");
    }
}

const char* kPanelSheet =
    "#captureToolbar, #captureAnnToolbar, #captureSidePanel {"
    " background: rgba(28, 28, 32, 235); border: 1px solid rgba(76, 194, 255, 70);"
    " border-radius: 8px; }"
    "#captureSidePanel QLabel { color: #e4e4e7; }"
    "#captureToolbar QToolButton, #captureAnnToolbar QToolButton {"
    " background: transparent; border: none; border-radius: 6px; }"
    "#captureToolbar QToolButton:hover, #captureAnnToolbar QToolButton:hover {"
    " background: rgba(255, 255, 255, 28); }"
    "#captureAnnToolbar QToolButton:checked { background: rgba(76, 194, 255, 80); }";

} // namespace

CaptureOverlay::CaptureOverlay(const QPixmap& frozen, QWidget* parent)
    : CaptureOverlay(frozen, QRect(), parent)
{}

CaptureOverlay::CaptureOverlay(const QPixmap& frozen, const QRect& geometry, QWidget* parent)
    : QWidget(parent), m_frozenPixmap(frozen),
      m_frozenImage(frozen.toImage().convertToFormat(QImage::Format_RGB32))
{
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_MouseTracking);
    setObjectName(QStringLiteral("captureOverlay"));
    setWindowTitle(tr("Zelmor capture", "overlay.title"));
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setStyleSheet(QLatin1String(kPanelSheet));
    setGeometry(geometry.isNull() || geometry.isEmpty() ? unitedScreens() : geometry);

    m_panels = new OverlayPanels(this);
    m_panels->setPenWidth(m_penWidth);
    m_panels->setFontSize(m_fontSize);
    connect(m_panels, &OverlayPanels::actionTriggered, this, &CaptureOverlay::onAction);
    connect(m_panels, &OverlayPanels::toolPicked, this, &CaptureOverlay::setTool);
    connect(m_panels, &OverlayPanels::colourPicked, this,
            [this](const QColor& c) { m_penColor = c; });
    connect(m_panels, &OverlayPanels::penWidthEdited, this, [this](int w) { m_penWidth = w; });
    connect(m_panels, &OverlayPanels::fontSizeEdited, this, [this](int s) { m_fontSize = s; });
    m_panels->showTool(m_tool);
    collectWindowRects();

    QTimer::singleShot(0, this, [this] {
        raise();
        activateWindow();
        setFocus();
        takeKeyboard(kGrabTries);
        repaint();
    });
}

// On X11 the grab fails until the window is viewable, which can take a moment after show().
void CaptureOverlay::takeKeyboard(int triesLeft)
{
    if (m_keyboardGrabbed || (m_hasSelection && !m_selecting) || triesLeft <= 0) return;
    QWindow* window = windowHandle();
    if (window && window->isExposed() && window->setKeyboardGrabEnabled(true)) {
        m_keyboardGrabbed = true;
        return;
    }
    QTimer::singleShot(25, this, [this, triesLeft] { takeKeyboard(triesLeft - 1); });
}

void CaptureOverlay::collectWindowRects()
{
    m_windowRects.clear();
    for (const service::capture::WindowInfo& w : service::capture::listTopLevelWindows())
        if (!w.minimized && !w.rect.isEmpty())
            m_windowRects.append(w.rect.translated(-geometry().topLeft()));
}

void CaptureOverlay::collectSnapRects()
{
    m_snapRects.clear();
    if (const QScreen* primary = QGuiApplication::primaryScreen())
        m_snapRects.append(primary->virtualGeometry());
    for (const QScreen* s : QGuiApplication::screens())
        m_snapRects.append(s->geometry());
    for (const service::capture::WindowInfo& w : service::capture::listTopLevelWindows())
        if (!w.minimized && !w.rect.isEmpty()) m_snapRects.append(w.rect);
}

void CaptureOverlay::setMode(int mode)
{
    m_mode = mode;
    setCursor(Qt::CrossCursor);
}

void CaptureOverlay::selectWholeImage()
{
    m_selection = QRect(QPoint(0, 0), m_frozenPixmap.size());
    m_hasSelection = true;
    renewSelectionImage();
    if (m_tool == kSelectTool) setTool(kSelectTool);
    m_panels->setButtonsForMode(m_mode);
    placePanels();
}

QPixmap CaptureOverlay::croppedPixmap() const
{
    if (m_selection.isNull()) return QPixmap();
    QPixmap cropped = m_frozenPixmap.copy(m_selection);
    if (!m_annotations.isEmpty() && !m_selectionImage.isNull()) {
        QPainter painter(&cropped);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const AnnotationShape& shape : m_annotations)
            service::capture::paintAnnotation(painter, m_selectionImage, shape);
    }
    return cropped;
}

void CaptureOverlay::renewSelectionImage()
{
    m_selectionImage =
        m_frozenImage.copy(m_selection).convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void CaptureOverlay::refreshSidePanel()
{
    const QString size =
        m_copiedColorText.isEmpty()
            ? QStringLiteral("<span style='color:#4CC2FF;'>%1</span> × "
                             "<span style='color:#4CC2FF;'>%2</span>")
                  .arg(m_selection.width())
                  .arg(m_selection.height())
            : QStringLiteral("<span style='color:#FF5252;'>%1</span>").arg(m_copiedColorText);
    QPixmap preview;
    if (!m_selection.isNull()) {
        QRect around(0, 0, 30, 30);
        around.moveCenter(m_selection.center());
        preview = m_frozenPixmap.copy(around).scaled(120, 120, Qt::KeepAspectRatioByExpanding,
                                                     Qt::FastTransformation);
    }
    m_panels->refreshSidePanel(
        size, QStringLiteral("X %1, Y %2").arg(m_selection.x()).arg(m_selection.y()), preview);
}

void CaptureOverlay::placePanels()
{
    m_panels->place(m_selection, size(), m_mode == Region);
}

void CaptureOverlay::setTool(int tool)
{
    m_tool = tool;
    m_panels->showTool(tool);
    setCursor(tool == kTextTool ? Qt::IBeamCursor : Qt::CrossCursor);
    update();
}

void CaptureOverlay::undo()
{
    if (!m_annotations.isEmpty()) m_redoStack.append(m_annotations.takeLast());
    update();
}

void CaptureOverlay::redo()
{
    if (!m_redoStack.isEmpty()) m_annotations.append(m_redoStack.takeLast());
    update();
}

// --- Selection -------------------------------------------------------------------------

void CaptureOverlay::beginSelection(const QPoint& pos)
{
    m_selecting = true;
    m_hasSelection = false;
    m_dragStart = m_dragCurrent = m_mousePos = pos;
    m_selection = QRect(pos, QSize(0, 0));
    collectSnapRects();
    m_annotations.clear();
    m_redoStack.clear();
    m_drawing = false;
    m_panels->hideAll();
    setCursor(Qt::CrossCursor);
}

// Shapes are relative to the selection's corner; moving the corner shifts them back so
// that they stay where they are on the desktop.
void CaptureOverlay::changeSelection(const QRect& rect)
{
    const QPointF delta = QPointF(rect.topLeft()) - m_annotationAnchor;
    if (!delta.isNull()) {
        for (AnnotationShape& shape : m_annotations)
            for (QPointF& p : shape.points)
                p -= delta;
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
    m_annotations.clear();
    m_redoStack.clear();
    m_drawing = false;
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
        commitInlineEdit(true);
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
    if (idle && m_hasSelection && m_mode == Region && !m_drawing) {
        updateCursorAt(pos);
    } else if (m_moving) {
        QRect moved = m_moveStartRect.translated(pos - m_movePressPos);
        if (const QScreen* primary = QGuiApplication::primaryScreen())
            moved = moved.intersected(primary->virtualGeometry());
        changeSelection(moved.width() < 4 || moved.height() < 4 ? m_selection : moved);
    } else if (m_resizeHandle >= 0) {
        changeSelection(resizedByHandle(m_resizeStartRect, m_resizeHandle, pos));
    } else if (m_drawing) {
        extendShape(pos);
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
    } else if (m_drawing) {
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
    if (!m_annotations.isEmpty()) {
        AnnotationShape& last = m_annotations.last();
        const int kind = last.kind;
        if (kind == AnnotationShape::Text || kind == AnnotationShape::Counter ||
            kind == AnnotationShape::Stamp) {
            last.fontSize = qBound(8, last.fontSize + step, 96);
            m_fontSize = last.fontSize;
            m_panels->setFontSize(m_fontSize);
            if (m_inlineEdit && m_inlineEdit->isVisible()) {
                QFont font = m_inlineEdit->font();
                font.setPointSize(qBound(8, m_fontSize, 40));
                font.setWeight(QFont::Bold);
                m_inlineEdit->setFont(font);
            }
        } else if (kind == AnnotationShape::Mosaic || kind == AnnotationShape::Blur) {
            last.blockSize = qBound(2, last.blockSize + step, 64);
        } else {
            last.width = qBound(1, last.width + step, 40);
            m_penWidth = last.width;
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
        if (m_drawing) {
            m_drawing = false;
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
    if (m_hasSelection && event->matches(QKeySequence::Redo)) {
        redo();
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
    QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
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
    m_drawing = true;
    m_currentShape = AnnotationShape();
    m_currentShape.color = m_penColor;
    m_currentShape.width = m_penWidth;
    m_currentShape.fontSize = m_fontSize;
    m_currentShape.kind = service::capture::shapeKindForTool(m_tool);
    const QPointF point = pos - m_selection.topLeft();
    m_currentShape.points = {point};
    if (isTwoPointKind(m_currentShape.kind)) m_currentShape.points.append(point);
    if (m_currentShape.kind == AnnotationShape::Mosaic) m_currentShape.blockSize = 12;
    if (m_currentShape.kind == AnnotationShape::Blur) m_currentShape.blockSize = 16;
}

void CaptureOverlay::extendShape(const QPoint& pos)
{
    const QPointF point = pos - m_selection.topLeft();
    if (isTwoPointKind(m_currentShape.kind)) {
        m_currentShape.points[1] = point;
    } else if (isPathKind(m_currentShape.kind)) {
        m_currentShape.points.append(point);
    } else {
        m_currentShape.points[0] = point;
    }
}

void CaptureOverlay::finishShape(const QPoint& pos)
{
    m_drawing = false;
    if (m_currentShape.kind == AnnotationShape::Text) {
        openInlineEdit(pos, QString(), kTextTool);
        return;
    }
    if (m_currentShape.kind == AnnotationShape::Stamp) {
        openInlineEdit(pos, QStringLiteral("✓"), kStampTool);
        return;
    }
    if (m_currentShape.kind == AnnotationShape::Counter) {
        m_currentShape.text = QString::number(m_nextCounter++);
        commitShape();
        return;
    }
    const QList<QPointF>& points = m_currentShape.points;
    if (points.size() >= 2) {
        const QPointF d = points.last() - points.first();
        if (std::hypot(d.x(), d.y()) < 4.0) return; // a slip of the hand, or a closed loop
    }
    commitShape();
}

void CaptureOverlay::commitShape()
{
    m_annotations.append(m_currentShape);
    m_redoStack.clear();
    update();
}

void CaptureOverlay::openInlineEdit(const QPoint& pos, const QString& text, int tool)
{
    if (!m_inlineEdit) {
        m_inlineEdit = new QTextEdit(this);
        m_inlineEdit->setObjectName(QStringLiteral("inlineTextEdit"));
        m_inlineEdit->setAcceptRichText(false);
        m_inlineEdit->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_inlineEdit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_inlineEdit->installEventFilter(this);
    }
    m_inlineEditTool = tool;
    m_inlineEdit->setPlainText(text);
    QFont font = m_inlineEdit->font();
    font.setPointSize(qBound(8, m_fontSize, 40));
    font.setWeight(QFont::Bold);
    m_inlineEdit->setFont(font);
    m_inlineEdit->setStyleSheet(
        QStringLiteral("QTextEdit { background: rgba(255,255,255,228); color: %1;"
                       " border: 1px solid rgba(76,194,255,210); border-radius: 4px;"
                       " padding: 4px 6px; selection-background-color: rgba(76,194,255,120); }")
            .arg(m_penColor.name()));
    m_inlineEdit->setFixedSize(240, 90);
    m_inlineEdit->move(qMax(0, qMin(pos.x(), width() - 240)),
                       qMax(0, qMin(pos.y(), height() - 90)));
    if (tool == kStampTool) {
        m_inlineEdit->selectAll();
    } else {
        m_inlineEdit->moveCursor(QTextCursor::End);
    }
    m_inlineEdit->show();
    m_inlineEdit->raise();
    m_inlineEdit->setFocus();
}

void CaptureOverlay::commitInlineEdit(bool accept)
{
    if (!m_inlineEdit || !m_inlineEdit->isVisible()) return;
    const QString text = accept ? m_inlineEdit->toPlainText().trimmed() : QString();
    m_inlineEdit->hide();
    const int tool = m_inlineEditTool;
    m_inlineEditTool = 0;
    if (!text.isEmpty()) {
        m_currentShape.text = text;
        commitShape();
    }
    setFocus();
    update();
    setTool(tool);
}

bool CaptureOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_inlineEdit) return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && (key->modifiers() & Qt::ControlModifier)) {
            commitInlineEdit(true);
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            commitInlineEdit(false);
            return true;
        }
        if (enter && m_inlineEditTool == kStampTool) {
            commitInlineEdit(true);
            return true;
        }
    } else if (event->type() == QEvent::FocusOut && m_inlineEdit->isVisible()) {
        commitInlineEdit(true);
    }
    return QWidget::eventFilter(watched, event);
}

// --- Outcomes --------------------------------------------------------------------------

void CaptureOverlay::finishWith(void (CaptureOverlay::*signal)(const QPixmap&))
{
    Q_EMIT(this->*signal)(croppedPixmap());
    close();
}

void CaptureOverlay::onAction(int action)
{
    switch (action) {
    case OverlayPanels::Copy:
        finishWith(&CaptureOverlay::copyRequested);
        break;
    case OverlayPanels::Pin:
        finishWith(&CaptureOverlay::pinRequested);
        break;
    case OverlayPanels::Save:
        finishWith(&CaptureOverlay::saveRequested);
        break;
    case OverlayPanels::Ocr:
        finishWith(&CaptureOverlay::ocrRequested);
        break;
    case OverlayPanels::Translate:
        finishWith(&CaptureOverlay::translateRequested);
        break;
    case OverlayPanels::AiAnnotate:
        finishWith(&CaptureOverlay::aiAnnotateRequested);
        break;
    case OverlayPanels::Undo:
        undo();
        break;
    case OverlayPanels::Redo:
        redo();
        break;
    case OverlayPanels::Reselect:
        reselect();
        break;
    case OverlayPanels::Cancel:
        Q_EMIT cancelled();
        close();
        break;
    case OverlayPanels::Start:
        if (m_selection.isNull()) return;
        if (m_mode == Gif)
            Q_EMIT recordStartRequested(m_selection, m_panels->durationSecs(), m_panels->fps());
        if (m_mode == Scroll) Q_EMIT scrollStartRequested(m_selection);
        close();
        break;
    }
}

// --- Painting --------------------------------------------------------------------------

QImage CaptureOverlay::renderFrame() const
{
    if (m_frame.size() != size()) m_frame = QImage(size(), QImage::Format_RGB32);
    m_frame.fill(Qt::black);
    OverlayScene scene;
    scene.frozenImage = &m_frozenImage;
    scene.frozenPixmap = &m_frozenPixmap;
    scene.selectionImage = &m_selectionImage;
    scene.annotations = &m_annotations;
    scene.currentShape = m_drawing ? &m_currentShape : nullptr;
    scene.hint = hintFor(m_mode);
    scene.selection = m_selection;
    scene.hoverRect = m_hoverRect;
    scene.mousePos = m_mousePos;
    scene.mode = m_mode;
    scene.selecting = m_selecting;
    scene.hasSelection = m_hasSelection;
    scene.hoverPressed = m_hoverPressed;
    scene.altHeld = m_altHeld;
    scene.hexColor = m_hexColor;
    QPainter painter(&m_frame);
    paintOverlayFrame(painter, size(), scene);
    return m_frame;
}

// The frame is composed off screen, as one picture, and then blitted.
void CaptureOverlay::paintEvent(QPaintEvent*)
{
    const QImage& frame = renderFrame();
    QPainter painter(this);
    painter.drawImage(0, 0, frame);
}

} // namespace zelmor::widget
