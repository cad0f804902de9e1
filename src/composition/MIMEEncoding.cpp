// The encodings MIMEBuilder uses for header values, text parts and binary parts.
#include "composition/MIMEBuilder.h"

#include "records/EmailSyntax.h"
#include "records/Text.h"

#include <QHash>
#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace MIMEBuilder {

namespace {
constexpr char hexDigits[] = "0123456789ABCDEF";

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

bool isControl(QChar c) {
    const char16_t u = c.unicode();
    return u < 0x20 || (u >= 0x7F && u <= 0x9F);
}

constexpr qsizetype foldWidth = 78;        // RFC 5322: lines should stay within 78 characters
constexpr qsizetype encodedLineWidth = 76; // RFC 2047: a line holding encoded words within 76
constexpr qsizetype maximumEncodedWord = 75;
constexpr qsizetype encodedWordOverhead = 12;                     // "=?UTF-8?B?" and "?="
constexpr qsizetype minimumEncodedWord = encodedWordOverhead + 8; // one character of four bytes
constexpr qsizetype lineByteLimit = 990;                          // a margin under the 998 bytes of RFC 5322

// Plain ASCII whose every word fits on a folded line after its leading blank. Text that looks like the
// start of an encoded word is encoded itself, or readers would decode it.
bool fitsAsItStands(const QString& text) {
    if (!Text::isAscii(text) || text.contains(QStringLiteral("=?")))
        return false;
    qsizetype word = 0;
    for (QChar c : text) {
        word = c == u' ' ? 0 : word + 1;
        if (word > foldWidth - 1)
            return false;
    }
    return true;
}

// UTF-8 base64 encoded words, each holding whole characters only, so every word decodes on its own and
// readers join them back into the text. The first word fits in what is left of a line that begins at
// `column`; the others each fit a folded line.
QString encodedWords(const QString& text, qsizetype column) {
    const QByteArray bytes = text.toUtf8();
    const auto capacity = [](qsizetype wordLength) { return (wordLength - encodedWordOverhead) / 4 * 3; };
    qsizetype room = std::min(maximumEncodedWord, encodedLineWidth - column);
    if (room < minimumEncodedWord)
        room = maximumEncodedWord;
    QString out;
    qsizetype at = 0;
    do {
        qsizetype end = std::min(bytes.size(), at + capacity(room));
        // Back to the start of a character; a UTF-8 sequence is at most four bytes and a word holds 45.
        while (end < bytes.size() && end > at && (static_cast<uchar>(bytes[end]) & 0xC0) == 0x80)
            --end;
        if (!out.isEmpty())
            out += u' ';
        out += QStringLiteral("=?UTF-8?B?") + QString::fromLatin1(bytes.mid(at, end - at).toBase64()) +
               QStringLiteral("?=");
        at = end;
        room = maximumEncodedWord;
    } while (at < bytes.size());
    return out;
}

// A server refuses a message with a line past 998 bytes. Only raw text that no blank can shorten gets
// there (an address or a media type of hundreds of non-ASCII characters, which no valid one is): it is
// cut with a fold, so its reader sees one blank more rather than the message being lost.
QString withinLineLimit(const QString& folded) {
    QString out;
    const QStringList lines = folded.split(QStringLiteral("\r\n"));
    for (qsizetype k = 0; k < lines.size(); ++k) {
        const QString& line = lines[k];
        if (k > 0)
            out += QStringLiteral("\r\n");
        qsizetype bytes = 0;
        for (qsizetype i = 0; i < line.size(); ++i) {
            const QChar c = line[i];
            const bool pair = c.isHighSurrogate() && i + 1 < line.size() && line[i + 1].isLowSurrogate();
            const qsizetype size = c.unicode() < 0x80 ? 1 : c.unicode() < 0x800 ? 2 : pair ? 4 : 3;
            if (bytes + size > lineByteLimit) {
                // Trailing blanks are dropped rather than left on a line of their own.
                if (std::all_of(line.cbegin() + i, line.cend(), [](QChar b) { return b == u' '; }))
                    break;
                out += QStringLiteral("\r\n ");
                bytes = 1;
            }
            bytes += size;
            out += c;
            if (pair)
                out += line[++i];
        }
    }
    return out;
}

// Folds a header line before blanks from `from` on, as late as 78 columns allow; a word longer than that
// makes a longer line rather than being cut. No line is left holding blanks only, which some readers drop.
QString folded(const QString& line, qsizetype from = 0) {
    if (line.size() <= foldWidth)
        return line;
    qsizetype lastText = line.size() - 1;
    while (lastText > 0 && line[lastText] == u' ')
        --lastText;
    QString out;
    qsizetype start = 0;
    while (line.size() - start > foldWidth) {
        qsizetype firstText = start;
        while (firstText < lastText && line[firstText] == u' ')
            ++firstText;
        qsizetype cut = -1;
        for (qsizetype p = std::min(start + foldWidth, lastText - 1); p > firstText && p >= from; --p)
            if (line[p] == u' ') {
                cut = p;
                break;
            }
        for (qsizetype p = std::max({start + foldWidth + 1, firstText + 1, from}); cut < 0 && p < lastText; ++p)
            if (line[p] == u' ')
                cut = p;
        if (cut < 0)
            break;
        out += QStringView(line).mid(start, cut - start);
        out += QStringLiteral("\r\n");
        start = cut;
    }
    out += QStringView(line).mid(start);
    // UTF-8 takes at most three bytes for one UTF-16 unit.
    return out.size() * 3 > lineByteLimit ? withinLineLimit(out) : out;
}
} // namespace

QString rfc5322Date(const QDateTime& moment) {
    const QDateTime local = moment.toLocalTime();
    const int offset = local.offsetFromUtc() / 60;
    const int magnitude = offset < 0 ? -offset : offset;
    return QLocale::c().toString(local, QStringLiteral("ddd, d MMM yyyy HH:mm:ss ")) +
           QString::asprintf("%c%02d%02d", offset < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
}

QString withoutControls(const QString& value) {
    QString clean = value;
    for (QChar& c : clean)
        if (isControl(c))
            c = u' ';
    return clean;
}

QString encodeHeaderValue(const QString& value, qsizetype column) {
    const QString clean = withoutControls(value);
    if (fitsAsItStands(clean))
        return clean;
    return encodedWords(clean, column);
}

QString addressHeader(const QString& name, const QString& email, qsizetype column) {
    const QString address = wireAddress(email);
    const QString trimmed = Text::trimmedWhitespace(name);
    if (trimmed.isEmpty())
        return address;
    const QString clean = withoutControls(trimmed);
    // Encoded words are atoms already; only a name written as it stands may need quoting.
    QString shown = fitsAsItStands(clean) ? clean : encodedWords(clean, column);
    if (shown == clean && holdsSpecial(shown))
        shown = quotedString(shown);
    return shown + QStringLiteral(" <") + address + u'>';
}

QString headerLine(const QString& name, const QString& value) {
    return folded(withoutControls(name) + QStringLiteral(": ") + withoutControls(value));
}

QString withParameter(const QString& start, const QString& parameter, const QString& value) {
    const QString line = withoutControls(start) + u';';
    const QString clean = withoutControls(value);
    QString inner;
    if (fitsAsItStands(clean)) {
        inner = quotedString(clean);
    } else {
        const qsizetype opening = parameter.size() + 3; // blank, name, equals sign, quote
        qsizetype column = line.size() + opening;
        // With no room left for a word, the line is folded before the parameter.
        if (column > encodedLineWidth - minimumEncodedWord)
            column = opening;
        inner = u'"' + encodedWords(clean, column) + u'"';
    }
    // The start (a media type, a disposition) stays on its line whatever its length.
    return folded(line + u' ' + parameter + u'=' + inner, line.size());
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
