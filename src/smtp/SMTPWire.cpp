#include "SMTPWire.h"

#include "settings/SMTPConfig.h"

#include <algorithm>
#include <cstring>

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
    if (std::any_of(argument.cbegin(), argument.cend(), isControlCharacter))
        return std::nullopt;
    return QByteArray(verb) + argument.toUtf8() + suffix + "\r\n";
}

} // namespace SMTPWire
