#include "SMTPWire.h"

#include "settings/SMTPConfig.h"

#include <cstring>

namespace SMTPWire {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The code of a line that ends a reply: three digits alone, or three digits and a blank.
std::optional<int> finalCode(const QByteArray& line) {
    const bool shape = line.size() == 3 || (line.size() >= 4 && line.at(3) == ' ');
    if (!shape || !isDigit(line.at(0)) || !isDigit(line.at(1)) || !isDigit(line.at(2)))
        return std::nullopt;
    return (line.at(0) - '0') * 100 + (line.at(1) - '0') * 10 + (line.at(2) - '0');
}

QString domainPart(const QString& text) {
    const qsizetype at = text.lastIndexOf(u'@');
    QString domain = at < 0 ? text : text.mid(at + 1);
    qsizetype begin = 0;
    qsizetype end = domain.size();
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (begin < end && blank(domain.at(begin)))
        ++begin;
    while (end > begin && blank(domain.at(end - 1)))
        --end;
    return domain.mid(begin, end - begin);
}

bool looksLikeDomain(const QString& name) {
    return name.contains(u'.') && !name.startsWith(u'.') && !name.endsWith(u'.');
}

} // namespace

std::optional<SMTPResponse> parseBufferedResponse(QByteArray& buffer) {
    if (buffer.size() < 2)
        return std::nullopt;
    QStringList lines;
    qsizetype start = 0;
    for (;;) {
        const qsizetype end = buffer.indexOf("\r\n", start);
        if (end < 0)
            return std::nullopt;
        const QByteArray line = buffer.mid(start, end - start);
        lines << QString::fromUtf8(line);
        start = end + 2;
        if (const auto code = finalCode(line)) {
            buffer.remove(0, start);
            QStringList pieces;
            for (const QString& text : std::as_const(lines))
                pieces << (text.size() >= 5 ? text.mid(4) : text);
            return SMTPResponse{*code, pieces.join(u' ')};
        }
    }
}

QByteArray dotStuffed(const QByteArray& data) {
    // Copies whole runs between the line starts that need a second dot, found with memchr.
    QByteArray out;
    out.reserve(data.size() + 64);
    const char* s = data.constData();
    const qsizetype n = data.size();
    qsizetype copied = 0;
    if (n > 0 && s[0] == '.')
        out.append('.');
    for (const char* at = static_cast<const char*>(std::memchr(s, '\n', size_t(n))); at;
         at = static_cast<const char*>(std::memchr(at + 1, '\n', size_t(s + n - at - 1)))) {
        const qsizetype next = at - s + 1;
        if (next < n && s[next] == '.') {
            out.append(s + copied, next - copied);
            out.append('.');
            copied = next;
        }
    }
    out.append(s + copied, n - copied);
    return out;
}

QString ehloDomain(const SMTPConfig& config, const QString& hostName) {
    for (const QString& source : {config.fromEmail, config.username, hostName}) {
        const QString candidate = domainPart(source);
        if (looksLikeDomain(candidate))
            return candidate;
    }
    return QStringLiteral("localhost.localdomain");
}

std::optional<QByteArray> commandLine(const char* verb, const QString& argument, const char* suffix) {
    if (argument.contains(u'\r') || argument.contains(u'\n'))
        return std::nullopt;
    return QByteArray(verb) + argument.toUtf8() + suffix + "\r\n";
}

} // namespace SMTPWire
