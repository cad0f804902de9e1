#include "import/CSVParser.h"
#include "import/CSVParserSteps.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"

#include <QCoreApplication>

#include <map>

namespace CSVParser {

namespace {

constexpr qsizetype sampledRows = 200;

bool hasContent(const QString& field) {
    return !Text::isBlank(field);
}

qsizetype nonEmptyFields(const Row& row) {
    return std::count_if(row.cbegin(), row.cend(), hasContent);
}

} // namespace

QString ParseError::errorDescription() const {
    switch (kind) {
    case unreadable:
        return QCoreApplication::translate("CSVParser", "Impossibile leggere il file: codifica non riconosciuta.");
    case empty:
        return QCoreApplication::translate("CSVParser", "Il file non contiene righe.");
    }
    return {};
}

const char* ParseError::what() const noexcept {
    return kind == unreadable ? "CSVParser::ParseError::unreadable" : "CSVParser::ParseError::empty";
}

RawTable parseRaw(const QByteArray& data) {
    // The cells stay in the file's bytes; only the part that decides the delimiter is turned into text.
    detail::Source source = detail::source(data);
    const QChar delimiter = detail::detectDelimiter(detail::sampleText(source));
    // Only the test trims; newlines aren't whitespace, so a field holding just a line break keeps its row.
    Rows rows(detail::splitRows(source, char(delimiter.unicode()), true, Cells::needsWideOffsets(source.bytes.size())));
    if (rows.isEmpty())
        throw ParseError(ParseError::empty);
    return RawTable{std::move(rows), delimiter, std::move(source.encodingName)};
}

qsizetype detectHeaderRow(const Rows& rows) {
    if (rows.size() < 2)
        return 0;
    std::map<qsizetype, int> rowsPerWidth;
    for (qsizetype i = 0; i < qMin(rows.size(), sampledRows); ++i)
        if (rows[i].size() >= 2)
            ++rowsPerWidth[rows[i].size()];
    if (rowsPerWidth.empty())
        return 0;
    qsizetype width = 0;
    int most = 0;
    for (const auto& [fields, count] : rowsPerWidth) { // widths ascending, so >= lets the larger win a tie
        if (count >= most) {
            width = fields;
            most = count;
        }
    }
    // Spreadsheets pad a title row to the table's width, so a row of the right width that is mostly empty
    // is passed over while a fuller one exists.
    qsizetype firstOfWidth = -1;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        if (rows[i].size() != width)
            continue;
        if (nonEmptyFields(rows[i]) * 2 >= width)
            return i;
        if (firstOfWidth < 0)
            firstOfWidth = i;
    }
    return firstOfWidth;
}

Table table(const RawTable& raw, qsizetype headerRow) {
    Table result;
    result.delimiter = raw.delimiter;
    result.encodingName = raw.encodingName;
    if (raw.rows.isEmpty())
        return result;
    const qsizetype header = qBound<qsizetype>(0, headerRow, raw.rows.size() - 1);
    const Row headerCells = raw.rows[header];
    QStringList names;
    names.reserve(headerCells.size());
    for (const QString& cell : headerCells)
        names.append(Text::trimmedWhitespace(cell));
    result.columns = detail::deduplicate(names);
    result.rows = raw.rows.mid(header + 1);
    return result;
}

QList<QHash<QString, QString>> Table::dictionaries() const {
    QList<QHash<QString, QString>> result;
    result.reserve(rows.size());
    for (const Row row : rows) {
        QHash<QString, QString> values;
        values.reserve(columns.size());
        for (qsizetype i = 0; i < columns.size(); ++i)
            if (!columns[i].isEmpty())
                values.insert(columns[i], row.value(i));
        result.append(std::move(values));
    }
    return result;
}

std::optional<QString> guessEmailColumn(const Table& table) {
    for (const QString& column : table.columns) {
        const QString name = Text::lowercased(column);
        if (name.contains(u"mail") || name == u"posta") // "mail" covers "email" and "e-mail"
            return column;
    }
    const qsizetype sampled = qMin(table.rows.size(), sampledRows);
    std::optional<QString> best;
    qsizetype bestScore = 0;
    for (qsizetype column = 0; column < table.columns.size(); ++column) {
        qsizetype score = 0;
        for (qsizetype r = 0; r < sampled; ++r) {
            const Row row = table.rows[r];
            if (column < row.size() && isValidEmailSyntax(row[column]))
                ++score;
        }
        if (score > bestScore) {
            best = table.columns[column];
            bestScore = score;
        }
    }
    return best;
}

namespace detail {

QStringList deduplicate(const QStringList& names) {
    QStringList result;
    result.reserve(names.size());
    QHash<QString, int> seen; // lower-cased name -> how many times it has come up
    for (qsizetype i = 0; i < names.size(); ++i) {
        QString name = names[i].isEmpty() ? QStringLiteral("colonna%1").arg(i + 1) : names[i];
        // Names made by a suffix don't go into the map, so "a, a, a_2" gives two columns called a_2.
        auto found = seen.find(Text::lowercased(name));
        if (found == seen.end()) {
            seen.insert(Text::lowercased(name), 1);
        } else {
            name += QStringLiteral("_%1").arg(++found.value());
        }
        result.append(std::move(name));
    }
    return result;
}

} // namespace detail

} // namespace CSVParser
