#pragma once

#include <QString>

namespace zelmor::core {

// The desktop's autostart entry that launches this executable at login:
// $XDG_CONFIG_HOME/autostart/zelmor.desktop.
QString autoStartEntryPath();

// Writes the entry (atomically) or removes it; false when the file could not be changed.
bool setAutoStartEntry(bool enabled);

} // namespace zelmor::core
