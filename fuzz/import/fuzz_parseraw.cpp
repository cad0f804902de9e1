#include "import/CSVParser.h"
#include "records/Text.h"

#include <cstdint>
#include <cstdlib>

// Reads arbitrary bytes as a CSV file and takes the result through every later step, as an import does.
// Besides crashes, it stops on results that break what callers rely on.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    CSVParser::RawTable raw;
    try {
        raw = CSVParser::parseRaw(bytes);
    } catch (const CSVParser::ParseError& error) {
        if (error.errorDescription().isEmpty())
            std::abort();
        return 0;
    }
    if (raw.rows.isEmpty())
        std::abort();
    for (const QStringList& row : raw.rows)
        if (std::all_of(row.cbegin(), row.cend(), Text::isBlank))
            std::abort();
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
