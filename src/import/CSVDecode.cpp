#include "import/CSVParserSteps.h"

#include <QStringDecoder>

#include <array>

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
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        if (b >= 0x80 && b <= 0x9F) {
            const char16_t mapped = windows1252High[b - 0x80];
            if (mapped == 0)
                return std::nullopt;
            out[i] = QChar(mapped);
        } else {
            out[i] = QChar(b);
        }
    }
    return text;
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
