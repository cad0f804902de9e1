#include "EngineTest.h"

#include "Loopback.h"
#include "MimeReader.h"
#include "TestCA.h"

#include <QCoro/QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

namespace {

QString inviaProva(Scena& scena, const QString& a) {
    return QCoro::waitFor(scena.engine->sendTest(scena.modello, {{"nome", "Anna & Co"}, {"citta", "Lecce"}}, a,
                                                 scena.settings, scena.store));
}

} // namespace

void TestEngine::invioDiProva_data() {
    QTest::addColumn<QString>("oggettoModello");
    QTest::addColumn<QString>("oggetto");
    QTest::newRow("subject with a field") << "Preventivo per {{nome}}"
                                          << "[PROVA] Preventivo per Anna & Co";
    QTest::newRow("empty subject keeps its blank") << ""
                                                   << "[PROVA] ";
}

// One real message with the live template; an address on the suppression list gets it all the same.
void TestEngine::invioDiProva() {
    QFETCH(QString, oggettoModello);
    QFETCH(QString, oggetto);
    auto server = avviaServer(ca());
    Scena scena(configurazione(server->config()), {"Prova@Ditta.it"}, &ca());
    scena.modello.subject = oggettoModello;
    scena.store.update(scena.modello);
    TemplateAttachment allegato("listino.pdf", "application/pdf", QByteArray("%PDF-1.4 listino"));
    allegato.templateId = scena.modello.id;
    scena.store.insert(allegato);
    Suppression esclusa("prova@ditta.it", "aggiunto a mano");
    scena.store.insert(esclusa);
    scena.store.save();

    QCOMPARE(inviaProva(scena, "Prova@Ditta.it"), "Messaggio di prova inviato a Prova@Ditta.it.");

    const QList<AiosmtpdServer::Message> ricevuti = server->messages();
    QCOMPARE(ricevuti.size(), 1);
    QCOMPARE(ricevuti.first().rcptTos, QStringList{"Prova@Ditta.it"});
    const QJsonObject letto = TestSupport::readWithPython(ricevuti.first().data);
    QCOMPARE(letto.value("subject").toString(), oggetto);
    QVERIFY(!letto.value("raw").toObject().contains("List-Unsubscribe"));
    QCOMPARE(letto.value("replyTo").toArray().first().toObject().value("email").toString(), "risposte@prova.example");
    bool conAllegato = false;
    for (const QJsonValue& foglia : letto.value("leaves").toArray())
        conAllegato |= foglia.toObject().value("filename").toString() == "listino.pdf";
    QVERIFY(conAllegato);

    const QList<SendLog> logs = scena.store.all<SendLog>();
    QCOMPARE(logs.size(), 1);
    QCOMPARE(logs.first().status(), SendStatus::test);
    QCOMPARE(logs.first().campaignId, 0);
    QCOMPARE(logs.first().servizio, QString());
    QCOMPARE(logs.first().subject, oggetto);
    QCOMPARE(logs.first().email, "Prova@Ditta.it");
    // No row, no engine state and no quota moves.
    const ContactRow riga = scena.riga("Prova@Ditta.it");
    QCOMPARE(riga.inviateCount + riga.erroriCount + riga.saltateCount, 0);
    QVERIFY(riga.ultimoEsitoRaw.isEmpty());
    QVERIFY(scena.engine->activityLog().isEmpty());
    QVERIFY(scena.engine->eventi().isEmpty());
    QCOMPARE(scena.store.inviateUltime24Ore(""), 0);
}

void TestEngine::invioDiProvaFallito_data() {
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("serverAcceso");
    QTest::addColumn<QString>("testo");
    QTest::newRow("wrong password")
        << "sbagliata" << true
        << "Invio di prova fallito: Autenticazione rifiutata: 535 5.7.8 Authentication credentials invalid";
    QTest::newRow("recipient refused") << "" << true
                                       << "Invio di prova fallito: Risposta inattesa a RCPT TO: 550 5.1.1 Utente "
                                          "sconosciuto";
    QTest::newRow("nothing listens") << "" << false
                                     << "Invio di prova fallito: Errore di connessione: il server ha rifiutato la "
                                        "connessione (nessun servizio su questa porta)";
}

void TestEngine::invioDiProvaFallito() {
    QFETCH(QString, password);
    QFETCH(bool, serverAcceso);
    QFETCH(QString, testo);
    AiosmtpdServer::Options options = AiosmtpdServer::withTls(ca(), Loopback::engineSmtp);
    options.rejectAtRcpt = {{"^nessuno@", "550 5.1.1 Utente sconosciuto"}};
    AiosmtpdServer server(options);
    if (serverAcceso)
        QVERIFY2(server.start(), qPrintable(server.errorString()));
    Scena scena(configurazione(server.config()), {}, &ca());
    if (!password.isEmpty())
        scena.settings.setPassword(password);

    QCOMPARE(inviaProva(scena, "nessuno@ditta.it"), testo);
    QVERIFY(scena.store.all<SendLog>().isEmpty());
    QVERIFY(scena.store.all<Suppression>().isEmpty());
    QVERIFY(server.messages().isEmpty());
}

void TestEngine::cifratura_data() {
    QTest::addColumn<bool>("prova"); // the test send; a campaign's run otherwise
    QTest::addColumn<bool>("starttls");
    QTest::addColumn<QString>("esito"); // the test send's text, or the run's last line
    QTest::addColumn<QStringList>("conversazione");
    const QString inChiaro = "Errore di connessione: il server non offre una connessione cifrata: la password non "
                             "viene inviata in chiaro";
    const QStringList cifrata{"EHLO", "EHLO tls", "AUTH LOGIN tls", "DATA tls"};
    QTest::newRow("test send, STARTTLS") << true << true << "Messaggio di prova inviato a anna@ditta.it." << cifrata;
    QTest::newRow("test send, no STARTTLS")
        << true << false << "Invio di prova fallito: " + inChiaro << QStringList{"EHLO"};
    QTest::newRow("run, STARTTLS") << false << true << "Fine: 1 inviate, 0 errori, 0 saltate." << cifrata;
    QTest::newRow("run, no STARTTLS") << false << false << "Connessione fallita: " + inChiaro << QStringList{"EHLO"};
}

// The test send and a run open their sessions the same way: upgraded with STARTTLS, or no password at all
// to a server that isn't on this machine.
void TestEngine::cifratura() {
    QFETCH(bool, prova);
    QFETCH(bool, starttls);
    QFETCH(QString, esito);
    QFETCH(QStringList, conversazione);
    AiosmtpdServer server(starttls ? AiosmtpdServer::withStartTls(ca(), Loopback::engineSmtp)
                                   : AiosmtpdServer::plain(Loopback::engineSmtp));
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    Scena scena(configurazione(server.config()), {"anna@ditta.it"}, &ca());
    SMTPSession::Options opzioni = AiosmtpdServer::sessionOptions(&ca());
    opzioni.loopbackCountsAsRemote = true;
    scena.engine->setFabbricaSessionePerTest([opzioni](const SMTPConfig& c, const QString& password) {
        return std::make_unique<SMTPSession>(c, password, opzioni);
    });

    if (prova) {
        QCOMPARE(inviaProva(scena, "anna@ditta.it"), esito);
    } else {
        scena.corri();
        QCOMPARE(scena.engine->activityLog().last(), esito);
    }
    QCOMPARE(server.conversation(), conversazione);
    QCOMPARE(server.messages().size(), conversazione.size() > 1 ? 1 : 0);
    QCOMPARE(server.authAttempts().size(), conversazione.size() > 1 ? 1 : 0);
}
