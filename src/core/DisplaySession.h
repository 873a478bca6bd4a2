#pragma once

namespace zelmor::core {

// The GUI writes down which display it runs on, so that the tool server, started by a
// console client with a bare environment, can find the user's desktop.
void recordDisplaySession();

// Tells the platform layer which display server the toolkit's platform plugin talks to.
void tellDisplayServer();

// Takes over the recorded display when this process has none; false when there is no record.
bool adoptRecordedDisplaySession();

} // namespace zelmor::core
