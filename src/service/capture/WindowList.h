#pragma once

#include <QList>
#include <QRect>
#include <QString>

namespace zelmor::service::capture {

struct WindowInfo
{
    quintptr handle = 0;
    QString title;
    QString className;
    QRect rect; // outer rectangle in desktop pixels
    bool minimized = false;
};

// Visible, titled top-level windows with an area, top of the stack first.
QList<WindowInfo> listTopLevelWindows();

// The focused top-level window; a null handle and rectangle when there is none.
WindowInfo foregroundWindow();

} // namespace zelmor::service::capture
