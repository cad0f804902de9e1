#include "SmtpTest.h"

#include "settings/SMTPConfig.h"
#include "smtp/SMTPReplyReader.h"
#include "smtp/SMTPWire.h"

#include <QtTest>

namespace {

// Every reply the reader gives for the bytes, each as "code|message", and how it ended: "" while all is
// well, "line 250" or "reply 0" after a fault with its code.
QStringList readAll(SMTPReplyReader& reader) {
    QStringList replies;
    while (const auto reply = reader.next())
        replies << QString::number(reply->code) + u'|' + reply->message;
    return replies;
}

QString faultOf(const SMTPReplyReader& reader) {
    switch (reader.fault()) {
    case SMTPReplyReader::Fault::none:
        return {};
    case SMTPReplyReader::Fault::lineTooLong:
        return QStringLiteral("line %1").arg(reader.faultCode());
    case SMTPReplyReader::Fault::replyTooLong:
        return QStringLiteral("reply %1").arg(reader.faultCode());
    }
    return {};
}

// A continuation line of exactly `size` bytes, its CR LF included.
QByteArray continuation(qsizetype size) {
    return "250-" + QByteArray(size - 6, 'x') + "\r\n";
}

} // namespace

void TestSMTP::parseReply_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("replies");
    QTest::addColumn<QString>("fault");

    const auto row = [](const char* name, QByteArray bytes, QStringList replies, QString fault = {}) {
        QTest::newRow(name) << bytes << replies << fault;
    };
    row("fewer than two bytes", "2", {});
    row("bare code", "250\r\n", {"250|250"});
    row("code and a blank", "250 \r\n", {"250|250 "});
    row("multi-line, last line not whole", "250-mail.example\r\n250 AUTH PL", {});
    row("last line without its LF", "250-a\r\n250 b\r", {});
    row("a reply and half of the next", "354 vai\r\n250-x", {"354|vai"});
    row("two replies", "220 pronto\r\n250-a\r\n250 b\r\n", {"220|pronto", "250|a b"});
    row("LF alone ends no line", "250 a\n250 b\r\n", {"250|a 250 b"});
    row("LF alone hides the last line", "250-a\n250 b\r\n", {});
    row("continuation code not compared", "220-x\r\n250 y\r\n", {"250|x y"});
    row("unparsable lines continue", "ab\r\n2500\r\n250 ok\r\n", {"250|ab 2500 ok"});
    row("letters in the code", "25a ok\r\n", {});
    row("sign in the code", "-25 ok\r\n", {});
    row("broken UTF-8 repaired", "550 caf\xe9!\r\n", {QString::fromUtf16(u"550|caf\ufffd!")});
    // What a server says reaches the history and the screens: no escape sequence, bell or NUL gets there.
    row("control characters replaced",
        QByteArray("550 a\x1b[31mb\x07"
                   "c\x00"
                   "d\x7f\xc2\x85"
                   "e\tf\rg\r\n",
                   25),
        {"550|a [31mb c d  e f g"});
    const QByteArray longest = "250 " + QByteArray(2044, 'x');
    row("line of 2,048 bytes", longest + "\r\n", {"250|" + QString(2044, u'x')});
    row("line of 2,049 bytes", longest + "x\r\n250 ok\r\n", {}, "line 250");
    row("2,049 bytes and no line end yet", longest + "y", {}, "line 250");
    row("2,048 bytes and half a line end", longest + "\r", {});
    row("overlong line without a code", QByteArray(3000, 'a'), {}, "line 0");
    QByteArray full;
    for (int i = 0; i < 31; ++i)
        full += continuation(2048);
    row("reply of 64 KB", full + "250 " + QByteArray(2042, 'z') + "\r\n",
        {"250|" + QStringList(31, QString(2042, u'x')).join(u' ') + u' ' + QString(2042, u'z')});
    row("reply one byte over 64 KB", full + "250 " + QByteArray(2043, 'z') + "\r\n", {}, "reply 250");
    row("many short lines past 64 KB", continuation(8).repeated(8193) + "250 ok\r\n", {}, "reply 250");
}

// The same replies however the bytes are cut into reads: all at once, and one byte at a time.
void TestSMTP::parseReply() {
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, replies);
    QFETCH(QString, fault);

    SMTPReplyReader whole;
    whole.append(bytes);
    QCOMPARE(readAll(whole), replies);
    QCOMPARE(faultOf(whole), fault);

    SMTPReplyReader dribbled;
    QStringList got;
    for (const char byte : std::as_const(bytes)) {
        dribbled.append(QByteArrayView(&byte, 1));
        got << readAll(dribbled);
    }
    QCOMPARE(got, replies);
    QCOMPARE(faultOf(dribbled), fault);
    // Whatever came, nothing held grows past one reply and one line.
    QVERIFY(dribbled.heldBytes() <= 2 * (SMTPReplyReader::maxReplyBytes + SMTPReplyReader::maxLineBytes));

    // After clear() the reader starts afresh, fault or not.
    dribbled.clear();
    dribbled.append("221 ciao\r\n");
    QCOMPARE(readAll(dribbled), QStringList{"221|ciao"});
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
