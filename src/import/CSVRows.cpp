#include "import/CSVRows.h"
#include "import/CSVParserSteps.h"

#include <QDebug>

namespace CSVParser {

QByteArrayView Cells::view(qsizetype cell) const {
    qsizetype begin;
    qsizetype end;
    if (wide) {
        begin = wideSpans[cell].begin;
        end = wideSpans[cell].end;
    } else {
        begin = spans[cell].begin;
        end = spans[cell].end;
    }
    const qsizetype base = bytes.size();
    const char* data = begin < base ? bytes.constData() + begin : pieced.constData() + (begin - base);
    return QByteArrayView(data, end - begin);
}

QString Cells::text(qsizetype cell) const {
    const QByteArrayView bytesOfCell = view(cell);
    switch (codec) {
    case Codec::latin1:
        return QString::fromLatin1(bytesOfCell);
    case Codec::windows1252:
        return detail::fromWindows1252(bytesOfCell);
    case Codec::utf8:
        break;
    }
    return detail::utf8Text(bytesOfCell);
}

void Cells::appendUtf8(qsizetype cell, QByteArray& out) const {
    const QByteArrayView bytesOfCell = view(cell);
    if (codec == Codec::utf8) {
        out.append(bytesOfCell);
        return;
    }
    // At most three bytes a character; written through a pointer, as cells come by the million.
    const qsizetype before = out.size();
    out.resize(before + 3 * bytesOfCell.size());
    char* p = out.data() + before;
    for (const char c : bytesOfCell) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80) {
            *p++ = c;
            continue;
        }
        const char16_t u = codec == Codec::windows1252 ? detail::windows1252Char(b) : char16_t(b);
        if (u < 0x800) {
            *p++ = char(0xC0 | (u >> 6));
        } else {
            *p++ = char(0xE0 | (u >> 12));
            *p++ = char(0x80 | ((u >> 6) & 0x3F));
        }
        *p++ = char(0x80 | (u & 0x3F));
    }
    out.truncate(p - out.constData());
}

QStringList Row::toList() const {
    QStringList list;
    list.reserve(m_count);
    for (qsizetype i = 0; i < m_count; ++i)
        list.append(at(i));
    return list;
}

Rows::Rows(const QList<QStringList>& rows) {
    auto cells = std::make_shared<Cells>();
    QList<qsizetype> bounds; // where each cell ends in pieced
    cells->rowStarts.reserve(rows.size() + 1);
    for (const QStringList& row : rows) {
        cells->rowStarts.append(bounds.size());
        for (const QString& text : row) {
            cells->pieced.append(text.toUtf8());
            bounds.append(cells->pieced.size());
        }
    }
    cells->rowStarts.append(bounds.size());
    cells->wide = Cells::needsWideOffsets(cells->pieced.size());
    if (cells->wide)
        cells->wideSpans.reserve(bounds.size());
    else
        cells->spans.reserve(bounds.size());
    for (qsizetype i = 0, begin = 0; i < bounds.size(); begin = bounds[i++]) {
        if (cells->wide)
            cells->wideSpans.append({begin, bounds[i]});
        else
            cells->spans.append({quint32(begin), quint32(bounds[i])});
    }
    m_count = rows.size();
    m_cells = std::move(cells);
}

Rows::Rows(std::shared_ptr<const Cells> cells) : m_cells(std::move(cells)) {
    m_count = m_cells->rowStarts.size() - 1;
}

Row Rows::at(qsizetype i) const {
    const FlatList<qsizetype>& starts = m_cells->rowStarts;
    const qsizetype row = m_first + i;
    return Row(m_cells.get(), starts[row], starts[row + 1] - starts[row]);
}

Rows Rows::sliced(qsizetype from, qsizetype n) const {
    from = qBound(qsizetype(0), from, m_count);
    Rows result(*this);
    result.m_first = m_first + from;
    result.m_count = qBound(qsizetype(0), n, m_count - from);
    return result;
}

QList<QStringList> Rows::toList() const {
    QList<QStringList> list;
    list.reserve(m_count);
    for (const Row row : *this)
        list.append(row.toList());
    return list;
}

bool operator==(const Rows& a, const Rows& b) {
    if (a.size() != b.size())
        return false;
    for (qsizetype r = 0; r < a.size(); ++r) {
        const Row left = a.at(r);
        const Row right = b.at(r);
        if (left.size() != right.size())
            return false;
        for (qsizetype c = 0; c < left.size(); ++c)
            if (left.at(c) != right.at(c))
                return false;
    }
    return true;
}

QDebug operator<<(QDebug debug, const Rows& rows) {
    return debug << rows.toList();
}

} // namespace CSVParser
