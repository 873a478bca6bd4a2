#pragma once

#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>

#include <memory>

namespace zelmor::platform {
class InputObserver;
}

namespace zelmor::service::gesture {

// Turns a right-button drag anywhere on the desktop into a named action. The button is only
// watched: the window under the pointer still gets its click and its context menu.
class MouseGestureService : public QObject
{
    Q_OBJECT
public:
    explicit MouseGestureService(QObject* parent = nullptr);
    ~MouseGestureService() override;

    void setEnabled(bool on);
    bool isEnabled() const { return m_enabled; }
    bool isTracking() const { return m_tracking; }
    // Whether the desktop lets the drags be seen at all.
    bool observing() const { return m_hook != nullptr; }
    // The sampled path of the drag under way.
    const QList<QPoint>& points() const { return m_points; }

Q_SIGNALS:
    void gestureDetected(const QString& action);

private:
    // The direction text of the step from `a` to `b`; empty below 8 pixels. The texts name
    // the opposite of the physical direction, and the gesture table is written in them.
    static QString sectorText(const QPoint& a, const QPoint& b);
    static QString gestureText(const QList<QPoint>& points);
    void handle(unsigned message, const QPoint& point);
    void onMove(const QPoint& point);
    void onRelease();

    std::unique_ptr<platform::InputObserver> m_hook; // null when off or without a source
    bool m_enabled = false;
    bool m_tracking = false;
    QPoint m_startPos;
    QList<QPoint> m_points;
};

} // namespace zelmor::service::gesture
