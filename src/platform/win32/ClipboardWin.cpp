// Windows serves the toolkit's clipboard to a program without focus: nothing direct is needed.

#include "../Clipboard.h"

namespace zelmor::platform {

ClipboardRoute clipboardRoute()
{
    return ClipboardRoute::Toolkit;
}

bool setClipboardContent(const std::vector<ClipboardFormat>&)
{
    return false;
}

std::vector<std::string> clipboardTypes()
{
    return {};
}

std::optional<std::string> clipboardData(const std::string&)
{
    return std::nullopt;
}

} // namespace zelmor::platform
