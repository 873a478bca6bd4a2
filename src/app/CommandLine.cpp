#include "CommandLine.h"

#include <cstring>
#include <initializer_list>

namespace zelmor::app {

const char* firstCaptureSwitch(int argc, const char* const* argv)
{
    for (int i = 1; i < argc; ++i)
        for (const char* known : {"--capture-region", "--capture-fullscreen"})
            if (std::strcmp(argv[i], known) == 0) return known;
    return nullptr;
}

} // namespace zelmor::app
