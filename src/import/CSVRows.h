#pragma once

#include "import/FlatList.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <iterator>
#include <memory>

class QDebug;

namespace CSVParser {

// The cells of a whole file. A 50 MB export holds millions of cells, and a string for each takes eight times
// the file: here a cell is where it begins and ends in the file's own bytes, and becomes text only when it
// is read.
struct Cells {
    // How the bytes read as text. Files in UTF-16 are kept in their UTF-8 form.
    enum class Codec : quint8 { utf8, latin1, windows1252 };

    template <typename Offset> struct Span {
        Offset begin;
        Offset end;
    };

    QByteArray bytes;
    // The cells that aren't one run of `bytes` as they stand (quotes inside, a line end inside quotes), put
    // together. A span that begins at or past bytes.size() points in here.
    QByteArray pieced;
    Codec codec = Codec::utf8;
    // One span per cell, row after row. Offsets take 32 bits, as memory is what reading a large file costs
    // most; only a file past 2 GiB, whose spans could point past 4 GiB, needs the wide ones.
    FlatList<Span<quint32>> spans;
    FlatList<Span<qint64>> wideSpans;
    bool wide = false;
    FlatList<qsizetype> rowStarts; // the index of each row's first cell, then the number of cells

    // Whether the spans of a file of this many bytes need wide offsets: pieced never outgrows the bytes.
    static bool needsWideOffsets(qsizetype size) { return size > qsizetype(0x7FFFFFFF); }

    QByteArrayView view(qsizetype cell) const;
    QString text(qsizetype cell) const;
    // The cell's text in UTF-8, appended: the bytes as they stand for a UTF-8 file.
    void appendUtf8(qsizetype cell, QByteArray& out) const;
};

// Steps through a container by index, handing out what at(i) returns: a row's cells and a table's rows are
// made on demand, not stored.
template <typename Container, typename Value> class IndexIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Value;
    using difference_type = qsizetype;
    using pointer = void;
    using reference = Value;

    IndexIterator(const Container* container, qsizetype i) : m_container(container), m_i(i) {}
    Value operator*() const { return m_container->at(m_i); }
    IndexIterator& operator++() {
        ++m_i;
        return *this;
    }
    IndexIterator operator++(int) { return {m_container, m_i++}; }
    bool operator==(const IndexIterator& other) const { return m_i == other.m_i; }

private:
    const Container* m_container;
    qsizetype m_i;
};

// One row of a table, read cell by cell. It looks into the table's cells, so it is valid as long as a Rows
// that holds them lives.
class Row {
public:
    Row(const Cells* cells, qsizetype first, qsizetype count) : m_cells(cells), m_first(first), m_count(count) {}

    qsizetype size() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }
    QString at(qsizetype i) const { return m_cells->text(m_first + i); }
    QString operator[](qsizetype i) const { return at(i); }
    // The empty text past the row's end, as for a row shorter than the header.
    QString value(qsizetype i) const { return i >= 0 && i < m_count ? at(i) : QString(); }
    // The text of cell i in UTF-8, appended to out; nothing past the row's end.
    void appendUtf8(qsizetype i, QByteArray& out) const {
        if (i >= 0 && i < m_count)
            m_cells->appendUtf8(m_first + i, out);
    }
    QStringList toList() const;

    using const_iterator = IndexIterator<Row, QString>;
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, m_count}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

private:
    const Cells* m_cells;
    qsizetype m_first;
    qsizetype m_count;
};

// Rows of a table, sharing one set of cells: taking the rows below a header copies nothing.
class Rows {
public:
    Rows() = default;
    // Rows made of texts, for a table built by hand; not explicit, so that such a table is written as lists.
    Rows(const QList<QStringList>& rows);
    explicit Rows(std::shared_ptr<const Cells> cells);

    qsizetype size() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }
    Row at(qsizetype i) const;
    Row operator[](qsizetype i) const { return at(i); }
    Row first() const { return at(0); }
    Rows first(qsizetype n) const { return sliced(0, n); }
    Rows mid(qsizetype from) const { return sliced(from, m_count - from); }
    Rows sliced(qsizetype from, qsizetype n) const;
    QList<QStringList> toList() const;

    using const_iterator = IndexIterator<Rows, Row>;
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, m_count}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

    // Equal when every row has the same texts, however the cells are held.
    friend bool operator==(const Rows& a, const Rows& b);
    friend bool operator!=(const Rows& a, const Rows& b) { return !(a == b); }

private:
    std::shared_ptr<const Cells> m_cells;
    qsizetype m_first = 0;
    qsizetype m_count = 0;
};

QDebug operator<<(QDebug debug, const Rows& rows);

} // namespace CSVParser
