#include "import/CSVParserSteps.h"
#include "records/Text.h"

#include <bit>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace CSVParser::detail {

namespace {

// The first byte at or after i that is one of the given ones, or n. Cells are some twenty bytes long, so the
// search goes sixteen bytes at a time where the processor allows.
template <char... wanted> qsizetype findAny(const char* s, qsizetype i, qsizetype n) {
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        const int hits = _mm_movemask_epi8((_mm_cmpeq_epi8(v, _mm_set1_epi8(wanted)) | ...));
        if (hits != 0)
            return i + std::countr_zero(unsigned(hits));
    }
#endif
    for (; i < n; ++i)
        if (((s[i] == wanted) || ...))
            return i;
    return n;
}

// Reads the bytes once, front to back, and notes where each cell begins and ends. Only a cell that isn't one
// run of the bytes as they stand (a quote inside it, a line end inside quotes) is copied, into `pieced`.
template <typename Offset> class Splitter {
public:
    Splitter(const Source& source, char delimiter, bool dropBlankRows, FlatList<Cells::Span<Offset>> Cells::*spans)
        : m_cells(std::make_shared<Cells>()), m_spans(m_cells.get()->*spans), m_s(source.bytes.constData()),
          m_start(source.start), m_n(source.bytes.size()), m_delimiter(delimiter), m_dropBlankRows(dropBlankRows) {
        m_cells->bytes = source.bytes;
        m_cells->codec = source.codec;
        m_cells->wide = std::is_same_v<Offset, qint64>;
        // Guesses from a spreadsheet export of some 18 bytes a cell; a reservation costs no memory until it is
        // written, and growing the lists past it copies nothing.
        m_spans.reserve(m_n / 16 + 16);
        m_cells->rowStarts.reserve(m_n / 128 + 16);
    }

    std::shared_ptr<Cells> run() {
        // Grapheme clusters matter only where a character at or past U+0300 can stand next to a delimiter or a
        // quote; no character of the two single-byte encodings joins its neighbour. The delimiter is a template
        // argument so that the search for the next special byte compares against constants.
        const bool clusters = m_cells->codec == Cells::Codec::utf8;
        switch (m_delimiter) {
        case ';':
            clusters ? split<true, ';'>() : split<false, ';'>();
            break;
        case '\t':
            clusters ? split<true, '\t'>() : split<false, '\t'>();
            break;
        case '|':
            clusters ? split<true, '|'>() : split<false, '|'>();
            break;
        default:
            clusters ? split<true, ','>() : split<false, ','>();
            break;
        }
        m_cells->rowStarts.append(m_spans.size());
        return std::move(m_cells);
    }

private:
    template <bool clusters, char delimiter> void split();

    bool standsAloneAt(qsizetype i) const;
    bool hasText(qsizetype cell) const;

    // The current field is one run of the bytes until a second one comes; then its text goes into pieced.
    void addRun(qsizetype from, qsizetype to) {
        if (from == to)
            return;
        if (m_piecedBegin < 0) {
            if (m_runBegin < 0) {
                m_runBegin = from;
                m_runEnd = to;
                return;
            }
            startPiecing();
        }
        m_cells->pieced.append(m_s + from, to - from);
    }
    void addLineFeed() {
        if (m_piecedBegin < 0)
            startPiecing();
        m_cells->pieced.append('\n');
    }
    void startPiecing() {
        m_piecedBegin = m_cells->pieced.size();
        if (m_runBegin >= 0)
            m_cells->pieced.append(m_s + m_runBegin, m_runEnd - m_runBegin);
    }
    bool fieldHasText() const { return m_runBegin >= 0 || m_piecedBegin >= 0; }

    void endField(qsizetype from, qsizetype to) {
        if (!fieldHasText()) { // a cell without quotes, or quoted with nothing after its closing quote
            m_spans.append({Offset(from), Offset(to)});
            return;
        }
        addRun(from, to);
        if (m_piecedBegin >= 0)
            m_spans.append({Offset(m_n + m_piecedBegin), Offset(m_n + m_cells->pieced.size())});
        else
            m_spans.append({Offset(m_runBegin), Offset(m_runEnd)});
        m_runBegin = m_piecedBegin = -1;
    }

    void endRow() {
        if (m_dropBlankRows) {
            bool blank = true;
            for (qsizetype cell = m_rowStart; cell < m_spans.size() && blank; ++cell)
                blank = !hasText(cell);
            if (blank) {
                m_spans.truncate(m_rowStart);
                return;
            }
        }
        m_cells->rowStarts.append(m_rowStart);
        m_rowStart = m_spans.size();
    }

    std::shared_ptr<Cells> m_cells;
    FlatList<Cells::Span<Offset>>& m_spans;
    const char* m_s;
    qsizetype m_start;
    qsizetype m_n;
    char m_delimiter;
    bool m_dropBlankRows;
    qsizetype m_rowStart = 0;
    qsizetype m_runBegin = -1;
    qsizetype m_runEnd = -1;
    qsizetype m_piecedBegin = -1;
};

template <typename Offset> template <bool clusters, char delimiter> void Splitter<Offset>::split() {
    const char* s = m_s;
    const qsizetype n = m_n;
    qsizetype i = m_start;
    qsizetype runStart = i;
    bool textEnded = false;
    while (!textEnded) {
        i = findAny<delimiter, '"', '\n', '\r'>(s, i, n);
        if (i >= n)
            break;
        const char c = s[i];
        if (c == '\n' || c == '\r') {
            endField(runStart, i);
            endRow();
            i += c == '\r' && i + 1 < n && s[i + 1] == '\n' ? 2 : 1;
            runStart = i;
            continue;
        }
        if (clusters && !standsAloneAt(i)) {
            ++i;
            continue;
        }
        if (c == delimiter) {
            endField(runStart, i);
            runStart = ++i;
            continue;
        }
        // A quote opens quotes anywhere in a field and is itself dropped.
        addRun(runStart, i);
        runStart = ++i;
        for (;;) {
            i = findAny<'"', '\r'>(s, i, n);
            if (i >= n) { // an open quote holds everything up to the end
                textEnded = true;
                break;
            }
            if (s[i] == '\r') { // line ends inside quotes become LF as well
                addRun(runStart, i);
                if (i + 1 < n && s[i + 1] == '\n') {
                    runStart = i + 1;
                    i += 2;
                } else {
                    addLineFeed();
                    runStart = ++i;
                }
                continue;
            }
            if (clusters && !standsAloneAt(i)) {
                ++i;
                continue;
            }
            addRun(runStart, i);
            if (i + 1 >= n) {
                runStart = i = n;
                textEnded = true;
                break;
            }
            if (s[i + 1] == '"' && (!clusters || standsAloneAt(i + 1))) {
                runStart = i + 1; // the second quote begins the next run, so one quote stays in the field
                i += 2;
                continue;
            }
            runStart = ++i; // quotes close; what follows is read as outside them
            break;
        }
    }
    // A last line without a line end is kept; a final line end adds no empty row.
    if (runStart < n || fieldHasText() || m_spans.size() > m_rowStart) {
        endField(runStart, n);
        endRow();
    }
}

// The byte at i is ASCII. Below U+0300 no code point joins its neighbour into one cluster; a UTF-8 sequence
// for one at or past it begins with 0xCC or more.
template <typename Offset> bool Splitter<Offset>::standsAloneAt(qsizetype i) const {
    const auto byteAt = [this](qsizetype at) { return static_cast<unsigned char>(m_s[at]); };
    const auto startOfCodePoint = [&](qsizetype at) {
        while (at > m_start && (byteAt(at) & 0xC0) == 0x80)
            --at;
        return at;
    };
    const bool plainAfter = i + 1 >= m_n || byteAt(i + 1) < 0xCC;
    const bool plainBefore = i == m_start || byteAt(i - 1) < 0x80 || byteAt(startOfCodePoint(i - 1)) < 0xCC;
    if (plainBefore && plainAfter)
        return true;
    // The text test looks at two code units either side of the normalised text, and Qt's segmentation can
    // answer differently for CR LF than for the LF it becomes; four code points either side, their line ends
    // made LF, hold those units.
    qsizetype from = i;
    for (int k = 0; k < 4 && from > m_start; ++k)
        from = startOfCodePoint(from - 1);
    qsizetype to = i + 1;
    for (int k = 0; k < 4 && to < m_n; ++k)
        for (++to; to < m_n && (byteAt(to) & 0xC0) == 0x80;)
            ++to;
    QString before = utf8Text(QByteArrayView(m_s + from, i - from));
    QString after = utf8Text(QByteArrayView(m_s + i, to - i));
    normalizeLineEnds(before);
    normalizeLineEnds(after);
    return standsAlone(before + after, before.size());
}

template <typename Offset> bool Splitter<Offset>::hasText(qsizetype cell) const {
    const QByteArrayView bytes = m_cells->view(cell);
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b == ' ' || b == '\t')
            continue;
        if (b < 0x80)
            return true;
        if (m_cells->codec == Cells::Codec::utf8)
            return !Text::isBlank(utf8Text(bytes));
        if (b != 0xA0) // of 0x80-0xFF only the no-break space is whitespace in either single-byte encoding
            return true;
    }
    return false;
}

} // namespace

std::shared_ptr<Cells> splitRows(const Source& source, char delimiter, bool dropBlankRows, bool wideOffsets) {
    if (wideOffsets)
        return Splitter<qint64>(source, delimiter, dropBlankRows, &Cells::wideSpans).run();
    return Splitter<quint32>(source, delimiter, dropBlankRows, &Cells::spans).run();
}

Rows parseRows(QStringView text, QChar delimiter) {
    const QByteArray bytes = text.toUtf8();
    return Rows(splitRows(Source{bytes, 0, Cells::Codec::utf8, {}}, char(delimiter.unicode()), false,
                          Cells::needsWideOffsets(bytes.size())));
}

} // namespace CSVParser::detail
