#include "StripSurface.h"

#include "platform/Session.h"

#include <QAbstractButton>
#include <QLayout>
#include <QSocketNotifier>
#include <QWidget>

namespace zelmor::widget {

namespace {
constexpr int kRepaintMs = 100;
} // namespace

StripSurface::StripSurface(QWidget* strip) : QObject(strip), m_strip(strip)
{
    m_repaintTimer.setInterval(kRepaintMs);
    connect(&m_repaintTimer, &QTimer::timeout, this, &StripSurface::repaint);
}

StripSurface::~StripSurface() = default;

bool StripSurface::setShown(bool shown)
{
    if (!shown) {
        const bool wasShown = m_surface != nullptr;
        m_repaintTimer.stop();
        if (m_notifier) {
            // It may be the one whose signal runs now.
            m_notifier->setEnabled(false);
            m_notifier->deleteLater();
            m_notifier = nullptr;
        }
        m_surface.reset();
        m_shown = QImage();
        return wasShown;
    }
    if (m_surface) return true;
    if (!platform::desktopPlacesWindows()) return false;
    if (m_strip->layout()) m_strip->layout()->activate();
    const QPoint place = m_strip->pos();
    m_surface = platform::makeScreenStrip(
        {place.x(), place.y()}, [this](const platform::StripPointer& p) { onPointer(p); });
    if (!m_surface) return false;
    m_notifier = new QSocketNotifier(m_surface->descriptor(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &StripSurface::serve);
    repaint();
    m_repaintTimer.start();
    return true;
}

void StripSurface::repaint()
{
    const QImage image =
        m_strip->grab().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image == m_shown) return;
    m_shown = image;
    m_surface->show(reinterpret_cast<const std::uint32_t*>(image.constBits()), image.width(),
                    image.height(), int(image.bytesPerLine() / 4),
                    qMax(1, qRound(image.devicePixelRatio())));
}

void StripSurface::serve()
{
    if (m_surface && !m_surface->dispatch()) setShown(false);
}

QAbstractButton* StripSurface::buttonAt(const platform::Point& position) const
{
    QWidget* child = m_strip->childAt(position.x, position.y);
    auto* button = qobject_cast<QAbstractButton*>(child);
    return button && button->isEnabled() ? button : nullptr;
}

void StripSurface::onPointer(const platform::StripPointer& pointer)
{
    using platform::StripPointer;
    if (pointer.kind == StripPointer::Press) {
        m_pressed = buttonAt(pointer.position);
        if (m_pressed) m_pressed->setDown(true);
        return;
    }
    if (!m_pressed || pointer.kind == StripPointer::Motion) return;
    QAbstractButton* button = m_pressed;
    m_pressed = nullptr;
    button->setDown(false);
    // Clicked once the desktop's events are served: the click may hide the strip, which ends
    // the surface whose events are being served now.
    if (pointer.kind == StripPointer::Release && buttonAt(pointer.position) == button)
        QMetaObject::invokeMethod(button, &QAbstractButton::click, Qt::QueuedConnection);
}

} // namespace zelmor::widget
