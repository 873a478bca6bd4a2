#include "../StandardStreams.h"

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <mutex>

namespace zelmor::platform {

namespace {

std::atomic<bool> interrupted{false};
std::mutex readerLock;
HANDLE readingThread = nullptr; // under readerLock; a duplicate, closed by the reader
HANDLE input = nullptr;         // the reserved standard input; set once, before any reader

// CreateProcess with inheritance on (as QProcess starts every program) hands each inheritable
// handle to the child: the protocol's pipes must not be among them.
void keepFromChildren(HANDLE handle)
{
    if (handle && handle != INVALID_HANDLE_VALUE)
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
}

void setReadingThread(HANDLE thread)
{
    std::lock_guard<std::mutex> lock(readerLock);
    if (readingThread) CloseHandle(readingThread);
    readingThread = thread;
}

} // namespace

bool reserveStandardInput()
{
    const HANDLE original = GetStdHandle(STD_INPUT_HANDLE);
    if (!original || original == INVALID_HANDLE_VALUE) return false;
    const HANDLE null = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (null == INVALID_HANDLE_VALUE) return false;
    if (!SetStdHandle(STD_INPUT_HANDLE, null)) {
        CloseHandle(null);
        return false;
    }
    keepFromChildren(original);
    input = original;
    return true;
}

// A blocking ReadFile is woken from another thread with CancelSynchronousIo.
long readStandardInput(char* buffer, std::size_t size)
{
    HANDLE self = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &self, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    setReadingThread(self);
    long result = 0;
    if (!interrupted.exchange(false)) {
        DWORD read = 0;
        const DWORD want = size > MAXDWORD ? MAXDWORD : DWORD(size);
        if (ReadFile(input ? input : GetStdHandle(STD_INPUT_HANDLE), buffer, want, &read, nullptr))
            result = long(read);
        else if (GetLastError() == ERROR_OPERATION_ABORTED)
            interrupted = false;
        else if (GetLastError() != ERROR_BROKEN_PIPE)
            result = -1;
    }
    setReadingThread(nullptr);
    return result;
}

void interruptStandardInputRead()
{
    interrupted = true;
    // A read that begins between the reader's look at the flag and a cancel is caught by a
    // later try; the reader clears the flag once its read was cancelled.
    for (int tries = 0; tries < 50 && interrupted; ++tries) {
        {
            std::lock_guard<std::mutex> lock(readerLock);
            if (readingThread) CancelSynchronousIo(readingThread);
        }
        Sleep(2);
    }
}

int reserveStandardOutput()
{
    const int reserved = _dup(_fileno(stdout));
    if (reserved < 0) return -1;
    if (_dup2(_fileno(stderr), _fileno(stdout)) != 0) {
        _close(reserved);
        return -1;
    }
    _setmode(reserved, _O_BINARY);
    for (const int fd : {reserved, _fileno(stdout), _fileno(stderr)})
        keepFromChildren(reinterpret_cast<HANDLE>(_get_osfhandle(fd)));
    keepFromChildren(GetStdHandle(STD_OUTPUT_HANDLE));
    keepFromChildren(GetStdHandle(STD_ERROR_HANDLE));
    return reserved;
}

// Windows has no signal for a closed pipe: the write fails with an error already.
void survivePeerClosingOutput() {}

} // namespace zelmor::platform
