#include "FrameCodec.h"

#include <cstring>

namespace zelmor::service::record {

// zlib's fastest level, where no zstd is at hand.
QByteArray packBytes(const char* data, qsizetype size)
{
    return qCompress(reinterpret_cast<const uchar*>(data), size, 1);
}

bool unpackBytes(const QByteArray& packed, char* out, qsizetype size)
{
    const QByteArray bytes = qUncompress(packed);
    if (bytes.size() != size) return false;
    std::memcpy(out, bytes.constData(), size_t(size));
    return true;
}

} // namespace zelmor::service::record
