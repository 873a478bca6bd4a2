#include "PinManager.h"

#include "widget/PinWindow.h"

#include <QCursor>
#include <QPixmap>

namespace zelmor::manager {

PinManager::PinManager(QObject* parent) : QObject(parent) {}

PinManager::~PinManager()
{
    const QList<widget::PinWindow*> pins = m_pins;
    m_pins.clear();
    for (widget::PinWindow* pin : pins) {
        disconnect(pin, nullptr, this, nullptr);
        delete pin;
    }
}

void PinManager::addPin(const QPixmap& pixmap)
{
    if (pixmap.isNull()) return;
    auto* pin = new widget::PinWindow(pixmap, nullptr);
    // Only the pointer is compared: the pin is no longer a PinWindow when this runs.
    connect(pin, &QObject::destroyed, this, [this, pin] {
        if (m_pins.removeOne(pin)) Q_EMIT pinsChanged();
    });
    m_pins.append(pin);
    pin->show();
    Q_EMIT pinsChanged();
}

void PinManager::hideAll()
{
    for (widget::PinWindow* pin : std::as_const(m_pins))
        pin->hide();
}

void PinManager::restoreAll()
{
    for (widget::PinWindow* pin : std::as_const(m_pins))
        pin->show();
}

void PinManager::clearAll()
{
    const QList<widget::PinWindow*> pins = m_pins;
    m_pins.clear();
    for (widget::PinWindow* pin : pins) {
        pin->close();
        pin->deleteLater();
    }
    if (!pins.isEmpty()) Q_EMIT pinsChanged();
}

void PinManager::toggleClickThroughAtCursor()
{
    const QPoint cursor = QCursor::pos();
    for (widget::PinWindow* pin : std::as_const(m_pins)) {
        if (pin->frameGeometry().contains(cursor)) {
            pin->toggleClickThrough();
            return;
        }
    }
}

} // namespace zelmor::manager
