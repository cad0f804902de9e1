#pragma once

#include "smtp/SMTPSession.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

#include "TestCA.h"

// How one session operation ended: nothing for success, the error otherwise. Anything thrown that isn't
// an SMTPError fails the test that ran the operation.
struct Outcome {
    std::optional<SMTPError> error;
    QString foreign; // what() of an exception of another type

    QString description() const { return error ? error->errorDescription() : QString(); }
};

// Runs the operation to its end in a nested event loop, as the interface's event loop would.
Outcome runToEnd(QCoro::Task<> operation);

// The account, password and addresses every conversation in these tests uses.
namespace Fixture {
inline const QString user = QStringLiteral("utente@prova.example");
inline const QString password = QStringLiteral("Segreta!42");
inline const QString sender = QStringLiteral("mittente@prova.example");
inline const QString recipient = QStringLiteral("destinatario@prova.example");
// base64 of the user, the password, and of NUL user NUL password, worked out independently.
inline const QString userBase64 = QStringLiteral("dXRlbnRlQHByb3ZhLmV4YW1wbGU=");
inline const QString passwordBase64 = QStringLiteral("U2VncmV0YSE0Mg==");
inline const QString plainToken = QStringLiteral("AHV0ZW50ZUBwcm92YS5leGFtcGxlAFNlZ3JldGEhNDI=");
} // namespace Fixture

// A session's scripted conversation: what the server plays and what the test does.
struct ScriptRow {
    QStringList script = {};
    QStringList operations = {}; // "connect", "send", "disconnect"
    QStringList outcomes = {};   // per operation: "" for success, the error's text otherwise
    QString rifiuto = {};        // rifiutoDefinitivoDestinatario of the last error; "" for none
    QString username = Fixture::user;
    QString fromEmail = Fixture::sender;
    QString envelopeFrom = Fixture::sender;
    QString recipient = Fixture::recipient;
    QByteArray data = QByteArrayLiteral("Subject: prova\r\n\r\nCiao\r\n");
    int connections = 1; // how many connections the server must have seen
    bool remote = false; // the server on 127.0.0.11 counts as remote
    bool trustCA = true; // the client trusts the CA of the certificate "starttls" presents
};
Q_DECLARE_METATYPE(ScriptRow)

class TestSMTP : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();

    // The wire format, on its own.
    void parseReply_data();
    void parseReply();
    void dotStuffing_data();
    void dotStuffing();
    void ehloDomain_data();
    void ehloDomain();
    void rifiutoDefinitivo_data();
    void rifiutoDefinitivo();

    // Scripted servers for the faults a real server won't produce.
    void scripted_data();
    void scripted();
    void invalidPort_data();
    void invalidPort();
    void meanwhile_data();
    void meanwhile();

    // Debian's aiosmtpd with implicit TLS and AUTH.
    void delivery_data();
    void delivery();
    void wrongPassword_data();
    void wrongPassword();
    void refusedCertificate_data();
    void refusedCertificate();

    // STARTTLS and the host name a certificate must name.
    void startTls_data();
    void startTls();
    void hostNameCheck_data();
    void hostNameCheck();
    void certificateHost_data();
    void certificateHost();

private:
    TestCA& ca();
    // A certificate for the test's loopback address, from the test CA.
    const TestCA::Issued& serverCertificate();
};
