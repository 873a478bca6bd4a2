#include "../Elevation.h"

#include "WinText.h"

#include <windows.h>

#include <shellapi.h>

namespace zelmor::platform {

bool elevationAvailable()
{
    return true;
}

Elevation relaunchElevated(const std::string& programUtf8)
{
    const std::wstring program = win32::widen(programUtf8);
    const auto code = reinterpret_cast<INT_PTR>(
        ShellExecuteW(nullptr, L"runas", program.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    // ShellExecuteW reports failure, a refused prompt among them, as a value of 32 or less.
    return code > 32 ? Elevation::Started : Elevation::Refused;
}

} // namespace zelmor::platform
