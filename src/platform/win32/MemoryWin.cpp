#include "../Memory.h"

#include <windows.h>

namespace zelmor::platform {

std::uint64_t availableMemoryBytes()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    if (!GlobalMemoryStatusEx(&status)) return 0;
    return status.ullAvailPhys ? status.ullAvailPhys : status.ullTotalPhys;
}

} // namespace zelmor::platform
