#include "AutoScroller.h"

#include "ScreenGrabber.h"
#include "platform/Input.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QThread>

namespace zelmor::service::capture {

namespace {

constexpr int kWheelNotch = -120; // one notch down
constexpr int kPollMs = 25;
// A page that has not begun to move this long after a notch is at its end.
constexpr qint64 kMoveWaitMs = 800;
// Smooth scrolling animates a notch over several repaints; a page still changing after this
// long (a video, a spinner) is taken as it is.
constexpr qint64 kSettleCapMs = 1500;

} // namespace

AutoScroller::AutoScroller(const QRect& region, platform::Point pointer, Interrupted interrupted)
    : m_region(region), m_savedPointer(platform::cursorPosition()),
      m_interrupted(std::move(interrupted))
{
    platform::setCursorPosition(pointer);
}

AutoScroller::~AutoScroller()
{
    if (m_savedPointer) platform::setCursorPosition(*m_savedPointer);
}

platform::Point AutoScroller::pointerTarget(const QRect& region)
{
    const QPoint centre = region.center();
    const QScreen* screen = QGuiApplication::screenAt(centre);
    if (!screen) return {centre.x(), centre.y()};
    // Qt keeps a screen's origin and scales what lies beyond it.
    const QPoint origin = screen->geometry().topLeft();
    const QPoint physical = origin + (centre - origin) * screen->devicePixelRatio();
    return {physical.x(), physical.y()};
}

QImage AutoScroller::first()
{
    m_last = settle(grab());
    return m_last;
}

QImage AutoScroller::next()
{
    if (!platform::sendMouseWheel(kWheelNotch)) return {};
    QElapsedTimer waited;
    waited.start();
    QImage frame;
    do {
        if (!pause()) return {};
        frame = grab();
    } while ((frame.isNull() || frame == m_last) && waited.elapsed() < kMoveWaitMs);
    if (frame.isNull() || frame == m_last) return {};
    m_last = settle(frame);
    return m_last;
}

QImage AutoScroller::grab() const
{
    return grabRegion(m_region).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage AutoScroller::settle(QImage frame)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < kSettleCapMs) {
        if (!pause()) return {};
        QImage again = grab();
        if (again.isNull()) continue;
        if (again == frame) break;
        frame = std::move(again);
    }
    return frame;
}

// False when interrupted.
bool AutoScroller::pause()
{
    if (m_interrupted()) return false;
    QThread::msleep(kPollMs);
    return !m_interrupted();
}

} // namespace zelmor::service::capture
