#pragma once

#include "settings/SMTPConfig.h"
#include "smtp/SMTPSession.h"

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class TestCA;

// A real SMTP server for tests: Debian's aiosmtpd, run by /usr/bin/python3 with tests/support/smtp_server.py,
// on the test's own loopback address (Loopback.h) and a fixed port (aiosmtpd can't take port 0).
//
//     AiosmtpdServer server(AiosmtpdServer::withTls(ca, Loopback::smtp));
//     QVERIFY2(server.start(), qPrintable(server.errorString()));
//     SMTPSession session(server.config(), server.options().password, server.sessionOptions(ca));
//     ... server.messages() ...
//
// The server stops when the object goes, or when the test process ends (it stops when its stdin closes).
class AiosmtpdServer {
public:
    // A refusal: recipients matching the pattern (a case-insensitive regular expression) get the reply,
    // such as "550 5.1.1 Utente sconosciuto".
    struct Rule {
        QString pattern;
        QString reply;
    };

    struct Options {
        QString address; // one of Loopback.h
        quint16 port = 2525;
        QString certificatePath; // implicit TLS when set; plain TCP otherwise
        QString keyPath;
        bool startTls = false; // with a certificate: plain TCP offering STARTTLS, and AUTH only after it
        QString username = QStringLiteral("utente@prova.example"); // AUTH offered when not empty
        QString password = QStringLiteral("Segreta!42");
        QStringList mechanisms = {QStringLiteral("LOGIN"), QStringLiteral("PLAIN")};
        bool authRequired = false; // 530 to MAIL FROM before AUTH
        QList<Rule> rejectAtRcpt;  // the reply to RCPT TO
        QList<Rule> rejectAtData;  // the reply to the end of the data, by recipient
    };

    struct Message {
        QString mailFrom;
        QStringList rcptTos;
        QByteArray data;         // as the client meant it: dot-stuffing undone
        QString authenticatedAs; // empty when the session sent no successful AUTH
    };

    struct AuthAttempt {
        QString mechanism;
        QString login;
        bool success = false;
        bool encrypted = false; // whether the connection was encrypted when the AUTH came
    };

    // Implicit TLS with a certificate from the CA for the address (as an IP entry).
    static Options withTls(TestCA& ca, const QString& address);
    // The same certificate, offered through STARTTLS on a plain connection.
    static Options withStartTls(TestCA& ca, const QString& address);
    static Options plain(const QString& address);

    explicit AiosmtpdServer(Options options);
    ~AiosmtpdServer();
    AiosmtpdServer(const AiosmtpdServer&) = delete;
    AiosmtpdServer& operator=(const AiosmtpdServer&) = delete;

    bool start(); // waits until the server accepts connections
    void stop();
    QString errorString() const { return m_error; }

    const Options& options() const { return m_options; }
    // An account pointing at this server, for the configured user.
    SMTPConfig config() const;
    // A short deadline and the CA trusted in-process.
    static SMTPSession::Options sessionOptions(const TestCA* ca,
                                               std::chrono::milliseconds timeout = std::chrono::seconds(10));

    QList<Message> messages() const; // in the order they were accepted
    int messageCount() const;        // cheap: no message is read
    QList<AuthAttempt> authAttempts() const;
    // What the server went through, in order: "EHLO", "AUTH LOGIN", "DATA", each with " tls" when the
    // connection was encrypted at that moment.
    QStringList conversation() const;

private:
    Options m_options;
    QTemporaryDir m_spool;
    QProcess m_process;
    QString m_error;
};
