#pragma once

#include <QObject>
#include <QString>

class QSocketNotifier;

namespace zelmor::widget {

// Whether see-through window areas show the desktop behind them, which on X11 needs a
// compositing manager; without one they show black, so windows paint without them. Follows
// the compositor starting and stopping.
class Translucency : public QObject
{
    Q_OBJECT
public:
    static Translucency& instance();

    bool available() const { return m_available; }
    // A style sheet radius: rounded corners only where the desktop shows through them, since
    // without a compositor the corners outside the rounding show black.
    QString cornerRadius(int pixels) const;

Q_SIGNALS:
    void availableChanged(bool available);

private:
    Translucency();
    void recheck();

    bool m_available = false;
    QSocketNotifier* m_notifier = nullptr;
};

} // namespace zelmor::widget
