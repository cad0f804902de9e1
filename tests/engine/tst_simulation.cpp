#include "engine/SendEngine.h"
#include "TestEnvironment.h"

#include <QEventLoop>
#include <QTimer>

#include <memory>

namespace {

const QString avvio = QStringLiteral("Simulazione avviata: nessun messaggio verrà spedito davvero.");

QString riepilogo(const SendEngine& motore) {
    return QStringLiteral("Simulazione conclusa: %1 inviate, %2 errori, %3 saltate.")
        .arg(motore.sent())
        .arg(motore.failed())
        .arg(motore.skipped());
}

// Runs the event loop until the condition holds, checking at each change of the engine (QTest::qWaitFor
// sleeps between its checks and would slow a pace-0 run down a hundredfold).
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

bool attendiFine(const SendEngine& motore) {
    return attendi(motore, [&] { return !motore.isRunning(); });
}

} // namespace

class TestSimulation : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void runReachesItsSummary_data();
    void runReachesItsSummary();
    void stop_data();
    void stop();
    void secondCallWhileRunningIsIgnored();
    void aFinishedEngineStartsAgain();
    void theTaskKeepsItsEngineAlive();
};

void TestSimulation::runReachesItsSummary_data() {
    QTest::addColumn<int>("destinatari");
    QTest::addColumn<double>("ritmo");
    QTest::newRow("none") << 0 << 0.01;
    QTest::newRow("sixty at a short pace") << 60 << 0.005;
    QTest::newRow("three hundred at pace 0") << 300 << 0.0;
}

void TestSimulation::runReachesItsSummary() {
    QFETCH(int, destinatari);
    QFETCH(double, ritmo);
    SendEngine motore;
    motore.setQuota(12, 400); // a simulation leaves the quota of the last run as it was
    motore.simula(destinatari, ritmo);
    // Even at pace 0 the event loop turns while the run goes on.
    bool visto = false;
    QTimer::singleShot(0, this, [&] { visto = motore.isRunning(); });
    QVERIFY(attendiFine(motore));
    QCOMPARE(visto, destinatari > 0);

    QCOMPARE(motore.total(), destinatari);
    QCOMPARE(motore.processed(), destinatari);
    QCOMPARE(motore.sent() + motore.failed() + motore.skipped(), destinatari);
    QCOMPARE(motore.eventi().size(), destinatari);
    QVERIFY(!motore.interrotta());
    QVERIFY(motore.fine().has_value());
    QVERIFY(motore.currentRecipient().isEmpty());
    QCOMPARE(motore.inviateOggi(), 12);
    QCOMPARE(motore.tettoGiornaliero(), 400);

    // One line per delivery and per failure, none for a skip, between the first line and the summary.
    QStringList attese{avvio};
    for (const auto& evento : motore.eventi()) {
        QCOMPARE(evento.dettaglio.isEmpty(), evento.esito == SendStatus::sent);
        if (evento.esito == SendStatus::sent)
            attese << QStringLiteral("✓ ") + evento.email;
        else if (evento.esito == SendStatus::failed)
            attese << QStringLiteral("✗ ") + evento.email + QStringLiteral(" — ") + evento.dettaglio;
        else
            QCOMPARE(evento.esito, SendStatus::skipped);
    }
    QCOMPARE(motore.activityLog(), attese << riepilogo(motore));
}

void TestSimulation::stop_data() {
    QTest::addColumn<bool>("inPausa");
    QTest::newRow("during a pause") << true;
    QTest::newRow("while sending") << false;
}

// A stop ends the run at once, with no recipient taken after it.
void TestSimulation::stop() {
    QFETCH(bool, inPausa);
    SendEngine motore;
    motore.simula(60, 0.01);
    QVERIFY(attendi(motore, [&] { return motore.processed() >= 5; }));
    if (inPausa) {
        motore.setPaused(true);
        // The recipient in hand finishes its pace; then nothing moves while paused.
        QTest::qWait(100);
        const qint64 inPausaDa = motore.processed();
        QTest::qWait(400);
        QCOMPARE(motore.processed(), inPausaDa);
        QVERIFY(motore.isRunning());
    }
    const qint64 fermo = motore.processed();
    motore.cancel();
    QVERIFY(!motore.isPaused());
    QTRY_VERIFY_WITH_TIMEOUT(!motore.isRunning(), 2000);
    QVERIFY(motore.interrotta());
    // Only a recipient already in hand may still be counted.
    QVERIFY(motore.processed() - fermo <= (inPausa ? 0 : 1));
    QVERIFY(motore.processed() < motore.total());
    QCOMPARE(motore.eventi().size(), motore.processed());
    QCOMPARE(motore.activityLog().last(), riepilogo(motore));
}

void TestSimulation::secondCallWhileRunningIsIgnored() {
    SendEngine motore;
    motore.simula(40, 0.01);
    QVERIFY(attendi(motore, [&] { return motore.processed() >= 3; }));
    const QDateTime inizio = *motore.inizio();
    motore.simula(5, 0.0);
    QCOMPARE(motore.total(), 40);
    QCOMPARE(*motore.inizio(), inizio);
    QVERIFY(attendiFine(motore));
    QCOMPARE(motore.processed(), 40);
    QCOMPARE(motore.activityLog().count(avvio), 1);
}

void TestSimulation::aFinishedEngineStartsAgain() {
    SendEngine motore;
    motore.simula(10, 0.0);
    QVERIFY(attendiFine(motore));
    motore.cancel(); // a stop asked after the end must not leak into the next run
    motore.simula(7, 0.0);
    QVERIFY(motore.isRunning());
    QVERIFY(motore.eventi().isEmpty());
    QVERIFY(attendiFine(motore));
    QCOMPARE(motore.processed(), 7);
    QVERIFY(!motore.interrotta());
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
