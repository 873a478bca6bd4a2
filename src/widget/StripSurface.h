#pragma once

#include "platform/ScreenStrip.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

class QAbstractButton;
class QSocketNotifier;
class QWidget;

namespace zelmor::widget {

// Shows a strip widget as a picture that the desktop puts where the widget stands, where the
// desktop would place its window elsewhere (Wayland); clicks on the picture press the strip's
// buttons.
class StripSurface : public QObject
{
    Q_OBJECT
public:
    explicit StripSurface(QWidget* strip);
    ~StripSurface() override;

    // True while the picture shows the strip, whose own window then stays hidden; false where
    // the window serves.
    bool setShown(bool shown);

private:
    void repaint();
    void serve();
    void onPointer(const platform::StripPointer& pointer);
    QAbstractButton* buttonAt(const platform::Point& position) const;

    QWidget* m_strip = nullptr;
    std::unique_ptr<platform::ScreenStrip> m_surface;
    QSocketNotifier* m_notifier = nullptr;
    QTimer m_repaintTimer; // the strip's texts change without telling
    QImage m_shown;
    QPointer<QAbstractButton> m_pressed;
};

} // namespace zelmor::widget
