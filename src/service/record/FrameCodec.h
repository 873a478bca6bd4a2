#pragma once

#include <QByteArray>

// The fast lossless codec that keeps recorded frames small in memory. One implementation is
// linked in: zstd where the system offers it, Qt's zlib elsewhere.
namespace zelmor::service::record {

QByteArray packBytes(const char* data, qsizetype size);

// Fills exactly `size` bytes at `out`; false when `packed` does not hold that many.
bool unpackBytes(const QByteArray& packed, char* out, qsizetype size);

} // namespace zelmor::service::record
