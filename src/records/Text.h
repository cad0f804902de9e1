#pragma once

#include <QString>

// The three text terms every part of the program shares:
// - a *character* is a user-perceived character (a grapheme cluster), and lengths are counted in them;
// - *whitespace* is Unicode category Zs plus TAB;
// - *whitespace and newlines* is all of category Z, TAB, U+000A to U+000D and U+0085.
// Trimming removes such characters at both ends only; lower-casing is Unicode-aware.
namespace Text {

bool isWhitespace(QChar c);
bool isWhitespaceOrNewline(QChar c);

QString trimmedWhitespace(const QString& text);
QString trimmedWhitespaceAndNewlines(const QString& text);
bool isBlank(const QString& text); // nothing left after trimming whitespace

QString lowercased(const QString& text);

// The form in which two addresses are compared: trimmed of whitespace and newlines, then lower-cased.
QString normalizedAddress(const QString& text);

qsizetype characterCount(const QString& text);

bool isAscii(QStringView text);

} // namespace Text
