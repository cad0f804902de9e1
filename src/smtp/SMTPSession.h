#pragma once

#include "settings/SMTPConfig.h"
#include "SMTPError.h"
#include "SMTPReplies.h"
#include "SMTPWire.h"

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QTcpSocket>

#include <QCoro/QCoroTask>

#include <chrono>
#include <memory>

struct SMTPSessionOptions {
    // Every wait (opening the connection, each write, each read) ends after this long.
    std::chrono::milliseconds timeout = std::chrono::seconds(30);
    // Certificate authorities trusted on top of the system's, for tests that run their own server. It
    // only ever adds trust in a known issuer: a certificate that fails the checks is still refused.
    QList<QSslCertificate> extraTrustedCertificates = {};
};

// One SMTP server, at most one connection, any number of messages one after the other, one recipient each.
// Plain TCP or TLS from the first byte; never STARTTLS. Lives on the thread that runs the event loop; the
// caller awaits each operation before starting the next, and keeps the object alive while one runs.
// Failures are thrown as SMTPError; what to do about them is the caller's business.
class SMTPSession {
public:
    using Options = SMTPSessionOptions;

    SMTPSession(SMTPConfig config, QString password, Options options = {});
    ~SMTPSession();
    SMTPSession(const SMTPSession&) = delete;
    SMTPSession& operator=(const SMTPSession&) = delete;

    // Opens the connection, takes the greeting, says EHLO and authenticates when a user name is set.
    // May be called again after disconnect(): that is how a run reconnects.
    QCoro::Task<> connect();
    // One transaction. A refusal of the recipient or of DATA is followed by RSET; the session stays usable
    // after any refusal, but not after a transport failure, a time-out or a close.
    QCoro::Task<> sendMessage(QString envelopeFrom, QString recipient, QByteArray data);
    // Says QUIT and closes. Never fails.
    QCoro::Task<> disconnect();

    bool hasConnection() const { return m_connection != nullptr; }

private:
    struct SocketDeleter {
        void operator()(QTcpSocket* socket) const;
    };

    QCoro::Task<> ehlo();
    QCoro::Task<> authenticate();
    QCoro::Task<> authenticateLogin();
    QCoro::Task<> authenticatePlain();
    QCoro::Task<> write(QByteArray bytes);
    QCoro::Task<> writeCommand(const char* verb, QString argument, const char* suffix = "");
    QCoro::Task<SMTPResponse> readResponse();
    QCoro::Task<> receiveChunk();
    // Reads the reply the session waits for and throws unless it lets the conversation go on.
    QCoro::Task<SMTPResponse> expect(SMTPAwaiting state);
    // The same, but a refusal is first followed by RSET, whose own outcome doesn't matter.
    QCoro::Task<> expectOrReset(SMTPAwaiting state);

    QTcpSocket* makeSocket() const;
    SMTPError socketFailure() const;
    [[noreturn]] void failTimedOut();

    const SMTPConfig m_config;
    const QString m_password;
    const Options m_options;
    std::unique_ptr<QTcpSocket, SocketDeleter> m_connection;
    QByteArray m_buffer;
    bool m_supportsAuthLogin = false;
    bool m_supportsAuthPlain = false;
};
