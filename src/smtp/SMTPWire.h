#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

struct SMTPConfig;

struct SMTPResponse {
    int code = 0;
    QString message;
    bool operator==(const SMTPResponse&) const = default;
};

// The byte-level pieces of the conversation, free of any socket so they can be checked on their own.
namespace SMTPWire {

// Takes one whole reply off the front of the buffer. Returns nothing, and leaves the buffer alone, while
// the reply's last line hasn't fully arrived.
std::optional<SMTPResponse> parseBufferedResponse(QByteArray& buffer);

// A full stop at the start of any line, the first one included, is doubled so the server can't take it
// for the end of the data.
QByteArray dotStuffed(const QByteArray& data);

// The name the client gives of itself in EHLO: the first of the sender's domain, the user name's domain
// and the machine's name that looks like a domain.
QString ehloDomain(const SMTPConfig& config, const QString& hostName);

// A command with its line end. Returns nothing when the argument holds a CR or LF: written as it is, it
// would smuggle a second command onto the wire.
std::optional<QByteArray> commandLine(const char* verb, const QString& argument = {}, const char* suffix = "");

} // namespace SMTPWire
