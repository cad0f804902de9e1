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

void conta(SendEngine& motore, int processati, int inviati, int falliti, int saltati) {
    for (int i = 0; i < processati; ++i)
        motore.contaProcessato();
    for (int i = 0; i < inviati; ++i)
        motore.contaInviato();
    for (int i = 0; i < falliti; ++i)
        motore.contaFallito();
    for (int i = 0; i < saltati; ++i)
        motore.contaSaltato();
}

} // namespace

class TestEngineState : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void bounds_data();
    void bounds();
    void readings_data();
    void readings();
    void trascorso();
    void resetClearsThePreviousRun();
    void cancelEndsAPause();
    void grouping_data();
    void grouping();
    void writesReachTheScreensOncePerTurn();
};

void TestEngineState::bounds_data() {
    QTest::addColumn<bool>("eventi");
    QTest::addColumn<int>("aggiunte");
    QTest::addColumn<int>("primo"); // the oldest kept
    QTest::newRow("500 log lines") << false << 500 << 1;
    QTest::newRow("501 log lines drop the first") << false << 501 << 2;
    QTest::newRow("1200 log lines keep the newest") << false << 1200 << 701;
    QTest::newRow("5000 events") << true << 5000 << 1;
    QTest::newRow("5001 events drop the first") << true << 5001 << 2;
}

void TestEngineState::bounds() {
    QFETCH(bool, eventi);
    QFETCH(int, aggiunte);
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
    QStringList tenute = motore.activityLog();
    if (eventi) {
        tenute.clear();
        for (const auto& evento : motore.eventi())
            tenute << evento.email;
        QCOMPARE(motore.eventiScartati(), primo - 1);
        QCOMPARE(motore.sent(), aggiunte); // the counters are never cut
    }
    QCOMPARE(tenute.size(), aggiunte - primo + 1);
    QCOMPARE(tenute.first(), QStringLiteral("n%1").arg(primo));
    QCOMPARE(tenute.last(), QStringLiteral("n%1").arg(aggiunte));
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
    conta(motore, processed, sent, failed, skipped);
    orologio.avanza(secondi);
    if (!inCorso)
        motore.setRunning(false);

    QCOMPARE(motore.progress(), progress);
    QCOMPARE(motore.trascorso(orologio.ora), secondi);
    QCOMPARE(motore.velocitaAlMinuto(orologio.ora), velocita);
    QCOMPARE(motore.stimaRimanente(orologio.ora).value_or(-1.0), stima);
}

// Zero before any start, and frozen at the end of the run.
void TestEngineState::trascorso() {
    SendEngine motore;
    OrologioFinto orologio;
    orologio.attacca(motore);
    QCOMPARE(motore.trascorso(partenza), 0.0);
    QCOMPARE(motore.velocitaAlMinuto(partenza), 0.0);
    motore.avvia();
    orologio.avanza(42.5);
    QCOMPARE(motore.trascorso(orologio.ora), 42.5);
    motore.concludi();
    motore.setRunning(false);
    orologio.avanza(600);
    QCOMPARE(motore.trascorso(orologio.ora), 42.5);
    QCOMPARE(*motore.fine(), partenza.addMSecs(42500));
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
    conta(motore, 1, 1, 1, 1);
    motore.contaEsclusoAggiunto();
    motore.setLastError(QStringLiteral("Connessione persa"));
    motore.append("riga");
    motore.registra("a@example.org", SendStatus::failed, "550");
    motore.setPaused(true);
    motore.cancel();
    motore.concludi();
    motore.setRunning(false);
    const quint64 generazione = motore.generazione();

    orologio.avanza(3600);
    motore.avvia();
    QVERIFY(motore.isRunning());
    QVERIFY(!motore.isPaused() && !motore.cancelRequested() && !motore.interrotta());
    QVERIFY(!motore.lastError().has_value());
    QVERIFY(motore.activityLog().isEmpty());
    QVERIFY(motore.eventi().isEmpty());
    QCOMPARE(motore.processed() + motore.sent() + motore.failed() + motore.skipped(), 0);
    QCOMPARE(motore.esclusiAggiunti() + motore.rimandati(), 0);
    QCOMPARE(*motore.inizio(), orologio.ora);
    QVERIFY(!motore.fine().has_value());
    QVERIFY(motore.generazione() != generazione);
    // The quota and the campaign's name are the next run's to set.
    QCOMPARE(motore.inviateOggi(), 40);
    QCOMPARE(motore.nomeCampagna(), QStringLiteral("Primavera"));
}

void TestEngineState::cancelEndsAPause() {
    SendEngine motore;
    motore.avvia();
    motore.setPaused(true);
    motore.cancel();
    QVERIFY(motore.cancelRequested());
    QVERIFY(!motore.isPaused());
    QVERIFY(!motore.interrotta()); // only the end of the run says so
    motore.concludi();
    QVERIFY(motore.interrotta());
}

void TestEngineState::grouping_data() {
    QTest::addColumn<QStringList>("eventi"); // "f:text" failed, "s:text" skipped, "o" sent, "t" test
    QTest::addColumn<Motivi>("errori");
    QTest::addColumn<Motivi>("scarti");
    QTest::newRow("no failures") << QStringList{"o", "t"} << Motivi{} << Motivi{};
    QTest::newRow("highest count first") << QStringList{"f:452 full",    "f:550 unknown",      "o",
                                                        "f:550 unknown", "s:in lista esclusi", "f:550 unknown"}
                                         << Motivi{{"550 unknown", 3}, {"452 full", 1}}
                                         << Motivi{{"in lista esclusi", 1}};
    QTest::newRow("texts grouped as they are")
        << QStringList{"f:550 mailbox unavailable", "f:550 Mailbox unavailable", "f:550 mailbox unavailable "}
        << Motivi{{"550 mailbox unavailable", 1}, {"550 Mailbox unavailable", 1}, {"550 mailbox unavailable ", 1}}
        << Motivi{};
    QTest::newRow("skips apart from failures")
        << QStringList{"s:duplicato nella lista", "f:duplicato nella lista", "t", "s:duplicato nella lista",
                       "s:indirizzo non valido"}
        << Motivi{{"duplicato nella lista", 1}} << Motivi{{"duplicato nella lista", 2}, {"indirizzo non valido", 1}};
}

void TestEngineState::grouping() {
    QFETCH(QStringList, eventi);
    QFETCH(Motivi, errori);
    QFETCH(Motivi, scarti);
    SendEngine motore;
    motore.avvia();
    QStringList falliti;
    for (int n = 0; n < eventi.size(); ++n) {
        const QString& e = eventi.at(n);
        const QString email = QStringLiteral("c%1@example.org").arg(n);
        if (e.startsWith(u'f'))
            falliti << email;
        const SendStatus esito = e == "o"             ? SendStatus::sent
                                 : e == "t"           ? SendStatus::test
                                 : e.startsWith(u'f') ? SendStatus::failed
                                                      : SendStatus::skipped;
        motore.registra(email, esito, e.mid(2));
    }
    QCOMPARE(motore.erroriPerMotivo(), errori);
    QCOMPARE(motore.scartiPerMotivo(), scarti);
    QStringList elencati;
    for (const auto& evento : motore.errori())
        elencati << evento.email;
    QCOMPARE(elencati, falliti);
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
