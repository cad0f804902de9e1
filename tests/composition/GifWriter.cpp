#include "GifWriter.h"

namespace {
class BitWriter {
public:
    void put(int code) {
        m_accumulator |= static_cast<quint32>(code) << m_bits;
        m_bits += 9;
        while (m_bits >= 8) {
            byte(static_cast<char>(m_accumulator & 0xFF));
            m_accumulator >>= 8;
            m_bits -= 8;
        }
    }
    QByteArray finish() {
        if (m_bits > 0)
            byte(static_cast<char>(m_accumulator & 0xFF));
        flushBlock();
        return m_out;
    }

private:
    void byte(char b) {
        m_block.append(b);
        if (m_block.size() == 255)
            flushBlock();
    }
    void flushBlock() {
        if (m_block.isEmpty())
            return;
        m_out.append(static_cast<char>(m_block.size()));
        m_out.append(m_block);
        m_block.clear();
    }
    quint32 m_accumulator = 0;
    int m_bits = 0;
    QByteArray m_block;
    QByteArray m_out;
};

void appendShort(QByteArray& out, int value) {
    out.append(static_cast<char>(value & 0xFF));
    out.append(static_cast<char>(value >> 8));
}
} // namespace

QByteArray gifBytes(int width, int height) {
    QByteArray out("GIF89a");
    appendShort(out, width);
    appendShort(out, height);
    out.append("\xF7\x00\x00", 3); // global colour table of 256 entries
    for (int i = 0; i < 256; ++i) {
        out.append(static_cast<char>(i));
        out.append(static_cast<char>(255 - i));
        out.append(static_cast<char>((i * 7) & 0xFF));
    }
    out.append(',');
    appendShort(out, 0);
    appendShort(out, 0);
    appendShort(out, width);
    appendShort(out, height);
    out.append('\0');
    out.append('\x08'); // minimum code size
    constexpr int clear = 256, end = 257;
    BitWriter bits;
    int sinceClear = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (sinceClear % 250 == 0)
                bits.put(clear);
            bits.put((x / 8 + y / 8) % 256);
            ++sinceClear;
        }
    }
    bits.put(end);
    out.append(bits.finish());
    out.append('\0');
    out.append(';');
    return out;
}
