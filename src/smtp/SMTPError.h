#pragma once

#include <QAbstractSocket>
#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <exception>
#include <optional>

// Everything that can go wrong while talking to the mail server, as the user reads it. Thrown through
// co_await by SMTPSession and caught by whoever started the action.
class SMTPError : public std::exception {
    Q_DECLARE_TR_FUNCTIONS(SMTPError)
public:
    enum class Case { transport, unexpectedReply, authenticationFailed, connectionClosed, timeout, notConnected };

    static SMTPError transport(const QString& text);
    static SMTPError unexpectedReply(const QString& command, int code, const QString& message);
    static SMTPError authenticationFailed(const QString& text);
    static SMTPError connectionClosed();
    static SMTPError timeout();
    static SMTPError notConnected();
    // What the user reads of a connection the socket layer gave up on, in Italian whatever the platform's
    // own text is: a closed port, an unknown host, a certificate that isn't trusted.
    static QString testoConnessione(const QAbstractSocket& socket);

    Case kind() const { return m_case; }
    // The payload: the text of transport and authenticationFailed, the server's text of unexpectedReply.
    QString text() const { return m_text; }
    QString command() const { return m_command; }
    int code() const { return m_code; }

    QString errorDescription() const;
    // Present only when the server refused the recipient for good (a 5xx to RCPT TO); the caller then
    // stops writing to that address.
    std::optional<QString> rifiutoDefinitivoDestinatario() const;

    const char* what() const noexcept override { return m_what.constData(); }

private:
    SMTPError(Case kind, QString text, QString command = {}, int code = 0);

    Case m_case;
    QString m_text;
    QString m_command;
    int m_code;
    QByteArray m_what;
};
