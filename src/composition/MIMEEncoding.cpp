// The encodings MIMEBuilder uses for header values, text parts and binary parts.
#include "composition/MIMEBuilder.h"

#include "records/Text.h"

#include <QHash>
#include <QLocale>

namespace MIMEBuilder {

namespace {
constexpr char hexDigits[] = "0123456789ABCDEF";

bool isAscii(const QString& text) {
    for (QChar c : text)
        if (c.unicode() > 0x7F)
            return false;
    return true;
}

// RFC 5322 specials: a display name holding one of them must be a quoted string, or a parser reads
// "Rossi, Bianchi" as two addresses.
bool holdsSpecial(const QString& text) {
    for (QChar c : text)
        if (QStringView(u"()<>[]:;@\\,.\"").contains(c))
            return true;
    return false;
}

QString quotedString(const QString& text) {
    QString s = text;
    s.replace(u'\\', QStringLiteral("\\\\"));
    s.replace(u'"', QStringLiteral("\\\""));
    return u'"' + s + u'"';
}
} // namespace

QString rfc5322Date(const QDateTime& moment) {
    const QDateTime local = moment.toLocalTime();
    const int offset = local.offsetFromUtc() / 60;
    const int magnitude = offset < 0 ? -offset : offset;
    return QLocale::c().toString(local, QStringLiteral("ddd, d MMM yyyy HH:mm:ss ")) +
           QString::asprintf("%c%02d%02d", offset < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
}

QString encodeHeaderValue(const QString& value) {
    QString flat = value;
    flat.replace(u'\r', u' ');
    flat.replace(u'\n', u' ');
    if (isAscii(flat))
        return flat;
    return QStringLiteral("=?UTF-8?B?") + QString::fromLatin1(flat.toUtf8().toBase64()) + QStringLiteral("?=");
}

QString addressHeader(const QString& name, const QString& email) {
    const QString trimmed = Text::trimmedWhitespace(name);
    if (trimmed.isEmpty())
        return email;
    QString shown = encodeHeaderValue(trimmed);
    // An encoded word is a single atom already; only plain ASCII needs quoting.
    if (isAscii(trimmed) && holdsSpecial(shown))
        shown = quotedString(shown);
    return shown + QStringLiteral(" <") + email + u'>';
}

QByteArray quotedPrintable(const QString& text) {
    // One pass over the UTF-8 bytes into a buffer sized for the worst case, so no byte costs an append.
    // CR LF and a lone CR are line ends like LF; no byte of a multi-byte UTF-8 sequence can be CR or LF.
    const QByteArray bytes = text.toUtf8();
    const char* in = bytes.constData();
    const qsizetype n = bytes.size();
    QByteArray out(n * 3 + (n * 3 / 73 + 1) * 3 + 16, Qt::Uninitialized);
    char* const begin = out.data();
    char* o = begin;
    int column = 0;
    const auto softBreakFor = [&](int length) {
        if (column + length >= 76) {
            o[0] = '=', o[1] = '\r', o[2] = '\n';
            o += 3;
            column = 0;
        }
    };
    for (qsizetype i = 0; i < n; ++i) {
        const auto byte = static_cast<uchar>(in[i]);
        if (byte == '\n' || byte == '\r') {
            if (byte == '\r' && i + 1 < n && in[i + 1] == '\n')
                ++i;
            // A blank before a line end would be lost in transport, so it is spelled out.
            if (o > begin && (o[-1] == ' ' || o[-1] == '\t')) {
                const auto blank = static_cast<uchar>(o[-1]);
                o[-1] = '=', o[0] = hexDigits[blank >> 4], o[1] = hexDigits[blank & 0x0F];
                o += 2;
            }
            o[0] = '\r', o[1] = '\n';
            o += 2;
            column = 0;
        } else if (byte != '=' && ((byte >= 33 && byte <= 126) || byte == ' ' || byte == '\t')) {
            softBreakFor(1);
            *o++ = char(byte);
            ++column;
        } else {
            softBreakFor(3);
            o[0] = '=', o[1] = hexDigits[byte >> 4], o[2] = hexDigits[byte & 0x0F];
            o += 3;
            column += 3;
        }
    }
    out.truncate(o - begin);
    return out;
}

QByteArray base64Lines(const QByteArray& data) {
    const QByteArray encoded = data.toBase64();
    constexpr qsizetype lineLength = 76;
    QByteArray out;
    out.reserve(encoded.size() + encoded.size() / lineLength * 2 + 2);
    for (qsizetype at = 0; at < encoded.size(); at += lineLength) {
        if (at > 0)
            out.append("\r\n", 2);
        out.append(encoded.constData() + at, std::min(lineLength, encoded.size() - at));
    }
    return out;
}

QString mimeType(const QString& fileExtension) {
    static const QHash<QString, QString> types = {
        {"pdf", "application/pdf"},
        {"png", "image/png"},
        {"jpg", "image/jpeg"},
        {"jpeg", "image/jpeg"},
        {"gif", "image/gif"},
        {"webp", "image/webp"},
        {"svg", "image/svg+xml"},
        {"txt", "text/plain"},
        {"csv", "text/plain"},
        {"html", "text/html"},
        {"htm", "text/html"},
        {"zip", "application/zip"},
        {"doc", "application/msword"},
        {"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
        {"xls", "application/vnd.ms-excel"},
        {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
        {"ppt", "application/vnd.ms-powerpoint"},
        {"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    };
    return types.value(Text::lowercased(fileExtension), QStringLiteral("application/octet-stream"));
}

} // namespace MIMEBuilder
