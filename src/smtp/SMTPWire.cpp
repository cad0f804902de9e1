#include "SMTPWire.h"

#include "settings/SMTPConfig.h"

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
    QByteArray out;
    out.reserve(data.size() + 64);
    bool lineStart = true;
    for (const char byte : data) {
        if (lineStart && byte == '.')
            out.append('.');
        out.append(byte);
        lineStart = byte == '\n';
    }
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
