#pragma once

#include "settings/SMTPConfig.h"
#include "SMTPError.h"
#include "SMTPReplies.h"
#include "SMTPReplyReader.h"
#include "SMTPWire.h"

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QString>

#include <QCoro/QCoroTask>

#include <chrono>
#include <functional>
#include <memory>

class ConnectionWaiter;
class QDeadlineTimer;
class QSslSocket;

struct SMTPSessionOptions {
    // Every wait (opening the connection, the TLS upgrade, each write, each whole reply) ends after this long.
    std::chrono::milliseconds timeout = std::chrono::seconds(30);
    // Certificate authorities trusted on top of the system's, for tests that run their own server. It
    // only ever adds trust in a known issuer: a certificate that fails the checks is still refused.
    QList<QSslCertificate> extraTrustedCertificates = {};
    // For tests, which have no DNS of their own: connect to this address instead of looking the host up.
    // The certificate is still checked against the host.
    QString addressForTests = {};
    // For tests on 127.0.0.x: a loopback server counts as a remote one.
    bool loopbackCountsAsRemote = false;
};

// One SMTP server, at most one connection, any number of messages one after the other, one recipient each.
// TLS from the first byte, or plain TCP upgraded with STARTTLS when the server offers it; credentials never
// cross an unencrypted connection to a server that isn't on this machine. Lives on the thread that runs the
// event loop; the caller awaits each operation before starting the next, and keeps the object alive while
// one runs. Failures are thrown as SMTPError; what to do about them is the caller's business.
class SMTPSession {
public:
    using Options = SMTPSessionOptions;

    SMTPSession(SMTPConfig config, QString password, Options options = {});
    ~SMTPSession();
    SMTPSession(const SMTPSession&) = delete;
    SMTPSession& operator=(const SMTPSession&) = delete;

    // Opens the connection, takes the greeting, says EHLO, upgrades to TLS when it can and authenticates
    // when a user name is set. May be called again after disconnect(): that is how a run reconnects.
    QCoro::Task<> connect();
    // Work of the caller's to do while the server works: each runs once a command has gone out and before
    // its reply is read, so that the two overlap. Neither may throw. One whose moment a failure comes before
    // is not run.
    struct Meanwhile {
        std::function<void()> afterMailFrom;
        std::function<void()> afterData; // the message is out, the server's verdict on it not yet read
    };

    // One transaction. A refusal of the recipient or of DATA is followed by RSET; the session stays usable
    // after any refusal, but not after a transport failure, a time-out, a close or an overlong reply.
    QCoro::Task<> sendMessage(QString envelopeFrom, QString recipient, QByteArray data, Meanwhile meanwhile = {});
    // Says QUIT and closes. Never fails.
    QCoro::Task<> disconnect();

    bool hasConnection() const { return m_connection != nullptr; }
    // Whether the connection is still open, so a next message can go on it: false before connect(), after
    // disconnect() and after any failure that ended the connection.
    bool isConnected() const;

private:
    struct SocketDeleter {
        void operator()(QSslSocket* socket) const;
    };

    QCoro::Task<> open();
    QCoro::Task<> startTls();
    // Waits for the connection or the TLS handshake the waiter listens to, and checks where it ended.
    QCoro::Task<> settle(ConnectionWaiter& waiter, bool tls);
    QCoro::Task<> ehlo();
    QCoro::Task<> authenticate();
    QCoro::Task<> authenticateLogin();
    QCoro::Task<> authenticatePlain();
    QCoro::Task<> write(QByteArray bytes);
    QCoro::Task<> writeCommand(const char* verb, QString argument, const char* suffix = "");
    QCoro::Task<SMTPResponse> readResponse(SMTPAwaiting state);
    QCoro::Task<> receiveChunk(const QDeadlineTimer& deadline);
    // Reads the reply the session waits for and throws unless it lets the conversation go on.
    QCoro::Task<SMTPResponse> expect(SMTPAwaiting state);
    // The same, but a refusal is first followed by RSET, whose own outcome doesn't matter.
    QCoro::Task<> expectOrReset(SMTPAwaiting state);

    QSslSocket* makeSocket() const;
    bool serverIsLocal() const;
    SMTPError socketFailure() const;
    // A session whose conversation can't be followed any more is dead: whatever the server sends later
    // must not be read as a reply.
    [[noreturn]] void failAndClose(const SMTPError& error);

    const SMTPConfig m_config;
    const QString m_password;
    const Options m_options;
    std::unique_ptr<QSslSocket, SocketDeleter> m_connection;
    SMTPReplyReader m_reader;
    bool m_supportsAuthLogin = false;
    bool m_supportsAuthPlain = false;
    bool m_supportsStartTls = false;
};
