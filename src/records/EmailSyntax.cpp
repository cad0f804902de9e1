#include "records/EmailSyntax.h"

#include "records/Text.h"

#include <QUrl>

#include <array>
#include <string_view>

namespace {
// Control characters, the specials that end or extend an address in a command or a header ("a@b.it>
// NOTIFY=NEVER"), blanks, and characters that print as nothing, so two addresses can't look the same
// on screen and differ on the wire.
constexpr std::array<bool, 128> asciiForbidden = [] {
    std::array<bool, 128> table{};
    for (int c = 0; c < 0x20; ++c)
        table[c] = true;
    table[0x7F] = true;
    for (const char c : std::string_view("<>()[]\\,;:\" "))
        table[static_cast<uchar>(c)] = true;
    return table;
}();

bool isForbidden(char32_t u) {
    if (u < 0x80)
        return asciiForbidden[u];
    if (u <= 0x9F || QChar::category(u) == QChar::Other_Format)
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
    if (Text::isAscii(domain))
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
    const qsizetype at = normalized.indexOf(u'@');
    if (at <= 0 || normalized.indexOf(u'@', at + 1) >= 0 || !Text::isAscii(QStringView(normalized).left(at)))
        return false;
    // The shape is judged on the form that goes on the wire, which is also what a server limits.
    QStringView domain = QStringView(normalized).mid(at + 1);
    QString ascii;
    if (!Text::isAscii(domain)) {
        ascii = asciiDomain(domain.toString());
        domain = ascii;
    }
    if (at + 1 + domain.size() >= 255)
        return false;
    return domain.size() >= 3 && domain.contains(u'.') && !domain.startsWith(u'.') && !domain.endsWith(u'.');
}

QString wireAddress(const QString& address) {
    if (Text::isAscii(address))
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
