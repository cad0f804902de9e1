#include "SmtpTest.h"

#include "Loopback.h"
#include "ScriptedServer.h"

#include <QtTest>

namespace {

// Every log line written while a test runs, to show that the password never reaches one.
class LogCapture {
public:
    LogCapture() : m_previous(qInstallMessageHandler(&LogCapture::handle)) { lines().clear(); }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    static QStringList& lines() {
        static QStringList captured;
        return captured;
    }

private:
    static void handle(QtMsgType, const QMessageLogContext&, const QString& message) { lines() << message; }
    QtMessageHandler m_previous;
};

QStringList greeting() {
    return {"S: 220 smtp.prova.example ESMTP pronto"};
}

QStringList ehlo(const QStringList& reply) {
    QStringList lines{"C: EHLO prova.example"};
    for (const QString& line : reply)
        lines << "S: " + line;
    return lines;
}

QStringList login() {
    return {"C: AUTH LOGIN",       "S: 334 VXNlcm5hbWU6",           "C: " + Fixture::userBase64,
            "S: 334 UGFzc3dvcmQ6", "C: " + Fixture::passwordBase64, "S: 235 2.7.0 Autenticato"};
}

QStringList plain() {
    return {"C: AUTH PLAIN " + Fixture::plainToken, "S: 235 2.7.0 Autenticato"};
}

QStringList opened() {
    return greeting() + ehlo({"250-smtp.prova.example", "250 AUTH LOGIN PLAIN"}) + login();
}

QStringList envelope() {
    return {"C: MAIL FROM:<" + Fixture::sender + ">", "S: 250 2.1.0 Ok", "C: RCPT TO:<" + Fixture::recipient + ">",
            "S: 250 2.1.5 Ok"};
}

// DATA, the lines the client must send (the default message unless given) and the end of data.
QStringList data(const QStringList& lines = {"Subject: prova", "", "Ciao"}) {
    QStringList script{"C: DATA", "S: 354 Avanti"};
    for (const QString& line : lines)
        script << "C: " + line;
    return script << "C: "
                  << "C: ."
                  << "S: 250 2.0.0 Accettato";
}

QStringList transaction() {
    return envelope() + data();
}

QStringList quit() {
    return {"C: QUIT", "S: 221 2.0.0 Arrivederci"};
}

const QStringList connectSendQuit{"connect", "send", "disconnect"};
const QStringList connectQuit{"connect", "disconnect"};

void row(const char* name, const ScriptRow& scriptRow) {
    QTest::newRow(name) << scriptRow;
}

} // namespace

void TestSMTP::scripted_data() {
    QTest::addColumn<ScriptRow>("row");
    row("multi-line EHLO announcing PLAIN only",
        {.script = greeting() + ehlo({"250-mail.example", "250-SIZE 1000", "250 AUTH PLAIN"}) + plain() + quit(),
         .operations = connectQuit});
    row("neither announced: LOGIN tried and refused",
        {.script = greeting() + ehlo({"250 mail.example"}) +
                   QStringList{"C: AUTH LOGIN", "S: 504 5.5.4 Meccanismo sconosciuto"} + quit(),
         .operations = connectQuit,
         .outcomes = {"Autenticazione rifiutata: 504 5.5.4 Meccanismo sconosciuto", ""}});
    row("EHLO with a code in the 300s is taken",
        {.script = greeting() + ehlo({"399 strano ma valido"}) + transaction() + quit(),
         .operations = connectSendQuit,
         .username = ""});
    row("greeting other than 220",
        {.script = {"S: 554 5.3.2 Servizio non disponibile", "C: QUIT", "S: 221 Ciao"},
         .operations = connectQuit,
         .outcomes = {"Risposta inattesa a CONNECT: 554 5.3.2 Servizio non disponibile", ""}});
    row("EHLO refused, with no HELO after it",
        {.script = greeting() + ehlo({"502 5.5.1 Comando non riconosciuto"}) + quit(),
         .operations = connectQuit,
         .outcomes = {"Risposta inattesa a EHLO: 502 5.5.1 Comando non riconosciuto", ""}});
    row("connect again after disconnect reads the capabilities anew",
        {.script = greeting() + ehlo({"250 AUTH LOGIN"}) + login() + quit() + QStringList{"next"} + greeting() +
                   ehlo({"250 AUTH PLAIN"}) + plain() + transaction() + quit(),
         .operations = {"connect", "disconnect", "connect", "send", "disconnect"},
         .connections = 2});
    row("reply split across reads", {.script = QStringList{"S+ 22", "pause 150", "S: 0 smtp.prova.example"} +
                                               QStringList{"C: EHLO prova.example", "S: 250-smtp.prova.example",
                                                           "S+ 250 AUTH PL", "pause 150", "S: AIN"} +
                                               plain() + quit(),
                                     .operations = connectQuit});
    // The EHLO reply is already there with the greeting: waiting on the network for it would time out.
    row("two replies in one read",
        {.script = {"S: 220 pronto", "S: 250 smtp.prova.example", "C: EHLO prova.example", "C: QUIT", "S: 221 Ciao"},
         .operations = connectQuit,
         .username = ""});
    row("bare 250", {.script = greeting() + ehlo({"250"}) +
                               QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "S: 250",
                                           "C: RCPT TO:<" + Fixture::recipient + ">", "S: 250"} +
                               data() + quit(),
                     .operations = connectSendQuit,
                     .username = ""});
    row("dot-stuffing, the first line included",
        {.script = opened() + envelope() + data({"..prima", "seconda", "...terza", "..", "riga\n..nascosta"}) + quit(),
         .operations = connectSendQuit,
         .data = ".prima\r\nseconda\r\n..terza\r\n.\r\nriga\n.nascosta\r\n"});
    const QStringList mail{"C: MAIL FROM:<" + Fixture::sender + ">", "S: 250 2.1.0 Ok"};
    const QStringList rcpt{"C: RCPT TO:<" + Fixture::recipient + ">"};
    const QStringList rset{"C: RSET", "S: 250 2.0.0 Azzerato"};
    const QStringList twoSends{"connect", "send", "send", "disconnect"};
    row("354 is the only go-ahead for DATA",
        {.script = opened() + envelope() + QStringList{"C: DATA", "S: 250 Ok"} + rset + quit(),
         .operations = connectSendQuit,
         .outcomes = {"", "Risposta inattesa a DATA: 250 Ok", ""}});
    row("251 accepted after RCPT TO",
        {.script = opened() + mail + rcpt + QStringList{"S: 251 2.1.5 Inoltrato"} + data() + quit(),
         .operations = connectSendQuit});
    row("251 to MAIL FROM refused with no RSET",
        {.script =
             opened() + QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "S: 251 Strano"} + transaction() + quit(),
         .operations = twoSends,
         .outcomes = {"", "Risposta inattesa a MAIL FROM: 251 Strano", "", ""}});
    row("550 to RCPT TO: RSET, refused for good",
        {.script =
             opened() + mail + rcpt + QStringList{"S: 550 5.1.1 Utente sconosciuto"} + rset + transaction() + quit(),
         .operations = twoSends,
         .outcomes = {"", "Risposta inattesa a RCPT TO: 550 5.1.1 Utente sconosciuto", "", ""},
         .rifiuto = "rifiutato dal server: 550 5.1.1 Utente sconosciuto"});
    row("450 to RCPT TO: RSET, not for good",
        {.script = opened() + mail + rcpt + QStringList{"S: 450 4.2.1 Riprova"} + rset + quit(),
         .operations = connectSendQuit,
         .outcomes = {"", "Risposta inattesa a RCPT TO: 450 4.2.1 Riprova", ""}});
    row("a failed RSET leaves the refusal as it was",
        {.script = opened() + mail + rcpt + QStringList{"S: 550 5.1.1 Sconosciuto", "C: RSET", "close"},
         .operations = connectSendQuit,
         .outcomes = {"", "Risposta inattesa a RCPT TO: 550 5.1.1 Sconosciuto", ""},
         .rifiuto = "rifiutato dal server: 550 5.1.1 Sconosciuto"});
    row("close while waiting for a reply",
        {.script = opened() + QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "close"},
         .operations = connectSendQuit,
         .outcomes = {"", "Il server ha chiuso la connessione.", ""}});
    row("close in the middle of a reply",
        {.script = opened() + QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "S+ 250 2.1", "close"},
         .operations = connectSendQuit,
         .outcomes = {"", "Il server ha chiuso la connessione.", ""}});
    // "silent" is reached only when the client gives up and closes: the connection is cancelled.
    row("silence past the deadline",
        {.script = opened() + QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "silent"},
         .operations = {"connect", "send", "send", "disconnect"},
         .outcomes = {"", "Il server non ha risposto entro il tempo massimo.", "Il server ha chiuso la connessione.",
                      ""}});
    row("sendMessage before connect",
        {.script = {}, .operations = {"send"}, .outcomes = {"Connessione non aperta."}, .connections = 0});
    row("sendMessage after disconnect", {.script = opened() + quit(),
                                         .operations = {"connect", "disconnect", "send"},
                                         .outcomes = {"", "", "Connessione non aperta."}});
    // No command carries a CR or LF that came from an address: it would smuggle a command of its own.
    const QString refused = "Errore di connessione: indirizzo non valido";
    row("CR LF in the recipient", {.script = opened() + transaction() + quit(),
                                   .operations = {"connect", "send", "send!", "disconnect"},
                                   .outcomes = {"", refused, "", ""},
                                   .recipient = Fixture::recipient + "\r\nRCPT TO:<altro@prova.example>"});
    row("LF in the envelope sender", {.script = opened() + quit(),
                                      .operations = connectSendQuit,
                                      .outcomes = {"", refused, ""},
                                      .envelopeFrom = Fixture::sender + "\nRSET"});
    row("CR in the sender's address stops EHLO", {.script = greeting() + quit(),
                                                  .operations = connectQuit,
                                                  .outcomes = {refused, ""},
                                                  .fromEmail = "mittente@prova.example\r\nRSET"});
    // Not even a NUL, an ESC or a BEL: whatever a server or a log makes of them, they aren't an address.
    row("NUL in the recipient", {.script = opened() + transaction() + quit(),
                                 .operations = {"connect", "send", "send!", "disconnect"},
                                 .outcomes = {"", refused, "", ""},
                                 .recipient = QString(Fixture::recipient).insert(4, QChar(0))});
    row("ESC in the envelope sender", {.script = opened() + quit(),
                                       .operations = connectSendQuit,
                                       .outcomes = {"", refused, ""},
                                       .envelopeFrom = "\x1b[2J" + Fixture::sender});
    row("C1 control in the recipient", {.script = opened() + quit(),
                                        .operations = connectSendQuit,
                                        .outcomes = {"", refused, ""},
                                        .recipient = Fixture::recipient + QChar(0x85)});
    row("BEL in the sender's address stops EHLO", {.script = greeting() + quit(),
                                                   .operations = connectQuit,
                                                   .outcomes = {refused, ""},
                                                   .fromEmail = "mittente@prova\a.example"});
    // A server's text reaches the history and the screens with its control characters blanked.
    row("control characters in a refusal",
        {.script = opened() + mail + rcpt + QStringList{"S: 550 5.1.1 \x1b[31mSconosciuto\x07\x7f!"} + rset + quit(),
         .operations = connectSendQuit,
         .outcomes = {"", "Risposta inattesa a RCPT TO: 550 5.1.1  [31mSconosciuto  !", ""},
         .rifiuto = "rifiutato dal server: 550 5.1.1  [31mSconosciuto  !"});

    // Bounded replies: a line that never ends, or a reply that never ends, is refused at its stage, and the
    // session is over, since nobody knows where the next reply would begin.
    const QString endless = "S+ 250-" + QString(2100, u'x');
    row("a line over 2,048 bytes",
        {.script = opened() + QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", endless, "silent"},
         .operations = connectSendQuit,
         .outcomes = {"", "Risposta inattesa a MAIL FROM: 250 risposta del server troppo lunga", ""}});
    QStringList flood;
    for (int i = 0; i < 40; ++i)
        flood << "S: 250-" + QString(2000, u'y');
    row("a reply over 64 KB",
        {.script = greeting() + QStringList{"C: EHLO prova.example"} + flood + QStringList{"silent"},
         .operations = connectQuit,
         .outcomes = {"Risposta inattesa a EHLO: 250 risposta del server troppo lunga", ""}});
    // One byte every 200 ms never lets a wait for one read run out, but the whole reply has a deadline too.
    row("a reply dribbled past the deadline",
        {.script = opened() +
                   QStringList{"C: MAIL FROM:<" + Fixture::sender + ">", "dribble 200 250 2.1.0 Ok, ma piano piano"},
         .operations = connectSendQuit,
         .outcomes = {"", "Il server non ha risposto entro il tempo massimo.", ""}});

    // STARTTLS. The first EHLO announces LOGIN and PLAIN, the one after the upgrade PLAIN only: what was said
    // in the clear is forgotten.
    const QStringList offersTls = ehlo({"250-smtp.prova.example", "250-STARTTLS", "250 AUTH LOGIN PLAIN"});
    const QStringList upgrade{"C: STARTTLS", "S: 220 2.0.0 Avanti", "starttls"};
    const QStringList afterTls = ehlo({"250-smtp.prova.example", "250 AUTH PLAIN"}) + plain();
    const QStringList noTls = ehlo({"250-smtp.prova.example", "250 AUTH LOGIN PLAIN"});
    const QString inClear = "Errore di connessione: il server non offre una connessione cifrata: la password non "
                            "viene inviata in chiaro";
    row("STARTTLS: upgrade, EHLO again, AUTH encrypted",
        {.script = greeting() + offersTls + upgrade + afterTls + transaction() + quit(),
         .operations = connectSendQuit,
         .remote = true});
    row("no STARTTLS, a user name, a remote host",
        {.script = greeting() + noTls + quit(), .operations = connectQuit, .outcomes = {inClear, ""}, .remote = true});
    row("STARTTLS only as part of another word",
        {.script = greeting() + ehlo({"250-smtp.prova.example", "250-X-STARTTLS-OFF", "250 AUTH LOGIN"}) + quit(),
         .operations = connectQuit,
         .outcomes = {inClear, ""},
         .remote = true});
    row("no STARTTLS, no user name, a remote host", {.script = greeting() + noTls + transaction() + quit(),
                                                     .operations = connectSendQuit,
                                                     .username = "",
                                                     .remote = true});
    row("454 to STARTTLS, a user name, a remote host",
        {.script = greeting() + offersTls + QStringList{"C: STARTTLS", "S: 454 4.7.0 TLS non disponibile"} + quit(),
         .operations = connectQuit,
         .outcomes = {"Risposta inattesa a STARTTLS: 454 4.7.0 TLS non disponibile", ""},
         .remote = true});
    row("454 to STARTTLS, no user name: on in the clear",
        {.script = greeting() + offersTls + QStringList{"C: STARTTLS", "S: 454 4.7.0 TLS non disponibile"} +
                   transaction() + quit(),
         .operations = connectSendQuit,
         .username = "",
         .remote = true});
    row("454 to STARTTLS on this machine: on in the clear",
        {.script =
             greeting() + offersTls + QStringList{"C: STARTTLS", "S: 454 4.7.0 TLS non disponibile"} + login() + quit(),
         .operations = connectQuit});
    row("untrusted certificate at the upgrade",
        {.script = greeting() + offersTls + upgrade + QStringList{"silent"},
         .operations = connectQuit,
         .outcomes = {"Errore di connessione: il certificato del server non è attendibile", ""},
         .remote = true,
         .trustCA = false});
    // The classic injection: bytes sent in the clear behind the 220 must not answer the encrypted EHLO.
    // Taken as its reply, "250 injected" would announce no PLAIN and the client would write AUTH LOGIN.
    row("bytes pipelined after the 220",
        {.script = greeting() + offersTls +
                   QStringList{"C: STARTTLS", "S: 220 go ahead", "S: 250 injected", "starttls"} + afterTls + quit(),
         .operations = connectQuit,
         .remote = true});
}

void TestSMTP::scripted() {
    QFETCH(ScriptRow, row);
    ScriptedServer server(row.script);
    server.setStartTls(ScriptedServer::tlsConfiguration(serverCertificate()));
    QVERIFY(server.listen(Loopback::smtp));

    SMTPConfig config;
    config.host = Loopback::smtp;
    config.port = server.port();
    config.useTLS = false;
    config.username = row.username;
    config.fromEmail = row.fromEmail;
    SMTPSession::Options options;
    options.timeout = std::chrono::milliseconds(1500);
    options.loopbackCountsAsRemote = row.remote;
    if (row.trustCA)
        options.extraTrustedCertificates = ca().certificates();
    SMTPSession session(config, Fixture::password, options);

    LogCapture logs;
    QStringList outcomes;
    QString rifiuto;
    for (const QString& operation : std::as_const(row.operations)) {
        Outcome outcome;
        if (operation == QLatin1String("connect"))
            outcome = runToEnd(session.connect());
        else if (operation == QLatin1String("disconnect"))
            outcome = runToEnd(session.disconnect());
        else if (operation == QLatin1String("send!")) // the default message, whatever the row's addresses
            outcome = runToEnd(session.sendMessage(Fixture::sender, Fixture::recipient, ScriptRow().data));
        else
            outcome = runToEnd(session.sendMessage(row.envelopeFrom, row.recipient, row.data));
        QVERIFY2(outcome.foreign.isEmpty(), qPrintable(outcome.foreign));
        outcomes << outcome.description();
        if (outcome.error)
            rifiuto = outcome.error->rifiutoDefinitivoDestinatario().value_or(QString());
    }
    const QStringList expected = row.outcomes.isEmpty() ? QStringList(row.operations.size(), QString()) : row.outcomes;
    QCOMPARE(outcomes, expected);
    QCOMPARE(rifiuto, row.rifiuto);
    QTRY_VERIFY2(server.usedUp(), qPrintable(server.problem() + "\nreceived: " + server.received().join(" | ")));
    QCOMPARE(server.connectionCount(), row.connections);

    // Credentials go to a remote server only once TLS is up, and what follows the upgrade is read afresh.
    if (row.remote && !server.received().contains("STARTTLS"))
        QVERIFY(std::none_of(server.received().cbegin(), server.received().cend(),
                             [](const QString& line) { return line.startsWith("AUTH"); }));
    for (const QString& secret : {Fixture::password, Fixture::passwordBase64, Fixture::plainToken}) {
        QVERIFY(!outcomes.join(u'\n').contains(secret));
        QVERIFY(!LogCapture::lines().join(u'\n').contains(secret));
    }
}

void TestSMTP::invalidPort_data() {
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("description");
    const QString invalid = QStringLiteral("Errore di connessione: Porta non valida: ");
    QTest::newRow("zero") << 0 << invalid + "0";
    QTest::newRow("negative") << -25 << invalid + "-25";
    QTest::newRow("65536") << 65536 << invalid + "65536";
    QTest::newRow("largest int") << std::numeric_limits<int>::max() << invalid + "2147483647";
    // The highest valid port goes to the network, where nobody listens on it.
    QTest::newRow("65535")
        << 65535 << "Errore di connessione: il server ha rifiutato la connessione (nessun servizio su questa porta)";
}

void TestSMTP::invalidPort() {
    QFETCH(int, port);
    QFETCH(QString, description);
    SMTPConfig config;
    config.host = Loopback::smtp;
    config.port = port;
    config.useTLS = false;
    SMTPSession session(config, Fixture::password, SMTPSession::Options{.timeout = std::chrono::seconds(5)});
    const Outcome outcome = runToEnd(session.connect());
    QCOMPARE(outcome.description(), description);
    QCOMPARE(runToEnd(session.disconnect()).description(), QString());
}
