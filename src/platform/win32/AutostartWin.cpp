#include "../Autostart.h"

#include "WinText.h"

#include <windows.h>

namespace zelmor::platform {

namespace {

const wchar_t* const kRunKey = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
const wchar_t* const kValueName = L"Zelmor";

} // namespace

AutostartKind autostartKind()
{
    return AutostartKind::WindowsSignIn;
}

bool autostartEnabled()
{
    return RegGetValueW(HKEY_CURRENT_USER, kRunKey, kValueName, RRF_RT_REG_SZ, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

bool setAutostart(bool enabled, const std::string& programUtf8)
{
    if (!enabled) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, kValueName);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    // Quoted, so that a path with blanks is one program.
    const std::wstring command = L"\"" + win32::widen(programUtf8) + L"\"";
    return RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, kValueName, REG_SZ, command.c_str(),
                           DWORD((command.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

} // namespace zelmor::platform
