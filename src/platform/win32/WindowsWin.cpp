// Top-level windows through EnumWindows and the window functions of user32.

#include "../Windows.h"
#include "WinText.h"
#include "WindowHandleWin.h"

#include <windows.h>

namespace zelmor::platform {

using win32::fromHwnd;
using win32::toHwnd;

namespace {

WindowRecord recordOf(HWND window)
{
    WindowRecord record;
    if (!window || !IsWindow(window)) return record;
    record.handle = fromHwnd(window);
    wchar_t text[512] = {};
    const int titleLength = GetWindowTextW(window, text, int(std::size(text)));
    record.title = win32::narrow(text, titleLength);
    const int classLength = GetClassNameW(window, text, int(std::size(text)));
    record.className = win32::narrow(text, classLength);
    RECT r{};
    if (GetWindowRect(window, &r))
        record.frame = {r.left, r.top, r.right - r.left, r.bottom - r.top};
    record.minimized = IsIconic(window) != FALSE;
    record.maximized = IsZoomed(window) != FALSE;
    record.visible = IsWindowVisible(window) != FALSE;
    DWORD pid = 0;
    GetWindowThreadProcessId(window, &pid);
    record.processId = pid;
    return record;
}

BOOL CALLBACK addWindow(HWND window, LPARAM data)
{
    reinterpret_cast<std::vector<WindowRecord>*>(data)->push_back(recordOf(window));
    return TRUE;
}

} // namespace

// EnumWindows walks the top-level windows in stacking order, top first.
std::vector<WindowRecord> listTopLevelWindows()
{
    std::vector<WindowRecord> windows;
    EnumWindows(addWindow, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

WindowRecord foregroundWindow()
{
    return recordOf(GetForegroundWindow());
}

bool windowManagementAvailable()
{
    return true;
}

WindowHandle windowAt(Point point)
{
    const HWND hit = WindowFromPoint(POINT{point.x, point.y});
    return hit ? fromHwnd(GetAncestor(hit, GA_ROOT)) : 0;
}

std::string windowProcessName(WindowHandle window)
{
    DWORD pid = 0;
    if (!GetWindowThreadProcessId(toHwnd(window), &pid) || !pid) return {};
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid);
    if (!process) return {};
    wchar_t path[MAX_PATH] = {};
    DWORD length = MAX_PATH;
    const bool ok = QueryFullProcessImageNameW(process, 0, path, &length) != FALSE;
    CloseHandle(process);
    if (!ok) return {};
    std::wstring full(path, length);
    const std::size_t slash = full.find_last_of(L"\\/");
    return win32::narrow(full.c_str() + (slash == std::wstring::npos ? 0 : slash + 1));
}

bool activateWindow(WindowHandle window)
{
    const HWND hwnd = toHwnd(window);
    if (!IsWindow(hwnd)) return false;
    if (IsIconic(hwnd)) ShowWindow(hwnd, SW_RESTORE);
    return SetForegroundWindow(hwnd) != FALSE;
}

namespace {

// A minimized window is left in the background; the other states bring it forward.
bool showWindowAs(WindowHandle window, int command)
{
    const HWND hwnd = toHwnd(window);
    if (!IsWindow(hwnd)) return false;
    ShowWindow(hwnd, command);
    if (command != SW_MINIMIZE) SetForegroundWindow(hwnd);
    return true;
}

} // namespace

bool minimizeWindow(WindowHandle window)
{
    return showWindowAs(window, SW_MINIMIZE);
}

bool maximizeWindow(WindowHandle window)
{
    return showWindowAs(window, SW_MAXIMIZE);
}

bool restoreWindow(WindowHandle window)
{
    return showWindowAs(window, SW_RESTORE);
}

bool closeWindow(WindowHandle window)
{
    const HWND hwnd = toHwnd(window);
    return IsWindow(hwnd) && PostMessageW(hwnd, WM_CLOSE, 0, 0) != FALSE;
}

// Windows has no window manager that must let go of a hidden window first.
bool waitUntilUnmanaged(WindowHandle window, int)
{
    return IsWindow(toHwnd(window)) != FALSE;
}

} // namespace zelmor::platform
