// Advisory file locks with flock() (Windows: LockFileEx on the same file).

#include "../FileLock.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace zelmor::platform {

FileLock::FileLock(const std::string& path, int waitMs)
{
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    m_handle = fd;
    if (fd < 0) return;
    // Polled rather than blocking, so that a stopped holder cannot hang the caller; a pause
    // may last longer than asked, so the wait is measured, not counted.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
    for (;;) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
            m_locked = true;
            return;
        }
        if ((errno != EWOULDBLOCK && errno != EINTR) ||
            std::chrono::steady_clock::now() >= deadline)
            return;
        usleep(1000);
    }
}

FileLock::~FileLock()
{
    if (m_handle >= 0) close(int(m_handle)); // releases the lock
}

} // namespace zelmor::platform
