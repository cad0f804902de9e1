#include "EngineTest.h"

#include "Loopback.h"
#include "MimeReader.h"
#include "NsdServer.h"
#include "TestCA.h"

#include <QCoro/QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

namespace {

QStringList indirizzi(int quanti) {
    QStringList result;
    for (int i = 1; i <= quanti; ++i)
        result << QStringLiteral("cliente%1@ditta.it").arg(i, 2, 10, QLatin1Char('0'));
    return result;
}

QStringList destinatari(const AiosmtpdServer& server) {
    QStringList result;
    for (const AiosmtpdServer::Message& message : server.messages())
        result << message.rcptTos;
    return result;
}

QString testoDi(const QJsonObject& letto, const QString& tipo) {
    for (const QJsonValue& foglia : letto.value("leaves").toArray())
        if (foglia.toObject().value("type").toString() == tipo)
            return foglia.toObject().value("text").toString();
    return {};
}

} // namespace

// Fifty recipients from a stored list, plus a row with no valid address and a duplicate: every message goes
// to its own address with its own text, and every outcome lands in logs, rows, events and counters.
void TestEngine::campagnaCompleta() {
    auto server = avviaServer(ca());
    const QStringList cinquanta = indirizzi(50);
    Scena scena(configurazione(server->config()), cinquanta + QStringList{"non-un-indirizzo", "CLIENTE07@ditta.it "},
                &ca());
    // The same address in another list: its row records the delivery too.
    ContactList altra(QStringLiteral("Fiera"), QStringLiteral("fiera.csv"), {"email"}, QStringLiteral("email"));
    scena.store.insert(altra);
    QList<ContactRow> righeAltra{ContactRow({{"email", "Cliente03@Ditta.it"}}, "Cliente03@Ditta.it")};
    scena.store.insertRows(altra.id, righeAltra);
    scena.store.save();

    scena.corri();

    const SendEngine& engine = *scena.engine;
    QCOMPARE(engine.sent(), 50);
    QCOMPARE(engine.skipped(), 2);
    QCOMPARE(engine.total(), 50);
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);

    const QStringList log = engine.activityLog();
    QCOMPARE(log.first(), QStringLiteral("Connessione a %1:2525…").arg(Loopback::engineSmtp));
    QCOMPARE(log.at(1), "Connesso e autenticato.");
    QCOMPARE(log.last(), "Fine: 50 inviate, 0 errori, 2 saltate.");
    QCOMPARE(log.size(), 53);

    const QList<AiosmtpdServer::Message> ricevuti = server->messages();
    const QList<SendLog> inviati = scena.logsCon(SendStatus::sent);
    QCOMPARE(ricevuti.size(), 50);
    QCOMPARE(inviati.size(), 50);
    for (int i = 0; i < 50; ++i) {
        const QString indirizzo = cinquanta.at(i);
        const QString nome = Scena::nomeDi(indirizzo);
        QCOMPARE(ricevuti.at(i).rcptTos, QStringList{indirizzo});
        QCOMPARE(ricevuti.at(i).mailFrom, "mittente@prova.example");
        QCOMPARE(log.at(2 + i), "✓ " + indirizzo);
        QCOMPARE(inviati.at(i).email, indirizzo);
        QCOMPARE(inviati.at(i).subject, "Offerta per " + nome);
        QCOMPARE(inviati.at(i).servizio, "Prova TLS");

        const QJsonObject letto = TestSupport::readWithPython(ricevuti.at(i).data);
        QCOMPARE(letto.value("subject").toString(), "Offerta per " + nome);
        QCOMPARE(letto.value("to").toArray().first().toObject().value("email").toString(), indirizzo);
        QCOMPARE(letto.value("raw").toObject().value("List-Unsubscribe").toString(),
                 "<mailto:risposte@prova.example?subject=Cancellami>");
        const QString html = testoDi(letto, "text/html");
        QVERIFY2(html.contains("Gentile " + nome.toHtmlEscaped() + " di Bari"), qPrintable(html));
        QVERIFY(html.contains("Ricevi questo messaggio perché sei nostro cliente."));
        const QString testo = testoDi(letto, "text/plain");
        QVERIFY2(testo.contains("Gentile " + nome + " di Bari"), qPrintable(testo));
        QVERIFY2(testo.contains("\n\n-- \nRicevi questo messaggio perché sei nostro cliente."), qPrintable(testo));
    }

    const QList<SendLog> saltati = scena.logsCon(SendStatus::skipped);
    QCOMPARE(saltati.size(), 2);
    QCOMPARE(saltati.at(0).email, "non-un-indirizzo");
    QCOMPARE(saltati.at(0).detail, "indirizzo non valido");
    QCOMPARE(saltati.at(1).email, "cliente07@ditta.it");
    QCOMPARE(saltati.at(1).detail, "duplicato nella lista");
    QCOMPARE(saltati.at(1).subject, "Offerta per {{nome}}");

    // Skips come first in the events, in plan order, then the deliveries in list order.
    QCOMPARE(engine.eventi().size(), 52);
    QCOMPARE(engine.eventi().at(1).dettaglio, "duplicato nella lista");
    QCOMPARE(engine.eventi().at(2).email, cinquanta.first());

    const ContactRow terza = scena.riga(cinquanta.at(2));
    QCOMPARE(terza.inviateCount, 1);
    QCOMPARE(terza.ultimoEsito(), SendStatus::sent);
    QCOMPARE(terza.ultimaCampagna, "Saldi di marzo");
    QCOMPARE(terza.ultimoOggetto, "Offerta per " + Scena::nomeDi(cinquanta.at(2)));
    const ContactRow nellAltra = scena.store.rows(altra.id).first();
    QCOMPARE(nellAltra.inviateCount, 1);
    QCOMPARE(nellAltra.ultimoOggetto, terza.ultimoOggetto);
    // The duplicated address: both of its rows were skipped once and delivered once.
    for (const ContactRow& riga : scena.store.righePerEmail().value("cliente07@ditta.it")) {
        QCOMPARE(riga.inviateCount, 1);
        QCOMPARE(riga.saltateCount, 1);
    }
    QCOMPARE(scena.riga("non-un-indirizzo").saltateCount, 1);
}

void TestEngine::secondaCorsa_data() {
    QTest::addColumn<bool>("skipDuplicates");
    QTest::addColumn<int>("nuoviMessaggi");
    QTest::addColumn<int>("saltati"); // of the second run
    QTest::addColumn<int>("nuoviLog");
    // A delivered address that stands twice is "already sent" twice, never a duplicate: neither leaves a log.
    QTest::newRow("skipDuplicates: nothing new") << true << 0 << 5 << 0;
    QTest::newRow("without it: everything again") << false << 4 << 1 << 5;
}

// A campaign run again; the template edited meanwhile doesn't change what the campaign sends.
void TestEngine::secondaCorsa() {
    QFETCH(bool, skipDuplicates);
    QFETCH(int, nuoviMessaggi);
    QFETCH(int, saltati);
    QFETCH(int, nuoviLog);
    auto server = avviaServer(ca());
    Scena scena(configurazione(server->config()), indirizzi(4) << "cliente02@ditta.it", &ca());
    scena.campaign.skipDuplicates = skipDuplicates;
    scena.store.update(scena.campaign);
    scena.corri();
    QCOMPARE(server->messages().size(), 4);
    const qsizetype logPrima = scena.logs().size();

    scena.modello.subject = QStringLiteral("Nuovo oggetto");
    scena.store.update(scena.modello);
    scena.corri();

    QCOMPARE(scena.engine->sent(), nuoviMessaggi);
    QCOMPARE(scena.engine->skipped(), saltati);
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);
    QCOMPARE(server->messages().size(), 4 + nuoviMessaggi);
    QCOMPARE(scena.logs().size(), logPrima + nuoviLog);
    for (const AiosmtpdServer::Message& message : server->messages())
        QVERIFY(TestSupport::readWithPython(message.data).value("subject").toString().startsWith("Offerta per "));
    QCOMPARE(scena.riga("cliente01@ditta.it").inviateCount, skipDuplicates ? 1 : 2);
}

void TestEngine::rifiuti_data() {
    QTest::addColumn<bool>("escludiRifiutati");
    QTest::addColumn<bool>("aData"); // the refusal comes at DATA rather than at RCPT
    QTest::addColumn<QString>("risposta");
    QTest::addColumn<bool>("escluso");
    QTest::newRow("550 at RCPT") << true << false << "550 5.1.1 Utente sconosciuto" << true;
    QTest::newRow("550 at RCPT, escludiRifiutati off") << false << false << "550 5.1.1 Utente sconosciuto" << false;
    QTest::newRow("452 at RCPT") << true << false << "452 4.2.2 Casella piena" << false;
    QTest::newRow("554 at DATA") << true << true << "554 5.6.0 Contenuto rifiutato" << false;
}

void TestEngine::rifiuti() {
    QFETCH(bool, escludiRifiutati);
    QFETCH(bool, aData);
    QFETCH(QString, risposta);
    QFETCH(bool, escluso);
    const QList<AiosmtpdServer::Rule> regola{{"^rifiutato@", risposta}};
    auto server = avviaServer(ca(), aData ? QList<AiosmtpdServer::Rule>() : regola,
                              aData ? regola : QList<AiosmtpdServer::Rule>());
    SMTPConfig config = configurazione(server->config());
    config.escludiRifiutati = escludiRifiutati;
    Scena scena(config, {"anna@ditta.it", " Rifiutato@Ditta.it", "bruno@ditta.it"}, &ca());
    scena.corri();

    const QString errore =
        (aData ? "Risposta inattesa a invio messaggio: " : "Risposta inattesa a RCPT TO: ") + risposta;
    const SendEngine& engine = *scena.engine;
    QCOMPARE(engine.sent(), 2);
    QCOMPARE(engine.failed(), 1);
    QCOMPARE(engine.lastError(), std::nullopt);
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);
    QCOMPARE(destinatari(*server), QStringList({"anna@ditta.it", "bruno@ditta.it"}));
    const QList<SendLog> falliti = scena.logsCon(SendStatus::failed);
    QCOMPARE(falliti.size(), 1);
    QCOMPARE(falliti.first().email, "rifiutato@ditta.it");
    QCOMPARE(falliti.first().detail, errore);
    QCOMPARE(falliti.first().subject, "Offerta per Rifiutato & Figli");
    const ContactRow riga = scena.riga(" Rifiutato@Ditta.it");
    QCOMPARE(riga.erroriCount, 1);
    QCOMPARE(riga.ultimoDettaglio, errore);

    const QStringList log = engine.activityLog();
    const qsizetype croce = log.indexOf("✗ rifiutato@ditta.it — " + errore);
    QVERIFY2(croce > 0, qPrintable(log.join('\n')));
    const QList<Suppression> esclusi = scena.store.all<Suppression>();
    QCOMPARE(esclusi.size(), escluso ? 1 : 0);
    QCOMPARE(engine.esclusiAggiunti(), escluso ? 1 : 0);
    if (!escluso) {
        QCOMPARE(righeCon(engine, "→ "), QStringList());
        QCOMPARE(log.at(croce + 1), "✓ bruno@ditta.it");
        return;
    }
    const QString motivo = "rifiutato dal server: " + risposta;
    QCOMPARE(esclusi.first().email, "rifiutato@ditta.it");
    QCOMPARE(esclusi.first().reason, motivo);
    QCOMPARE(esclusi.first().motivo(), MotivoEsclusione::casellaInesistente);
    QCOMPARE(log.at(croce + 1), "→ rifiutato@ditta.it aggiunto agli esclusi (" + motivo + ")");

    // From the next run on the address is left out, with no second record.
    scena.corri();
    QCOMPARE(scena.engine->sent(), 0);
    QCOMPARE(scena.engine->eventi().at(1).email, "rifiutato@ditta.it");
    QCOMPARE(scena.engine->eventi().at(1).dettaglio, "in lista esclusi");
    QCOMPARE(scena.store.all<Suppression>().size(), 1);
}

void TestEngine::quota_data() {
    QTest::addColumn<int>("tetto");
    QTest::addColumn<int>("giaInviate");   // by this profile, in the last 24 hours
    QTest::addColumn<int>("altroProfilo"); // by another profile: never counted
    QTest::addColumn<int>("inviate");
    QTest::addColumn<bool>("taglio");
    QTest::addColumn<int>("poiInviate"); // by a run a day later
    QTest::newRow("room for 3 of 5") << 3 << 0 << 0 << 3 << true << 2;
    QTest::newRow("two already sent today") << 4 << 2 << 3 << 2 << true << 3;
    QTest::newRow("no room left") << 2 << 3 << 0 << 0 << true << 2;
    QTest::newRow("exactly enough room") << 5 << 0 << 4 << 5 << false << 0;
    QTest::newRow("no limit") << 0 << 9 << 0 << 5 << false << 0;
}

// The quota cuts the run with its line and leaves no trace of those cut; a run a day later takes them up.
void TestEngine::quota() {
    QFETCH(int, tetto);
    QFETCH(int, giaInviate);
    QFETCH(int, altroProfilo);
    QFETCH(int, inviate);
    QFETCH(bool, taglio);
    QFETCH(int, poiInviate);
    auto server = avviaServer(ca());
    SMTPConfig config = configurazione(server->config());
    config.dailyLimit = tetto;
    const QStringList cinque = indirizzi(5);
    Scena scena(config, cinque, &ca());
    const QDateTime adesso = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < giaInviate + altroProfilo; ++i) {
        SendLog log("altro@ditta.it", "Altro", SendStatus::sent, "", i < giaInviate ? "Prova TLS" : "Altro profilo");
        log.date = adesso.addSecs(-3600);
        scena.store.insert(log);
    }
    scena.store.save();
    const qsizetype logPrima = scena.store.all<SendLog>().size();

    scena.corri();
    const SendEngine& engine = *scena.engine;
    QCOMPARE(engine.sent(), inviate);
    QCOMPARE(engine.total(), inviate);
    QCOMPARE(engine.rimandati(), 5 - inviate);
    QCOMPARE(engine.inviateOggi(), giaInviate);
    const QString riga = QStringLiteral("Tetto giornaliero %1 (già inviate oggi: %2): in questa tornata partono %3 "
                                        "messaggi, gli altri restano in attesa e si riprendono domani.")
                             .arg(tetto)
                             .arg(giaInviate)
                             .arg(inviate);
    QCOMPARE(righeCon(engine, "Tetto giornaliero"), taglio ? QStringList{riga} : QStringList());
    QVERIFY(engine.activityLog().contains("Connesso e autenticato."));
    QCOMPARE(engine.activityLog().last(), QStringLiteral("Fine: %1 inviate, 0 errori, 0 saltate.").arg(inviate));
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);
    QCOMPARE(destinatari(*server), cinque.mid(0, inviate));
    // Those cut have no log and their rows are untouched.
    QCOMPARE(scena.store.all<SendLog>().size(), logPrima + inviate);
    QCOMPARE(scena.riga(cinque.last()).inviateCount + scena.riga(cinque.last()).saltateCount, inviate == 5 ? 1 : 0);

    scena.engine->setOrologio([adesso] { return adesso.addSecs(25 * 3600); });
    scena.corri();
    QCOMPARE(scena.engine->sent(), poiInviate);
    QCOMPARE(scena.engine->skipped(), inviate);
    QCOMPARE(destinatari(*server), cinque.mid(0, inviate + poiInviate));
}

void TestEngine::controlloDomini_data() {
    QTest::addColumn<bool>("verificaDomini");
    QTest::addColumn<int>("tetto");
    QTest::addColumn<QList<int>>("consegnati"); // indexes into the list
    QTest::addColumn<QList<int>>("scartati");
    QTest::newRow("domains checked") << true << 0 << QList<int>{0, 2, 4} << QList<int>{1, 3};
    QTest::newRow("check off") << false << 0 << QList<int>{0, 1, 2, 3, 4} << QList<int>{};
    // The check comes after the quota cut: a dropped address is not replaced by one of those cut.
    QTest::newRow("after the quota cut") << true << 3 << QList<int>{0, 2} << QList<int>{1};
}

// NSD answers for the test's domains: one with a mail server, one with an address only, and one that
// doesn't exist. A reserved demonstration domain is never asked and is sent to.
void TestEngine::controlloDomini() {
    QFETCH(bool, verificaDomini);
    QFETCH(int, tetto);
    QFETCH(QList<int>, consegnati);
    QFETCH(QList<int>, scartati);
    const QStringList lista{"anna@posta-ditta.it", "bruno@sparito.it", "carla@solo-sito.it", "dario@sparito.it",
                            "elena@negozio.example"};
    const auto scelti = [&lista](const QList<int>& indici) {
        QStringList result;
        for (int i : indici)
            result << lista.at(i);
        return result;
    };
    NsdServer nsd(QString::fromLatin1(Loopback::engineDns));
    QVERIFY2(
        nsd.start({{"posta-ditta.it", "@ IN MX 10 mx\nmx IN A 192.0.2.25\n"}, {"solo-sito.it", "@ IN A 192.0.2.26\n"}}),
        qPrintable(nsd.error()));
    auto server = avviaServer(ca());
    SMTPConfig config = configurazione(server->config());
    config.verificaDomini = verificaDomini;
    config.dailyLimit = tetto;
    Scena scena(config, lista, &ca());
    scena.corri();

    const SendEngine& engine = *scena.engine;
    QCOMPARE(destinatari(*server), scelti(consegnati));
    QCOMPARE(engine.total(), consegnati.size());
    QCOMPARE(engine.skipped(), scartati.size());
    QStringList saltati;
    for (const SendLog& log : scena.logsCon(SendStatus::skipped)) {
        QCOMPARE(log.detail, "dominio senza server di posta");
        QCOMPARE(scena.riga(log.email).saltateCount, 1);
        saltati << log.email;
    }
    QCOMPARE(saltati, scelti(scartati));
    QCOMPARE(righeCon(engine, "Controllo dei domini"),
             verificaDomini ? QStringList{"Controllo dei domini dei destinatari…"} : QStringList());
    QCOMPARE(righeCon(engine, "Scartati "),
             scartati.isEmpty()
                 ? QStringList()
                 : QStringList{QStringLiteral("Scartati %1 indirizzi con dominio inesistente.").arg(scartati.size())});
    QVERIFY(scena.store.all<Suppression>().isEmpty()); // nothing goes to the suppression list here
}

// A pause holds the connection and sends nothing; a stop ends the run as paused, and a later run resumes.
void TestEngine::pausaEStop() {
    auto server = avviaServer(ca());
    SMTPConfig config = configurazione(server->config());
    config.delayBetweenMessages = 0.2;
    const QStringList sei = indirizzi(6);
    Scena scena(config, sei, &ca());
    SendEngine& engine = *scena.engine;
    QCoro::Task<> corsa = engine.run(scena.campagna(), scena.settings, scena.store);

    QTRY_VERIFY(engine.sent() >= 1);
    engine.setPaused(true);
    QTest::qWait(800);
    const qsizetype fermi = server->messages().size();
    QCOMPARE(engine.sent(), fermi);
    QTest::qWait(1000);
    QCOMPARE(server->messages().size(), fermi);
    QVERIFY(engine.isRunning());
    QVERIFY(fermi < 6);
    // A second run on the same engine returns at once and changes nothing.
    QCoro::waitFor(engine.run(scena.campagna(), scena.settings, scena.store));
    QCOMPARE(engine.sent(), fermi);
    QVERIFY(engine.isRunning());
    // Nor does another engine, as a campaigns screen made afresh has: it says why and sends nobody.
    auto altro = std::make_shared<SendEngine>();
    QVERIFY(SendEngine::campagnaInInvio(scena.campaign.id));
    QCoro::waitFor(altro->run(scena.campagna(), scena.settings, scena.store));
    QVERIFY(!altro->isRunning());
    QCOMPARE(altro->lastError(), std::optional<QString>(QStringLiteral(
                                     "Questa campagna è già in invio: attendi che finisca, poi riprendila.")));
    QCOMPARE(server->messages().size(), fermi);

    engine.setPaused(false);
    QTRY_VERIFY(engine.sent() > fermi);
    engine.cancel();
    QCoro::waitFor(std::move(corsa));
    QVERIFY(!engine.isRunning());
    QVERIFY(engine.interrotta());
    QVERIFY(engine.sent() < 6);
    QCOMPARE(scena.campagna().status(), CampaignStatus::paused);
    QCOMPARE(engine.activityLog().last(), QStringLiteral("Fine: %1 inviate, 0 errori, 0 saltate.").arg(engine.sent()));
    // One connection all along: the pause didn't close it and nothing reconnected.
    QCOMPARE(server->authAttempts().size(), 1);

    QVERIFY(!SendEngine::campagnaInInvio(scena.campaign.id));
    const qint64 primaCorsa = engine.sent();
    scena.corri();
    QCOMPARE(engine.sent(), 6 - primaCorsa);
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);
    QCOMPARE(destinatari(*server), sei);
}

// Whether the template or the list is gone, the run stops before it starts, touching nothing.
void TestEngine::campagnaSenzaModelloOLista() {
    for (const bool senzaModello : {true, false}) {
        Scena scena(configurazione(SMTPConfig()), indirizzi(2), nullptr);
        if (senzaModello)
            scena.store.remove<MessageTemplate>(scena.modello.id);
        else
            scena.store.remove<ContactList>(scena.lista.id);
        scena.store.save();
        scena.corri();
        const SendEngine& engine = *scena.engine;
        QCOMPARE(engine.lastError(),
                 "La campagna non ha più un modello o una lista validi: forse sono stati eliminati.");
        QVERIFY(!engine.isRunning());
        QVERIFY(engine.activityLog().isEmpty());
        QVERIFY(!engine.inizio().has_value());
        QCOMPARE(scena.campagna().status(), CampaignStatus::draft);
        QVERIFY(scena.campagna().snapshotHTML.isEmpty());
        QVERIFY(scena.logs().isEmpty());
    }
}
