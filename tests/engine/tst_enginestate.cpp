#include "engine/SendEngine.h"
#include "TestEnvironment.h"

#include <QSignalSpy>

using Motivi = QList<SendEngine::Motivo>;
Q_DECLARE_METATYPE(Motivi)

namespace {

const QDateTime partenza = QDateTime(QDate(2025, 3, 4), QTime(9, 0, 0), Qt::UTC);

// A clock that only moves when the test says so.
struct OrologioFinto {
    QDateTime ora = partenza;
    void attacca(SendEngine& motore) {
        motore.setOrologio([this] { return ora; });
    }
    void avanza(double secondi) { ora = ora.addMSecs(qRound64(secondi * 1000)); }
};

} // namespace

class TestEngineState : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void bounds_data();
    void bounds();
    void readings_data();
    void readings();
    void trascorsoStaysFrozenAfterTheEnd();
    void trascorsoWithoutStartIsZero();
    void resetClearsThePreviousRun();
    void cancelEndsAPause();
    void grouping_data();
    void grouping();
    void erroriKeepsOrderAndLeavesOthersOut();
    void writesReachTheScreensOncePerTurn();
};

void TestEngineState::bounds_data() {
    QTest::addColumn<bool>("eventi");
    QTest::addColumn<int>("aggiunte");
    QTest::addColumn<int>("restano");
    QTest::addColumn<int>("primo");
    QTest::newRow("499 log lines") << false << 499 << 499 << 1;
    QTest::newRow("500 log lines") << false << 500 << 500 << 1;
    QTest::newRow("501 log lines drop the first") << false << 501 << 500 << 2;
    QTest::newRow("1200 log lines keep the newest") << false << 1200 << 500 << 701;
    QTest::newRow("5000 events") << true << 5000 << 5000 << 1;
    QTest::newRow("5001 events drop the first") << true << 5001 << 5000 << 2;
    QTest::newRow("7500 events keep the newest") << true << 7500 << 5000 << 2501;
}

void TestEngineState::bounds() {
    QFETCH(bool, eventi);
    QFETCH(int, aggiunte);
    QFETCH(int, restano);
    QFETCH(int, primo);
    SendEngine motore;
    motore.avvia();
    for (int i = 1; i <= aggiunte; ++i) {
        const QString voce = QStringLiteral("n%1").arg(i);
        if (eventi) {
            motore.registra(voce, SendStatus::sent, QString());
            motore.contaInviato();
        } else {
            motore.append(voce);
        }
    }
    const QString atteso = QStringLiteral("n%1").arg(primo);
    const QString ultimo = QStringLiteral("n%1").arg(aggiunte);
    if (eventi) {
        QCOMPARE(motore.eventi().size(), restano);
        QCOMPARE(motore.eventi().first().email, atteso);
        QCOMPARE(motore.eventi().last().email, ultimo);
        QCOMPARE(motore.eventiScartati(), aggiunte - restano);
        // The counters are never cut by the bound.
        QCOMPARE(motore.sent(), aggiunte);
    } else {
        QCOMPARE(motore.activityLog().size(), restano);
        QCOMPARE(motore.activityLog().first(), atteso);
        QCOMPARE(motore.activityLog().last(), ultimo);
    }
}

void TestEngineState::readings_data() {
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("processed");
    QTest::addColumn<int>("sent");
    QTest::addColumn<int>("failed");
    QTest::addColumn<int>("skipped");
    QTest::addColumn<double>("secondi");
    QTest::addColumn<bool>("inCorso");
    QTest::addColumn<double>("progress");
    QTest::addColumn<double>("velocita");
    QTest::addColumn<double>("stima"); // -1: absent

    QTest::newRow("total 0") << 0 << 0 << 0 << 0 << 0 << 5.0 << true << 0.0 << 0.0 << -1.0;
    QTest::newRow("first second") << 10 << 1 << 1 << 0 << 0 << 0.8 << true << 0.1 << 0.0 << -1.0;
    QTest::newRow("exactly one second") << 10 << 2 << 2 << 0 << 0 << 1.0 << true << 0.2 << 0.0 << -1.0;
    QTest::newRow("just past one second") << 10 << 2 << 2 << 0 << 0 << 1.5 << true << 0.2 << 80.0 << 6.0;
    QTest::newRow("failures count in the rate") << 100 << 36 << 25 << 5 << 6 << 60.0 << true << 0.36 << 30.0 << 128.0;
    QTest::newRow("skips alone give no rate") << 10 << 4 << 0 << 0 << 4 << 30.0 << true << 0.4 << 0.0 << -1.0;
    QTest::newRow("no estimate when ended") << 100 << 36 << 25 << 5 << 6 << 60.0 << false << 0.36 << 30.0 << -1.0;
    QTest::newRow("no estimate with nothing left") << 3 << 3 << 3 << 0 << 0 << 60.0 << true << 1.0 << 3.0 << -1.0;
}

void TestEngineState::readings() {
    QFETCH(int, total);
    QFETCH(int, processed);
    QFETCH(int, sent);
    QFETCH(int, failed);
    QFETCH(int, skipped);
    QFETCH(double, secondi);
    QFETCH(bool, inCorso);
    QFETCH(double, progress);
    QFETCH(double, velocita);
    QFETCH(double, stima);

    SendEngine motore;
    OrologioFinto orologio;
    orologio.attacca(motore);
    motore.avvia();
    motore.setTotal(total);
    for (int i = 0; i < processed; ++i)
        motore.contaProcessato();
    for (int i = 0; i < sent; ++i)
        motore.contaInviato();
    for (int i = 0; i < failed; ++i)
        motore.contaFallito();
    for (int i = 0; i < skipped; ++i)
        motore.contaSaltato();
    orologio.avanza(secondi);
    if (!inCorso)
        motore.setRunning(false);

    QCOMPARE(motore.progress(), progress);
    QCOMPARE(motore.trascorso(orologio.ora), secondi);
    QCOMPARE(motore.velocitaAlMinuto(orologio.ora), velocita);
    const std::optional<double> calcolata = motore.stimaRimanente(orologio.ora);
    if (stima < 0) {
        QVERIFY(!calcolata.has_value());
    } else {
        QVERIFY(calcolata.has_value());
        QCOMPARE(*calcolata, stima);
    }
}

void TestEngineState::trascorsoStaysFrozenAfterTheEnd() {
    SendEngine motore;
    OrologioFinto orologio;
    orologio.attacca(motore);
    motore.avvia();
    orologio.avanza(42.5);
    QCOMPARE(motore.trascorso(orologio.ora), 42.5);
    motore.concludi();
    motore.setRunning(false);
    orologio.avanza(600);
    QCOMPARE(motore.trascorso(orologio.ora), 42.5);
    QCOMPARE(*motore.fine(), partenza.addMSecs(42500));
}

void TestEngineState::trascorsoWithoutStartIsZero() {
    SendEngine motore;
    QVERIFY(!motore.inizio().has_value());
    QCOMPARE(motore.trascorso(partenza), 0.0);
    QCOMPARE(motore.velocitaAlMinuto(partenza), 0.0);
    QCOMPARE(motore.progress(), 0.0);
}

void TestEngineState::resetClearsThePreviousRun() {
    SendEngine motore;
    OrologioFinto orologio;
    orologio.attacca(motore);
    motore.avvia();
    motore.setDescrizione("Primavera", "info@example.org", "smtp.example.org:465", "Brevo", 2.5);
    motore.setQuota(40, 300);
    motore.setRimandati(7);
    motore.setTotal(12);
    motore.contaProcessato();
    motore.contaInviato();
    motore.contaFallito();
    motore.contaSaltato();
    motore.contaEsclusoAggiunto();
    motore.setLastError(QStringLiteral("Connessione persa"));
    motore.append("riga");
    motore.registra("a@example.org", SendStatus::failed, "550");
    motore.setPaused(true);
    motore.cancel();
    motore.concludi();
    motore.setRunning(false);
    QVERIFY(motore.interrotta());
    const quint64 generazione = motore.generazione();

    orologio.avanza(3600);
    motore.avvia();
    QVERIFY(motore.isRunning());
    QVERIFY(!motore.isPaused());
    QVERIFY(!motore.cancelRequested());
    QVERIFY(!motore.interrotta());
    QVERIFY(!motore.lastError().has_value());
    QVERIFY(motore.activityLog().isEmpty());
    QVERIFY(motore.eventi().isEmpty());
    QCOMPARE(motore.processed(), 0);
    QCOMPARE(motore.sent(), 0);
    QCOMPARE(motore.failed(), 0);
    QCOMPARE(motore.skipped(), 0);
    QCOMPARE(motore.esclusiAggiunti(), 0);
    QCOMPARE(motore.rimandati(), 0);
    QCOMPARE(*motore.inizio(), orologio.ora);
    QVERIFY(!motore.fine().has_value());
    QVERIFY(motore.generazione() != generazione);
    // What the next run sets for itself is left to it: the quota of the start and the description.
    QCOMPARE(motore.inviateOggi(), 40);
    QCOMPARE(motore.tettoGiornaliero(), 300);
    QCOMPARE(motore.nomeCampagna(), QStringLiteral("Primavera"));
}

void TestEngineState::cancelEndsAPause() {
    SendEngine motore;
    motore.avvia();
    motore.setPaused(true);
    QVERIFY(motore.isPaused());
    motore.cancel();
    QVERIFY(motore.cancelRequested());
    QVERIFY(!motore.isPaused());
    QVERIFY(!motore.interrotta()); // only the end of the run says so
    motore.concludi();
    QVERIFY(motore.interrotta());
}

void TestEngineState::grouping_data() {
    QTest::addColumn<QStringList>("eventi"); // "f:text" failed, "s:text" skipped, "o" sent
    QTest::addColumn<Motivi>("errori");
    QTest::addColumn<Motivi>("scarti");
    QTest::newRow("nothing") << QStringList{} << Motivi{} << Motivi{};
    QTest::newRow("deliveries only") << QStringList{"o", "o"} << Motivi{} << Motivi{};
    QTest::newRow("highest count first") << QStringList{"f:452 full",    "f:550 unknown",      "o",
                                                        "f:550 unknown", "s:in lista esclusi", "f:550 unknown"}
                                         << Motivi{{"550 unknown", 3}, {"452 full", 1}}
                                         << Motivi{{"in lista esclusi", 1}};
    QTest::newRow("same meaning, different text, two entries")
        << QStringList{"f:550 mailbox unavailable", "f:550 Mailbox unavailable", "f:550 mailbox unavailable "}
        << Motivi{{"550 mailbox unavailable", 1}, {"550 Mailbox unavailable", 1}, {"550 mailbox unavailable ", 1}}
        << Motivi{};
    QTest::newRow("skips apart from failures")
        << QStringList{"s:duplicato nella lista", "f:duplicato nella lista", "s:duplicato nella lista",
                       "s:indirizzo non valido"}
        << Motivi{{"duplicato nella lista", 1}} << Motivi{{"duplicato nella lista", 2}, {"indirizzo non valido", 1}};
}

void TestEngineState::grouping() {
    QFETCH(QStringList, eventi);
    QFETCH(Motivi, errori);
    QFETCH(Motivi, scarti);
    SendEngine motore;
    motore.avvia();
    int n = 0;
    for (const QString& e : eventi) {
        const QString email = QStringLiteral("c%1@example.org").arg(++n);
        if (e == QLatin1String("o"))
            motore.registra(email, SendStatus::sent, QString());
        else
            motore.registra(email, e.startsWith(u'f') ? SendStatus::failed : SendStatus::skipped, e.mid(2));
    }
    QCOMPARE(motore.erroriPerMotivo(), errori);
    QCOMPARE(motore.scartiPerMotivo(), scarti);
}

void TestEngineState::erroriKeepsOrderAndLeavesOthersOut() {
    SendEngine motore;
    motore.avvia();
    motore.registra("a@example.org", SendStatus::failed, "x");
    motore.registra("b@example.org", SendStatus::sent, "");
    motore.registra("c@example.org", SendStatus::skipped, "y");
    motore.registra("d@example.org", SendStatus::test, "");
    motore.registra("e@example.org", SendStatus::failed, "z");
    QStringList email;
    for (const auto& evento : motore.errori())
        email << evento.email;
    QCOMPARE(email, (QStringList{"a@example.org", "e@example.org"}));
}

void TestEngineState::writesReachTheScreensOncePerTurn() {
    SendEngine motore;
    QSignalSpy spia(&motore, &SendEngine::changed);
    motore.avvia();
    for (int i = 0; i < 50; ++i) {
        motore.registra("a@example.org", SendStatus::sent, QString());
        motore.contaInviato();
    }
    QCOMPARE(spia.count(), 0);
    QTRY_COMPARE(spia.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(spia.count(), 1);
    motore.setPaused(true);
    QTRY_COMPARE(spia.count(), 2);
}

BREZZARIO_TEST_GUILESS_MAIN(TestEngineState)
#include "tst_enginestate.moc"
