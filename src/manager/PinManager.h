#pragma once

#include <QList>
#include <QObject>

class QPixmap;

namespace zelmor::widget {
class PinWindow;
}

namespace zelmor::manager {

// Owns the open pins, in the order they were made. A pin closes itself; the list follows
// through the pin's destruction.
class PinManager : public QObject
{
    Q_OBJECT
public:
    explicit PinManager(QObject* parent = nullptr);
    ~PinManager() override;

    const QList<widget::PinWindow*>& pins() const { return m_pins; }

public Q_SLOTS:
    // A null pixmap is ignored.
    void addPin(const QPixmap& pixmap);
    // Hidden pins stay in the list.
    void hideAll();
    void restoreAll();
    void clearAll();
    // Toggles the first shown pin under the pointer; the pointer alone reaches a pin that
    // takes no clicks.
    void toggleClickThroughAtCursor();

Q_SIGNALS:
    void pinsChanged();

private:
    QList<widget::PinWindow*> m_pins;
};

} // namespace zelmor::manager
