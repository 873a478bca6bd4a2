// Standard input and output on POSIX descriptors (Windows: GetStdHandle, ReadFile and
// CancelSynchronousIo).

#include "../StandardStreams.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace zelmor::platform {

namespace {

// A blocked read() cannot be woken portably, so reads wait in poll() on standard input and
// on this pipe together; one byte in the pipe wakes them.
struct WakePipe
{
    int fds[2] = {-1, -1};
    WakePipe()
    {
        if (pipe(fds) != 0) return;
        for (int fd : fds)
            fcntl(fd, F_SETFD, FD_CLOEXEC);
        fcntl(fds[1], F_SETFL, O_NONBLOCK);
    }
};

WakePipe& wakePipe()
{
    static WakePipe pipe;
    return pipe;
}

int inputFd = STDIN_FILENO; // set once, before any reader starts

} // namespace

bool reserveStandardInput()
{
    const int reserved = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    if (reserved < 0) return false;
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool moved = null >= 0 && dup2(null, STDIN_FILENO) == STDIN_FILENO;
    if (null >= 0) close(null);
    if (!moved) {
        close(reserved);
        return false;
    }
    inputFd = reserved;
    return true;
}

long readStandardInput(char* buffer, std::size_t size)
{
    const int wakeFd = wakePipe().fds[0];
    pollfd fds[2] = {{inputFd, POLLIN, 0}, {wakeFd, POLLIN, 0}};
    for (;;) {
        fds[0].revents = fds[1].revents = 0;
        const int ready = poll(fds, wakeFd >= 0 ? 2 : 1, -1);
        if (ready < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (fds[1].revents & POLLIN) {
            char token;
            return read(wakeFd, &token, 1) == 1 ? 0 : -1;
        }
        if (fds[0].revents & POLLNVAL) return -1;
        // POLLHUP with bytes still buffered is delivered by read() before it reports 0.
        if (fds[0].revents & (POLLIN | POLLHUP | POLLERR)) {
            const ssize_t n = read(inputFd, buffer, size);
            if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            return n;
        }
    }
}

void interruptStandardInputRead()
{
    const int fd = wakePipe().fds[1];
    if (fd < 0) return;
    const char token = 1;
    // A full pipe already holds a wake-up, so a failed write loses nothing.
    [[maybe_unused]] const ssize_t written = write(fd, &token, 1);
}

int reserveStandardOutput()
{
    const int reserved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (reserved < 0) return -1;
    if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        close(reserved);
        return -1;
    }
    return reserved;
}

void survivePeerClosingOutput()
{
    signal(SIGPIPE, SIG_IGN);
}

} // namespace zelmor::platform
