#pragma once

#include <QByteArray>

#include <memory>

namespace zelmor::service::record {

class LzwDictionary;

// GIF image data: minimum code size 8, variable-width LZW codes packed from the lowest bit up,
// sub-blocks of at most 255 bytes, the terminator. Its buffers serve frame after frame.
class ImageDataWriter
{
public:
    ImageDataWriter();
    ~ImageDataWriter();
    ImageDataWriter(const ImageDataWriter&) = delete;
    ImageDataWriter& operator=(const ImageDataWriter&) = delete;

    // Appends the image data of `size` palette indices to `out`.
    void append(QByteArray& out, const uchar* data, qsizetype size);

private:
    void encode(const uchar* data, qsizetype size);
    void put(int code, int size);

    std::unique_ptr<LzwDictionary> m_dictionary;
    QByteArray m_codes;
    qsizetype m_used = 0;
    quint32 m_acc = 0;
    int m_bits = 0;
};

} // namespace zelmor::service::record
