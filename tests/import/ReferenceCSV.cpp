#include "ReferenceCSV.h"

#include "import/CSVParserSteps.h"
#include "records/Text.h"

namespace ReferenceCSV {

QList<QStringList> rows(QStringView text, QChar delimiter) {
    QList<QStringList> result;
    QStringList row;
    QString field;
    bool inQuotes = false;
    const qsizetype n = text.size();
    const auto is = [&](qsizetype i, char16_t c) {
        return text[i] == QChar(c) && CSVParser::detail::standsAlone(text, i);
    };
    for (qsizetype i = 0; i < n; ++i) {
        if (inQuotes) {
            if (!is(i, u'"')) {
                field += text[i];
            } else if (i + 1 >= n) {
                break;
            } else if (is(i + 1, u'"')) {
                field += u'"';
                ++i;
            } else {
                inQuotes = false; // the next character is read as outside quotes
            }
        } else if (is(i, u'"')) {
            inQuotes = true;
        } else if (text[i] == u'\n') {
            row.append(field);
            result.append(row);
            field.clear();
            row.clear();
        } else if (is(i, delimiter.unicode())) {
            row.append(field);
            field.clear();
        } else {
            field += text[i];
        }
    }
    if (!field.isEmpty() || !row.isEmpty()) {
        row.append(field);
        result.append(row);
    }
    return result;
}

Result parse(const QByteArray& bytes) {
    const CSVParser::detail::Decoded decoded = CSVParser::detail::decode(bytes);
    Result result;
    result.delimiter = CSVParser::detail::detectDelimiter(decoded.text);
    result.encodingName = decoded.encodingName;
    result.rows = rows(decoded.text, result.delimiter);
    result.rows.removeIf([](const QStringList& row) { return std::all_of(row.cbegin(), row.cend(), Text::isBlank); });
    return result;
}

} // namespace ReferenceCSV
