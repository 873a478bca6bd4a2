#include "PinWindow.h"

#include "Translucency.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "platform/Windows.h"
#include "service/capture/OutputFile.h"

#include <QContextMenuEvent>
#include <QCursor>
#include <QDrag>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QMoveEvent>
#include <QPainter>
#include <QSaveFile>
#include <QScreen>
#include <QUrl>

#include <memory>

namespace zelmor::widget {

namespace {

constexpr double kZoomIn = 1.1;
constexpr double kZoomOut = 0.9090909090909091;
constexpr int kDragOutDistance = 10;
constexpr int kToastMs = 3000;
constexpr int kReleaseWaitMs = 500;
constexpr int kPlacementWindowMs = 1000;
constexpr int kShadowMargin = 12;
constexpr QRgb kBorderColour = 0xFF2A2A30;

// The shadow is drawn see-through around the image, which only a compositor can show.
int shadowMarginFor(bool translucent)
{
    return translucent ? kShadowMargin : 0;
}

} // namespace

// "Clear all pins" may arrive while the pin's menu, its Save-as dialog or a drag still runs
// on the stack with objects of the pin's: its deletion waits until they have returned.
class PinWindow::NestedLoop
{
public:
    explicit NestedLoop(PinWindow* pin) : m_pin(pin) { ++m_pin->m_nestedLoops; }
    // Qt drops a second deleteLater() of an object, so the deferred deletion is queued anew.
    ~NestedLoop()
    {
        if (--m_pin->m_nestedLoops == 0 && m_pin->m_deleteAfterLoops)
            QMetaObject::invokeMethod(
                m_pin, [pin = m_pin] { delete pin; }, Qt::QueuedConnection);
    }
    NestedLoop(const NestedLoop&) = delete;
    NestedLoop& operator=(const NestedLoop&) = delete;

private:
    PinWindow* m_pin;
};

PinWindow::PinWindow(const QPixmap& pixmap, QWidget* parent)
    : QWidget(parent), m_sourcePixmap(pixmap), m_displayPixmap(pixmap)
{
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::SizeAllCursor);

    const Translucency& translucency = Translucency::instance();
    m_shadowMargin = shadowMarginFor(translucency.available());
    connect(&translucency, &Translucency::availableChanged, this, [this](bool translucent) {
        m_shadowMargin = shadowMarginFor(translucent);
        relayout();
    });
    fitToImage();
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) screen = QGuiApplication::primaryScreen();
    QRect frame(QPoint(), m_windowSize);
    if (screen) {
        // A window manager that has not published its work area yet reports none.
        const QRect area = screen->availableGeometry();
        frame.moveCenter(area.isEmpty() ? screen->geometry().center() : area.center());
    }
    placeAt(frame.topLeft());
}

QRect PinWindow::imageRect() const
{
    const int offset = m_shadowMargin + m_borderWidth;
    return QRect(QPoint(offset, offset), m_displayPixmap.size());
}

void PinWindow::updateDisplayPixmap()
{
    if (!qFuzzyCompare(m_zoom, 1.0) || m_rotation != 0 || m_flipH || m_flipV) {
        QTransform transform;
        transform.scale(m_zoom, m_zoom);
        transform.rotate(m_rotation);
        if (m_flipH) transform.scale(-1, 1);
        if (m_flipV) transform.scale(1, -1);
        m_displayPixmap = m_sourcePixmap.transformed(transform, Qt::SmoothTransformation);
    } else {
        m_displayPixmap = m_sourcePixmap;
    }
}

void PinWindow::fitToImage()
{
    updateDisplayPixmap();
    const int padding = 2 * (m_shadowMargin + m_borderWidth);
    m_windowSize = m_displayPixmap.size() + QSize(padding, padding);
    setFixedSize(m_windowSize);
}

void PinWindow::relayout()
{
    const QPoint centre = geometry().center();
    fitToImage();
    QRect frame(QPoint(), m_windowSize);
    frame.moveCenter(centre);
    placeAt(frame.topLeft());
    update();
}

void PinWindow::zoomBy(double factor)
{
    // Read at every step, so a changed limit applies to pins already open.
    const core::ConfigManager& config = core::ConfigManager::instance();
    const double next = qBound(config.pinMinZoom(), m_zoom * factor, config.pinMaxZoom());
    if (qFuzzyCompare(next, m_zoom)) return;
    m_zoom = next;
    relayout();
}

void PinWindow::toggleClickThrough()
{
    m_clickThrough = !m_clickThrough;
    setAttribute(Qt::WA_TransparentForMouseEvents, m_clickThrough);
    setCursor(m_clickThrough ? Qt::BlankCursor : Qt::SizeAllCursor);

    // On X11 the window manager takes the click for a managed window, so a click-through pin
    // is also unmanaged, and new flags apply only once the window is shown again (Windows:
    // WindowTransparentForInput alone).
    const bool wasVisible = isVisible();
    const QPoint position = pos();
    Qt::WindowFlags flags = windowFlags();
    flags.setFlag(Qt::WindowTransparentForInput, m_clickThrough);
    flags.setFlag(Qt::X11BypassWindowManagerHint, m_clickThrough);
    setWindowFlags(flags);
    placeAt(position);
    // Shown again before the manager has released it, the window would be taken back and
    // unmapped by the manager's late withdrawal.
    if (m_clickThrough) platform::waitUntilUnmanaged(winId(), kReleaseWaitMs);
    if (wasVisible) show();
    update();
}

void PinWindow::toggleClickThroughFromPin()
{
    toggleClickThrough();
    if (!m_clickThrough) return;
    // On X11 an input-transparent window gets no keys, so the pin's own F9 cannot bring it
    // back; the global hotkey can, with the pointer over the pin.
    const QString hotkey = core::ConfigManager::instance().hotkeyPinClickThrough();
    const QString body =
        hotkey.isEmpty() ? tr("Use \"Clear all pins\" in the tray menu to remove it.",
                              "pin.clickThrough.noHotkey")
                         : tr("Press %1 with the pointer over the pin to make it clickable again.",
                              "pin.clickThrough.body")
                               .arg(hotkey);
    core::notifyUser(tr("Click-through on", "pin.clickThrough.title"), body, kToastMs);
}

QMimeData* PinWindow::createDragMimeData() const
{
    const QByteArray png = core::imageToPng(m_displayPixmap.toImage());
    const QString path = core::makeTempFilePath(QStringLiteral("png"));
    if (png.isEmpty() || path.isEmpty()) return nullptr;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(png) != png.size()) {
        file.close();
        QFile::remove(path);
        return nullptr;
    }
    file.close();

    auto* data = new QMimeData;
    data->setData(QStringLiteral("application/x-qt-image"), png);
    data->setData(QStringLiteral("image/png"), png);
    data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

void PinWindow::startDragOut()
{
    const NestedLoop running(this);
    std::unique_ptr<QMimeData> data(createDragMimeData());
    if (!data) return;
    auto* drag = new QDrag(this);
    drag->setMimeData(data.release());
    drag->setPixmap(m_displayPixmap);
    drag->setHotSpot(QPoint(m_displayPixmap.width() / 2, m_displayPixmap.height() / 2));
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

void PinWindow::copyToClipboard()
{
    core::copyPixmapToClipboard(m_sourcePixmap);
}

void PinWindow::saveAs()
{
    const core::ConfigManager& config = core::ConfigManager::instance();
    const QString suggested = service::capture::makeOutputPath(
        config.outputDir(), config.fileNaming(), QStringLiteral("png"));
    // The pin may be closed while the dialog is open, so nothing of it is used afterwards.
    const QPixmap image = m_sourcePixmap;
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save pin", "pin.save.title"), suggested,
                                     tr("PNG image (*.png)", "pin.save.filter"));
    if (path.isEmpty()) return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    if (!image.save(&file, "PNG")) {
        file.cancelWriting();
        return;
    }
    file.commit();
}

void PinWindow::placeAt(const QPoint& topLeft)
{
    m_askedAt = topLeft; // first: a shown window hears of its own move at once
    move(topLeft);
}

void PinWindow::showEvent(QShowEvent* event)
{
    m_sinceShown.start();
    QWidget::showEvent(event);
}

// A window manager may place a new window by a policy of its own, ignoring the position the
// pin asked for; the pin asks once more, and then leaves the window where it is put.
void PinWindow::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    if (!m_sinceShown.isValid() || event->pos() == m_askedAt) return;
    const bool justShown = m_sinceShown.elapsed() < kPlacementWindowMs;
    m_sinceShown.invalidate();
    if (justShown) move(m_askedAt);
}

void PinWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomBy(kZoomIn);
        break;
    case Qt::Key_Minus:
        zoomBy(kZoomOut);
        break;
    case Qt::Key_0:
        m_rotation = 0;
        m_zoom = 1.0;
        m_flipH = false;
        m_flipV = false;
        relayout();
        break;
    case Qt::Key_R:
        m_rotation = (m_rotation + 90) % 360;
        relayout();
        break;
    case Qt::Key_F:
        if (event->modifiers() & Qt::ShiftModifier)
            m_flipV = !m_flipV;
        else
            m_flipH = !m_flipH;
        relayout();
        break;
    case Qt::Key_F9:
        toggleClickThroughFromPin();
        break;
    case Qt::Key_Escape:
        close();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PinWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        const QPoint global = event->globalPosition().toPoint();
        if (event->modifiers() & Qt::ShiftModifier) {
            m_dragOutArmed = true;
            m_dragOutStart = global;
            return;
        }
        if (imageRect().contains(event->position().toPoint())) {
            m_dragging = true;
            m_dragOffset = global - frameGeometry().topLeft();
            return;
        }
    }
    QWidget::mousePressEvent(event);
}

void PinWindow::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint global = event->globalPosition().toPoint();
    if (m_dragOutArmed) {
        if ((global - m_dragOutStart).manhattanLength() > kDragOutDistance) {
            m_dragOutArmed = false;
            startDragOut();
        }
        return;
    }
    if (m_dragging) {
        placeAt(global - m_dragOffset);
        return;
    }
    QWidget::mouseMoveEvent(event);
}

void PinWindow::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    m_dragOutArmed = false;
    QWidget::mouseReleaseEvent(event);
}

void PinWindow::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && imageRect().contains(event->position().toPoint())) {
        copyToClipboard();
        close();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

void PinWindow::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y();
    if (delta > 0)
        zoomBy(kZoomIn);
    else if (delta < 0)
        zoomBy(kZoomOut);
    else
        QWidget::wheelEvent(event);
}

bool PinWindow::event(QEvent* event)
{
    if (event->type() == QEvent::DeferredDelete && m_nestedLoops > 0) {
        m_deleteAfterLoops = true;
        return true;
    }
    return QWidget::event(event);
}

void PinWindow::contextMenuEvent(QContextMenuEvent* event)
{
    const NestedLoop running(this);
    QMenu menu(this);
    QAction* copy = menu.addAction(tr("Copy", "pin.menu.copy"));
    QAction* save = menu.addAction(tr("Save as...", "pin.menu.saveAs"));
    menu.addSeparator();
    QAction* through = menu.addAction(tr("Click-through (F9)", "pin.menu.clickThrough"));
    through->setCheckable(true);
    through->setChecked(m_clickThrough);
    menu.addSeparator();
    QAction* closeAction = menu.addAction(tr("Close", "pin.menu.close"));

    // Acting after the menu is gone: toggling click-through recreates the window.
    QAction* chosen = menu.exec(event->globalPos());
    if (chosen == copy)
        copyToClipboard();
    else if (chosen == save)
        saveAs();
    else if (chosen == through)
        toggleClickThroughFromPin();
    else if (chosen == closeAction)
        close();
}

void PinWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect image = imageRect();

    if (m_shadowMargin > 0) {
        // Four rings, each smaller and darker than the last, read as a soft shadow.
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < 4; ++i) {
            const int grow = m_shadowMargin - (m_shadowMargin / 4) * i;
            painter.setBrush(QColor(0, 0, 0, 30 + 18 * i));
            painter.drawRoundedRect(image.adjusted(-grow, -grow, grow, grow), 4.0, 4.0);
        }
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor::fromRgba(kBorderColour), m_borderWidth, Qt::SolidLine));
        painter.drawRect(image.adjusted(0, 0, -1, -1));
    } else {
        // Every pixel opaque: an antialiased line would leave half-transparent, black edges.
        painter.fillRect(rect(), QColor::fromRgba(kBorderColour));
    }

    painter.drawPixmap(image.topLeft(), m_displayPixmap);

    if (m_clickThrough) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(76, 194, 255, 160), 2.0, Qt::SolidLine));
        painter.drawRoundedRect(QRectF(rect().adjusted(0, 0, -1, -1)), 6.0, 6.0);
    }
}

} // namespace zelmor::widget
