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

void setReadingThread(HANDLE thread)
{
    std::lock_guard<std::mutex> lock(readerLock);
    if (readingThread) CloseHandle(readingThread);
    readingThread = thread;
}

} // namespace

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
        if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, want, &read, nullptr))
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
    return reserved;
}

// Windows has no signal for a closed pipe: the write fails with an error already.
void survivePeerClosingOutput() {}

} // namespace zelmor::platform
