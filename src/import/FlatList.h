#pragma once

#include <QtGlobal>

#include <cstdlib>
#include <new>
#include <type_traits>

namespace CSVParser {

// Asks the system for the memory of a range now, in one call, rather than a page at a time as it is first
// written. On a virtual machine each first write to a page costs some 13 µs (measured here: 147 ms for
// 45 MB page by page, 9 ms in one call), a good part of reading a large file. Does nothing where the
// system can't.
void prefault(void* from, qsizetype bytes);

// A growing array of a trivial type. It appends without a call, as a file has millions of cells; it grows
// through realloc, which moves a large block's pages rather than copying them, and takes its memory from the
// system a megabyte ahead of the writing.
template <typename T> class FlatList {
public:
    FlatList() = default;
    FlatList(const FlatList&) = delete;
    FlatList& operator=(const FlatList&) = delete;
    ~FlatList() { std::free(m_data); }

    qsizetype size() const { return m_size; }
    const T& operator[](qsizetype i) const { return m_data[i]; }
    void append(const T& value) {
        if (Q_UNLIKELY(m_size == m_ready))
            makeRoom();
        m_data[m_size++] = value;
    }
    void truncate(qsizetype size) { m_size = qMin(m_size, size); }
    void reserve(qsizetype capacity) {
        if (capacity <= m_capacity)
            return;
        void* grown = std::realloc(m_data, size_t(capacity) * sizeof(T));
        if (!grown)
            throw std::bad_alloc();
        m_data = static_cast<T*>(grown);
        m_capacity = capacity;
    }

private:
    static_assert(std::is_trivially_copyable_v<T>);
    static constexpr qsizetype aheadItems = qMax(qsizetype(1), qsizetype(1 << 20) / qsizetype(sizeof(T)));

    void makeRoom() {
        if (m_size == m_capacity)
            reserve(qMax(qsizetype(64), m_capacity * 2));
        m_ready = qMin(m_capacity, m_size + aheadItems);
        prefault(m_data + m_size, (m_ready - m_size) * qsizetype(sizeof(T)));
    }

    T* m_data = nullptr;
    qsizetype m_size = 0;
    qsizetype m_ready = 0; // written or taken from the system, and within the capacity
    qsizetype m_capacity = 0;
};

} // namespace CSVParser
