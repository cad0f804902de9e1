#include "import/CSVParserSteps.h"

#include <QTextBoundaryFinder>

#include <array>
#include <map>

namespace CSVParser::detail {

namespace {

// Below U+0300 no code point joins its neighbour into one cluster (CR LF aside, gone by now).
constexpr char16_t firstJoining = 0x0300;

constexpr qsizetype sampleCharacters = 65536;
constexpr int sampleLines = 20;

// Per-line counts of one candidate over the sample, and their plain total.
struct DelimiterCount {
    QList<int> perLine;
    qint64 total = 0;
};

// The next quote at or after from that stands alone, or -1.
qsizetype nextQuote(QStringView text, qsizetype from) {
    for (qsizetype at = text.indexOf(u'"', from); at >= 0; at = text.indexOf(u'"', at + 1))
        if (standsAlone(text, at))
            return at;
    return -1;
}

DelimiterCount countPerLine(QStringView sample, char16_t candidate) {
    DelimiterCount result;
    int current = 0;
    const qsizetype n = sample.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = sample[i].unicode();
        if (c == u'"' && standsAlone(sample, i)) {
            const qsizetype close = nextQuote(sample, i + 1);
            if (close < 0)
                break; // a quoted run that never closes ends the scan
            i = close;
        } else if (c == u'\n') {
            result.perLine.append(current);
            current = 0;
            if (result.perLine.size() == sampleLines)
                return result;
        } else if (c == candidate && standsAlone(sample, i)) {
            ++current;
            ++result.total;
        }
    }
    result.perLine.append(current);
    return result;
}

// How many lines agree on the most frequent non-zero count. Lines without the candidate are set aside:
// titles, notes and blank lines say nothing about it.
int consistency(const QList<int>& perLine) {
    std::map<int, int> frequency;
    int best = 0;
    for (int count : perLine)
        if (count > 0)
            best = std::max(best, ++frequency[count]);
    return best;
}

} // namespace

bool standsAlone(QStringView text, qsizetype index) {
    const bool plainBefore = index == 0 || text[index - 1].unicode() < firstJoining;
    const bool plainAfter = index + 1 >= text.size() || text[index + 1].unicode() < firstJoining;
    if (plainBefore && plainAfter)
        return true;
    // Two code units either side cover a surrogate pair; the rules that decide a break next to an ASCII
    // character look no further.
    const qsizetype from = qMax<qsizetype>(0, index - 2);
    const qsizetype to = qMin(text.size(), index + 3);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data() + from, to - from);
    finder.setPosition(index - from);
    if (!finder.isAtBoundary())
        return false;
    finder.setPosition(index + 1 - from);
    return finder.isAtBoundary();
}

qsizetype prefixEnd(QStringView text, qsizetype characters) {
    if (text.size() <= characters)
        return text.size();
    bool plain = true;
    for (qsizetype i = 0; i <= characters && plain; ++i)
        plain = text[i].unicode() < firstJoining;
    if (plain)
        return characters;
    // Clusters are at least one code unit long; widen the window until it holds enough of them. A boundary
    // at the window's own end is no proof, as the cluster may go on past it.
    for (qsizetype window = characters + 64;; window *= 2) {
        const qsizetype length = qMin(window, text.size());
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), length);
        qsizetype count = 0;
        qsizetype position = 0;
        while (count < characters && (position = finder.toNextBoundary()) != -1)
            ++count;
        if (count == characters && (position < length || length == text.size()))
            return position;
        if (length == text.size())
            return text.size();
    }
}

QChar detectDelimiter(QStringView text) {
    static constexpr std::array<char16_t, 4> candidates = {u',', u';', u'\t', u'|'};
    const QStringView sample = text.first(prefixEnd(text, sampleCharacters));
    char16_t best = u',';
    int bestScore = -1;
    qint64 bestTotal = 0;
    for (char16_t candidate : candidates) {
        const DelimiterCount count = countPerLine(sample, candidate);
        const int score = consistency(count.perLine);
        if (score > bestScore || (score == bestScore && count.total > bestTotal)) {
            best = candidate;
            bestScore = score;
            bestTotal = count.total;
        }
    }
    return bestTotal == 0 ? QChar(u',') : QChar(best);
}

} // namespace CSVParser::detail
