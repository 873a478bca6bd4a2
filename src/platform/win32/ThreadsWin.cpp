#include "../Threads.h"

#include <windows.h>

namespace zelmor::platform {

void lowerCurrentThreadPriority()
{
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
}

} // namespace zelmor::platform
