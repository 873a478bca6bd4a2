#include "../Console.h"

#include <cstdio>

namespace zelmor::platform {

void showCommandLineText(const char* text)
{
    std::fputs(text, stdout);
    std::fflush(stdout);
}

} // namespace zelmor::platform
