#include "SMTPReplyReader.h"

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int codeAt(QByteArrayView line) {
    return (line.at(0) - '0') * 100 + (line.at(1) - '0') * 10 + (line.at(2) - '0');
}

bool startsWithCode(QByteArrayView line) {
    return line.size() >= 3 && isDigit(line.at(0)) && isDigit(line.at(1)) && isDigit(line.at(2));
}

// The code of a line that ends a reply: three digits alone, or three digits and a blank. Every other line,
// "250-..." and unparsable ones alike, continues the reply.
std::optional<int> finalCode(QByteArrayView line) {
    if (!startsWithCode(line) || (line.size() != 3 && (line.size() < 4 || line.at(3) != ' ')))
        return std::nullopt;
    return codeAt(line);
}

} // namespace

void SMTPReplyReader::append(QByteArrayView bytes) {
    if (m_fault == Fault::none)
        m_bytes.append(bytes);
}

std::optional<SMTPResponse> SMTPReplyReader::next() {
    while (m_fault == Fault::none) {
        // Only a CR LF pair ends a line; a line feed alone is part of the text.
        qsizetype end = m_bytes.indexOf('\n', m_scanned);
        while (end >= 0 && (end == m_lineStart || m_bytes.at(end - 1) != '\r'))
            end = m_bytes.indexOf('\n', end + 1);
        if (end < 0) {
            m_scanned = m_bytes.size();
            const qsizetype pending = m_bytes.size() - m_lineStart;
            const qsizetype text = m_bytes.endsWith('\r') ? pending - 1 : pending;
            if (text > maxLineBytes)
                fail(Fault::lineTooLong, m_lineStart);
            else if (m_replyBytes + text > maxReplyBytes)
                fail(Fault::replyTooLong, m_lineStart);
            else
                compact();
            return std::nullopt;
        }
        const QByteArrayView line(m_bytes.constData() + m_lineStart, end - 1 - m_lineStart);
        m_replyBytes += line.size() + 2;
        if (line.size() > maxLineBytes) {
            fail(Fault::lineTooLong, m_lineStart);
            return std::nullopt;
        }
        if (m_replyBytes > maxReplyBytes) {
            fail(Fault::replyTooLong, m_lineStart);
            return std::nullopt;
        }
        // Server texts end up in the history and on screen: no control character gets that far.
        m_lines << SMTPWire::withoutControlCharacters(QString::fromUtf8(line));
        const std::optional<int> code = finalCode(line);
        m_lineStart = m_scanned = end + 1;
        if (!code)
            continue;

        SMTPResponse response{*code, {}, {}};
        QStringList pieces;
        pieces.reserve(m_lines.size());
        for (const QString& text : std::as_const(m_lines)) {
            pieces << (text.size() >= 5 ? text.mid(4) : text);
            response.lines << text.mid(4);
        }
        response.message = pieces.join(u' ');
        m_lines.clear();
        m_replyBytes = 0;
        compact();
        return response;
    }
    return std::nullopt;
}

void SMTPReplyReader::fail(Fault fault, qsizetype lineStart) {
    m_fault = fault;
    // The code the reply began with; for a first line too long, the code that line begins with.
    const QByteArray first = m_lines.isEmpty() ? m_bytes.mid(lineStart, 3) : m_lines.first().left(3).toLatin1();
    m_faultCode = startsWithCode(first) ? codeAt(first) : 0;
    // Nothing after a fault can be trusted to be where a reply begins.
    m_bytes.clear();
    m_lines.clear();
    m_lineStart = m_scanned = m_replyBytes = 0;
}

// Drops the bytes already taken, once they are at least half of what is held: each byte moves a bounded
// number of times, so the work stays linear in what the server sent.
void SMTPReplyReader::compact() {
    if (m_lineStart == 0 || m_lineStart * 2 < m_bytes.size())
        return;
    m_bytes.remove(0, m_lineStart);
    m_scanned -= m_lineStart;
    m_lineStart = 0;
}

void SMTPReplyReader::clear() {
    m_bytes.clear();
    m_lines.clear();
    m_lineStart = m_scanned = m_replyBytes = 0;
    m_fault = Fault::none;
    m_faultCode = 0;
}

qsizetype SMTPReplyReader::heldBytes() const {
    qsizetype held = m_bytes.size();
    for (const QString& line : m_lines)
        held += line.size() * qsizetype(sizeof(QChar));
    return held;
}
