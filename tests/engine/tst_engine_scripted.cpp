#include "EngineTest.h"

#include "Loopback.h"
#include "ScriptedServer.h"

#include <QtTest>

namespace {

const QString mittente = QStringLiteral("mittente@prova.example");

QStringList apertura() {
    // base64 of the user and of the test password, worked out by hand.
    return {"S: 220 smtp.prova.example ESMTP pronto",
            "C: EHLO prova.example",
            "S: 250-smtp.prova.example",
            "S: 250 AUTH LOGIN",
            "C: AUTH LOGIN",
            "S: 334 VXNlcm5hbWU6",
            "C: dXRlbnRlQHByb3ZhLmV4YW1wbGU=",
            "S: 334 UGFzc3dvcmQ6",
            "C: U2VncmV0YSE0Mg==",
            "S: 235 2.7.0 Autenticato"};
}

QStringList busta(const QString& destinatario, const QString& risposta = "250 2.1.5 Ok") {
    return {"C: MAIL FROM:<" + mittente + ">", "S: 250 2.1.0 Ok", "C: RCPT TO:<" + destinatario + ">",
            "S: " + risposta};
}

QStringList consegna(const QString& destinatario) {
    return busta(destinatario) + QStringList{"C: DATA", "S: 354 Avanti", "C* .", "S: 250 2.0.0 Accettato"};
}

QStringList rifiuto(const QString& destinatario) {
    return busta(destinatario, "451 4.3.0 Riprova") + QStringList{"C: RSET", "S: 250 Ok"};
}

const QStringList uscita{"C: QUIT", "S: 221 2.0.0 Arrivederci"};

// The run's settings for a plain connection to the scripted server, before the engine's own defaults.
SMTPConfig versoIlCopione(const ScriptedServer& server) {
    SMTPConfig config;
    config.host = QString::fromLatin1(Loopback::engineSmtp);
    config.port = server.port();
    config.useTLS = false;
    config.username = QStringLiteral("utente@prova.example");
    config.fromEmail = mittente;
    return config;
}

} // namespace

void TestEngine::copioni_data() {
    QTest::addColumn<QStringList>("copione");
    QTest::addColumn<QStringList>("registro"); // after "Connessione a …"
    QTest::addColumn<QString>("stato");
    QTest::addColumn<QString>("lastError");
    QTest::addColumn<int>("processati");
    QTest::addColumn<int>("connessioni");
    const QString a = "anna@ditta.it", b = "bruno@ditta.it", c = "carla@ditta.it";
    const QString chiusa = "Il server ha chiuso la connessione.";
    const QString rifiutato = " — Risposta inattesa a RCPT TO: 451 4.3.0 Riprova";

    QTest::newRow("connection dropped mid-run")
        << apertura() + consegna(a) + QStringList{"C: MAIL FROM:<" + mittente + ">", "close"} + apertura() +
               consegna(c) + uscita
        << QStringList{"Connesso e autenticato.",  "✓ " + a, "✗ " + b + " — " + chiusa,
                       "Connessione ristabilita.", "✓ " + c, "Fine: 2 inviate, 1 errori, 0 saltate."}
        << "completed"
        << "" << 3 << 2;
    QTest::newRow("dropped on the last recipient")
        << apertura() + consegna(a) + consegna(b) + busta(c) + QStringList{"C: DATA", "close"} + apertura() + uscita
        << QStringList{"Connesso e autenticato.",
                       "✓ " + a,
                       "✓ " + b,
                       "✗ " + c + " — " + chiusa,
                       "Connessione ristabilita.",
                       "Fine: 2 inviate, 1 errori, 0 saltate."}
        << "completed"
        << "" << 3 << 2;
    // A wait that timed out leaves the session dead: the next recipient goes on a new connection at once
    // instead of being charged with a close it never met.
    QTest::newRow("time-out charges the next recipient")
        << apertura() + consegna(a) + QStringList{"C: MAIL FROM:<" + mittente + ">", "silent"} + apertura() +
               consegna(c) + uscita
        << QStringList{"Connesso e autenticato.",
                       "✓ " + a,
                       "✗ " + b + " — Il server non ha risposto entro il tempo massimo.",
                       "Connessione ristabilita.",
                       "✓ " + c,
                       "Fine: 2 inviate, 1 errori, 0 saltate."}
        << "completed"
        << "" << 3 << 2;
    QTest::newRow("overlong reply charges the next recipient")
        << apertura() + consegna(a) + busta(b).mid(0, 3) + QStringList{"S: 250-" + QString(3000, u'x'), "silent"} +
               apertura() + consegna(c) + uscita
        << QStringList{"Connesso e autenticato.",
                       "✓ " + a,
                       "✗ " + b + " — Risposta inattesa a RCPT TO: 250 risposta del server troppo lunga",
                       "Connessione ristabilita.",
                       "✓ " + c,
                       "Fine: 2 inviate, 1 errori, 0 saltate."}
        << "completed"
        << "" << 3 << 2;
    // The reconnection finds the server gone; the recipient after it is never tried.
    QTest::newRow("failed reconnection") << apertura() + consegna(a) + busta(b) +
                                                QStringList{"C: DATA", "S: 354 Avanti", "C* .", "close", "close"}
                                         << QStringList{"Connesso e autenticato.", "✓ " + a, "✗ " + b + " — " + chiusa,
                                                        "Invio interrotto: " + chiusa,
                                                        "Fine: 1 inviate, 1 errori, 0 saltate."}
                                         << "completed"
                                         << "Connessione persa: " + chiusa << 1 << 2;
    // No QUIT and no summary: the script ends with the refusal, so any further line would be off script.
    QTest::newRow("failed first connection")
        << apertura().mid(0, 9) + QStringList{"S: 535 5.7.8 Credenziali non valide"}
        << QStringList{"Connessione fallita: Autenticazione rifiutata: 535 5.7.8 Credenziali non valide"} << "failed"
        << "Autenticazione rifiutata: 535 5.7.8 Credenziali non valide" << 0 << 1;
    QTest::newRow("every recipient refused")
        << apertura() + rifiuto(a) + rifiuto(b) + rifiuto(c) + uscita
        << QStringList{"Connesso e autenticato.", "✗ " + a + rifiutato, "✗ " + b + rifiutato, "✗ " + c + rifiutato,
                       "Fine: 0 inviate, 3 errori, 0 saltate."}
        << "failed"
        << "" << 3 << 1;
}

void TestEngine::copioni() {
    QFETCH(QStringList, copione);
    QFETCH(QStringList, registro);
    QFETCH(QString, stato);
    QFETCH(QString, lastError);
    QFETCH(int, processati);
    QFETCH(int, connessioni);
    ScriptedServer server(copione);
    QVERIFY(server.listen(QString::fromLatin1(Loopback::engineSmtp)));
    Scena scena(configurazione(versoIlCopione(server)), {"anna@ditta.it", "bruno@ditta.it", "carla@ditta.it"}, nullptr,
                std::chrono::seconds(3));
    scena.corri();

    const SendEngine& engine = *scena.engine;
    QVERIFY2(server.usedUp(), qPrintable(server.problem()));
    QCOMPARE(server.connectionCount(), connessioni);
    QCOMPARE(engine.activityLog(),
             QStringList{QStringLiteral("Connessione a %1:%2…").arg(Loopback::engineSmtp).arg(server.port())} +
                 registro);
    QCOMPARE(scena.campagna().statusRaw, stato);
    QCOMPARE(engine.lastError().value_or(QString()), lastError);
    QCOMPARE(engine.processed(), processati);
    QVERIFY(!engine.isRunning());
    QVERIFY(!engine.interrotta());
    // A failed first connection ends before the run has an end of its own.
    QCOMPARE(engine.fine().has_value(), stato != "failed" || processati > 0);
    QCOMPARE(scena.logs().size(), engine.sent() + engine.failed());
}

// At pace 0 a delivery is recorded while the server answers the next MAIL FROM: it must be in the store
// before the next message's data goes out, or a killed run could leave two accepted messages without a log.
void TestEngine::esitoPrimaDelMessaggioSuccessivo_data() {
    QTest::addColumn<double>("pausa");
    QTest::newRow("pace 0") << 0.0;
    QTest::newRow("pace 0.1 s") << 0.1;
}

void TestEngine::esitoPrimaDelMessaggioSuccessivo() {
    QFETCH(double, pausa);
    const QString a = "anna@ditta.it", b = "bruno@ditta.it", c = "carla@ditta.it";
    ScriptedServer server(apertura() + consegna(a) + consegna(b) + consegna(c) + uscita);
    QVERIFY(server.listen(QString::fromLatin1(Loopback::engineSmtp)));
    SMTPConfig config = configurazione(versoIlCopione(server));
    config.delayBetweenMessages = pausa;
    Scena scena(config, {a, b, c}, nullptr, std::chrono::seconds(3));
    QList<qsizetype> registrati; // deliveries in the store as each message's DATA arrives
    connect(&server, &ScriptedServer::lineReceived, this, [&](const QString& line) {
        if (line == QLatin1String("DATA"))
            registrati << scena.logsCon(SendStatus::sent).size();
    });
    scena.corri();
    QVERIFY2(server.usedUp(), qPrintable(server.problem()));
    QCOMPARE(registrati, (QList<qsizetype>{0, 1, 2}));
    QCOMPARE(scena.logsCon(SendStatus::sent).size(), 3);
    QCOMPARE(righeCon(*scena.engine, "✓ "), (QStringList{"✓ " + a, "✓ " + b, "✓ " + c}));
}

// A run paused at pace 0 holds with every delivery so far recorded and counted, and goes on after it.
void TestEngine::pausaARitmoZero() {
    const QString a = "anna@ditta.it", b = "bruno@ditta.it", c = "carla@ditta.it";
    ScriptedServer server(apertura() + consegna(a) + consegna(b) + consegna(c) + uscita);
    QVERIFY(server.listen(QString::fromLatin1(Loopback::engineSmtp)));
    Scena scena(configurazione(versoIlCopione(server)), {a, b, c}, nullptr, std::chrono::seconds(3));
    SendEngine& engine = *scena.engine;
    int dati = 0;
    connect(&server, &ScriptedServer::lineReceived, this, [&](const QString& line) {
        if (line == QLatin1String("DATA") && ++dati == 2)
            engine.setPaused(true);
    });
    QCoro::Task<> corsa = engine.run(scena.campagna(), scena.settings, scena.store);
    QTRY_COMPARE(engine.processed(), 2);
    QTest::qWait(400);
    QCOMPARE(engine.processed(), 2);
    QCOMPARE(engine.sent(), 2);
    QCOMPARE(scena.logsCon(SendStatus::sent).size(), 2);
    QCOMPARE(server.received().count("MAIL FROM:<" + mittente + ">"), 2);
    engine.setPaused(false);
    QCoro::waitFor(std::move(corsa));
    QVERIFY2(server.usedUp(), qPrintable(server.problem()));
    QCOMPARE(scena.logsCon(SendStatus::sent).size(), 3);
    QCOMPARE(scena.campagna().status(), CampaignStatus::completed);
}
