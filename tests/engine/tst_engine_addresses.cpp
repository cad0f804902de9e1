#include "EngineTest.h"

#include "Loopback.h"
#include "MimeReader.h"
#include "TestCA.h"

#include <QCoro/QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace {
QString provaA(Scena& scena, const QString& a) {
    return QCoro::waitFor(scena.engine->sendTest(scena.modello, {{"nome", "Anna"}}, a, scena.settings, scena.store));
}

QString destinatarioDi(const QByteArray& messaggio) {
    const QJsonArray to = TestSupport::readWithPython(messaggio).value("to").toArray();
    return to.size() == 1 ? to.first().toObject().value("email").toString() : QString();
}
} // namespace

// A sender, reply or unsubscribe address that fails the address test stops a run and a test send before
// they connect, with a text naming the field; before, `x@y.example> SIZE=1` reached MAIL FROM and a bad
// reply address failed every recipient.
void TestEngine::mittenteNonValido_data() {
    QTest::addColumn<QString>("campo");
    QTest::addColumn<QString>("valore");
    QTest::addColumn<bool>("piePagina");
    QTest::addColumn<QString>("testo"); // empty: the run goes ahead
    const QString mittente = u"Indirizzo mittente non valido"_s;
    QTest::newRow("sender adding SIZE and AUTH to MAIL FROM")
        << "fromEmail"
        << "x@y.example> SIZE=1 AUTH=<z@w.example" << true << mittente;
    QTest::newRow("sender with an ESC") << "fromEmail"
                                        << "x\x1b@y.example" << true << mittente;
    QTest::newRow("sender missing") << "fromEmail"
                                    << "" << true << mittente;
    QTest::newRow("sender with an accented local part") << "fromEmail" << u"niccolò@y.example"_s << true << mittente;
    QTest::newRow("reply address with a bracket") << "replyTo"
                                                  << "r@y.example>" << true << u"Indirizzo di risposta non valido"_s;
    QTest::newRow("reply address with a zero-width space")
        << "replyTo" << u"r\u200b@y.example"_s << true << u"Indirizzo di risposta non valido"_s;
    QTest::newRow("unsubscribe address with a comma")
        << "emailDisiscrizione"
        << "a@y.example,b@y.example" << true << u"Indirizzo per le cancellazioni non valido"_s;
    QTest::newRow("unsubscribe address unused without the footer") << "emailDisiscrizione"
                                                                   << "a@y.example,b@y.example" << false << QString();
}

void TestEngine::mittenteNonValido() {
    QFETCH(QString, campo);
    QFETCH(QString, valore);
    QFETCH(bool, piePagina);
    QFETCH(QString, testo);
    auto server = avviaServer(ca());
    SMTPConfig config = configurazione(server->config());
    config.piePaginaAttivo = piePagina;
    if (campo == "fromEmail")
        config.fromEmail = valore;
    else if (campo == "replyTo")
        config.replyTo = valore;
    else
        config.emailDisiscrizione = valore;
    Scena scena(config, {"anna@ditta.example"}, &ca());

    scena.corri();
    const SendEngine& engine = *scena.engine;
    QVERIFY(!engine.isRunning());
    if (testo.isEmpty()) {
        QCOMPARE(engine.sent(), 1);
        QCOMPARE(server->messageCount(), 1);
        return;
    }
    QCOMPARE(engine.lastError(), testo);
    QCOMPARE(engine.activityLog(), QStringList{u"Invio non avviato: "_s + testo});
    QCOMPARE(scena.campagna().status(), CampaignStatus::draft);
    QVERIFY(scena.logs().isEmpty());

    QCOMPARE(provaA(scena, u"anna@ditta.example"_s), u"Invio di prova fallito: "_s + testo);
    QVERIFY(scena.store.all<SendLog>().isEmpty());
    // Nothing connected: no login and no message reached the server.
    QVERIFY(server->authAttempts().isEmpty());
    QCOMPARE(server->messageCount(), 0);
}

// Accented domains went out as raw UTF-8 in RCPT TO and To, and an address and its ASCII form were two
// recipients. Now both carry the ASCII form, duplicates and exclusions are found on it, and the rows of
// the accented address get the outcome.
void TestEngine::dominiAccentati() {
    auto server = avviaServer(ca());
    SMTPConfig config = configurazione(server->config());
    config.fromEmail = u"info@città.example"_s;
    Scena scena(config,
                {u"mario@müller.example"_s, u"MARIO@xn--mller-kva.example"_s, u"bruno@xn--mller-kva.example"_s,
                 u"niccolò@esempio.example"_s, u"x@dest.example>"_s},
                &ca());
    Suppression esclusa(u"bruno@müller.example"_s, u"aggiunto a mano"_s);
    scena.store.insert(esclusa);
    scena.store.save();

    scena.corri();
    const QList<AiosmtpdServer::Message> ricevuti = server->messages();
    QCOMPARE(ricevuti.size(), 1);
    QCOMPARE(ricevuti.first().mailFrom, u"info@xn--citt-3na.example"_s);
    QCOMPARE(ricevuti.first().rcptTos, QStringList{u"mario@xn--mller-kva.example"_s});
    QCOMPARE(destinatarioDi(ricevuti.first().data), u"mario@xn--mller-kva.example"_s);

    QList<QPair<QString, QString>> saltati;
    for (const SendLog& log : scena.logsCon(SendStatus::skipped))
        saltati.append({log.email, log.detail});
    const QList<QPair<QString, QString>> attesi = {
        {u"mario@xn--mller-kva.example"_s, u"duplicato nella lista"_s},
        {u"bruno@xn--mller-kva.example"_s, u"in lista esclusi"_s},
        {u"niccolò@esempio.example"_s, u"indirizzo non valido"_s},
        {u"x@dest.example>"_s, u"indirizzo non valido"_s},
    };
    QCOMPARE(saltati, attesi);
    QCOMPARE(scena.riga(u"mario@müller.example"_s).inviateCount, 1);
    QCOMPARE(scena.riga(u"MARIO@xn--mller-kva.example"_s).inviateCount, 1);
}

// The test address: its domain in ASCII form on the wire; anything smuggled after it refused before
// connecting (before, "> NOTIFY=NEVER" became a parameter of RCPT TO).
void TestEngine::provaADominioAccentato_data() {
    QTest::addColumn<QString>("indirizzo");
    QTest::addColumn<QString>("testo");
    QTest::addColumn<QString>("sulFilo"); // empty: nothing reaches the server
    QTest::newRow("accented domain") << u" anna@città.example "_s
                                     << u"Messaggio di prova inviato a  anna@città.example ."_s
                                     << u"anna@xn--citt-3na.example"_s;
    QTest::newRow("NOTIFY smuggled into RCPT TO")
        << u"anna@ditta.example> NOTIFY=NEVER"_s
        << u"Invio di prova fallito: Indirizzo per l'invio di prova non valido"_s << QString();
    QTest::newRow("fullwidth local part")
        << u"ａｎｎａ@ditta.example"_s << u"Invio di prova fallito: Indirizzo per l'invio di prova non valido"_s
        << QString();
}

void TestEngine::provaADominioAccentato() {
    QFETCH(QString, indirizzo);
    QFETCH(QString, testo);
    QFETCH(QString, sulFilo);
    auto server = avviaServer(ca());
    Scena scena(configurazione(server->config()), {}, &ca());

    QCOMPARE(provaA(scena, indirizzo), testo);
    const QList<AiosmtpdServer::Message> ricevuti = server->messages();
    if (sulFilo.isEmpty()) {
        QVERIFY(ricevuti.isEmpty());
        QVERIFY(server->authAttempts().isEmpty());
        return;
    }
    QCOMPARE(ricevuti.size(), 1);
    QCOMPARE(ricevuti.first().rcptTos, QStringList{sulFilo});
    QCOMPARE(destinatarioDi(ricevuti.first().data), sulFilo);
}
