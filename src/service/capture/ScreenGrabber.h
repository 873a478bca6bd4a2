#pragma once

#include <QList>
#include <QPixmap>
#include <QRect>
#include <QString>

namespace zelmor::service::capture {

// One monitor as the desktop reports it, in physical pixels.
struct MonitorEntry
{
    QString deviceName;
    QRect rect;
};

QList<MonitorEntry> collectMonitors();

// Canvas of all screens in Qt's logical coordinates, one tile per screen scaled into its
// geometry. A screen that cannot be grabbed stays black; null when none can.
QPixmap grabAllScreens();

// Canvas of the whole desktop in physical pixels, unscaled.
QPixmap grabVirtualDesktop();

// One screen by its index in QGuiApplication::screens(), in physical pixels.
QPixmap grabScreen(int index);
// Done ahead of a grab that must be quick.
void prepareScreenGrab();

// One logical rectangle of grabAllScreens(), clipped to the canvas.
QPixmap grabRegion(const QRect& rect);

// One physical rectangle of the desktop; null when the desktop cannot be read.
QPixmap grabMonitorRect(const QRect& rect);

} // namespace zelmor::service::capture
