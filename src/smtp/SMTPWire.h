#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

struct SMTPConfig;

struct SMTPResponse {
    int code = 0;
    QString message;
    QStringList lines; // each line's text after its code and the character that follows it
    bool operator==(const SMTPResponse&) const = default;
};

// The byte-level pieces of the conversation, free of any socket so they can be checked on their own.
namespace SMTPWire {

// A full stop at the start of any line, the first one included, is doubled so the server can't take it
// for the end of the data.
QByteArray dotStuffed(const QByteArray& data);

// The name the client gives of itself in EHLO: the first of the sender's domain, the user name's domain
// and the machine's name that looks like a domain.
QString ehloDomain(const SMTPConfig& config, const QString& hostName);

// A C0 control character (CR, LF, TAB, NUL, ESC…), DEL, or a C1 control character.
bool isControlCharacter(QChar c);
// The text with each control character replaced by a blank.
QString withoutControlCharacters(QString text);

// A command with its line end. Returns nothing when the argument holds a control character: a CR or LF
// would smuggle a second command onto the wire, and no server should be handed a NUL or an ESC either.
std::optional<QByteArray> commandLine(const char* verb, const QString& argument = {}, const char* suffix = "");

} // namespace SMTPWire
