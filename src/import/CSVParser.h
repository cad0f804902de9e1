#pragma once

#include "import/CSVRows.h"

#include <QByteArray>
#include <QChar>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <exception>
#include <optional>

// Turns the bytes of a file the user picked into a table of text without being told anything about the
// file: encoding, delimiter, header row and address column are all guessed. Pure functions, no state.
namespace CSVParser {

// A file as read, before anybody has said which row is the header.
struct RawTable {
    Rows rows; // file order, fields untrimmed, rows of differing length as they are
    QChar delimiter;
    QString encodingName; // "UTF-8", "UTF-16", "Windows-1252" or "ISO-8859-1"
};

// A RawTable with the header row taken out.
struct Table {
    QStringList columns; // trimmed and made unique
    Rows rows;           // shares its cells with the RawTable's
    QChar delimiter;
    QString encodingName;

    // One map from column name to value per data row. A row shorter than the header gives empty values;
    // fields past the last column are dropped; of two equal names the later column wins.
    QList<QHash<QString, QString>> dictionaries() const;
};

class ParseError : public std::exception {
public:
    enum Kind { unreadable, empty };

    explicit ParseError(Kind kind) : kind(kind) {}

    Kind kind;

    QString errorDescription() const;
    const char* what() const noexcept override;
};

// Reads a whole file. Throws ParseError.
RawTable parseRaw(const QByteArray& data);

// The row that most likely holds the column names, so that titles and notes above a table are stepped over.
qsizetype detectHeaderRow(const Rows& rows);

// The table below the given header row; an index out of range is clamped.
Table table(const RawTable& raw, qsizetype headerRow);

// The column that most likely holds the e-mail address, by name first and then by content.
std::optional<QString> guessEmailColumn(const Table& table);

} // namespace CSVParser
