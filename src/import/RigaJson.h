#pragma once

#include "import/CSVRows.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

// A data row's values in the form the store keeps them: a JSON object of texts in UTF-8, written straight
// from the cells' bytes instead of through a map of strings per row (an import writes hundreds of thousands).
// The object is the one StoreTables::encodeValues writes for the map an import builds: each named column
// once, of two equal names the later column, the empty text for a cell past a short row's end, the same
// escapes. The keys come in column order; a map has none of its own.
class RigaJson {
public:
    explicit RigaJson(const QStringList& columns);

    void append(const CSVParser::Row& row, QByteArray& out) const;

private:
    struct Chiave {
        QByteArray prefisso; // the key in quotes and the colon, after a comma from the second on
        qsizetype colonna;   // the cell that gives the value
    };
    QList<Chiave> m_chiavi;
    mutable QByteArray m_cella; // one cell's text, reused from row to row
};
