#include "SmtpTest.h"

#include "settings/SMTPConfig.h"
#include "smtp/SMTPWire.h"

#include <QtTest>

void TestSMTP::parseReply_data() {
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<int>("code"); // 0: no whole reply yet
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("rest");

    const auto row = [](const char* name, QByteArray buffer, int code, QString message, QByteArray rest) {
        QTest::newRow(name) << buffer << code << message << rest;
    };
    row("fewer than two bytes", "2", 0, "", "2");
    row("bare code", "250\r\n", 250, "250", "");
    row("code and a blank", "250 \r\n", 250, "250 ", "");
    row("multi-line, last line not whole", "250-mail.example\r\n250 AUTH PL", 0, "", "250-mail.example\r\n250 AUTH PL");
    row("last line without its LF", "250-a\r\n250 b\r", 0, "", "250-a\r\n250 b\r");
    row("a reply and half of the next", "354 vai\r\n250-x", 354, "vai", "250-x");
    row("LF alone ends no line", "250 a\n250 b\r\n", 250, "a\n250 b", "");
    row("LF alone hides the last line", "250-a\n250 b\r\n", 0, "", "250-a\n250 b\r\n");
    row("continuation code not compared", "220-x\r\n250 y\r\n", 250, "x y", "");
    row("unparsable lines continue", "ab\r\n2500\r\n250 ok\r\n", 250, "ab 2500 ok", "");
    row("letters in the code", "25a ok\r\n", 0, "", "25a ok\r\n");
    row("sign in the code", "-25 ok\r\n", 0, "", "-25 ok\r\n");
    row("broken UTF-8 repaired", "550 caf\xe9!\r\n", 550, QString::fromUtf16(u"caf\ufffd!"), "");
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
    QTest::newRow("first line, one dot, two dots")
        << QByteArray(".prima\r\n.\r\n..x\r\n") << QByteArray("..prima\r\n..\r\n...x\r\n");
    QTest::newRow("after a bare LF") << QByteArray("a\n.b") << QByteArray("a\n..b");
    QTest::newRow("not after a bare CR") << QByteArray("a\r.b") << QByteArray("a\r.b");
    QTest::newRow("dot as the last byte") << QByteArray("a\r\n.") << QByteArray("a\r\n..");
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
    const auto row = [](const char* name, QString fromEmail, QString username, QString hostName, QString domain) {
        QTest::newRow(name) << fromEmail << username << hostName << domain;
    };
    row("sender's domain", "info@ditta.it", "utente@altro.it", "pc.lan", "ditta.it");
    row("last at sign, blanks trimmed", "a@b@ \tditta.it\t ", "", "", "ditta.it");
    row("no at sign: the whole text", "ditta.it", "", "", "ditta.it");
    row("no full stop: the user's", "info@ditta", "utente@altro.it", "pc.lan", "altro.it");
    row("leading full stop", "info@.ditta.it", "utente@altro.it", "", "altro.it");
    row("trailing full stop", "info@ditta.it.", "", "pc.lan", "pc.lan");
    row("nothing fits", "", "utente", "pc", "localhost.localdomain");
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

// Which refusals are for good: a 5xx reply to RCPT TO, and nothing else.
void TestSMTP::rifiutoDefinitivo_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("definitivo");
    QTest::newRow("500 to RCPT TO") << "RCPT TO" << 500 << true;
    QTest::newRow("599 to RCPT TO") << "RCPT TO" << 599 << true;
    QTest::newRow("499 to RCPT TO") << "RCPT TO" << 499 << false;
    QTest::newRow("600 to RCPT TO") << "RCPT TO" << 600 << false;
    QTest::newRow("550 to MAIL FROM") << "MAIL FROM" << 550 << false;
}

void TestSMTP::rifiutoDefinitivo() {
    QFETCH(QString, command);
    QFETCH(int, code);
    QFETCH(bool, definitivo);
    const SMTPError error = SMTPError::unexpectedReply(command, code, QStringLiteral("x"));
    const QString description = QStringLiteral("Risposta inattesa a %1: %2 x").arg(command).arg(code);
    QCOMPARE(error.errorDescription(), description);
    QCOMPARE(QString::fromUtf8(error.what()), description);
    QCOMPARE(error.rifiutoDefinitivoDestinatario(),
             definitivo ? std::optional<QString>(QStringLiteral("rifiutato dal server: %1 x").arg(code))
                        : std::nullopt);
    // A transport error's text never counts, whatever it holds.
    QVERIFY(!SMTPError::transport(description).rifiutoDefinitivoDestinatario());
}
