#pragma once

namespace zelmor::platform {

// Shows a command-line answer (help, version) to whoever started the program: on its
// standard output; on Windows, where the windowed program has none unless it is redirected,
// in the console it was started from, or else in a message box.
void showCommandLineText(const char* text);

} // namespace zelmor::platform
