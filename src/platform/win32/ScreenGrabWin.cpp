// Screen capture through GDI: the monitors from EnumDisplayMonitors, the pixels from the
// screen's device context with BitBlt (CAPTUREBLT, so layered windows are included) into a
// 32-bit top-down DIB section.

#include "../Pixels.h"
#include "../ScreenGrab.h"
#include "WinText.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

namespace zelmor::platform {

namespace {

BOOL CALLBACK addMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM data)
{
    MONITORINFOEXW info{};
    info.cbSize = sizeof(info);
    if (!GetMonitorInfoW(monitor, &info)) return TRUE;
    const RECT& r = info.rcMonitor;
    // The device name, as "\\.\DISPLAY1"; Qt names its screens after the monitor's model, so
    // screens are matched to monitors by place.
    reinterpret_cast<std::vector<MonitorInfo>*>(data)->push_back(
        {win32::narrow(info.szDevice), {r.left, r.top, r.right - r.left, r.bottom - r.top}});
    return TRUE;
}

// The whole rectangle as the screen shows it; false when the desktop cannot be read.
bool copyScreen(const Rect& r, std::uint32_t* dest, int destStride)
{
    HDC screen = GetDC(nullptr);
    if (!screen) return false;
    HDC memory = CreateCompatibleDC(screen);
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    format.bmiHeader.biWidth = r.width;
    format.bmiHeader.biHeight = -r.height; // top-down rows
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(screen, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    bool ok = false;
    if (memory && bitmap) {
        HGDIOBJ previous = SelectObject(memory, bitmap);
        ok = BitBlt(memory, 0, 0, r.width, r.height, screen, r.x, r.y, SRCCOPY | CAPTUREBLT);
        GdiFlush();
        SelectObject(memory, previous);
    }
    if (ok) {
        const auto* pixels = static_cast<const std::uint32_t*>(bits);
        for (int row = 0; row < r.height; ++row) {
            const std::uint32_t* in = pixels + std::size_t(row) * r.width;
            std::uint32_t* out = dest + std::size_t(row) * destStride;
            for (int col = 0; col < r.width; ++col)
                out[col] = in[col] | kOpaque;
        }
    }
    if (bitmap) DeleteObject(bitmap);
    if (memory) DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return ok;
}

} // namespace

std::vector<MonitorInfo> listMonitors()
{
    std::vector<MonitorInfo> monitors;
    EnumDisplayMonitors(nullptr, nullptr, addMonitor, reinterpret_cast<LPARAM>(&monitors));
    return monitors;
}

Rect virtualDesktopRect()
{
    return {GetSystemMetrics(SM_XVIRTUALSCREEN), GetSystemMetrics(SM_YVIRTUALSCREEN),
            GetSystemMetrics(SM_CXVIRTUALSCREEN), GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method)
{
    if (rect.isEmpty() || !dest || destStride < rect.width || method == GrabMethod::SharedMemory)
        return false;
    // Outside the desktop the picture is black; BitBlt leaves it so in the copied part too.
    fillBlack(dest, destStride, rect.width, rect.height);
    const Rect inside = intersected(rect, virtualDesktopRect());
    if (inside.isEmpty()) return true;
    std::uint32_t* target =
        dest + std::size_t(inside.y - rect.y) * destStride + (inside.x - rect.x);
    return copyScreen(inside, target, destStride);
}

bool sharedMemoryGrabAvailable()
{
    return false;
}

GrabBlocker screenGrabBlocker()
{
    return GrabBlocker::None;
}

bool grabsAreSinglePictures()
{
    return false;
}

PortalAnswer lastPortalAnswer()
{
    return PortalAnswer::Granted; // Windows has no portal
}

} // namespace zelmor::platform
