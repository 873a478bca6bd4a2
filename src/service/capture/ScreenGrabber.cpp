#include "ScreenGrabber.h"

#include "platform/ScreenGrab.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>

#include <algorithm>

namespace zelmor::service::capture {

namespace {

platform::Rect toPlatform(const QRect& r)
{
    return {r.x(), r.y(), r.width(), r.height()};
}

QRect fromPlatform(const platform::Rect& r)
{
    return QRect(r.x, r.y, r.width, r.height);
}

// The monitor that shows the screen, found by its place: a screen's top-left corner is the
// same in Qt's pixels as in physical ones, its size is scaled.
const MonitorEntry* monitorForScreen(const QList<MonitorEntry>& monitors, const QScreen* screen,
                                     int index)
{
    std::vector<platform::Rect> rects;
    for (const MonitorEntry& m : monitors)
        rects.push_back(toPlatform(m.rect));
    const QRect physical(screen->geometry().topLeft(), screen->size() * screen->devicePixelRatio());
    const int found = platform::monitorForScreen(rects, toPlatform(physical), index);
    return found >= 0 ? &monitors[found] : nullptr;
}

// Qt's own grab, where the platform's failed; behind a blocker it would hand out black too.
QPixmap grabScreenWindow(QScreen* screen)
{
    if (platform::screenGrabBlocker() != platform::GrabBlocker::None) return {};
    return screen->grabWindow(0, 0, 0, -1, -1);
}

QRect unitedScreenGeometry(const QList<QScreen*>& screens)
{
    QRect all;
    for (const QScreen* s : screens)
        all = all.united(s->geometry());
    return all;
}

} // namespace

QList<MonitorEntry> collectMonitors()
{
    QList<MonitorEntry> monitors;
    for (const platform::MonitorInfo& m : platform::listMonitors())
        monitors.append({QString::fromStdString(m.name), fromPlatform(m.rect)});
    return monitors;
}

QPixmap grabMonitorRect(const QRect& rect)
{
    if (rect.width() <= 0 || rect.height() <= 0) return {};
    QImage image(rect.size(), QImage::Format_RGB32);
    if (image.isNull()) return {};
    auto* bits = reinterpret_cast<std::uint32_t*>(image.bits());
    if (!platform::grabDesktopRect(toPlatform(rect), bits, int(image.bytesPerLine() / 4)))
        return {};
    return QPixmap::fromImage(std::move(image));
}

QPixmap grabVirtualDesktop()
{
    QRect desktop = fromPlatform(platform::virtualDesktopRect());
    if (desktop.width() < 1 || desktop.height() < 1) {
        const QScreen* primary = QGuiApplication::primaryScreen();
        desktop =
            primary ? QRect(QPoint(0, 0), primary->size() * primary->devicePixelRatio()) : QRect();
    }
    if (desktop.width() < 1 || desktop.height() <= 0) return {};
    QImage canvas(desktop.size(), QImage::Format_RGB32);
    canvas.fill(Qt::black);
    auto* bits = reinterpret_cast<std::uint32_t*>(canvas.bits());
    const int stride = int(canvas.bytesPerLine() / 4);
    bool grabbed = false;
    for (const MonitorEntry& m : collectMonitors()) {
        const QRect target = m.rect.translated(-desktop.topLeft()).intersected(canvas.rect());
        if (target.isEmpty()) continue;
        grabbed |=
            platform::grabDesktopRect(toPlatform(target.translated(desktop.topLeft())),
                                      bits + std::size_t(target.y()) * stride + target.x(), stride);
    }
    // A canvas of nothing but black would pass for a capture; an unreadable desktop is a failure.
    if (!grabbed) return {};
    return QPixmap::fromImage(std::move(canvas));
}

QPixmap grabAllScreens()
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.isEmpty()) return grabVirtualDesktop();
    QRect all = unitedScreenGeometry(screens);
    if (all.isEmpty()) all = screens.first()->virtualGeometry();

    QPixmap canvas(all.size());
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    const QList<MonitorEntry> monitors = collectMonitors();
    bool grabbed = false;
    for (int i = 0; i < screens.size(); ++i) {
        QScreen* screen = screens[i];
        const MonitorEntry* monitor = monitorForScreen(monitors, screen, i);
        QPixmap tile = monitor ? grabMonitorRect(monitor->rect) : QPixmap();
        if (tile.isNull()) tile = grabScreenWindow(screen);
        if (tile.isNull()) continue;
        painter.drawPixmap(screen->geometry().translated(-all.topLeft()), tile);
        grabbed = true;
    }
    painter.end();
    if (!grabbed) return {};
    return canvas;
}

QPixmap grabScreen(int index)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (index < 0 || index >= screens.size()) return {};
    const QList<MonitorEntry> monitors = collectMonitors();
    if (const MonitorEntry* monitor = monitorForScreen(monitors, screens[index], index))
        return grabMonitorRect(monitor->rect);
    QPixmap tile = grabScreenWindow(screens[index]);
    tile.setDevicePixelRatio(1.0);
    return tile;
}

// One grab thrown away, once: the first one pays for setting up the display's shared memory.
// Without it (a desktop's screenshot portal, which may ask the user) nothing is prepared.
void prepareScreenGrab()
{
    static bool prepared = false;
    if (prepared || QGuiApplication::screens().isEmpty() || !platform::sharedMemoryGrabAvailable())
        return;
    prepared = true;
    grabScreen(0);
}

QPixmap grabRegion(const QRect& rect)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    QRect all = unitedScreenGeometry(screens);
    if (all.isEmpty() && QGuiApplication::primaryScreen())
        all = QGuiApplication::primaryScreen()->virtualGeometry();
    // Where one logical pixel is one physical pixel, as on X11 without scaling, only the
    // rectangle is read: the pixels are the same, at a fraction of the cost.
    const bool unscaled = std::all_of(screens.cbegin(), screens.cend(), [](const QScreen* s) {
        return s->devicePixelRatio() == 1.0;
    });
    if (unscaled && all.contains(rect)) {
        const QPixmap direct = grabMonitorRect(rect);
        if (direct.size() == rect.size()) return direct;
    }
    const QPixmap canvas = grabAllScreens();
    if (canvas.isNull()) return {};
    const QRect inside = rect.translated(-all.topLeft()).intersected(canvas.rect());
    // QPixmap::copy of an empty rectangle would hand back the whole canvas.
    if (inside.isEmpty()) return {};
    return canvas.copy(inside);
}

} // namespace zelmor::service::capture
