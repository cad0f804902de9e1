#include "records/EmailSyntax.h"

#include "records/Text.h"

#include <QStringList>

namespace {
// Control characters left inside an address would end up in an SMTP command or a header.
bool holdsControlCharacter(const QString& text) {
    for (QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 0x20 || (u >= 0x7F && u <= 0x9F))
            return true;
    }
    return false;
}
} // namespace

bool isValidEmailSyntax(const QString& address) {
    const QString normalized = Text::normalizedAddress(address);
    if (normalized.isEmpty())
        return false;
    if (normalized.contains(u' ') || holdsControlCharacter(normalized))
        return false;
    if (Text::characterCount(normalized) >= 255)
        return false;
    const QStringList pieces = normalized.split(u'@', Qt::KeepEmptyParts);
    if (pieces.size() != 2 || pieces.at(0).isEmpty())
        return false;
    const QString& domain = pieces.at(1);
    return Text::characterCount(domain) >= 3 && domain.contains(u'.') && !domain.startsWith(u'.') &&
           !domain.endsWith(u'.');
}
