#include "SMTPWire.h"

#include "settings/SMTPConfig.h"

#include <algorithm>

namespace SMTPWire {

namespace {

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

bool isControlCharacter(QChar c) {
    const char16_t u = c.unicode();
    return u < 0x20 || (u >= 0x7f && u <= 0x9f);
}

QString withoutControlCharacters(QString text) {
    if (std::none_of(text.cbegin(), text.cend(), isControlCharacter))
        return text;
    for (QChar& c : text)
        if (isControlCharacter(c))
            c = u' ';
    return text;
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
    if (std::any_of(argument.cbegin(), argument.cend(), isControlCharacter))
        return std::nullopt;
    return QByteArray(verb) + argument.toUtf8() + suffix + "\r\n";
}

} // namespace SMTPWire
