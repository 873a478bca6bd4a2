#pragma once

#include <QString>

namespace zelmor::core {

inline constexpr qint64 kLogRotateAbove = 262144;
inline constexpr qint64 kLogKeepTail = 131072;

// Appends one time-stamped line to zelmor.log in the data folder; safe from any thread.
// A line that cannot be written is dropped: logging never fails the caller.
void writeLogLine(const QString& line);

// Elapsed time since the first call, for the start-up sequence.
void startupTrace(const char* stage);

QString logFilePath();

// Halves a log past kLogRotateAbove bytes, keeping whole lines of the newer half.
void rotateLogFile(const QString& path);

// The per-user data folder, created user-only on first use.
QString dataDirectory();

} // namespace zelmor::core
