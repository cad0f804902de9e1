#include "SmtpTest.h"

#include "AiosmtpdServer.h"
#include "Loopback.h"
#include "TestCA.h"

#include <QtTest>

namespace {

// Three messages with the lines that dot-stuffing must protect, the very first one included.
QList<QByteArray> threeMessages() {
    return {QByteArray(".Subject: prima\r\n\r\nCiao,\r\n.\r\nuna riga con un punto solo sopra\r\n"),
            QByteArray("Subject: seconda\r\n\r\n..due punti\r\n.tre\r\n"),
            QByteArray("Subject: terza\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nPerché no?\r\n")};
}

} // namespace

void TestSMTP::delivery_data() {
    QTest::addColumn<bool>("tls");
    QTest::addColumn<QStringList>("mechanisms"); // what the server offers
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("usedMechanism"); // "" when no AUTH may be sent
    QTest::newRow("TLS, LOGIN and PLAIN offered") << true << QStringList{"LOGIN", "PLAIN"} << Fixture::user << "LOGIN";
    QTest::newRow("TLS, PLAIN only") << true << QStringList{"PLAIN"} << Fixture::user << "PLAIN";
    QTest::newRow("TLS, no user name") << true << QStringList{"LOGIN", "PLAIN"} << ""
                                       << "";
    QTest::newRow("plain TCP") << false << QStringList{"LOGIN", "PLAIN"} << Fixture::user << "LOGIN";
}

void TestSMTP::delivery() {
    QFETCH(bool, tls);
    QFETCH(QStringList, mechanisms);
    QFETCH(QString, username);
    QFETCH(QString, usedMechanism);
    AiosmtpdServer::Options options =
        tls ? AiosmtpdServer::withTls(ca(), Loopback::smtp) : AiosmtpdServer::plain(Loopback::smtp);
    options.mechanisms = mechanisms;
    AiosmtpdServer server(options);
    QVERIFY2(server.start(), qPrintable(server.errorString()));

    SMTPConfig config = server.config();
    config.username = username;
    SMTPSession session(config, Fixture::password, AiosmtpdServer::sessionOptions(&ca()));
    QCOMPARE(runToEnd(session.connect()).description(), QString());
    const QList<QByteArray> sent = threeMessages();
    const QStringList recipients{"anna@prova.example", "bruno@prova.example", "carla@prova.example"};
    for (int i = 0; i < sent.size(); ++i)
        QCOMPARE(runToEnd(session.sendMessage(Fixture::sender, recipients.at(i), sent.at(i))).description(), QString());
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());
    QVERIFY(!session.hasConnection());

    // The data ends in CR LF, so the end-of-data sequence adds one empty line behind each message.
    const QList<AiosmtpdServer::Message> received = server.messages();
    QCOMPARE(received.size(), sent.size());
    for (int i = 0; i < sent.size(); ++i) {
        QCOMPARE(received.at(i).data, sent.at(i) + "\r\n");
        QCOMPARE(received.at(i).mailFrom, Fixture::sender);
        QCOMPARE(received.at(i).rcptTos, QStringList{recipients.at(i)});
        QCOMPARE(received.at(i).authenticatedAs, username);
    }
    const QList<AiosmtpdServer::AuthAttempt> attempts = server.authAttempts();
    QCOMPARE(attempts.size(), usedMechanism.isEmpty() ? 0 : 1);
    if (!usedMechanism.isEmpty()) {
        QCOMPARE(attempts.first().mechanism, usedMechanism);
        QVERIFY(attempts.first().success);
    }
}

void TestSMTP::wrongPassword_data() {
    QTest::addColumn<QStringList>("mechanisms");
    QTest::newRow("LOGIN") << QStringList{"LOGIN", "PLAIN"};
    QTest::newRow("PLAIN") << QStringList{"PLAIN"};
}

void TestSMTP::wrongPassword() {
    QFETCH(QStringList, mechanisms);
    AiosmtpdServer::Options options = AiosmtpdServer::withTls(ca(), Loopback::smtp);
    options.mechanisms = mechanisms;
    options.password = QStringLiteral("quella-giusta");
    AiosmtpdServer server(options);
    QVERIFY2(server.start(), qPrintable(server.errorString()));

    SMTPSession session(server.config(), Fixture::password, AiosmtpdServer::sessionOptions(&ca()));
    const Outcome outcome = runToEnd(session.connect());
    QVERIFY(outcome.error);
    QCOMPARE(outcome.error->kind(), SMTPError::Case::authenticationFailed);
    QCOMPARE(outcome.description(), "Autenticazione rifiutata: 535 5.7.8 Authentication credentials invalid");
    QVERIFY(!outcome.description().contains(Fixture::password));
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());
    QCOMPARE(server.authAttempts().size(), 1);
    QVERIFY(!server.authAttempts().first().success);
}

void TestSMTP::refusedCertificate_data() {
    QTest::addColumn<bool>("trustCA");
    QTest::addColumn<QStringList>("dnsNames"); // of the server's certificate
    QTest::addColumn<QStringList>("ipAddresses");
    QTest::addColumn<QString>("description");
    QTest::newRow("issuer not trusted") << false << QStringList() << QStringList{Loopback::smtp}
                                        << "Errore di connessione: il certificato del server non è attendibile";
    QTest::newRow("certificate for another host")
        << true << QStringList{"altro.prova.example"} << QStringList{"127.0.0.99"}
        << "Errore di connessione: il certificato del server non corrisponde al nome dell'host";
}

// The user's credentials must never reach a server whose certificate fails: the session stops at the
// handshake, and the server's log of AUTH attempts stays empty.
void TestSMTP::refusedCertificate() {
    QFETCH(bool, trustCA);
    QFETCH(QStringList, dnsNames);
    QFETCH(QStringList, ipAddresses);
    QFETCH(QString, description);
    AiosmtpdServer::Options options = AiosmtpdServer::plain(Loopback::smtp);
    const TestCA::Issued issued = ca().issue(QStringLiteral("server"), dnsNames, ipAddresses);
    options.certificatePath = issued.certificatePath;
    options.keyPath = issued.keyPath;
    AiosmtpdServer server(options);
    QVERIFY2(server.start(), qPrintable(server.errorString()));

    SMTPSession session(server.config(), Fixture::password, AiosmtpdServer::sessionOptions(trustCA ? &ca() : nullptr));
    const Outcome outcome = runToEnd(session.connect());
    QVERIFY(outcome.error);
    QCOMPARE(outcome.error->kind(), SMTPError::Case::transport);
    QCOMPARE(outcome.description(), description);
    // The failed connection stays failed: nothing can be sent on it.
    const QByteArray message("Subject: x\r\n\r\nx\r\n");
    QCOMPARE(runToEnd(session.sendMessage(Fixture::sender, Fixture::recipient, message)).description(), description);
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());
    QVERIFY(server.authAttempts().isEmpty());
    QVERIFY(server.messages().isEmpty());
}
