#include "platform/Memory.h"

#include <cstdlib>
#include <fstream>
#include <string>

#include <unistd.h>

namespace zelmor::platform {

std::uint64_t availableMemoryBytes()
{
    std::ifstream meminfo("/proc/meminfo");
    const std::string key = "MemAvailable:";
    for (std::string line; std::getline(meminfo, line);)
        if (line.compare(0, key.size(), key) == 0)
            return std::strtoull(line.c_str() + key.size(), nullptr, 10) * 1024; // in KiB
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0 ? std::uint64_t(pages) * std::uint64_t(pageSize) : 0;
}

} // namespace zelmor::platform
