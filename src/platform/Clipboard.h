#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zelmor::platform {

// How this process reaches the desktop's clipboard. X11 and Windows serve the toolkit's
// clipboard at any time. A Wayland compositor hands the selection to the focused program only,
// unless it offers a data-control protocol, through which the calls below reach it directly.
enum class ClipboardRoute { Toolkit, Direct, FocusOnly };
ClipboardRoute clipboardRoute();

struct ClipboardFormat
{
    std::string mimeType;
    std::string data;
};

// Replaces the clipboard's content with these formats of one datum, served for as long as this
// process runs or until another program copies. False when the desktop took none.
bool setClipboardContent(const std::vector<ClipboardFormat>& formats);

// The MIME types the clipboard holds now; empty when it holds nothing or cannot be read.
std::vector<std::string> clipboardTypes();

// The clipboard's content in one of its types; nullopt when it does not hold that type or its
// owner did not answer in time.
std::optional<std::string> clipboardData(const std::string& mimeType);

} // namespace zelmor::platform
