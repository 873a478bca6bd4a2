#include "CommandLine.h"

#include "core/HotkeyActions.h"
#include "platform/Console.h"

#include <cstring>
#include <initializer_list>
#include <string>

namespace zelmor::app {

namespace {

// Options in a column, their help beside them.
std::string usage()
{
    const auto line = [](std::string option, const char* help) {
        option.resize(30, ' ');
        return "  " + option + help + '\n';
    };
    std::string text = "Usage: zelmor [option]\n"
                       "Screenshot tool in the notification area. A second start passes its "
                       "option\nto the running one, which performs it, or else shows itself.\n\n";
    for (const core::HotkeyAction& action : core::kHotkeyActions)
        text += line(action.option, action.help);
    text += line("--quit", "ask the running one to quit, and wait for it");
    text += line("-h, --help", "show this help and exit");
    return text + line("-v, --version", "show the version and exit");
}

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
        if (const core::HotkeyAction* action = core::hotkeyActionForOption(argv[i]))
            return action->option;
    return nullptr;
}

bool quitRequested(int argc, const char* const* argv)
{
    return given(argc, argv, {"--quit"});
}

bool printInformation(int argc, const char* const* argv)
{
    if (given(argc, argv, {"--help", "-h"}))
        platform::showCommandLineText(usage().c_str());
    else if (given(argc, argv, {"--version", "-v"}))
        platform::showCommandLineText(
            (std::string("zelmor ") + kApplicationVersion + '\n').c_str());
    else
        return false;
    return true;
}

} // namespace zelmor::app
