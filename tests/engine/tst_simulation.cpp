#include "engine/SendEngine.h"
#include "TestEnvironment.h"

#include <QEventLoop>
#include <QRegularExpression>
#include <QTimer>

#include <memory>

namespace {

const QStringList erroriPossibili = {
    "Risposta inattesa a RCPT TO: 550 mailbox unavailable",
    "Risposta inattesa a RCPT TO: 452 mailbox full",
    "Risposta inattesa a RCPT TO: 553 relaying denied",
};
const QStringList scartiPossibili = {"in lista esclusi", "duplicato nella lista", "indirizzo non valido"};

QString riepilogo(const SendEngine& motore) {
    return QStringLiteral("Simulazione conclusa: %1 inviate, %2 errori, %3 saltate.")
        .arg(motore.sent())
        .arg(motore.failed())
        .arg(motore.skipped());
}

// Runs the event loop until the condition holds, checking at each change of the engine (QTest::qWaitFor
// would sleep between its checks and slow a pace-0 run down a hundredfold).
bool attendi(const SendEngine& motore, const std::function<bool()>& condizione) {
    if (condizione())
        return true;
    QEventLoop ciclo;
    QObject::connect(&motore, &SendEngine::changed, &ciclo, [&] {
        if (condizione())
            ciclo.quit();
    });
    QTimer::singleShot(20000, &ciclo, &QEventLoop::quit);
    ciclo.exec();
    return condizione();
}

bool attendiProcessati(const SendEngine& motore, qint64 quanti) {
    return attendi(motore, [&] { return motore.processed() >= quanti; });
}

bool attendiFine(const SendEngine& motore) {
    return attendi(motore, [&] { return !motore.isRunning(); });
}

} // namespace

class TestSimulation : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void runReachesItsSummary_data();
    void runReachesItsSummary();
    void addressesCarryNumbersAndDomainsRepeat();
    void stopDuringAPauseEndsAtOnce();
    void stopWhileSendingLeavesTheRestUndone();
    void secondCallWhileRunningIsIgnored();
    void aFinishedEngineStartsAgain();
    void paceZeroLetsTheEventLoopTurn();
    void theTaskKeepsItsEngineAlive();
};

void TestSimulation::runReachesItsSummary_data() {
    QTest::addColumn<int>("destinatari");
    QTest::addColumn<double>("ritmo");
    QTest::newRow("none") << 0 << 0.01;
    QTest::newRow("one") << 1 << 0.01;
    QTest::newRow("sixty at a short pace") << 60 << 0.005;
    QTest::newRow("three hundred at pace 0") << 300 << 0.0;
}

void TestSimulation::runReachesItsSummary() {
    QFETCH(int, destinatari);
    QFETCH(double, ritmo);
    SendEngine motore;
    motore.setQuota(12, 400); // a simulation leaves the quota of the last run as it was
    motore.simula(destinatari, ritmo);
    QVERIFY(motore.isRunning() || destinatari == 0);
    QVERIFY(attendiFine(motore));

    QCOMPARE(motore.total(), destinatari);
    QCOMPARE(motore.processed(), destinatari);
    QCOMPARE(motore.sent() + motore.failed() + motore.skipped(), destinatari);
    QCOMPARE(motore.eventi().size(), destinatari);
    QVERIFY(!motore.interrotta());
    QVERIFY(motore.fine().has_value());
    QVERIFY(motore.currentRecipient().isEmpty());
    QCOMPARE(motore.nomeCampagna(), QStringLiteral("Simulazione di prova"));
    QCOMPARE(motore.server(), QStringLiteral("nessun server (simulazione)"));
    QCOMPARE(motore.servizio(), QStringLiteral("Simulazione"));
    QCOMPARE(motore.pausaImpostata(), ritmo);
    QCOMPARE(motore.inviateOggi(), 12);
    QCOMPARE(motore.tettoGiornaliero(), 400);
    QVERIFY(motore.mittente().endsWith(".example") || motore.mittente().endsWith("example.org"));

    const QStringList& log = motore.activityLog();
    QCOMPARE(log.first(), QStringLiteral("Simulazione avviata: nessun messaggio verrà spedito davvero."));
    QCOMPARE(log.last(), riepilogo(motore));
    // One line per delivery and per failure, none for a skip.
    QCOMPARE(log.size(), 2 + motore.sent() + motore.failed());

    qint64 inviati = 0, falliti = 0, saltati = 0;
    for (int i = 0; i < motore.eventi().size(); ++i) {
        const auto& evento = motore.eventi().at(i);
        const QString riga = log.at(1 + int(inviati + falliti));
        switch (evento.esito) {
        case SendStatus::sent:
            ++inviati;
            QVERIFY(evento.dettaglio.isEmpty());
            QCOMPARE(riga, QStringLiteral("✓ ") + evento.email);
            break;
        case SendStatus::failed:
            ++falliti;
            QVERIFY2(erroriPossibili.contains(evento.dettaglio), qPrintable(evento.dettaglio));
            QCOMPARE(riga, QStringLiteral("✗ ") + evento.email + QStringLiteral(" — ") + evento.dettaglio);
            break;
        case SendStatus::skipped:
            ++saltati;
            QVERIFY2(scartiPossibili.contains(evento.dettaglio), qPrintable(evento.dettaglio));
            break;
        case SendStatus::test:
            QFAIL("a simulation records no test message");
        }
    }
    QCOMPARE(inviati, motore.sent());
    QCOMPARE(falliti, motore.failed());
    QCOMPARE(saltati, motore.skipped());
}

void TestSimulation::addressesCarryNumbersAndDomainsRepeat() {
    SendEngine motore;
    motore.simula(60, 0.0);
    QVERIFY(attendiFine(motore));
    QCOMPARE(motore.eventi().size(), 60);
    const QRegularExpression forma(QStringLiteral("^contatto(\\d+)@(.+)$"));
    QStringList domini;
    for (int i = 0; i < 60; ++i) {
        const auto corrisponde = forma.match(motore.eventi().at(i).email);
        QVERIFY(corrisponde.hasMatch());
        QCOMPARE(corrisponde.captured(1).toInt(), i + 1);
        domini << corrisponde.captured(2);
    }
    QCOMPARE(domini.mid(1, 3), (QStringList{"impianti.example", "studio.example", "officine.example"}));
    QVERIFY(domini.at(0) != domini.at(1));
    for (int i = 4; i < 60; ++i)
        QCOMPARE(domini.at(i), domini.at(i - 4));
}

void TestSimulation::stopDuringAPauseEndsAtOnce() {
    SendEngine motore;
    motore.simula(60, 0.01);
    QVERIFY(attendiProcessati(motore, 5));
    motore.setPaused(true);
    // The recipient in hand finishes its pace; then nothing moves while paused.
    QTest::qWait(100);
    const qint64 fermo = motore.processed();
    QTest::qWait(400);
    QCOMPARE(motore.processed(), fermo);
    QVERIFY(motore.isRunning());

    motore.cancel();
    QVERIFY(!motore.isPaused());
    QTRY_VERIFY_WITH_TIMEOUT(!motore.isRunning(), 2000);
    QVERIFY(motore.interrotta());
    QCOMPARE(motore.processed(), fermo); // no recipient was taken after the stop
    QVERIFY(motore.processed() < motore.total());
    QCOMPARE(motore.activityLog().last(), riepilogo(motore));
}

void TestSimulation::stopWhileSendingLeavesTheRestUndone() {
    SendEngine motore;
    motore.simula(60, 0.01);
    QVERIFY(attendiProcessati(motore, 3));
    motore.cancel();
    QTRY_VERIFY_WITH_TIMEOUT(!motore.isRunning(), 2000);
    QVERIFY(motore.interrotta());
    QVERIFY(motore.processed() < 60);
    QCOMPARE(motore.sent() + motore.failed() + motore.skipped(), motore.processed());
    QCOMPARE(motore.eventi().size(), motore.processed());
}

void TestSimulation::secondCallWhileRunningIsIgnored() {
    SendEngine motore;
    motore.simula(40, 0.01);
    QVERIFY(attendiProcessati(motore, 3));
    const qint64 prima = motore.processed();
    const QDateTime inizio = *motore.inizio();
    motore.simula(5, 0.0);
    QCOMPARE(motore.total(), 40);
    QVERIFY(motore.processed() >= prima);
    QCOMPARE(*motore.inizio(), inizio);
    QVERIFY(attendiFine(motore));
    QCOMPARE(motore.processed(), 40);
    QCOMPARE(motore.activityLog().count(QStringLiteral("Simulazione avviata: nessun messaggio verrà spedito davvero.")),
             1);
}

void TestSimulation::aFinishedEngineStartsAgain() {
    SendEngine motore;
    motore.simula(10, 0.0);
    QVERIFY(attendiFine(motore));
    motore.cancel(); // a stop asked after the end must not leak into the next run
    motore.simula(7, 0.0);
    QVERIFY(motore.isRunning());
    QCOMPARE(motore.processed(), 0);
    QVERIFY(motore.eventi().isEmpty());
    QVERIFY(attendiFine(motore));
    QCOMPARE(motore.processed(), 7);
    QVERIFY(!motore.interrotta());
}

void TestSimulation::paceZeroLetsTheEventLoopTurn() {
    SendEngine motore;
    motore.simula(300, 0.0);
    bool visto = false;
    QTimer::singleShot(0, this, [&] { visto = motore.isRunning(); });
    QVERIFY(attendiFine(motore));
    QVERIFY(visto);
}

void TestSimulation::theTaskKeepsItsEngineAlive() {
    auto motore = std::make_shared<SendEngine>();
    std::weak_ptr<SendEngine> osservato = motore;
    motore->simula(20, 0.005);
    motore.reset(); // the screen that owned it has gone
    QVERIFY(!osservato.expired());
    QTRY_VERIFY_WITH_TIMEOUT(osservato.expired(), 10000);
}

BREZZARIO_TEST_GUILESS_MAIN(TestSimulation)
#include "tst_simulation.moc"
