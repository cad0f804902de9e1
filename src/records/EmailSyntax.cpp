#include "records/EmailSyntax.h"

#include "records/Text.h"

#include <QStringList>
#include <QUrl>

namespace {
bool isAscii(QStringView text) {
    for (QChar c : text)
        if (c.unicode() > 0x7F)
            return false;
    return true;
}

// Control characters, the specials that end or extend an address in a command or a header ("a@b.it>
// NOTIFY=NEVER"), blanks, and characters that print as nothing, so two addresses can't look the same
// on screen and differ on the wire.
bool isForbidden(char32_t u) {
    if (u < 0x20 || (u >= 0x7F && u <= 0x9F))
        return true;
    if (u < 0x80)
        return QStringView(u"<>()[]\\,;:\" ").contains(QChar(u));
    if (QChar::category(u) == QChar::Other_Format)
        return true;
    return u <= 0xFFFF && Text::isWhitespaceOrNewline(QChar(static_cast<char16_t>(u)));
}

bool holdsForbidden(const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t u = text.at(i).unicode();
        if (QChar::isHighSurrogate(u) && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            u = QChar::surrogateToUcs4(text.at(i).unicode(), text.at(i + 1).unicode());
            ++i;
        }
        if (isForbidden(u))
            return true;
    }
    return false;
}

QString asciiDomain(const QString& domain) {
    if (isAscii(domain))
        return domain;
    return QString::fromLatin1(QUrl::toAce(domain));
}
} // namespace

bool isValidEmailSyntax(const QString& address) {
    const QString normalized = Text::normalizedAddress(address);
    if (normalized.isEmpty() || holdsForbidden(normalized))
        return false;
    if (Text::characterCount(normalized) >= 255)
        return false;
    const QStringList pieces = normalized.split(u'@', Qt::KeepEmptyParts);
    if (pieces.size() != 2 || pieces.at(0).isEmpty() || !isAscii(pieces.at(0)))
        return false;
    // The shape is judged on the form that goes on the wire, which is also what a server limits.
    const QString domain = asciiDomain(pieces.at(1));
    if (pieces.at(0).size() + 1 + domain.size() >= 255)
        return false;
    return domain.size() >= 3 && domain.contains(u'.') && !domain.startsWith(u'.') && !domain.endsWith(u'.');
}

QString wireAddress(const QString& address) {
    if (isAscii(address))
        return address;
    const qsizetype at = address.lastIndexOf(u'@');
    if (at < 0)
        return address;
    const QString domain = address.mid(at + 1);
    const QString ascii = asciiDomain(domain);
    if (ascii.isEmpty() || ascii == domain)
        return address;
    return address.left(at + 1) + ascii;
}
