#include "import/RigaJson.h"

#include <QHash>

namespace {

// The text between the quotes of a JSON string, as encodeValues escapes it: quote and backslash, the three
// usual control characters by letter and the others as \u00xx; everything else as it stands. In UTF-8 every
// one of these is a byte of its own, never part of a longer character.
void appendEscaped(QByteArrayView utf8, QByteArray& out) {
    qsizetype run = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const auto b = static_cast<unsigned char>(utf8[i]);
        if (b >= 0x20 && b != '"' && b != '\\')
            continue;
        out.append(utf8.sliced(run, i - run));
        run = i + 1;
        switch (b) {
        case '"':
            out.append("\\\"");
            break;
        case '\\':
            out.append("\\\\");
            break;
        case '\n':
            out.append("\\n");
            break;
        case '\r':
            out.append("\\r");
            break;
        case '\t':
            out.append("\\t");
            break;
        default:
            out.append("\\u00");
            out.append("0123456789abcdef"[b >> 4]);
            out.append("0123456789abcdef"[b & 0xF]);
        }
    }
    out.append(utf8.sliced(run));
}

} // namespace

RigaJson::RigaJson(const QStringList& columns) {
    // The map an import builds takes every named column in turn, so a later equal name replaces the value.
    QHash<QString, qsizetype> ultima;
    for (qsizetype i = 0; i < columns.size(); ++i)
        if (!columns.at(i).isEmpty())
            ultima.insert(columns.at(i), i);
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (columns.at(i).isEmpty() || ultima.value(columns.at(i)) != i)
            continue;
        QByteArray prefisso = m_chiavi.isEmpty() ? "\"" : ",\"";
        appendEscaped(columns.at(i).toUtf8(), prefisso);
        prefisso.append("\":");
        m_chiavi.append({std::move(prefisso), i});
    }
}

void RigaJson::append(const CSVParser::Row& row, QByteArray& out) const {
    out.append('{');
    for (const Chiave& chiave : m_chiavi) {
        out.append(chiave.prefisso);
        out.append('"');
        m_cella.truncate(0); // keeps its room for the next cell
        row.appendUtf8(chiave.colonna, m_cella);
        appendEscaped(m_cella, out);
        out.append('"');
    }
    out.append('}');
}
