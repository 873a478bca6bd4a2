#pragma once

// A window as the platform interface numbers it and as user32 takes it.

#include "../Windows.h"

#include <windows.h>

#include <cstdint>

namespace zelmor::platform::win32 {

inline HWND toHwnd(WindowHandle handle)
{
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

inline WindowHandle fromHwnd(HWND window)
{
    return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(window));
}

} // namespace zelmor::platform::win32
