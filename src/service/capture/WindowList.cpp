#include "WindowList.h"

#include "platform/Windows.h"

namespace zelmor::service::capture {

namespace {

constexpr int kTitleLimit = 512;
constexpr int kClassNameLimit = 256;

QRect toRect(const platform::Rect& r)
{
    return QRect(r.x, r.y, r.width, r.height);
}

} // namespace

QList<WindowInfo> listTopLevelWindows()
{
    QList<WindowInfo> windows;
    for (const platform::WindowRecord& w : platform::listTopLevelWindows()) {
        const QString title = QString::fromStdString(w.title).left(kTitleLimit);
        if (!w.visible || w.minimized || title.isEmpty() || w.frame.isEmpty()) continue;
        windows.append({quintptr(w.handle), title,
                        QString::fromStdString(w.className).left(kClassNameLimit), toRect(w.frame),
                        w.minimized});
    }
    return windows;
}

WindowInfo foregroundWindow()
{
    const platform::WindowRecord w = platform::foregroundWindow();
    if (w.handle == 0) return {};
    WindowInfo info;
    info.handle = quintptr(w.handle);
    info.title = QString::fromStdString(w.title).left(kTitleLimit);
    info.rect = toRect(w.frame);
    info.minimized = w.minimized;
    return info;
}

} // namespace zelmor::service::capture
