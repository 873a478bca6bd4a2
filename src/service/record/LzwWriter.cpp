#include "LzwWriter.h"

#include <algorithm>

namespace zelmor::service::record {

// The LZW dictionary: (prefix code << 8) + byte -> code. Open addressing over twice the
// 4096 codes, so a clear costs one small fill instead of freeing and regrowing a hash.
class LzwDictionary
{
public:
    LzwDictionary() { clear(); }

    void clear() { std::fill(std::begin(m_keys), std::end(m_keys), 0u); }

    // The code for key, or -1 with `slot` left where it belongs.
    int find(quint32 key, quint32& slot) const
    {
        slot = (key * 2654435761u) >> (32 - kBits);
        for (;; slot = (slot + 1) & (kSlots - 1)) {
            if (m_keys[slot] == key + 1) return m_codes[slot];
            if (m_keys[slot] == 0) return -1;
        }
    }
    void insert(quint32 slot, quint32 key, int code)
    {
        m_keys[slot] = key + 1;
        m_codes[slot] = quint16(code);
    }

private:
    static constexpr int kBits = 13, kSlots = 1 << kBits;
    quint32 m_keys[kSlots]; // key + 1; 0 is a free slot
    quint16 m_codes[kSlots];
};

ImageDataWriter::ImageDataWriter() : m_dictionary(std::make_unique<LzwDictionary>()) {}

ImageDataWriter::~ImageDataWriter() = default;

void ImageDataWriter::append(QByteArray& out, const uchar* data, qsizetype size)
{
    out.append(char(8));
    if (size <= 0) return;
    encode(data, size);
    out.reserve(out.size() + m_used + m_used / 255 + 2);
    for (qsizetype offset = 0; offset < m_used; offset += 255) {
        const qsizetype length = std::min<qsizetype>(255, m_used - offset);
        out.append(char(length));
        out.append(m_codes.constData() + offset, length);
    }
    out.append(char(0));
}

void ImageDataWriter::encode(const uchar* data, qsizetype size)
{
    constexpr int clearCode = 256, endCode = 257;
    m_codes.resize(std::max(m_codes.size(), size / 2 + 256));
    m_used = 0;
    m_acc = 0;
    m_bits = 0;
    m_dictionary->clear();
    int nextCode = 258, codeSize = 9;

    put(clearCode, codeSize);
    int current = data[0];
    for (qsizetype i = 1; i < size; ++i) {
        const int b = data[i];
        const quint32 key = (quint32(current) << 8) + quint32(b);
        quint32 slot = 0;
        const int found = m_dictionary->find(key, slot);
        if (found >= 0) {
            current = found;
            continue;
        }
        put(current, codeSize);
        if (nextCode < 4096) {
            m_dictionary->insert(slot, key, nextCode);
            if (nextCode == (1 << codeSize) && codeSize < 12) ++codeSize;
            ++nextCode;
        } else {
            // The table stays full until this miss, then one clear code restarts it.
            put(clearCode, codeSize);
            m_dictionary->clear();
            nextCode = 258;
            codeSize = 9;
        }
        current = b;
    }
    put(current, codeSize);
    put(endCode, codeSize);
    if (m_bits > 0) m_codes[m_used++] = char(m_acc & 0xFF);
}

void ImageDataWriter::put(int code, int size)
{
    m_acc |= quint32(code) << m_bits;
    m_bits += size;
    if (m_used + 4 > m_codes.size()) m_codes.resize(m_codes.size() * 2);
    char* out = m_codes.data() + m_used;
    while (m_bits >= 8) {
        *out++ = char(m_acc & 0xFF);
        m_acc >>= 8;
        m_bits -= 8;
    }
    m_used = out - m_codes.constData();
}

} // namespace zelmor::service::record
