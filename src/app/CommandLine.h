#pragma once

namespace zelmor::app {

inline constexpr char kApplicationVersion[] = "1.0.20";

// The first switch of a hotkey action in argv[1..] ("--capture-region", …), compared byte for
// byte, or null. Later switches and unknown arguments are ignored.
const char* firstCaptureSwitch(int argc, const char* const* argv);

// True when "--quit" is given: ask a running Zelmor to quit, and start none.
bool quitRequested(int argc, const char* const* argv);

// Answers "--help" or "--version" to the user and returns true when one is given.
// It runs before the application object, so that it needs no display.
bool printInformation(int argc, const char* const* argv);

} // namespace zelmor::app
