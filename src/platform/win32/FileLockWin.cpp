#include "../FileLock.h"
#include "WinText.h"

#include <windows.h>

#include <chrono>

namespace zelmor::platform {

FileLock::FileLock(const std::string& path, int waitMs)
{
    const HANDLE file = CreateFileW(win32::widen(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    m_handle = reinterpret_cast<std::intptr_t>(file);
    // Polled rather than blocking, so that a stopped holder cannot hang the caller. A Sleep
    // lasts at least a clock tick (15.6 ms by default), so the wait is measured, not counted.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
    for (;;) {
        OVERLAPPED whole{};
        if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, MAXDWORD,
                       MAXDWORD, &whole)) {
            m_locked = true;
            return;
        }
        if (GetLastError() != ERROR_LOCK_VIOLATION || std::chrono::steady_clock::now() >= deadline)
            return;
        Sleep(1);
    }
}

FileLock::~FileLock()
{
    // Closing the handle releases the lock.
    if (m_handle != -1) CloseHandle(reinterpret_cast<HANDLE>(m_handle));
}

} // namespace zelmor::platform
