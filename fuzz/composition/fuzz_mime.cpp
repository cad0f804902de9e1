// Quoted-printable, inline pictures and the whole message. The input text is used as every field a
// user or a CSV cell can fill.
#include "composition/MIMEBuilder.h"
#include "FuzzCheck.h"

#include <cstddef>
#include <cstdint>

namespace {
int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// A decoder as strict as the encoder is meant to be: any other shape is a finding.
QByteArray decodedQuotedPrintable(const QByteArray& encoded) {
    QByteArray out;
    for (qsizetype i = 0; i < encoded.size(); ++i) {
        const char c = encoded[i];
        if (c == '=') {
            FUZZ_CHECK(i + 2 < encoded.size());
            if (encoded[i + 1] == '\r') {
                FUZZ_CHECK(encoded[i + 2] == '\n');
                i += 2;
                continue;
            }
            const int high = hexValue(encoded[i + 1]), low = hexValue(encoded[i + 2]);
            FUZZ_CHECK(high >= 0 && low >= 0);
            out.append(static_cast<char>(high * 16 + low));
            i += 2;
        } else if (c == '\r') {
            FUZZ_CHECK(i + 1 < encoded.size() && encoded[i + 1] == '\n');
            out.append('\n');
            ++i;
        } else {
            FUZZ_CHECK((c >= 33 && c <= 126) || c == ' ' || c == '\t');
            out.append(c);
        }
    }
    return out;
}

// A header value as RFC 2047 reads it: either text as it stands or encoded words only, the blanks
// between them dropped. Every word must hold whole UTF-8 characters and stay within 75 characters.
QString decodedHeader(const QByteArray& value) {
    if (!value.startsWith("=?UTF-8?B?"))
        return QString::fromUtf8(value);
    QString text;
    for (const QByteArray& word : value.split(' ')) {
        FUZZ_CHECK(word.size() <= 75 && word.startsWith("=?UTF-8?B?") && word.endsWith("?="));
        const QByteArray bytes = QByteArray::fromBase64(word.mid(10, word.size() - 12));
        const QString piece = QString::fromUtf8(bytes);
        FUZZ_CHECK(piece.toUtf8() == bytes);
        text += piece;
    }
    return text;
}

void checkQuotedPrintable(const QString& text) {
    const QByteArray encoded = MIMEBuilder::quotedPrintable(text);
    for (const QByteArray& line : encoded.split('\n')) {
        const QByteArray content = line.endsWith('\r') ? line.chopped(1) : line;
        // 75 characters and a soft break, or two more when a final blank is spelled out.
        FUZZ_CHECK(content.size() <= 77);
    }
    QString normal = text;
    normal.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    FUZZ_CHECK(decodedQuotedPrintable(encoded) == normal.toUtf8());
}

void checkInlineImages(const QString& html) {
    const MIMEBuilder::ExtractedImages extracted = MIMEBuilder::extractInlineImages(html);
    if (extracted.images.isEmpty())
        FUZZ_CHECK(extracted.html == html);
    qsizetype from = 0;
    for (qsizetype i = 0; i < extracted.images.size(); ++i) {
        const MIMEBuilder::InlineImage& image = extracted.images[i];
        FUZZ_CHECK(image.cid.startsWith(QStringLiteral("img%1.").arg(i + 1)));
        FUZZ_CHECK(image.filename.startsWith(QStringLiteral("immagine%1.").arg(i + 1)));
        FUZZ_CHECK(image.mimeType.startsWith(QLatin1String("image/")));
        const qsizetype at = extracted.html.indexOf(QStringLiteral("cid:") + image.cid, from);
        FUZZ_CHECK(at >= from); // each reference in the page, in order
        from = at + 1;
    }
}

void checkMessage(const QString& text) {
    MIMEBuilder::Message m;
    m.from = {text, QStringLiteral("info@example.it")};
    m.to = text;
    m.subject = text;
    m.html = text;
    m.plainText = text;
    m.extraHeaders = {{QStringLiteral("List-Unsubscribe"), text}};
    m.attachments = {{text, text, text.toUtf8()}};
    const QByteArray bytes = MIMEBuilder::build(m);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\r')
            FUZZ_CHECK(i + 1 < bytes.size() && bytes[i + 1] == '\n');
        if (bytes[i] == '\n')
            FUZZ_CHECK(i > 0 && bytes[i - 1] == '\r');
    }
    // Nothing from the data can add a header or end the header block early; folded lines begin with a
    // blank, no line passes 998 bytes and no control character is left in a header.
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    FUZZ_CHECK(end > 0);
    const QByteArray block = bytes.left(end);
    int headers = 0;
    for (const QByteArray& line : block.split('\n')) {
        const QByteArray content = line.endsWith('\r') ? line.chopped(1) : line;
        FUZZ_CHECK(content.size() <= 998);
        FUZZ_CHECK(!content.isEmpty() && content.trimmed().size() > 0);
        if (!content.startsWith(' '))
            ++headers;
        for (const char c : content)
            FUZZ_CHECK(static_cast<uchar>(c) >= 0x20 && c != 0x7F);
    }
    FUZZ_CHECK(headers == 9);
    FUZZ_CHECK(block.contains("\r\nContent-Type: multipart/mixed; boundary=\"----=_Brezzario_mix_"));
    for (const QByteArray& line : bytes.split('\n'))
        FUZZ_CHECK(line.size() <= 999);

    // The subject reads back as the text with its control characters blanked.
    const QByteArray unfolded = QByteArray(block).replace("\r\n ", " ");
    const qsizetype subject = unfolded.indexOf("\r\nSubject: ") + 11;
    FUZZ_CHECK(subject > 11);
    FUZZ_CHECK(decodedHeader(unfolded.mid(subject, unfolded.indexOf("\r\n", subject) - subject)) ==
               MIMEBuilder::withoutControls(text));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkQuotedPrintable(text);
    checkInlineImages(text);
    checkMessage(text);
    return 0;
}
