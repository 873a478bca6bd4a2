#include "CommandLine.h"

#include "platform/Console.h"

#include <cstring>
#include <initializer_list>
#include <string>

namespace zelmor::app {

namespace {

constexpr char kUsage[] = "Usage: zelmor [option]\n"
                          "Screenshot tool in the notification area. A second start shows the "
                          "running one.\n\n"
                          "  --capture-region      open the region capture once started\n"
                          "  --capture-fullscreen  capture all screens once started\n"
                          "  --quit                ask the running one to quit, and wait for it\n"
                          "  -h, --help            show this help and exit\n"
                          "  -v, --version         show the version and exit\n";

bool given(int argc, const char* const* argv, std::initializer_list<const char*> names)
{
    for (int i = 1; i < argc; ++i)
        for (const char* name : names)
            if (std::strcmp(argv[i], name) == 0) return true;
    return false;
}

} // namespace

const char* firstCaptureSwitch(int argc, const char* const* argv)
{
    for (int i = 1; i < argc; ++i)
        for (const char* known : {"--capture-region", "--capture-fullscreen"})
            if (std::strcmp(argv[i], known) == 0) return known;
    return nullptr;
}

bool quitRequested(int argc, const char* const* argv)
{
    return given(argc, argv, {"--quit"});
}

bool printInformation(int argc, const char* const* argv)
{
    if (given(argc, argv, {"--help", "-h"}))
        platform::showCommandLineText(kUsage);
    else if (given(argc, argv, {"--version", "-v"}))
        platform::showCommandLineText(
            (std::string("zelmor ") + kApplicationVersion + '\n').c_str());
    else
        return false;
    return true;
}

} // namespace zelmor::app
