#pragma once

#include "platform/Geometry.h"

#include <QImage>
#include <QRect>

#include <functional>
#include <optional>

namespace zelmor::service::capture {

// Scrolls the page under a region for the user, one wheel notch at a time, and hands out the
// region's picture once the page has come to rest after each notch. It holds the pointer over
// the region while it lives and puts it back where it was when it dies. Runs on one thread.
class AutoScroller
{
public:
    using Interrupted = std::function<bool()>;

    // The pointer goes to `pointer`, in physical pixels (see pointerTarget); `interrupted` is
    // asked between grabs and ends any wait at once.
    AutoScroller(const QRect& region, platform::Point pointer, Interrupted interrupted);
    ~AutoScroller();
    AutoScroller(const AutoScroller&) = delete;
    AutoScroller& operator=(const AutoScroller&) = delete;

    // The region's centre in physical pixels; read on the GUI thread, which owns the screens.
    static platform::Point pointerTarget(const QRect& region);

    // The region as it stands, once it is at rest.
    QImage first();
    // One notch down and the region at rest after it; null when the page did not move within
    // the wait (its end, or it takes no wheel) or when interrupted.
    QImage next();

private:
    QImage grab() const;
    // Grabs until two grabs in a row are equal, or until the cap; null when interrupted.
    QImage settle(QImage frame);
    bool pause();

    QRect m_region;
    std::optional<platform::Point> m_savedPointer;
    Interrupted m_interrupted;
    QImage m_last;
};

} // namespace zelmor::service::capture
