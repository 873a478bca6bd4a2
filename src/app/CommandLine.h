#pragma once

namespace zelmor::app {

// The first of "--capture-region" and "--capture-fullscreen" in argv[1..], compared byte
// for byte, or null. Later switches and unknown arguments are ignored.
const char* firstCaptureSwitch(int argc, const char* const* argv);

} // namespace zelmor::app
