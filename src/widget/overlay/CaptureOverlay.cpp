#include "CaptureOverlay.h"

#include "InlineTextEdit.h"
#include "OverlayPainter.h"
#include "OverlayPanels.h"
#include "OverlayTools.h"
#include "platform/Session.h"
#include "service/capture/AnnotationPainter.h"
#include "service/capture/WindowList.h"

#include <QBackingStore>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWindow>

namespace zelmor::widget {

using service::capture::AnnotationShape;
using namespace overlay;

namespace {

// The window must be mapped and viewable before the server grants the grab; a busy desktop
// can take seconds to get there, and keys pressed meanwhile would go elsewhere.
constexpr int kGrabTries = 200; // 25 ms apart

QRect unitedScreens()
{
    QRect all;
    for (const QScreen* s : QGuiApplication::screens())
        all = all.united(s->geometry());
    if (all.isEmpty() && QGuiApplication::primaryScreen())
        all = QGuiApplication::primaryScreen()->virtualGeometry();
    return all;
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
    : CaptureOverlay(parent)
{
    load(frozen, geometry);
}

CaptureOverlay::CaptureOverlay(QWidget* parent) : QWidget(parent)
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
    setGeometry(unitedScreens());

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
    if (!isWindow()) return;
    ensurePolished();
    create(); // the native window, so that showing only maps it
    warmUpPainting();
}

// The window's pixel buffer, and the painter's and the fonts' caches, are made now instead of
// on the first frame after a hotkey.
void CaptureOverlay::warmUpPainting()
{
    QBackingStore* store = backingStore();
    if (!store) return;
    store->resize(size());
    store->beginPaint(QRegion(rect()));
    {
        QPainter painter(store->paintDevice());
        paintOverlayFrame(painter, size(), scene());
    }
    store->endPaint();
}

void CaptureOverlay::load(const QPixmap& frozen, const QRect& geometry)
{
    const bool wholeDesktop = geometry.isNull() || geometry.isEmpty();
    if (wholeDesktop && platform::desktopPlacesWindows())
        spreadOverScreens(frozen);
    else
        loadPart(frozen, wholeDesktop ? unitedScreens() : geometry);
}

void CaptureOverlay::loadPart(const QPixmap& frozen, const QRect& geometry)
{
    m_frozenPixmap = frozen;
    m_frozenImage = frozen.toImage().convertToFormat(QImage::Format_RGB32);
    setGeometry(geometry);
    // A Wayland compositor places windows itself; full screen is how a window covers an output.
    if (platform::desktopPlacesWindows()) setWindowState(windowState() | Qt::WindowFullScreen);
    collectWindowRects();
}

void CaptureOverlay::spreadOverScreens(const QPixmap& frozen)
{
    const QRect all = unitedScreens();
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (int i = 0; i < screens.size(); ++i) {
        CaptureOverlay* part = i == 0 ? this : new CaptureOverlay;
        const QRect place = screens[i]->geometry().translated(-all.topLeft());
        part->m_desktopOffset = place.topLeft();
        part->loadPart(frozen.copy(place), screens[i]->geometry());
        // Full screen on this output, not on the one the compositor would pick.
        if (QWindow* window = part->windowHandle()) window->setScreen(screens[i]);
        if (part != this) adoptPart(part);
    }
    if (screens.isEmpty()) loadPart(frozen, all);
}

void CaptureOverlay::adoptPart(CaptureOverlay* part)
{
    part->m_lead = this;
    m_parts.append(part);
    for (auto outcome : {&CaptureOverlay::copyRequested, &CaptureOverlay::pinRequested,
                         &CaptureOverlay::saveRequested, &CaptureOverlay::ocrRequested,
                         &CaptureOverlay::translateRequested, &CaptureOverlay::aiAnnotateRequested})
        connect(part, outcome, this, outcome);
    connect(part, &CaptureOverlay::cancelled, this, &CaptureOverlay::cancelled);
    connect(part, &CaptureOverlay::recordStartRequested, this,
            &CaptureOverlay::recordStartRequested);
    connect(part, &CaptureOverlay::scrollStartRequested, this,
            &CaptureOverlay::scrollStartRequested);
    connect(part, &CaptureOverlay::autoScrollStartRequested, this,
            &CaptureOverlay::autoScrollStartRequested);
}

// The first window of a group to end ends the others.
void CaptureOverlay::closeEvent(QCloseEvent* event)
{
    QWidget::closeEvent(event);
    for (const QPointer<CaptureOverlay>& part : std::as_const(m_parts))
        if (part) part->close();
    if (m_lead) m_lead->close();
}

void CaptureOverlay::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_shownBefore) return;
    m_shownBefore = true;
    for (const QPointer<CaptureOverlay>& part : std::as_const(m_parts))
        if (part) {
            part->show();
            part->repaintAtOutputScale(kGrabTries);
        }
    repaintAtOutputScale(kGrabTries);
    QTimer::singleShot(0, this, [this] {
        raise();
        activateWindow();
        setFocus();
        takeKeyboard(kGrabTries);
    });
}

// A Wayland window learns its output's scale only once the compositor has put it there, after
// the first frame; the widget, which took the scale from its screen beforehand, would not paint
// again, so that output kept a frame of the wrong scale, and sway then went on showing the
// desktop instead of the overlay on an output of another scale.
void CaptureOverlay::repaintAtOutputScale(int triesLeft)
{
    QWindow* window = windowHandle();
    if (!window || !platform::desktopPlacesWindows() || triesLeft <= 0) return;
    if (window->isExposed() && window->devicePixelRatio() == devicePixelRatioF()) {
        update();
        return;
    }
    QTimer::singleShot(25, this, [this, triesLeft] { repaintAtOutputScale(triesLeft - 1); });
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

void CaptureOverlay::setHint(const QString& hint)
{
    for (const QPointer<CaptureOverlay>& part : std::as_const(m_parts))
        if (part) part->setHint(hint);
    m_hint = hint;
}

void CaptureOverlay::setMode(int mode)
{
    for (const QPointer<CaptureOverlay>& part : std::as_const(m_parts))
        if (part) part->setMode(mode);
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
    if (!m_shapes.annotations().isEmpty() && !m_selectionImage.isNull()) {
        QPainter painter(&cropped);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const AnnotationShape& shape : m_shapes.annotations())
            service::capture::paintAnnotation(painter, m_selectionImage, shape);
    }
    return cropped;
}

QTextEdit* CaptureOverlay::inlineEdit() const
{
    return m_inlineEdit;
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
    m_shapes.undo();
    update();
}

void CaptureOverlay::redo()
{
    m_shapes.redo();
    update();
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
            Q_EMIT recordStartRequested(m_selection.translated(m_desktopOffset),
                                        m_panels->durationSecs(), m_panels->fps());
        if (m_mode == Scroll) Q_EMIT scrollStartRequested(m_selection.translated(m_desktopOffset));
        close();
        break;
    case OverlayPanels::AutoScroll:
        if (m_selection.isNull() || m_mode != Scroll) return;
        Q_EMIT autoScrollStartRequested(m_selection.translated(m_desktopOffset));
        close();
        break;
    }
}

// --- Painting --------------------------------------------------------------------------

OverlayScene CaptureOverlay::scene() const
{
    OverlayScene scene;
    scene.frozenImage = &m_frozenImage;
    scene.frozenPixmap = &m_frozenPixmap;
    scene.selectionImage = &m_selectionImage;
    scene.annotations = &m_shapes.annotations();
    scene.currentShape = m_shapes.shapeInHand();
    scene.hint = m_hint.isEmpty() ? hintFor(m_mode) : m_hint;
    scene.selection = m_selection;
    scene.hoverRect = m_hoverRect;
    scene.mousePos = m_mousePos;
    scene.mode = m_mode;
    scene.selecting = m_selecting;
    scene.hasSelection = m_hasSelection;
    scene.hoverPressed = m_hoverPressed;
    scene.altHeld = m_altHeld;
    scene.hexColor = m_hexColor;
    return scene;
}

QImage CaptureOverlay::renderFrame() const
{
    QImage frame(size(), QImage::Format_RGB32);
    frame.fill(Qt::black);
    QPainter painter(&frame);
    paintOverlayFrame(painter, size(), scene());
    return frame;
}

// Straight into the window's backing store, without a second copy of the desktop.
void CaptureOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (!m_frozenImage.rect().contains(rect())) painter.fillRect(rect(), Qt::black);
    paintOverlayFrame(painter, size(), scene());
}

} // namespace zelmor::widget
