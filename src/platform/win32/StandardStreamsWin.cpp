#include "../StandardStreams.h"

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace zelmor::platform {

namespace {

std::atomic<bool> interrupted{false};
std::atomic<HANDLE> readingThread{nullptr};

} // namespace

// A blocking ReadFile is woken from another thread with CancelSynchronousIo.
long readStandardInput(char* buffer, std::size_t size)
{
    HANDLE self = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &self, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    readingThread = self;
    long result = 0;
    DWORD read = 0;
    if (!interrupted.exchange(false)) {
        const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
        const DWORD want = size > MAXDWORD ? MAXDWORD : DWORD(size);
        if (ReadFile(in, buffer, want, &read, nullptr))
            result = long(read);
        else if (GetLastError() == ERROR_OPERATION_ABORTED)
            result = 0, interrupted = false;
        else
            result = GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;
    }
    readingThread = nullptr;
    if (self) CloseHandle(self);
    return result;
}

void interruptStandardInputRead()
{
    interrupted = true;
    if (HANDLE thread = readingThread.load()) CancelSynchronousIo(thread);
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
