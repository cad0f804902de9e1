#include "SmtpTest.h"

#include "AiosmtpdServer.h"
#include "Loopback.h"
#include "smtp/HostNameCheck.h"
#include "TestCA.h"
#include "WireTap.h"

#include <QtTest>

namespace {

const QString inClear = QStringLiteral(
    "Errore di connessione: il server non offre una connessione cifrata: la password non viene inviata in chiaro");
const QString wrongHost =
    QStringLiteral("Errore di connessione: The host name did not match any of the valid hosts for this certificate");
const QByteArray message("Subject: prova\r\n\r\nCiao\r\n");

} // namespace

void TestSMTP::startTls_data() {
    QTest::addColumn<bool>("offered"); // the server offers STARTTLS
    QTest::addColumn<bool>("remote");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QStringList>("mechanisms");
    QTest::addColumn<QString>("outcome"); // of connect
    QTest::addColumn<QStringList>("conversation");
    const QStringList both{"LOGIN", "PLAIN"};
    QTest::newRow("STARTTLS, LOGIN and PLAIN") << true << false << Fixture::user << both << ""
                                               << QStringList{"EHLO", "EHLO tls", "AUTH LOGIN tls", "DATA tls"};
    QTest::newRow("STARTTLS, PLAIN only, remote host") << true << true << Fixture::user << QStringList{"PLAIN"} << ""
                                                       << QStringList{"EHLO", "EHLO tls", "AUTH PLAIN tls", "DATA tls"};
    QTest::newRow("STARTTLS, no user name")
        << true << true << "" << both << "" << QStringList{"EHLO", "EHLO tls", "DATA tls"};
    QTest::newRow("no STARTTLS, a user name, remote host")
        << false << true << Fixture::user << both << inClear << QStringList{"EHLO"};
    QTest::newRow("no STARTTLS, no user name, remote host")
        << false << true << "" << both << "" << QStringList{"EHLO", "DATA"};
}

// A real server behind a relay that keeps every byte: what crosses the network before the handshake is
// EHLO and STARTTLS, and nothing after it can be read; the password never crosses in any form.
void TestSMTP::startTls() {
    QFETCH(bool, offered);
    QFETCH(bool, remote);
    QFETCH(QString, username);
    QFETCH(QStringList, mechanisms);
    QFETCH(QString, outcome);
    QFETCH(QStringList, conversation);
    AiosmtpdServer::Options options =
        offered ? AiosmtpdServer::withStartTls(ca(), Loopback::smtp) : AiosmtpdServer::plain(Loopback::smtp);
    options.mechanisms = mechanisms;
    AiosmtpdServer server(options);
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    WireTap tap(Loopback::smtp, options.port);
    QVERIFY(tap.listen(Loopback::smtp));

    SMTPConfig config = server.config();
    QVERIFY(!config.useTLS);
    config.port = tap.port();
    config.username = username;
    SMTPSession::Options sessionOptions = AiosmtpdServer::sessionOptions(&ca());
    sessionOptions.loopbackCountsAsRemote = remote;
    SMTPSession session(config, Fixture::password, sessionOptions);
    QCOMPARE(runToEnd(session.connect()).description(), outcome);
    if (outcome.isEmpty())
        QCOMPARE(runToEnd(session.sendMessage(Fixture::sender, Fixture::recipient, message)).description(), QString());
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());

    QCOMPARE(server.conversation(), conversation);
    QCOMPARE(server.messages().size(), outcome.isEmpty() ? 1 : 0);
    for (const AiosmtpdServer::AuthAttempt& attempt : server.authAttempts()) {
        QVERIFY(attempt.encrypted);
        QVERIFY(attempt.success);
    }
    QTRY_VERIFY(!tap.fromClient().isEmpty());
    const QByteArray wire = tap.fromClient();
    for (const QString& secret : {Fixture::password, Fixture::passwordBase64, Fixture::plainToken})
        QVERIFY2(!wire.contains(secret.toUtf8()), qPrintable(secret));
    if (offered) {
        const QByteArray clear("EHLO prova.example\r\nSTARTTLS\r\n");
        QVERIFY2(wire.startsWith(clear), wire.left(80).constData());
        const QByteArray encrypted = wire.mid(clear.size());
        for (const char* text : {"EHLO", "AUTH", "MAIL FROM", "destinatario@", "Ciao"})
            QVERIFY2(!encrypted.contains(text), text);
    } else {
        QCOMPARE(wire.left(20), QByteArray("EHLO prova.example\r\n"));
        QCOMPARE(wire.contains("AUTH"), false);
    }
}

void TestSMTP::hostNameCheck_data() {
    QTest::addColumn<QString>("commonName");
    QTest::addColumn<QStringList>("dnsNames");
    QTest::addColumn<QStringList>("ipAddresses");
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("matches");
    const auto row = [](const char* name, QString cn, QStringList dns, QStringList ip, QString host, bool matches) {
        QTest::newRow(name) << cn << dns << ip << host << matches;
    };
    const QString host = QStringLiteral("smtp.prova.example");
    row("DNS name", "x", {host}, {}, host, true);
    row("DNS name in other letters", "x", {"SMTP.Prova.Example"}, {}, "smtp.PROVA.example", true);
    row("host with a trailing dot", "x", {host}, {}, host + ".", true);
    // The common name is never looked at.
    row("SAN names another host, CN the host", host, {"altro.prova.example"}, {}, host, false);
    row("no SAN, CN the host", host, {}, {}, host, false);
    row("wildcard", "x", {"*.prova.example"}, {}, host, true);
    row("wildcard covers one label only", "x", {"*.prova.example"}, {}, "a.smtp.prova.example", false);
    row("wildcard covers no empty label", "x", {"*.prova.example"}, {}, "prova.example", false);
    row("partial wildcard", "x", {"s*.prova.example"}, {}, host, false);
    row("wildcard not leftmost", "x", {"smtp.*.example"}, {}, host, false);
    row("wildcard over a top-level domain", "x", {"*.example"}, {}, "prova.example", false);
    row("international name in its ASCII form", "x", {"posta.xn--citt-3na.example"}, {},
        QString::fromUtf8("posta.città.example"), true);
    row("IP address", "x", {}, {"127.0.0.11"}, "127.0.0.11", true);
    row("another IP address", "x", {}, {"127.0.0.12"}, "127.0.0.11", false);
    row("IP address written as a DNS name", "x", {"127.0.0.11"}, {}, "127.0.0.11", false);
    row("IP address in the CN only", "127.0.0.11", {}, {}, "127.0.0.11", false);
    row("wildcard never stands for an IP", "x", {"*.0.0.11"}, {}, "127.0.0.11", false);
    row("IPv6 in either spelling", "x", {}, {"::1"}, "0:0:0:0:0:0:0:1", true);
    row("IPv6 in brackets", "x", {}, {"::1"}, "[::1]", true);
}

void TestSMTP::hostNameCheck() {
    QFETCH(QString, commonName);
    QFETCH(QStringList, dnsNames);
    QFETCH(QStringList, ipAddresses);
    QFETCH(QString, host);
    QFETCH(bool, matches);
    const TestCA::Issued issued = ca().issue(commonName, dnsNames, ipAddresses);
    const QList<QSslCertificate> chain = QSslCertificate::fromPath(issued.certificatePath, QSsl::Pem);
    QCOMPARE(chain.size(), 1);
    QCOMPARE(HostNameCheck::matches(chain.first(), host), matches);
}

void TestSMTP::certificateHost_data() {
    QTest::addColumn<QString>("commonName");
    QTest::addColumn<QStringList>("dnsNames");
    QTest::addColumn<QStringList>("ipAddresses");
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("startTls");
    QTest::addColumn<QString>("outcome"); // of connect
    const QString host = QStringLiteral("smtp.prova.example");
    const QStringList none;
    // Qt alone accepts the first four.
    QTest::newRow("SAN names another host, CN the host")
        << host << QStringList{"altro.prova.example"} << none << host << false << wrongHost;
    QTest::newRow("no SAN, CN the host") << host << none << none << host << false << wrongHost;
    QTest::newRow("partial wildcard") << host << QStringList{"s*.prova.example"} << none << host << false << wrongHost;
    QTest::newRow("STARTTLS, no SAN, CN the host") << host << none << none << host << true << wrongHost;
    QTest::newRow("wildcard") << "x" << QStringList{"*.prova.example"} << none << host << false << "";
    QTest::newRow("STARTTLS, wildcard") << "x" << QStringList{"*.prova.example"} << none << host << true << "";
    QTest::newRow("IP address in the CN only") << QString::fromLatin1(Loopback::smtp) << none << none
                                               << QString::fromLatin1(Loopback::smtp) << false << wrongHost;
}

// A certificate that doesn't name the host is refused before anything is written on the connection.
void TestSMTP::certificateHost() {
    QFETCH(QString, commonName);
    QFETCH(QStringList, dnsNames);
    QFETCH(QStringList, ipAddresses);
    QFETCH(QString, host);
    QFETCH(bool, startTls);
    QFETCH(QString, outcome);
    AiosmtpdServer::Options options = AiosmtpdServer::plain(Loopback::smtp);
    const TestCA::Issued issued = ca().issue(commonName, dnsNames, ipAddresses);
    options.certificatePath = issued.certificatePath;
    options.keyPath = issued.keyPath;
    options.startTls = startTls;
    AiosmtpdServer server(options);
    QVERIFY2(server.start(), qPrintable(server.errorString()));

    SMTPConfig config = server.config();
    config.host = host;
    SMTPSession::Options sessionOptions = AiosmtpdServer::sessionOptions(&ca());
    sessionOptions.addressForTests = QString::fromLatin1(Loopback::smtp);
    SMTPSession session(config, Fixture::password, sessionOptions);
    QCOMPARE(runToEnd(session.connect()).description(), outcome);
    if (outcome.isEmpty())
        QCOMPARE(runToEnd(session.sendMessage(Fixture::sender, Fixture::recipient, message)).description(), QString());
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());

    if (outcome.isEmpty()) {
        QCOMPARE(server.messages().size(), 1);
        QCOMPARE(server.authAttempts().size(), 1);
    } else {
        // With TLS from the first byte not even EHLO; with STARTTLS nothing after the upgrade.
        QCOMPARE(server.conversation(), startTls ? QStringList{"EHLO"} : QStringList());
        QVERIFY(server.authAttempts().isEmpty());
        QVERIFY(server.messages().isEmpty());
    }
}
