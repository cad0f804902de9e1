#pragma once

#include <QChar>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

// The steps behind CSVParser's operations. Only the parser and its tests use them.
namespace CSVParser::detail {

struct Decoded {
    QString text; // line ends already turned into LF
    QString encodingName;
};

// Tries the encodings in a fixed order and takes the first that decodes strictly. The last one,
// ISO-8859-1, takes any byte, so decoding always gives a text.
Decoded decode(const QByteArray& data);

// Each step of decode on its own; nothing when the bytes are invalid in that encoding.
std::optional<QString> decodeUtf8(QByteArrayView bytes);
std::optional<QString> decodeUtf16(QByteArrayView bytes); // the byte order mark selects the order
std::optional<QString> decodeWindows1252(QByteArrayView bytes);

// CR LF and lone CR become LF.
void normalizeLineEnds(QString& text);

QChar detectDelimiter(QStringView text);

QList<QStringList> parseRows(QStringView text, QChar delimiter);

QStringList deduplicate(const QStringList& names);

// Whether the ASCII character at index is a user-perceived character of its own, rather than part of a
// cluster with a combining mark after it or a prepended mark before it.
bool standsAlone(QStringView text, qsizetype index);

// The index in code units just past the first `characters` user-perceived characters of text.
qsizetype prefixEnd(QStringView text, qsizetype characters);

} // namespace CSVParser::detail
