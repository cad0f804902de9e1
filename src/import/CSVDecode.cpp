#include "import/CSVParserSteps.h"

#include <QStringDecoder>

#include <array>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace CSVParser::detail {

namespace {

// Windows-1252 differs from ISO-8859-1 only in 0x80-0x9F; 0 marks the five bytes it leaves undefined.
constexpr std::array<char16_t, 32> windows1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

bool startsWith(QByteArrayView bytes, std::initializer_list<unsigned char> prefix) {
    if (bytes.size() < qsizetype(prefix.size()))
        return false;
    qsizetype i = 0;
    for (unsigned char b : prefix)
        if (static_cast<unsigned char>(bytes[i++]) != b)
            return false;
    return true;
}

// Qt's UTF-16 decoder lets unpaired surrogates through, so the check is ours.
bool hasUnpairedSurrogate(const QString& text) {
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate()) {
            if (i + 1 >= n || !text.at(i + 1).isLowSurrogate())
                return true;
            ++i;
        } else if (c.isLowSurrogate()) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<QString> decodeUtf8(QByteArrayView bytes) {
    // Stateless, so a sequence cut off at the end counts as an error; a further mark stays in the text.
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeUtf16(QByteArrayView bytes) {
    // Qt neither flags an odd trailing byte nor unpaired surrogates.
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    QStringDecoder decoder(QStringConverter::Utf16, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError() || hasUnpairedSurrogate(text))
        return std::nullopt;
    return text;
}

std::optional<QString> decodeWindows1252(QByteArrayView bytes) {
    if (!isWindows1252(bytes))
        return std::nullopt;
    return fromWindows1252(bytes);
}

QString utf8Text(QByteArrayView bytes) {
    if (!bytes.startsWith("\xEF\xBB\xBF"))
        return QString::fromUtf8(bytes);
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

bool isWindows1252(QByteArrayView bytes) {
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
    const qsizetype n = bytes.size();
    qsizetype i = 0;
#if defined(__SSE2__)
    // Sixteen bytes at a time: a 50 MB file is looked through in a few milliseconds instead of some forty.
    const auto equal = [](__m128i v, unsigned char c) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(char(c))); };
    __m128i found = _mm_setzero_si128();
    for (; i + 16 <= n; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i));
        found = _mm_or_si128(found,
                             _mm_or_si128(_mm_or_si128(equal(v, 0x81), equal(v, 0x8D)),
                                          _mm_or_si128(_mm_or_si128(equal(v, 0x8F), equal(v, 0x90)), equal(v, 0x9D))));
    }
    if (_mm_movemask_epi8(found) != 0)
        return false;
#endif
    for (; i < n; ++i)
        if (b[i] == 0x81 || b[i] == 0x8D || b[i] == 0x8F || b[i] == 0x90 || b[i] == 0x9D)
            return false;
    return true;
}

char16_t windows1252Char(unsigned char byte) {
    return byte >= 0x80 && byte <= 0x9F ? windows1252High[byte - 0x80] : char16_t(byte);
}

QString fromWindows1252(QByteArrayView bytes) {
    QString text = QString::fromLatin1(bytes);
    // Only 0x80-0x9F differ from ISO-8859-1, and most cells have none of them.
    char16_t* out = reinterpret_cast<char16_t*>(text.data());
    for (qsizetype i = 0; i < text.size(); ++i)
        if (out[i] >= 0x80 && out[i] <= 0x9F)
            out[i] = windows1252High[out[i] - 0x80];
    return text;
}

QString sampleText(const Source& source) {
    constexpr qsizetype sampleCharacters = 65536;
    const QByteArrayView text = QByteArrayView(source.bytes).sliced(source.start);
    // A character takes at most four bytes in UTF-8 (and a CR LF counts as one), so the first try nearly always
    // holds enough; a text heavy with combining marks gets a longer one.
    for (qsizetype length = 4 * sampleCharacters + 64;; length *= 2) {
        const bool whole = length >= text.size();
        qsizetype end = whole ? text.size() : length;
        if (!whole && source.codec == Cells::Codec::utf8)
            while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
                --end; // not inside a sequence: text[end] is the first byte left out
        const QByteArrayView prefix = text.first(end);
        QString sample = source.codec == Cells::Codec::utf8     ? utf8Text(prefix)
                         : source.codec == Cells::Codec::latin1 ? QString::fromLatin1(prefix)
                                                                : fromWindows1252(prefix);
        normalizeLineEnds(sample);
        // A cluster boundary inside the prefix is one in the whole text too; one at the prefix's end isn't.
        if (whole || prefixEnd(sample, sampleCharacters) < sample.size())
            return sample;
    }
}

Source source(const QByteArray& data) {
    // The table keeps the bytes. Bytes lent by the caller (fromRawData) may go before the table does.
    QByteArray bytes = data;
    if (!bytes.data_ptr().isMutable())
        bytes = QByteArray(data.constData(), data.size());
    const QByteArrayView view(bytes);
    // The order of decode, with the same strictness: a mark whose decoding fails doesn't end the search.
    if (startsWith(view, {0xEF, 0xBB, 0xBF}) && view.sliced(3).isValidUtf8())
        return {std::move(bytes), 3, Cells::Codec::utf8, QStringLiteral("UTF-8")};
    if (startsWith(view, {0xFF, 0xFE}) || startsWith(view, {0xFE, 0xFF}))
        if (const std::optional<QString> text = decodeUtf16(view))
            return {text->toUtf8(), 0, Cells::Codec::utf8, QStringLiteral("UTF-16")};
    if (view.isValidUtf8())
        return {std::move(bytes), 0, Cells::Codec::utf8, QStringLiteral("UTF-8")};
    if (isWindows1252(view))
        return {std::move(bytes), 0, Cells::Codec::windows1252, QStringLiteral("Windows-1252")};
    return {std::move(bytes), 0, Cells::Codec::latin1, QStringLiteral("ISO-8859-1")};
}

void normalizeLineEnds(QString& text) {
    const qsizetype at = text.indexOf(u'\r');
    if (at < 0)
        return;
    QChar* s = text.data();
    const qsizetype n = text.size();
    qsizetype out = at;
    for (qsizetype i = at; i < n; ++i) {
        if (s[i] == u'\r') {
            s[out++] = u'\n';
            if (i + 1 < n && s[i + 1] == u'\n')
                ++i;
        } else {
            s[out++] = s[i];
        }
    }
    text.truncate(out);
}

Decoded decode(const QByteArray& data) {
    const QByteArrayView bytes(data);
    Decoded decoded = [&]() -> Decoded {
        // A mark whose decoding fails doesn't end the search: the later steps see the whole data.
        if (startsWith(bytes, {0xEF, 0xBB, 0xBF}))
            if (auto text = decodeUtf8(bytes.sliced(3)))
                return {std::move(*text), QStringLiteral("UTF-8")};
        if (startsWith(bytes, {0xFF, 0xFE}) || startsWith(bytes, {0xFE, 0xFF}))
            if (auto text = decodeUtf16(bytes))
                return {std::move(*text), QStringLiteral("UTF-16")};
        if (auto text = decodeUtf8(bytes))
            return {std::move(*text), QStringLiteral("UTF-8")};
        if (auto text = decodeWindows1252(bytes))
            return {std::move(*text), QStringLiteral("Windows-1252")};
        // ISO-8859-1 gives every byte a character, so this last step never refuses.
        return {QString::fromLatin1(bytes), QStringLiteral("ISO-8859-1")};
    }();
    normalizeLineEnds(decoded.text);
    return decoded;
}

} // namespace CSVParser::detail
