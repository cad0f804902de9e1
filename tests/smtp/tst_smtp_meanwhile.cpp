#include "SmtpTest.h"

#include "Loopback.h"
#include "ScriptedServer.h"

#include <QtTest>

// The caller's work while the server works: each piece runs once its command is out, before the reply is
// read, and never when a failure comes before its moment. A run records the last delivery in the first and
// makes the next message in the second; one run too early or too often would log a message twice or send
// one made for a failed transaction.
namespace {

QStringList opening() {
    return {"S: 220 smtp.prova.example ESMTP pronto", "C: EHLO prova.example", "S: 250 smtp.prova.example"};
}

const QString mailFrom = "C: MAIL FROM:<" + Fixture::sender + ">";
const QString rcptTo = "C: RCPT TO:<" + Fixture::recipient + ">";
const QStringList body{"C: DATA", "S: 354 Avanti", "C: Subject: prova", "C: ", "C: Ciao", "C: ", "C: ."};
const QStringList quit{"C: QUIT", "S: 221 2.0.0 Arrivederci"};

} // namespace

void TestSMTP::meanwhile_data() {
    QTest::addColumn<QStringList>("script"); // after the opening
    QTest::addColumn<QStringList>("ran");
    QTest::addColumn<QString>("outcome");

    QTest::newRow("delivered") << QStringList{mailFrom, "S: 250 Ok", rcptTo, "S: 250 Ok"} + body +
                                      QStringList{"S: 250 Accettato"} + quit
                               << QStringList{"after MAIL FROM", "after the data"} << QString();
    QTest::newRow("message refused at its end")
        << QStringList{mailFrom, "S: 250 Ok", rcptTo, "S: 250 Ok"} + body + QStringList{"S: 554 Rifiutato"} + quit
        << QStringList{"after MAIL FROM", "after the data"} << "Risposta inattesa a invio messaggio: 554 Rifiutato";
    QTest::newRow("recipient refused") << QStringList{mailFrom,  "S: 250 Ok", rcptTo, "S: 550 Sconosciuto",
                                                      "C: RSET", "S: 250 Ok"} +
                                              quit
                                       << QStringList{"after MAIL FROM"}
                                       << "Risposta inattesa a RCPT TO: 550 Sconosciuto";
    QTest::newRow("sender refused") << QStringList{mailFrom, "S: 553 No"} + quit << QStringList{"after MAIL FROM"}
                                    << "Risposta inattesa a MAIL FROM: 553 No";
    QTest::newRow("closed before the data") << QStringList{mailFrom, "S: 250 Ok", rcptTo, "close"}
                                            << QStringList{"after MAIL FROM"} << "Il server ha chiuso la connessione.";
    QTest::newRow("closed before MAIL FROM went out")
        << QStringList{"close"} << QStringList{} << "Il server ha chiuso la connessione.";
}

void TestSMTP::meanwhile() {
    QFETCH(QStringList, script);
    QFETCH(QStringList, ran);
    QFETCH(QString, outcome);
    ScriptedServer server(opening() + script);
    QVERIFY(server.listen(Loopback::smtp));
    SMTPConfig config;
    config.host = Loopback::smtp;
    config.port = server.port();
    config.useTLS = false;
    config.fromEmail = Fixture::sender;
    SMTPSession::Options options;
    options.timeout = std::chrono::milliseconds(1500);
    SMTPSession session(config, Fixture::password, options);
    QCOMPARE(runToEnd(session.connect()).description(), QString());
    if (script.first() == QLatin1String("close"))
        QTRY_VERIFY(!session.isConnected()); // the server's close has reached the socket before the send

    QStringList seen;
    SMTPSession::Meanwhile meanwhile;
    meanwhile.afterMailFrom = [&seen] { seen << "after MAIL FROM"; };
    meanwhile.afterData = [&seen] { seen << "after the data"; };
    QCOMPARE(runToEnd(session.sendMessage(Fixture::sender, Fixture::recipient,
                                          QByteArrayLiteral("Subject: prova\r\n\r\nCiao\r\n"), meanwhile))
                 .description(),
             outcome);
    QCOMPARE(seen, ran);
    runToEnd(session.disconnect());
    QTRY_VERIFY2(server.usedUp(), qPrintable(server.problem() + "\nreceived: " + server.received().join(" | ")));
}
