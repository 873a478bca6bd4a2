#include "../Console.h"

#include "WinText.h"

#include <windows.h>

#include <cstring>

namespace zelmor::platform {

namespace {

bool writeAll(HANDLE handle, const char* text)
{
    DWORD written = 0;
    const DWORD size = DWORD(std::strlen(text));
    return WriteFile(handle, text, size, &written, nullptr) && written == size;
}

} // namespace

void showCommandLineText(const char* text)
{
    // Redirected to a file or a pipe: the handle is there although the program is windowed.
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output && output != INVALID_HANDLE_VALUE && writeAll(output, text)) return;
    // Started from a console, which does not wait for a windowed program: the text follows the
    // prompt that is already back, on a line of its own.
    if (AttachConsole(ATTACH_PARENT_PROCESS)) {
        const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, 0, nullptr);
        const bool shown =
            console != INVALID_HANDLE_VALUE && writeAll(console, "\r\n") && writeAll(console, text);
        if (console != INVALID_HANDLE_VALUE) CloseHandle(console);
        FreeConsole();
        if (shown) return;
    }
    MessageBoxW(nullptr, win32::widen(text).c_str(), L"Zelmor", MB_OK | MB_ICONINFORMATION);
}

} // namespace zelmor::platform
