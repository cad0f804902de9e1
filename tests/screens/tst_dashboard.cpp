#include "app/BrezzarioApp.h"
#include "screens/DashboardWidgets.h"
#include "screens/Dialoghi.h"
#include "screens/EventiModel.h"
#include "screens/Formati.h"
#include "screens/SendDashboardView.h"
#include "Screenshot.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTreeView>

namespace {

const QDateTime partenza = QDateTime(QDate(2025, 3, 4), QTime(9, 0, 0), Qt::UTC);

// A state written the way a run writes it, at a moment the test chooses.
struct Scena {
    QString servizio = QStringLiteral("Brevo");
    qint64 total = 10, sent = 0, failed = 0, skipped = 0;
    bool inCorso = false, inPausa = false, interrotta = false;
    qint64 rimandati = 0, inviateOggi = 0, tetto = 0;
    double secondi = 120;
};

struct Banco {
    std::shared_ptr<SendEngine> motore = std::make_shared<SendEngine>();
    QDateTime ora = partenza;
    Banco() {
        motore->setOrologio([this] { return ora; });
    }
    void prepara(const Scena& scena) {
        motore->avvia();
        motore->setDescrizione(QStringLiteral("Saldi di marzo"), QStringLiteral("info@nembrosa.example"),
                               QStringLiteral("smtp.example.org:465"), scena.servizio, 2.5);
        motore->setQuota(scena.inviateOggi, scena.tetto);
        motore->setRimandati(scena.rimandati);
        motore->setTotal(scena.total);
        int n = 0;
        auto esito = [&](SendStatus stato, qint64 quanti, const QString& dettaglio) {
            for (qint64 i = 0; i < quanti; ++i) {
                const QString email = QStringLiteral("c%1@example.org").arg(++n);
                motore->registra(email, stato, dettaglio);
                if (stato == SendStatus::sent)
                    motore->contaInviato();
                else if (stato == SendStatus::failed)
                    motore->contaFallito();
                else
                    motore->contaSaltato();
                motore->contaProcessato();
            }
        };
        esito(SendStatus::sent, scena.sent, QString());
        esito(SendStatus::failed, scena.failed, QStringLiteral("Risposta inattesa a RCPT TO: 550 mailbox unavailable"));
        esito(SendStatus::skipped, scena.skipped, QStringLiteral("in lista esclusi"));
        ora = partenza.addSecs(qint64(scena.secondi));
        if (scena.inPausa)
            motore->setPaused(true);
        if (scena.interrotta)
            motore->cancel();
        if (!scena.inCorso) {
            motore->concludi();
            motore->setRunning(false);
        }
    }
};

QString testoDi(QWidget* radice, const QString& contenitore, const QString& parte = QStringLiteral("valore")) {
    auto* pezzo = radice->findChild<QWidget*>(contenitore);
    if (!pezzo)
        return QStringLiteral("<%1 assente>").arg(contenitore);
    if (auto* etichetta = qobject_cast<QLabel*>(pezzo))
        return etichetta->text();
    auto* etichetta = pezzo->findChild<QLabel*>(parte);
    return etichetta ? etichetta->text() : QStringLiteral("<%1 assente>").arg(parte);
}

bool visibile(QWidget* radice, const QString& nome) {
    auto* pezzo = radice->findChild<QWidget*>(nome);
    return pezzo && pezzo->isVisible();
}

QPushButton* pulsante(QWidget* radice, const QString& nome) {
    return radice->findChild<QPushButton*>(nome);
}

} // namespace

class TestDashboard : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void durata_data();
    void durata();
    void badgesAndFigures_data();
    void badgesAndFigures();
    void serviceBadge_data();
    void serviceBadge();
    void problems_data();
    void problems();
    void showAllRefusedAddresses_data();
    void showAllRefusedAddresses();
    void simulationDuringAndAfter();
    void pauseAndStopButtons();
    void figuresMoveEverySecond();
    void registerFollowsTheBoundedList();
    void exportedReport();
    void exportCancelledOrFailing_data();
    void exportCancelledOrFailing();
};

void TestDashboard::initTestCase() {
    Q_INIT_RESOURCE(resources);
    BrezzarioApp::preparaApplicazione();
}

void TestDashboard::cleanup() {
    Dialoghi::rispondiSalvataggio({});
}

void TestDashboard::durata_data() {
    QTest::addColumn<double>("secondi");
    QTest::addColumn<QString>("testo");
    QTest::newRow("0") << 0.0 << "—";
    QTest::newRow("0.4") << 0.4 << "—";
    QTest::newRow("0.5 rounds up") << 0.5 << "1 s";
    QTest::newRow("45") << 45.0 << "45 s";
    QTest::newRow("59.4") << 59.4 << "59 s";
    QTest::newRow("59.6") << 59.6 << "1 m 00 s";
    QTest::newRow("187") << 187.0 << "3 m 07 s";
    QTest::newRow("3599.4") << 3599.4 << "59 m 59 s";
    QTest::newRow("3600") << 3600.0 << "1 h 00 m";
    QTest::newRow("7559") << 7559.0 << "2 h 05 m";
    QTest::newRow("100 hours") << 360000.0 << "100 h 00 m";
    QTest::newRow("negative") << -5.0 << "—";
}

void TestDashboard::durata() {
    QFETCH(double, secondi);
    QFETCH(QString, testo);
    QCOMPARE(durataLeggibile(secondi), testo);
}

void TestDashboard::badgesAndFigures_data() {
    QTest::addColumn<Scena>("scena");
    QTest::addColumn<QString>("stato");
    QTest::addColumn<int>("coloreStato");
    QTest::addColumn<QStringList>("riquadri"); // Spedite, Rifiutate, Escluse, Da spedire ora, Rimandate or "-"
    QTest::addColumn<QStringList>("dati");     // the six figures, "-" when hidden
    QTest::addColumn<int>("coloreErrore");
    QTest::addColumn<QString>("principale");

    Scena corsa;
    corsa.inCorso = true;
    corsa.total = 100;
    corsa.sent = 25;
    corsa.failed = 5;
    corsa.skipped = 6;
    corsa.secondi = 60;
    QTest::newRow("running") << corsa << "Invio in corso" << int(Colore::blue) << QStringList{"25", "5", "6", "64", "-"}
                             << QStringList{"1 m 00 s", "30.0 al minuto", "2 m 08 s", "16.7%", "2.5 s", "-"}
                             << int(Colore::red) << "Nascondi";
    Scena pausa = corsa;
    pausa.inPausa = true;
    QTest::newRow("paused") << pausa << "In pausa" << int(Colore::orange) << QStringList{"25", "5", "6", "64", "-"}
                            << QStringList{"1 m 00 s", "30.0 al minuto", "2 m 08 s", "16.7%", "2.5 s", "-"}
                            << int(Colore::red) << "Nascondi";
    Scena primoSecondo;
    primoSecondo.inCorso = true;
    primoSecondo.sent = 1;
    primoSecondo.secondi = 0;
    QTest::newRow("first second") << primoSecondo << "Invio in corso" << int(Colore::blue)
                                  << QStringList{"1", "0", "0", "9", "-"}
                                  << QStringList{"—", "—", "—", "0.0%", "2.5 s", "-"} << int(Colore::primary)
                                  << "Nascondi";
    Scena falliti;
    falliti.total = 4;
    falliti.failed = 4;
    QTest::newRow("every attempt failed")
        << falliti << "Fallito" << int(Colore::red) << QStringList{"0", "4", "0", "0", "-"}
        << QStringList{"2 m 00 s", "2.0 al minuto", "conclusa", "100.0%", "2.5 s", "-"} << int(Colore::red) << "Chiudi";
    Scena dieci;
    dieci.sent = 9;
    dieci.failed = 1;
    QTest::newRow("one refusal in ten stays primary")
        << dieci << "Completato" << int(Colore::green) << QStringList{"9", "1", "0", "0", "-"}
        << QStringList{"2 m 00 s", "5.0 al minuto", "conclusa", "10.0%", "2.5 s", "-"} << int(Colore::primary)
        << "Chiudi";
    Scena interrotta;
    interrotta.failed = 3;
    interrotta.interrotta = true;
    QTest::newRow("stopped comes before failed")
        << interrotta << "Interrotto" << int(Colore::orange) << QStringList{"0", "3", "0", "7", "-"}
        << QStringList{"2 m 00 s", "1.5 al minuto", "conclusa", "100.0%", "2.5 s", "-"} << int(Colore::red) << "Chiudi";
    Scena quota;
    quota.total = 3;
    quota.sent = 3;
    quota.rimandati = 5;
    quota.inviateOggi = 20;
    quota.tetto = 23;
    QTest::newRow("cut by the quota") << quota << "Completato" << int(Colore::green)
                                      << QStringList{"3", "0", "0", "0", "5"}
                                      << QStringList{"2 m 00 s", "1.5 al minuto", "conclusa", "0.0%", "2.5 s", "23/23"}
                                      << int(Colore::primary) << "Chiudi";
}

void TestDashboard::badgesAndFigures() {
    QFETCH(Scena, scena);
    QFETCH(QString, stato);
    QFETCH(int, coloreStato);
    QFETCH(QStringList, riquadri);
    QFETCH(QStringList, dati);
    QFETCH(int, coloreErrore);
    QFETCH(QString, principale);
    Banco banco;
    banco.prepara(scena);
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QVERIFY(QTest::qWaitForWindowExposed(&foglio));
    QCOMPARE(foglio.size(), QSize(900, 720));
    QCOMPARE(foglio.minimumSize(), foglio.maximumSize());

    auto* badge = foglio.findChild<BadgeView*>(QStringLiteral("badgeStato"));
    QCOMPARE(badge->testo(), stato);
    QCOMPARE(int(badge->colore()), coloreStato);
    QCOMPARE(testoDi(&foglio, "titolo"), QStringLiteral("Saldi di marzo"));
    QCOMPARE(testoDi(&foglio, "sottotitolo"), QStringLiteral("da info@nembrosa.example · server smtp.example.org:465"));
    QCOMPARE(testoDi(&foglio, "destinatari"),
             QStringLiteral("%1 di %2 destinatari").arg(scena.sent + scena.failed + scena.skipped).arg(scena.total));

    const QStringList nomiRiquadri = {"riquadroSpedite", "riquadroRifiutate", "riquadroEscluse", "riquadroDaSpedire",
                                      "riquadroRimandate"};
    const QStringList etichette = {"Spedite", "Rifiutate", "Escluse", "Da spedire ora", "Rimandate a domani"};
    for (int i = 0; i < nomiRiquadri.size(); ++i) {
        QCOMPARE(visibile(&foglio, nomiRiquadri[i]), riquadri[i] != QLatin1String("-"));
        if (riquadri[i] != QLatin1String("-")) {
            QCOMPARE(testoDi(&foglio, nomiRiquadri[i]), riquadri[i]);
            QCOMPARE(testoDi(&foglio, nomiRiquadri[i], "etichetta"), etichette[i]);
        }
    }
    const QStringList nomiDati = {"datoTempoTrascorso", "datoRitmo",          "datoFineStimata",
                                  "datoTassoErrore",    "datoPausaImpostata", "datoQuotaOggi"};
    const QStringList titoli = {"Tempo trascorso", "Ritmo",           "Fine stimata",
                                "Tasso di errore", "Pausa impostata", "Quota di oggi"};
    for (int i = 0; i < nomiDati.size(); ++i) {
        QCOMPARE(visibile(&foglio, nomiDati[i]), dati[i] != QLatin1String("-"));
        if (dati[i] != QLatin1String("-")) {
            QCOMPARE(testoDi(&foglio, nomiDati[i], "titolo"), titoli[i]);
            QCOMPARE(testoDi(&foglio, nomiDati[i]), dati[i]);
        }
    }
    QCOMPARE(int(foglio.findChild<DatoInlineView*>(QStringLiteral("datoTassoErrore"))->colore()), coloreErrore);

    QCOMPARE(pulsante(&foglio, "principale")->text(), principale);
    QCOMPARE(pulsante(&foglio, "principale")->toolTip().isEmpty(), principale == QLatin1String("Chiudi"));
    QCOMPARE(visibile(&foglio, "pausa"), scena.inCorso);
    QCOMPARE(visibile(&foglio, "interrompi"), scena.inCorso);
    if (scena.inCorso)
        QCOMPARE(pulsante(&foglio, "pausa")->text(),
                 scena.inPausa ? QStringLiteral("Riprendi") : QStringLiteral("Pausa"));
    QVERIFY(pulsante(&foglio, "esportaRapporto")->isEnabled());
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-") + QTest::currentDataTag()));
}

void TestDashboard::serviceBadge_data() {
    QTest::addColumn<QString>("servizio");
    QTest::addColumn<QString>("testo");
    QTest::addColumn<int>("colore");
    QTest::newRow("Brevo") << "Brevo (account aziendale)"
                           << "Brevo (account aziendale)" << int(Colore::teal);
    QTest::newRow("Aruba") << "ARUBA"
                           << "ARUBA" << int(Colore::orange);
    QTest::newRow("Gmail") << "Gmail personale"
                           << "Gmail personale" << int(Colore::red);
    QTest::newRow("simulation") << "Simulazione"
                                << "Simulazione" << int(Colore::secondary);
    QTest::newRow("brevo wins over gmail") << "gmail via brevo"
                                           << "gmail via brevo" << int(Colore::teal);
    QTest::newRow("other") << "Posta dell'ufficio"
                           << "Posta dell'ufficio" << int(Colore::accent);
    QTest::newRow("empty") << ""
                           << "—" << int(Colore::accent);
}

void TestDashboard::serviceBadge() {
    QFETCH(QString, servizio);
    QFETCH(QString, testo);
    QFETCH(int, colore);
    Banco banco;
    Scena scena;
    scena.servizio = servizio;
    banco.prepara(scena);
    SendDashboardView foglio(banco.motore);
    auto* badge = foglio.findChild<BadgeView*>(QStringLiteral("badgeServizio"));
    QCOMPARE(badge->testo(), testo);
    QCOMPARE(int(badge->colore()), colore);
    QCOMPARE(badge->toolTip(),
             QStringLiteral("Servizio di invio in uso: ") + testo + QStringLiteral(" — smtp.example.org:465"));
}

void TestDashboard::problems_data() {
    QTest::addColumn<QStringList>("eventi"); // "f:text", "s:text", "o"
    QTest::addColumn<QString>("ultimoErrore");
    QTest::addColumn<qint64>("esclusi");
    QTest::addColumn<qint64>("rimandati");
    QTest::addColumn<QStringList>("attesi"); // object name=text, "!name" for hidden
    QTest::newRow("nothing wrong") << QStringList{"o", "o"} << QString() << qint64(0) << qint64(0)
                                   << QStringList{"nessunProblema=Nessun rifiuto né scarto finora.",
                                                  "!ultimoErrore",
                                                  "!esclusiAggiunti",
                                                  "!rifiutiDelServer",
                                                  "!nonContattati",
                                                  "!rimandati",
                                                  "!indirizziRifiutati",
                                                  "!mostraTutti"};
    QTest::newRow("refusals grouped by exact text")
        << QStringList{"f:550 mailbox unavailable", "f:452 full", "f:550 mailbox unavailable",
                       "f:550 Mailbox unavailable"}
        << QString() << qint64(0) << qint64(0)
        << QStringList{"!nessunProblema",
                       "rifiutiDelServer=2× 550 mailbox unavailable\n1× 452 full\n1× 550 Mailbox unavailable",
                       "indirizziRifiutati=c1@example.org\nc2@example.org\nc3@example.org\nc4@example.org",
                       "!nonContattati"};
    QTest::newRow("skips singular and plural")
        << QStringList{"s:in lista esclusi", "s:duplicato nella lista", "s:in lista esclusi"} << QString() << qint64(0)
        << qint64(0)
        << QStringList{"!nessunProblema",
                       "nonContattati=2 destinatari: in lista esclusi\n1 destinatario: duplicato nella lista",
                       "!rifiutiDelServer", "!indirizziRifiutati"};
    QTest::newRow("error, suppressions and quota")
        << QStringList{"o"} << "Connessione persa: il server ha chiuso la connessione" << qint64(2) << qint64(40)
        << QStringList{
               "ultimoErrore=Connessione persa: il server ha chiuso la connessione",
               "esclusiAggiunti=2 indirizzi aggiunti agli esclusi: non saranno più contattati.",
               "rimandati=40 destinatari non entrano nella quota di oggi (tetto 100): non è un errore, partiranno "
               "alla prossima tornata con \"Riprendi invio\".",
               "nessunProblema=Nessun rifiuto né scarto finora."};
}

void TestDashboard::problems() {
    QFETCH(QStringList, eventi);
    QFETCH(QString, ultimoErrore);
    QFETCH(qint64, esclusi);
    QFETCH(qint64, rimandati);
    QFETCH(QStringList, attesi);
    Banco banco;
    banco.motore->avvia();
    banco.motore->setQuota(10, 100);
    banco.motore->setRimandati(rimandati);
    for (qint64 i = 0; i < esclusi; ++i)
        banco.motore->contaEsclusoAggiunto();
    if (!ultimoErrore.isEmpty())
        banco.motore->setLastError(ultimoErrore);
    int n = 0;
    for (const QString& e : eventi) {
        const QString email = QStringLiteral("c%1@example.org").arg(++n);
        if (e == QLatin1String("o"))
            banco.motore->registra(email, SendStatus::sent, QString());
        else
            banco.motore->registra(email, e.startsWith(u'f') ? SendStatus::failed : SendStatus::skipped, e.mid(2));
    }
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QVERIFY(QTest::qWaitForWindowExposed(&foglio));
    for (const QString& atteso : attesi) {
        if (atteso.startsWith(u'!')) {
            QVERIFY2(!visibile(&foglio, atteso.mid(1)), qPrintable(atteso));
            continue;
        }
        const QString nome = atteso.section(u'=', 0, 0);
        QVERIFY2(visibile(&foglio, nome), qPrintable(nome));
        QCOMPARE(testoDi(&foglio, nome, QStringLiteral("testo")), atteso.section(u'=', 1));
    }
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-problems-") + QTest::currentDataTag()));
}

void TestDashboard::showAllRefusedAddresses_data() {
    QTest::addColumn<int>("rifiutati");
    QTest::addColumn<int>("mostrati");
    QTest::addColumn<QString>("pulsante");
    QTest::newRow("15 all without button") << 15 << 15 << QString();
    QTest::newRow("16 show 15 and the button") << 16 << 15 << "Mostra tutti (16)";
    QTest::newRow("40") << 40 << 15 << "Mostra tutti (40)";
}

void TestDashboard::showAllRefusedAddresses() {
    QFETCH(int, rifiutati);
    QFETCH(int, mostrati);
    QFETCH(QString, pulsante);
    Banco banco;
    Scena scena;
    scena.total = rifiutati + 5;
    scena.failed = rifiutati;
    scena.sent = 5;
    banco.prepara(scena);
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QVERIFY(QTest::qWaitForWindowExposed(&foglio));
    auto* indirizzi = foglio.findChild<QLabel*>(QStringLiteral("indirizziRifiutati"));
    QCOMPARE(indirizzi->text().split(u'\n').size(), mostrati);
    QVERIFY(indirizzi->text().startsWith(QStringLiteral("c6@example.org\n")));
    QCOMPARE(indirizzi->textInteractionFlags() & Qt::TextSelectableByMouse, Qt::TextSelectableByMouse);
    auto* mostraTutti = ::pulsante(&foglio, "mostraTutti");
    QCOMPARE(mostraTutti->isVisible(), !pulsante.isEmpty());
    if (pulsante.isEmpty())
        return;
    QCOMPARE(mostraTutti->text(), pulsante);
    QVERIFY(TestSupport::salvaSchermata(&foglio,
                                        QStringLiteral("dashboard-mostra-tutti-before-") + QString::number(rifiutati)));
    QTest::mouseClick(mostraTutti, Qt::LeftButton);
    QVERIFY(foglio.mostraTutti());
    QCOMPARE(indirizzi->text().split(u'\n').size(), rifiutati);
    QVERIFY(!mostraTutti->isVisible());
    // A refresh keeps the whole list: there is no way back short of closing the sheet.
    foglio.aggiorna();
    QCOMPARE(indirizzi->text().split(u'\n').size(), rifiutati);
    QVERIFY(TestSupport::salvaSchermata(&foglio,
                                        QStringLiteral("dashboard-mostra-tutti-after-") + QString::number(rifiutati)));
    // A sheet made anew starts short again.
    SendDashboardView nuovo(banco.motore);
    QCOMPARE(nuovo.findChild<QLabel*>(QStringLiteral("indirizziRifiutati"))->text().split(u'\n').size(), mostrati);
}

void TestDashboard::simulationDuringAndAfter() {
    auto motore = std::make_shared<SendEngine>();
    SendDashboardView foglio(motore);
    foglio.show();
    QVERIFY(QTest::qWaitForWindowExposed(&foglio));
    motore->simula(60, 0.02);
    QTRY_VERIFY(motore->processed() >= 10);

    auto* stato = foglio.findChild<BadgeView*>(QStringLiteral("badgeStato"));
    QTRY_COMPARE(stato->testo(), QStringLiteral("Invio in corso"));
    QCOMPARE(foglio.findChild<BadgeView*>(QStringLiteral("badgeServizio"))->colore(), Colore::secondary);
    QCOMPARE(testoDi(&foglio, "titolo"), QStringLiteral("Simulazione di prova"));
    QVERIFY(testoDi(&foglio, "inCorso").startsWith(QStringLiteral("In corso: contatto")));
    QCOMPARE(pulsante(&foglio, "principale")->text(), QStringLiteral("Nascondi"));
    QCOMPARE(pulsante(&foglio, "principale")->toolTip(), QStringLiteral("L'invio prosegue in secondo piano"));
    QVERIFY(visibile(&foglio, "pausa") && visibile(&foglio, "interrompi"));
    QCOMPARE(testoDi(&foglio, "datoPausaImpostata"), QStringLiteral("0.0 s"));
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-simulation-running")));
    // Held still, the figures catch up with the engine exactly.
    motore->setPaused(true);
    QTest::qWait(100);
    QTRY_COMPARE(testoDi(&foglio, "riquadroSpedite"), QString::number(motore->sent()));
    QCOMPARE(testoDi(&foglio, "riquadroRifiutate"), QString::number(motore->failed()));
    QCOMPARE(testoDi(&foglio, "riquadroEscluse"), QString::number(motore->skipped()));
    QCOMPARE(testoDi(&foglio, "riquadroDaSpedire"), QString::number(60 - motore->processed()));
    QCOMPARE(testoDi(&foglio, "destinatari"), QStringLiteral("%1 di 60 destinatari").arg(motore->processed()));
    QCOMPARE(foglio.findChild<QTreeView*>(QStringLiteral("registro"))->model()->rowCount(), motore->processed());
    motore->setPaused(false);

    QTRY_VERIFY_WITH_TIMEOUT(!motore->isRunning(), 20000);
    QTRY_COMPARE(pulsante(&foglio, "principale")->text(), QStringLiteral("Chiudi"));
    QVERIFY(pulsante(&foglio, "principale")->toolTip().isEmpty());
    QVERIFY(!visibile(&foglio, "pausa") && !visibile(&foglio, "interrompi"));
    QCOMPARE(testoDi(&foglio, "datoFineStimata"), QStringLiteral("conclusa"));
    QCOMPARE(testoDi(&foglio, "destinatari"), QStringLiteral("60 di 60 destinatari"));
    QCOMPARE(testoDi(&foglio, "percentuale"), QStringLiteral("100%"));
    QVERIFY(!visibile(&foglio, "inCorso") || testoDi(&foglio, "inCorso").isEmpty());
    const qint64 spedite = testoDi(&foglio, "riquadroSpedite").toLongLong();
    const qint64 rifiutate = testoDi(&foglio, "riquadroRifiutate").toLongLong();
    const qint64 escluse = testoDi(&foglio, "riquadroEscluse").toLongLong();
    QCOMPARE(spedite + rifiutate + escluse, 60);
    QCOMPARE(spedite, motore->sent());
    QCOMPARE(testoDi(&foglio, "riquadroDaSpedire"), QStringLiteral("0"));
    QCOMPARE(stato->testo(),
             motore->failed() >= 1 && motore->sent() == 0 ? QStringLiteral("Fallito") : QStringLiteral("Completato"));
    auto* registro = foglio.findChild<QTreeView*>(QStringLiteral("registro"));
    QCOMPARE(registro->model()->rowCount(), 60);
    QCOMPARE(registro->model()->index(59, EventiModel::destinatario).data().toString(), motore->eventi().last().email);
    // The register scrolled to its newest line.
    QTRY_COMPARE(registro->verticalScrollBar()->value(), registro->verticalScrollBar()->maximum());
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-simulation-ended")));
}

void TestDashboard::pauseAndStopButtons() {
    auto motore = std::make_shared<SendEngine>();
    SendDashboardView foglio(motore);
    foglio.show();
    QVERIFY(QTest::qWaitForWindowExposed(&foglio));
    motore->simula(60, 0.02);
    QTRY_VERIFY(motore->processed() >= 2);
    auto* pausa = pulsante(&foglio, "pausa");
    QTest::mouseClick(pausa, Qt::LeftButton);
    QVERIFY(motore->isPaused());
    QTRY_COMPARE(pausa->text(), QStringLiteral("Riprendi"));
    QTRY_COMPARE(foglio.findChild<BadgeView*>(QStringLiteral("badgeStato"))->testo(), QStringLiteral("In pausa"));
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-paused")));
    QTest::mouseClick(pausa, Qt::LeftButton);
    QVERIFY(!motore->isPaused());
    QTRY_COMPARE(pausa->text(), QStringLiteral("Pausa"));
    QTest::mouseClick(pulsante(&foglio, "interrompi"), Qt::LeftButton);
    QTRY_VERIFY(!motore->isRunning());
    QTRY_COMPARE(foglio.findChild<BadgeView*>(QStringLiteral("badgeStato"))->testo(), QStringLiteral("Interrotto"));
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-stopped")));
}

void TestDashboard::figuresMoveEverySecond() {
    Banco banco;
    Scena scena;
    scena.inCorso = true;
    scena.inPausa = true;
    scena.sent = 3;
    scena.secondi = 30;
    banco.prepara(scena);
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QCoreApplication::processEvents();
    QCOMPARE(testoDi(&foglio, "datoTempoTrascorso"), QStringLiteral("30 s"));
    // Nothing changes in the engine while paused; the clock alone moves the figures.
    banco.ora = banco.ora.addSecs(45);
    QTRY_COMPARE_WITH_TIMEOUT(testoDi(&foglio, "datoTempoTrascorso"), QStringLiteral("1 m 15 s"), 3000);
}

void TestDashboard::registerFollowsTheBoundedList() {
    Banco banco;
    banco.motore->avvia();
    EventiModel modello(banco.motore);
    QCOMPARE(modello.rowCount(), 0);
    for (int i = 1; i <= 4990; ++i)
        banco.motore->registra(QStringLiteral("n%1").arg(i), SendStatus::sent, QString());
    modello.sincronizza();
    QCOMPARE(modello.rowCount(), 4990);
    for (int i = 4991; i <= 5012; ++i)
        banco.motore->registra(QStringLiteral("n%1").arg(i), SendStatus::failed, QStringLiteral("x"));
    modello.sincronizza();
    QCOMPARE(modello.rowCount(), 5000);
    QCOMPARE(modello.index(0, EventiModel::destinatario).data().toString(), QStringLiteral("n13"));
    QCOMPARE(modello.index(4999, EventiModel::destinatario).data().toString(), QStringLiteral("n5012"));
    QCOMPARE(modello.index(4999, EventiModel::dettaglio).data().toString(), QStringLiteral("x"));
    QCOMPARE(modello.index(0, EventiModel::ora).data().toString(),
             partenza.toLocalTime().time().toString(QStringLiteral("HH:mm:ss")));
    QVERIFY(!modello.index(0, EventiModel::ora).data(Qt::DecorationRole).value<QIcon>().isNull());
    // More dropped than the view held: it starts over from what the engine has.
    for (int i = 5013; i <= 16000; ++i)
        banco.motore->registra(QStringLiteral("n%1").arg(i), SendStatus::sent, QString());
    modello.sincronizza();
    QCOMPARE(modello.rowCount(), 5000);
    QCOMPARE(modello.index(0, EventiModel::destinatario).data().toString(), QStringLiteral("n11001"));
    banco.motore->avvia();
    modello.sincronizza();
    QCOMPARE(modello.rowCount(), 0);
}

void TestDashboard::exportedReport() {
    Banco banco;
    banco.motore->avvia();
    banco.motore->setDescrizione(QStringLiteral("Marzo/Aprile"), QString(), QString(), QString(), 0);
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QCoreApplication::processEvents();
    QVERIFY(!pulsante(&foglio, "esportaRapporto")->isEnabled());

    banco.motore->registra(QStringLiteral("anna@example.org"), SendStatus::sent, QString());
    banco.ora = banco.ora.addSecs(2);
    banco.motore->registra(QStringLiteral("bruno@example.org"), SendStatus::failed,
                           QStringLiteral("Risposta inattesa a RCPT TO: 550 no, \"nessuno\""));
    banco.motore->registra(QStringLiteral("carla@example.org"), SendStatus::skipped, QStringLiteral("riga\rdue"));
    banco.motore->registra(QStringLiteral("dario@example.org"), SendStatus::test, QStringLiteral("a\nb"));
    QTRY_VERIFY(pulsante(&foglio, "esportaRapporto")->isEnabled());

    QTemporaryDir cartella;
    const QString percorso = cartella.filePath(QStringLiteral("rapporto.csv"));
    QString proposto;
    Dialoghi::rispondiSalvataggio([&](const QString& nome) {
        proposto = nome;
        return percorso;
    });
    QTest::mouseClick(pulsante(&foglio, "esportaRapporto"), Qt::LeftButton);
    QCOMPARE(proposto, QStringLiteral("rapporto-Marzo/Aprile.csv"));
    QFile file(percorso);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(file.readAll()),
             QStringLiteral("ora,esito,destinatario,dettaglio\n"
                            "2025-03-04T09:00:00Z,sent,anna@example.org,\n"
                            "2025-03-04T09:00:02Z,failed,bruno@example.org,\"Risposta inattesa a RCPT TO: 550 no, "
                            "\"\"nessuno\"\"\"\n"
                            "2025-03-04T09:00:02Z,skipped,carla@example.org,riga\rdue\n"
                            "2025-03-04T09:00:02Z,test,dario@example.org,\"a\nb\"\n"));
    QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-export")));
}

void TestDashboard::exportCancelledOrFailing_data() {
    QTest::addColumn<QString>("risposta"); // relative to a temporary folder; empty: the user cancels
    QTest::newRow("cancelled") << QString();
    QTest::newRow("folder that does not exist") << "manca/rapporto.csv";
    QTest::newRow("a folder in place of the file") << "cartella";
}

void TestDashboard::exportCancelledOrFailing() {
    QFETCH(QString, risposta);
    QTemporaryDir cartella;
    QDir(cartella.path()).mkdir(QStringLiteral("cartella"));
    Banco banco;
    banco.motore->avvia();
    banco.motore->registra(QStringLiteral("anna@example.org"), SendStatus::sent, QString());
    SendDashboardView foglio(banco.motore);
    foglio.show();
    QCoreApplication::processEvents();
    Dialoghi::rispondiSalvataggio(
        [&](const QString&) { return risposta.isEmpty() ? QString() : cartella.filePath(risposta); });
    foglio.esportaRapporto();
    // No message, no file, and the sheet stays up as it was.
    QVERIFY(QApplication::topLevelWidgets().count() >= 1);
    QVERIFY(!qobject_cast<QMessageBox*>(QApplication::activeModalWidget()));
    QCOMPARE(QDir(cartella.path()).entryList(QDir::Files | QDir::NoDotAndDotDot), QStringList());
    QVERIFY(foglio.isVisible());
}

BREZZARIO_TEST_MAIN(TestDashboard)
#include "tst_dashboard.moc"
