#pragma once

#include "SMTPWire.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>

#include <optional>

// Takes whole replies off the bytes a server sends, however they are cut into reads. Every byte is looked at
// once, and nothing held grows past the limits below, whatever the server sends: a hostile or broken server
// can neither fill the memory nor make the main thread decode the same lines again and again.
class SMTPReplyReader {
public:
    // Far above what any server sends (RFC 5321 allows 512 bytes a line), far below what could hurt.
    static constexpr qsizetype maxLineBytes = 2048;       // one line, without its CR LF
    static constexpr qsizetype maxReplyBytes = 64 * 1024; // a whole reply, line ends included

    enum class Fault { none, lineTooLong, replyTooLong };

    void append(QByteArrayView bytes);
    // The next whole reply, or nothing while its last line hasn't fully arrived or after a fault.
    std::optional<SMTPResponse> next();
    // Set once a limit is passed; the reader then takes nothing more until clear().
    Fault fault() const { return m_fault; }
    // The code the reply that passed a limit began with, 0 if it has none.
    int faultCode() const { return m_faultCode; }
    void clear();
    // Bytes held now, for the memory bound: the buffer and the lines of a reply not yet whole.
    qsizetype heldBytes() const;

private:
    void fail(Fault fault, qsizetype lineStart);
    void compact();

    QByteArray m_bytes;
    qsizetype m_lineStart = 0; // the current line's first byte in m_bytes
    qsizetype m_scanned = 0;   // where the search for the current line's end goes on
    QStringList m_lines;       // the lines of the reply so far, decoded
    qsizetype m_replyBytes = 0;
    Fault m_fault = Fault::none;
    int m_faultCode = 0;
};
