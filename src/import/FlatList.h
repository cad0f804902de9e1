#pragma once

#include <QtGlobal>

#include <cstdlib>
#include <new>
#include <type_traits>

namespace CSVParser {

// A growing array of a trivial type. It appends without a call, as a file has millions of cells, and grows
// through realloc, which moves a large block's pages rather than copying them.
template <typename T> class FlatList {
public:
    FlatList() = default;
    FlatList(const FlatList&) = delete;
    FlatList& operator=(const FlatList&) = delete;
    ~FlatList() { std::free(m_data); }

    qsizetype size() const { return m_size; }
    const T& operator[](qsizetype i) const { return m_data[i]; }
    void append(const T& value) {
        if (Q_UNLIKELY(m_size == m_capacity))
            reserve(qMax(qsizetype(64), m_capacity * 2));
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
    T* m_data = nullptr;
    qsizetype m_size = 0;
    qsizetype m_capacity = 0;
};

} // namespace CSVParser
