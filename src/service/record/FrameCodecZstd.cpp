#include "FrameCodec.h"

#include <zstd.h>

namespace zelmor::service::record {

namespace {

// The fastest regular level: screen content still shrinks by an order of magnitude.
constexpr int kLevel = 1;

// One context of each kind per thread: making one costs more than packing a small frame.
struct Contexts
{
    ZSTD_CCtx* pack = ZSTD_createCCtx();
    ZSTD_DCtx* unpack = ZSTD_createDCtx();
    ~Contexts()
    {
        ZSTD_freeCCtx(pack);
        ZSTD_freeDCtx(unpack);
    }
};

Contexts& contexts()
{
    thread_local Contexts mine;
    return mine;
}

} // namespace

QByteArray packBytes(const char* data, qsizetype size)
{
    QByteArray packed(qsizetype(ZSTD_compressBound(size_t(size))), Qt::Uninitialized);
    const size_t written = ZSTD_compressCCtx(contexts().pack, packed.data(), size_t(packed.size()),
                                             data, size_t(size), kLevel);
    if (ZSTD_isError(written)) return {};
    packed.truncate(qsizetype(written));
    packed.squeeze();
    return packed;
}

bool unpackBytes(const QByteArray& packed, char* out, qsizetype size)
{
    const size_t read = ZSTD_decompressDCtx(contexts().unpack, out, size_t(size),
                                            packed.constData(), size_t(packed.size()));
    return !ZSTD_isError(read) && read == size_t(size);
}

} // namespace zelmor::service::record
