#include "SmtpTest.h"

#include "settings/SMTPConfig.h"
#include "smtp/SMTPWire.h"

#include <QtTest>

void TestSMTP::parseReply_data() {
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<int>("code"); // 0: no whole reply yet
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("rest");

    QTest::newRow("fewer than two bytes") << QByteArray("2") << 0 << "" << QByteArray("2");
    QTest::newRow("no line end yet") << QByteArray("250 OK") << 0 << "" << QByteArray("250 OK");
    QTest::newRow("one line") << QByteArray("250 OK\r\n") << 250 << "OK" << QByteArray();
    QTest::newRow("bare code") << QByteArray("250\r\n") << 250 << "250" << QByteArray();
    QTest::newRow("code and a blank") << QByteArray("250 \r\n") << 250 << "250 " << QByteArray();
    QTest::newRow("multi-line EHLO") << QByteArray("250-mail.example\r\n250-SIZE 1000\r\n250 AUTH PLAIN\r\n") << 250
                                     << "mail.example SIZE 1000 AUTH PLAIN" << QByteArray();
    QTest::newRow("last line not whole") << QByteArray("250-mail.example\r\n250 AUTH PL") << 0 << ""
                                         << QByteArray("250-mail.example\r\n250 AUTH PL");
    QTest::newRow("last line without its LF")
        << QByteArray("250-a\r\n250 b\r") << 0 << "" << QByteArray("250-a\r\n250 b\r");
    QTest::newRow("two replies") << QByteArray("220 pronto\r\n250 ok\r\n") << 220 << "pronto"
                                 << QByteArray("250 ok\r\n");
    QTest::newRow("a reply and half of the next")
        << QByteArray("354 vai\r\n250-x") << 354 << "vai" << QByteArray("250-x");
    QTest::newRow("LF alone ends no line") << QByteArray("250 a\n250 b\r\n") << 250 << "a\n250 b" << QByteArray();
    QTest::newRow("LF alone hides the last line")
        << QByteArray("250-a\n250 b\r\n") << 0 << "" << QByteArray("250-a\n250 b\r\n");
    QTest::newRow("continuation code not compared") << QByteArray("220-x\r\n250 y\r\n") << 250 << "x y" << QByteArray();
    QTest::newRow("unparsable line continues")
        << QByteArray("ab\r\nxyz AUTH\r\n250 ok\r\n") << 250 << "ab AUTH ok" << QByteArray();
    QTest::newRow("four digits are no code") << QByteArray("2500\r\n250 x\r\n") << 250 << "2500 x" << QByteArray();
    QTest::newRow("letters in the code") << QByteArray("25a ok\r\n") << 0 << "" << QByteArray("25a ok\r\n");
    QTest::newRow("sign in the code") << QByteArray("-25 ok\r\n") << 0 << "" << QByteArray("-25 ok\r\n");
    QTest::newRow("UTF-8 text") << QByteArray("550 Casella già piena\r\n") << 550
                                << QString::fromUtf8("Casella già piena") << QByteArray();
    QTest::newRow("broken UTF-8 repaired")
        << QByteArray("550 caf\xe9!\r\n") << 550 << QString::fromUtf16(u"caf\ufffd!") << QByteArray();
}

void TestSMTP::parseReply() {
    QFETCH(QByteArray, buffer);
    QFETCH(int, code);
    QFETCH(QString, message);
    QFETCH(QByteArray, rest);
    const auto reply = SMTPWire::parseBufferedResponse(buffer);
    QCOMPARE(reply.has_value(), code != 0);
    if (reply) {
        QCOMPARE(reply->code, code);
        QCOMPARE(reply->message, message);
    }
    QCOMPARE(buffer, rest);
}

void TestSMTP::dotStuffing_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("stuffed");
    QTest::newRow("nothing to do") << QByteArray("a.b\r\nc.\r\n") << QByteArray("a.b\r\nc.\r\n");
    QTest::newRow("first line") << QByteArray(".prima\r\n") << QByteArray("..prima\r\n");
    QTest::newRow("later line") << QByteArray("a\r\n.b\r\n") << QByteArray("a\r\n..b\r\n");
    QTest::newRow("line of one dot") << QByteArray("a\r\n.\r\nb\r\n") << QByteArray("a\r\n..\r\nb\r\n");
    QTest::newRow("two dots get a third") << QByteArray("..x\r\n") << QByteArray("...x\r\n");
    QTest::newRow("after a bare LF") << QByteArray("a\n.b") << QByteArray("a\n..b");
    QTest::newRow("not after a bare CR") << QByteArray("a\r.b") << QByteArray("a\r.b");
    QTest::newRow("dot as the last byte") << QByteArray("a\r\n.") << QByteArray("a\r\n..");
    QTest::newRow("empty") << QByteArray() << QByteArray();
}

void TestSMTP::dotStuffing() {
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, stuffed);
    QCOMPARE(SMTPWire::dotStuffed(data), stuffed);
}

void TestSMTP::ehloDomain_data() {
    QTest::addColumn<QString>("fromEmail");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("hostName");
    QTest::addColumn<QString>("domain");
    QTest::newRow("sender's domain") << "info@ditta.it"
                                     << "utente@altro.it"
                                     << "pc.lan"
                                     << "ditta.it";
    QTest::newRow("last at sign") << "a@b@ditta.it"
                                  << ""
                                  << ""
                                  << "ditta.it";
    QTest::newRow("no at sign: the whole text") << "ditta.it"
                                                << ""
                                                << ""
                                                << "ditta.it";
    QTest::newRow("blanks and tabs trimmed") << "info@ \tditta.it\t "
                                             << ""
                                             << ""
                                             << "ditta.it";
    QTest::newRow("no full stop: the user's") << "info@ditta"
                                              << "utente@altro.it"
                                              << "pc.lan"
                                              << "altro.it";
    QTest::newRow("leading full stop") << "info@.ditta.it"
                                       << "utente@altro.it"
                                       << ""
                                       << "altro.it";
    QTest::newRow("trailing full stop") << "info@ditta.it."
                                        << ""
                                        << "pc.lan"
                                        << "pc.lan";
    QTest::newRow("empty sender and user") << ""
                                           << ""
                                           << "pc.lan"
                                           << "pc.lan";
    QTest::newRow("nothing fits") << ""
                                  << "utente"
                                  << "pc"
                                  << "localhost.localdomain";
}

void TestSMTP::ehloDomain() {
    QFETCH(QString, fromEmail);
    QFETCH(QString, username);
    QFETCH(QString, hostName);
    QFETCH(QString, domain);
    SMTPConfig config;
    config.fromEmail = fromEmail;
    config.username = username;
    QCOMPARE(SMTPWire::ehloDomain(config, hostName), domain);
}

void TestSMTP::errorTexts_data() {
    QTest::addColumn<int>("index"); // into the list built in errorTexts()
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("rifiuto"); // "" for none
    QTest::newRow("transport") << 0 << "Errore di connessione: Connection refused"
                               << "";
    QTest::newRow("unexpected reply") << 1 << "Risposta inattesa a DATA: 554 5.6.0 Contenuto rifiutato"
                                      << "";
    QTest::newRow("authentication") << 2 << "Autenticazione rifiutata: 535 5.7.8 No"
                                    << "";
    QTest::newRow("closed") << 3 << "Il server ha chiuso la connessione."
                            << "";
    QTest::newRow("timeout") << 4 << "Il server non ha risposto entro il tempo massimo."
                             << "";
    QTest::newRow("not connected") << 5 << "Connessione non aperta."
                                   << "";
    QTest::newRow("550 to RCPT TO") << 6 << "Risposta inattesa a RCPT TO: 550 5.1.1 Sconosciuto"
                                    << "rifiutato dal server: 550 5.1.1 Sconosciuto";
    QTest::newRow("500 to RCPT TO") << 7 << "Risposta inattesa a RCPT TO: 500 x"
                                    << "rifiutato dal server: 500 x";
    QTest::newRow("599 to RCPT TO") << 8 << "Risposta inattesa a RCPT TO: 599 x"
                                    << "rifiutato dal server: 599 x";
    QTest::newRow("499 to RCPT TO") << 9 << "Risposta inattesa a RCPT TO: 499 x"
                                    << "";
    QTest::newRow("600 to RCPT TO") << 10 << "Risposta inattesa a RCPT TO: 600 x"
                                    << "";
    QTest::newRow("550 to MAIL FROM") << 11 << "Risposta inattesa a MAIL FROM: 550 x"
                                      << "";
    QTest::newRow("550 as a transport text") << 12 << "Errore di connessione: RCPT TO 550"
                                             << "";
}

void TestSMTP::errorTexts() {
    QFETCH(int, index);
    QFETCH(QString, description);
    QFETCH(QString, rifiuto);
    const QList<SMTPError> errors{
        SMTPError::transport(QStringLiteral("Connection refused")),
        SMTPError::unexpectedReply(QStringLiteral("DATA"), 554, QStringLiteral("5.6.0 Contenuto rifiutato")),
        SMTPError::authenticationFailed(QStringLiteral("535 5.7.8 No")),
        SMTPError::connectionClosed(),
        SMTPError::timeout(),
        SMTPError::notConnected(),
        SMTPError::unexpectedReply(QStringLiteral("RCPT TO"), 550, QStringLiteral("5.1.1 Sconosciuto")),
        SMTPError::unexpectedReply(QStringLiteral("RCPT TO"), 500, QStringLiteral("x")),
        SMTPError::unexpectedReply(QStringLiteral("RCPT TO"), 599, QStringLiteral("x")),
        SMTPError::unexpectedReply(QStringLiteral("RCPT TO"), 499, QStringLiteral("x")),
        SMTPError::unexpectedReply(QStringLiteral("RCPT TO"), 600, QStringLiteral("x")),
        SMTPError::unexpectedReply(QStringLiteral("MAIL FROM"), 550, QStringLiteral("x")),
        SMTPError::transport(QStringLiteral("RCPT TO 550")),
    };
    const SMTPError& error = errors.at(index);
    QCOMPARE(error.errorDescription(), description);
    QCOMPARE(QString::fromUtf8(error.what()), description);
    QCOMPARE(error.rifiutoDefinitivoDestinatario().value_or(QString()), rifiuto);
    QCOMPARE(error.rifiutoDefinitivoDestinatario().has_value(), !rifiuto.isEmpty());
}
