#pragma once

#include <cstddef>

namespace zelmor::platform {

// Moves standard input to a private descriptor that no child process inherits and points
// standard input at the null device, so that no program started from here reads the client's
// requests; readStandardInput() then reads the private one. False when that fails and
// standard input is unchanged.
bool reserveStandardInput();

// Blocks until standard input has bytes, ends, or interruptStandardInputRead() is called.
// Returns the count read (at most `size`), 0 at end of input or on interruption, -1 on error.
long readStandardInput(char* buffer, std::size_t size);

// Makes the read blocked now, or else the next one, return 0. Safe from any thread.
void interruptStandardInputRead();

// Moves standard output to a private descriptor that no child process inherits and points
// standard output at standard error, so that a stray write anywhere in the process cannot
// corrupt a protocol stream.
// Returns the private descriptor, or -1 when that fails and standard output is unchanged.
int reserveStandardOutput();

// A write to a client that has closed its end fails with an error instead of ending the
// process.
void survivePeerClosingOutput();

} // namespace zelmor::platform
