#include "records/Text.h"

#include <QTextBoundaryFinder>

namespace Text {

bool isWhitespace(QChar c) {
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

bool isWhitespaceOrNewline(QChar c) {
    const char16_t u = c.unicode();
    if (u == u'\t' || (u >= 0x0A && u <= 0x0D) || u == 0x85)
        return true;
    const auto category = c.category();
    return category == QChar::Separator_Space || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

namespace {
template <typename Pred> QString trimmed(const QString& text, Pred pred) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && pred(text.at(begin)))
        ++begin;
    while (end > begin && pred(text.at(end - 1)))
        --end;
    if (begin == 0 && end == text.size())
        return text;
    return text.mid(begin, end - begin);
}
} // namespace

QString trimmedWhitespace(const QString& text) {
    return trimmed(text, isWhitespace);
}

QString trimmedWhitespaceAndNewlines(const QString& text) {
    return trimmed(text, isWhitespaceOrNewline);
}

bool isBlank(const QString& text) {
    for (QChar c : text)
        if (!isWhitespace(c))
            return false;
    return true;
}

QString lowercased(const QString& text) {
    // Most addresses and column names are ASCII: one pass, and no copy when nothing is upper-case.
    const char16_t* s = reinterpret_cast<const char16_t*>(text.constData());
    const qsizetype n = text.size();
    qsizetype first = -1;
    for (qsizetype i = 0; i < n; ++i) {
        if (s[i] >= 0x80)
            return text.toLower();
        if (first < 0 && s[i] >= u'A' && s[i] <= u'Z')
            first = i;
    }
    if (first < 0)
        return text;
    QString result(n, Qt::Uninitialized);
    char16_t* out = reinterpret_cast<char16_t*>(result.data());
    for (qsizetype i = 0; i < n; ++i)
        out[i] = (s[i] >= u'A' && s[i] <= u'Z') ? char16_t(s[i] + 32) : s[i];
    return result;
}

QString normalizedAddress(const QString& text) {
    return lowercased(trimmedWhitespaceAndNewlines(text));
}

qsizetype characterCount(const QString& text) {
    // Printable ASCII never combines, so the common case needs no segmentation.
    bool plain = true;
    for (QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7E) {
            plain = false;
            break;
        }
    }
    if (plain)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

bool isAscii(QStringView text) {
    for (QChar c : text)
        if (c.unicode() > 0x7F)
            return false;
    return true;
}

} // namespace Text
