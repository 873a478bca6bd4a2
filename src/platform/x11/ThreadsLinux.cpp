#include "platform/Threads.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelmor::platform {

void lowerCurrentThreadPriority()
{
    // On Linux the nice value belongs to the thread named by its id, not to the process.
    constexpr int kBackgroundNice = 10;
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), kBackgroundNice);
}

} // namespace zelmor::platform
