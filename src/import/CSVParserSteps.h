#pragma once

#include "import/CSVRows.h"

#include <QByteArrayView>
#include <QChar>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>
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

// Text of valid UTF-8. Unlike QString::fromUtf8 it keeps a byte order mark at the start as U+FEFF: inside a
// file it is a character like any other, also where a cell or a piece of the text begins with it.
QString utf8Text(QByteArrayView bytes);

// Windows-1252 leaves five byte values undefined; bytes without them read through its table.
bool isWindows1252(QByteArrayView bytes);
QString fromWindows1252(QByteArrayView bytes);
char16_t windows1252Char(unsigned char byte); // 0 for the undefined ones

// CR LF and lone CR become LF.
void normalizeLineEnds(QString& text);

// The bytes that a file's cells are read from, with the encoding decode would choose, found without turning
// the whole file into text.
struct Source {
    QByteArray bytes;    // the file's own bytes; for UTF-16 their UTF-8 form
    qsizetype start = 0; // the text begins here, past a UTF-8 byte order mark
    Cells::Codec codec = Cells::Codec::utf8;
    QString encodingName;
};
Source source(const QByteArray& data);

// The beginning of the source's text, line ends made LF, long enough to hold the part detectDelimiter looks at.
QString sampleText(const Source& source);

QChar detectDelimiter(QStringView text);

// Splits the source's text into rows of cells, after the rules of quotes and delimiters, reading any line end
// (LF, CR LF, CR) as LF. Blank rows (no cell with more than whitespace) are dropped when asked. Wide offsets
// are needed past Cells::needsWideOffsets; they work for any size.
std::shared_ptr<Cells> splitRows(const Source& source, char delimiter, bool dropBlankRows, bool wideOffsets);

// The same on a text, every row kept.
Rows parseRows(QStringView text, QChar delimiter);

QStringList deduplicate(const QStringList& names);

// Whether the ASCII character at index is a user-perceived character of its own, rather than part of a
// cluster with a combining mark after it or a prepended mark before it.
bool standsAlone(QStringView text, qsizetype index);

// The index in code units just past the first `characters` user-perceived characters of text.
qsizetype prefixEnd(QStringView text, qsizetype characters);

} // namespace CSVParser::detail
