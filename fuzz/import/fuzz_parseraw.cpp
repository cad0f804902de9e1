#include "import/CSVParser.h"
#include "records/Text.h"
#include "ReferenceCSV.h"

#include <cstdint>
#include <cstdlib>

// Reads arbitrary bytes as a CSV file and takes the result through every later step, as an import does.
// Besides crashes, it stops on results that break what callers rely on, and on any difference from the
// same rules applied the plain way to the whole decoded text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const ReferenceCSV::Result expected = ReferenceCSV::parse(bytes);
    CSVParser::RawTable raw;
    try {
        raw = CSVParser::parseRaw(bytes);
    } catch (const CSVParser::ParseError& error) {
        if (error.errorDescription().isEmpty() || !expected.rows.isEmpty())
            std::abort();
        return 0;
    }
    if (raw.rows != expected.rows || raw.delimiter != expected.delimiter || raw.encodingName != expected.encodingName)
        std::abort();
    if (raw.rows.isEmpty())
        std::abort();
    for (const CSVParser::Row row : raw.rows) {
        if (std::all_of(row.cbegin(), row.cend(), Text::isBlank))
            std::abort();
        // An import writes the cells' UTF-8 straight into the store.
        for (qsizetype i = 0; i < row.size(); ++i) {
            QByteArray utf8;
            row.appendUtf8(i, utf8);
            if (utf8 != row.at(i).toUtf8())
                std::abort();
        }
    }
    const qsizetype header = CSVParser::detectHeaderRow(raw.rows);
    if (header < 0 || header >= raw.rows.size())
        std::abort();
    for (qsizetype index : {qsizetype(-1), header, raw.rows.size()}) {
        const CSVParser::Table table = CSVParser::table(raw, index);
        if (table.dictionaries().size() != table.rows.size())
            std::abort();
        const std::optional<QString> email = CSVParser::guessEmailColumn(table);
        if (email && !table.columns.contains(*email))
            std::abort();
    }
    return 0;
}
