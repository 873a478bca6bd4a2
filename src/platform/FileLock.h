#pragma once

#include <cstdint>
#include <string>

namespace zelmor::platform {

// An exclusive lock that every process taking it on the same path (UTF-8) respects, held from
// construction to destruction. A holder that never lets go is waited for at most `waitMs`
// milliseconds by the clock; locked() then says false.
class FileLock
{
public:
    FileLock(const std::string& path, int waitMs);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool locked() const { return m_locked; }

private:
    std::intptr_t m_handle = -1; // a descriptor, or a Windows handle
    bool m_locked = false;
};

} // namespace zelmor::platform
