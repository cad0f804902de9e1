#include "app/BrezzarioApp.h"
#include "screens/dashboard/EventiModel.h"
#include "screens/dashboard/SendDashboardView.h"
#include "Screenshot.h"
#include "TestEnvironment.h"
#include "ui/Dialoghi.h"
#include "ui/Formati.h"
#include "ui/Riquadri.h"

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
                motore->registra(QStringLiteral("c%1@example.org").arg(++n), stato, dettaglio);
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

bool mostra(QWidget& finestra) {
    finestra.show();
    return QTest::qWaitForWindowExposed(&finestra);
}

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

QString statoDi(QWidget* radice) {
    return radice->findChild<BadgeView*>(QStringLiteral("badgeStato"))->testo();
}

} // namespace

class TestDashboard : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { BrezzarioApp::preparaApplicazione(); }

    void cleanup() { Dialoghi::rispondiSalvataggio({}); }
    void durata_data() {
        QTest::addColumn<double>("secondi");
        QTest::addColumn<QString>("testo");
        QTest::newRow("negative") << -5.0 << "—";
        QTest::newRow("0.4") << 0.4 << "—";
        QTest::newRow("0.5 rounds up") << 0.5 << "1 s";
        QTest::newRow("59.4") << 59.4 << "59 s";
        QTest::newRow("59.6") << 59.6 << "1 m 00 s";
        QTest::newRow("187") << 187.0 << "3 m 07 s";
        QTest::newRow("3600") << 3600.0 << "1 h 00 m";
        QTest::newRow("100 hours") << 360000.0 << "100 h 00 m";
    }

    void durata() {
        QFETCH(double, secondi);
        QFETCH(QString, testo);
        QCOMPARE(durataLeggibile(secondi), testo);
    }

    void badgesAndFigures_data() {
        QTest::addColumn<Scena>("scena");
        QTest::addColumn<QString>("stato");
        QTest::addColumn<Colore>("coloreStato");
        QTest::addColumn<Colore>("coloreServizio");
        QTest::addColumn<QString>("riquadri"); // the five tiles, "-" when hidden
        QTest::addColumn<QString>("dati");     // the six figures, "-" when hidden
        QTest::addColumn<bool>("erroreRosso");
        QTest::newRow("running") << Scena{.servizio = "Brevo (account aziendale)",
                                          .total = 100,
                                          .sent = 25,
                                          .failed = 5,
                                          .skipped = 6,
                                          .inCorso = true,
                                          .secondi = 60}
                                 << "Invio in corso" << Colore::blue << Colore::teal << "25 5 6 64 -"
                                 << "1 m 00 s|30.0 al minuto|2 m 08 s|16.7%|2.5 s|-" << true;
        QTest::newRow("first second") << Scena{.servizio = "ARUBA", .sent = 1, .inCorso = true, .secondi = 0}
                                      << "Invio in corso" << Colore::blue << Colore::orange << "1 0 0 9 -"
                                      << "—|—|—|0.0%|2.5 s|-" << false;
        QTest::newRow("every attempt failed") << Scena{.servizio = "Gmail personale", .total = 4, .failed = 4}
                                              << "Fallito" << Colore::red << Colore::red << "0 4 0 0 -"
                                              << "2 m 00 s|2.0 al minuto|conclusa|100.0%|2.5 s|-" << true;
        QTest::newRow("one refusal in ten is not red") << Scena{.servizio = "gmail via brevo", .sent = 9, .failed = 1}
                                                       << "Completato" << Colore::green << Colore::teal << "9 1 0 0 -"
                                                       << "2 m 00 s|5.0 al minuto|conclusa|10.0%|2.5 s|-" << false;
        QTest::newRow("stopped comes before failed")
            << Scena{.servizio = "Simulazione", .failed = 3, .interrotta = true} << "Interrotto" << Colore::orange
            << Colore::secondary << "0 3 0 7 -"
            << "2 m 00 s|1.5 al minuto|conclusa|100.0%|2.5 s|-" << true;
        QTest::newRow("cut by the quota")
            << Scena{.servizio = "", .total = 3, .sent = 3, .rimandati = 5, .inviateOggi = 20, .tetto = 23}
            << "Completato" << Colore::green << Colore::accent << "3 0 0 0 5"
            << "2 m 00 s|1.5 al minuto|conclusa|0.0%|2.5 s|23/23" << false;
    }

    void badgesAndFigures() {
        QFETCH(Scena, scena);
        QFETCH(QString, stato);
        QFETCH(Colore, coloreStato);
        QFETCH(Colore, coloreServizio);
        QFETCH(QString, riquadri);
        QFETCH(QString, dati);
        QFETCH(bool, erroreRosso);
        Banco banco;
        banco.prepara(scena);
        SendDashboardView foglio(banco.motore);
        QVERIFY(mostra(foglio));
        QCOMPARE(foglio.size(), QSize(900, 720));
        QCOMPARE(foglio.minimumSize(), foglio.maximumSize());

        auto* badge = foglio.findChild<BadgeView*>(QStringLiteral("badgeStato"));
        QCOMPARE(badge->testo(), stato);
        QCOMPARE(badge->colore(), coloreStato);
        const QString servizio = scena.servizio.isEmpty() ? QStringLiteral("—") : scena.servizio;
        badge = foglio.findChild<BadgeView*>(QStringLiteral("badgeServizio"));
        QCOMPARE(badge->testo(), servizio);
        QCOMPARE(badge->colore(), coloreServizio);
        QCOMPARE(badge->toolTip(), QStringLiteral("Servizio di invio in uso: %1 — smtp.example.org:465").arg(servizio));
        QCOMPARE(testoDi(&foglio, "titolo"), QStringLiteral("Saldi di marzo"));
        QCOMPARE(testoDi(&foglio, "sottotitolo"),
                 QStringLiteral("da info@nembrosa.example · server smtp.example.org:465"));
        QCOMPARE(
            testoDi(&foglio, "destinatari"),
            QStringLiteral("%1 di %2 destinatari").arg(scena.sent + scena.failed + scena.skipped).arg(scena.total));

        const QStringList nomiRiquadri = {"riquadroSpedite", "riquadroRifiutate", "riquadroEscluse",
                                          "riquadroDaSpedire", "riquadroRimandate"};
        const QStringList nomiDati = {"datoTempoTrascorso", "datoRitmo",          "datoFineStimata",
                                      "datoTassoErrore",    "datoPausaImpostata", "datoQuotaOggi"};
        const auto confronta = [&](const QStringList& nomi, const QStringList& attesi) {
            for (int i = 0; i < nomi.size(); ++i) {
                const bool nascosto = attesi.at(i) == QLatin1String("-");
                QCOMPARE(visibile(&foglio, nomi[i]), !nascosto);
                if (!nascosto)
                    QCOMPARE(testoDi(&foglio, nomi[i]), attesi.at(i));
            }
        };
        confronta(nomiRiquadri, riquadri.split(u' '));
        confronta(nomiDati, dati.split(u'|'));
        QCOMPARE(foglio.findChild<DatoInlineView*>(QStringLiteral("datoTassoErrore"))->colore(),
                 erroreRosso ? Colore::red : Colore::primary);

        QCOMPARE(pulsante(&foglio, "principale")->text(),
                 scena.inCorso ? QStringLiteral("Nascondi") : QStringLiteral("Chiudi"));
        QCOMPARE(visibile(&foglio, "pausa"), scena.inCorso);
        QCOMPARE(visibile(&foglio, "interrompi"), scena.inCorso);
        QVERIFY(pulsante(&foglio, "esportaRapporto")->isEnabled());
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-") + QTest::currentDataTag()));
    }

    void problems_data() {
        QTest::addColumn<QStringList>("eventi"); // "f:text" refused, "s:text" skipped, "o" sent
        QTest::addColumn<QString>("ultimoErrore");
        QTest::addColumn<qint64>("esclusi");
        QTest::addColumn<qint64>("rimandati");
        QTest::addColumn<QStringList>("attesi"); // object name=text, "!name" for hidden
        const QString nessuno = QStringLiteral("nessunProblema=Nessun rifiuto né scarto finora.");
        QTest::newRow("nothing wrong")
            << QStringList{"o", "o"} << QString() << qint64(0) << qint64(0)
            << QStringList{nessuno,          "!ultimoErrore", "!esclusiAggiunti",   "!rifiutiDelServer",
                           "!nonContattati", "!rimandati",    "!indirizziRifiutati"};
        QTest::newRow("refusals by exact text, skips singular and plural")
            << QStringList{"f:550 mailbox unavailable", "s:in lista esclusi",        "f:452 full",        "s:duplicato",
                           "f:550 mailbox unavailable", "f:550 Mailbox unavailable", "s:in lista esclusi"}
            << QString() << qint64(0) << qint64(0)
            << QStringList{"!nessunProblema",
                           "rifiutiDelServer=2× 550 mailbox unavailable\n1× 452 full\n1× 550 Mailbox unavailable",
                           "indirizziRifiutati=c1@example.org\nc3@example.org\nc5@example.org\nc6@example.org",
                           "nonContattati=2 destinatari: in lista esclusi\n1 destinatario: duplicato"};
        QTest::newRow("error, suppressions and quota")
            << QStringList{"o"} << "Connessione persa: il server ha chiuso la connessione" << qint64(2) << qint64(40)
            << QStringList{"ultimoErrore=Connessione persa: il server ha chiuso la connessione",
                           "esclusiAggiunti=2 indirizzi aggiunti agli esclusi: non saranno più contattati.",
                           "rimandati=40 destinatari non entrano nella quota di oggi (tetto 100): non è un errore, "
                           "partiranno alla prossima tornata con \"Riprendi invio\".",
                           nessuno};
    }

    void problems() {
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
            const SendStatus esito = e == QLatin1String("o") ? SendStatus::sent
                                     : e.startsWith(u'f')    ? SendStatus::failed
                                                             : SendStatus::skipped;
            banco.motore->registra(email, esito, e.mid(2));
        }
        SendDashboardView foglio(banco.motore);
        QVERIFY(mostra(foglio));
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

    void showAllRefusedAddresses() {
        Banco banco;
        banco.prepara(Scena{.total = 20, .sent = 5, .failed = 15, .inCorso = true});
        SendDashboardView foglio(banco.motore);
        QVERIFY(mostra(foglio));
        auto* indirizzi = foglio.findChild<QLabel*>(QStringLiteral("indirizziRifiutati"));
        auto* mostraTutti = pulsante(&foglio, "mostraTutti");
        const auto righe = [](QLabel* etichetta) { return etichetta->text().split(u'\n').size(); };
        QCOMPARE(righe(indirizzi), 15);
        QVERIFY(indirizzi->text().startsWith(QStringLiteral("c6@example.org\n")));
        QCOMPARE(indirizzi->textInteractionFlags() & Qt::TextSelectableByMouse, Qt::TextSelectableByMouse);
        QVERIFY(!mostraTutti->isVisible());
        // The sixteenth refusal brings the button at the next refresh.
        banco.motore->registra(QStringLiteral("c21@example.org"), SendStatus::failed, QStringLiteral("550"));
        foglio.aggiorna();
        QCOMPARE(righe(indirizzi), 15);
        QVERIFY(mostraTutti->isVisible());
        QCOMPARE(mostraTutti->text(), QStringLiteral("Mostra tutti (16)"));
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-mostra-tutti-before")));
        QTest::mouseClick(mostraTutti, Qt::LeftButton);
        QCOMPARE(righe(indirizzi), 16);
        QVERIFY(!mostraTutti->isVisible());
        // A refresh keeps the whole list; only a sheet made anew starts short again.
        foglio.aggiorna();
        QCOMPARE(righe(indirizzi), 16);
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-mostra-tutti-after")));
        SendDashboardView nuovo(banco.motore);
        QCOMPARE(righe(nuovo.findChild<QLabel*>(QStringLiteral("indirizziRifiutati"))), 15);
    }

    void simulationDuringAndAfter() {
        auto motore = std::make_shared<SendEngine>();
        SendDashboardView foglio(motore);
        QVERIFY(mostra(foglio));
        motore->simula(60, 0.02);
        QTRY_VERIFY(motore->processed() >= 10);
        QTRY_COMPARE(statoDi(&foglio), QStringLiteral("Invio in corso"));
        QCOMPARE(testoDi(&foglio, "titolo"), QStringLiteral("Simulazione di prova"));
        QVERIFY(testoDi(&foglio, "inCorso").startsWith(QStringLiteral("In corso: contatto")));
        QCOMPARE(pulsante(&foglio, "principale")->toolTip(), QStringLiteral("L'invio prosegue in secondo piano"));
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-simulation-running")));
        // Held still by the button, the figures catch up with the engine exactly.
        auto* pausa = pulsante(&foglio, "pausa");
        QTest::mouseClick(pausa, Qt::LeftButton);
        QVERIFY(motore->isPaused());
        QTRY_COMPARE(statoDi(&foglio), QStringLiteral("In pausa"));
        QCOMPARE(pausa->text(), QStringLiteral("Riprendi"));
        QTest::qWait(100);
        QTRY_COMPARE(testoDi(&foglio, "riquadroSpedite"), QString::number(motore->sent()));
        QCOMPARE(testoDi(&foglio, "riquadroRifiutate"), QString::number(motore->failed()));
        QCOMPARE(testoDi(&foglio, "riquadroEscluse"), QString::number(motore->skipped()));
        QCOMPARE(testoDi(&foglio, "riquadroDaSpedire"), QString::number(60 - motore->processed()));
        QCOMPARE(foglio.findChild<QTreeView*>(QStringLiteral("registro"))->model()->rowCount(), motore->processed());
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-simulation-paused")));
        QTest::mouseClick(pausa, Qt::LeftButton);
        QVERIFY(!motore->isPaused());
        QTRY_COMPARE(pausa->text(), QStringLiteral("Pausa"));

        QTRY_VERIFY_WITH_TIMEOUT(!motore->isRunning(), 20000);
        QTRY_COMPARE(pulsante(&foglio, "principale")->text(), QStringLiteral("Chiudi"));
        QCOMPARE(testoDi(&foglio, "destinatari"), QStringLiteral("60 di 60 destinatari"));
        QCOMPARE(testoDi(&foglio, "percentuale"), QStringLiteral("100%"));
        QVERIFY(!visibile(&foglio, "inCorso") || testoDi(&foglio, "inCorso").isEmpty());
        const qint64 spedite = testoDi(&foglio, "riquadroSpedite").toLongLong();
        QCOMPARE(spedite, motore->sent());
        QCOMPARE(spedite + testoDi(&foglio, "riquadroRifiutate").toLongLong() +
                     testoDi(&foglio, "riquadroEscluse").toLongLong(),
                 60);
        QCOMPARE(statoDi(&foglio), spedite == 0 ? QStringLiteral("Fallito") : QStringLiteral("Completato"));
        auto* registro = foglio.findChild<QTreeView*>(QStringLiteral("registro"));
        QCOMPARE(registro->model()->rowCount(), 60);
        QCOMPARE(registro->model()->index(59, EventiModel::destinatario).data().toString(),
                 motore->eventi().last().email);
        // The register scrolled to its newest line.
        QTRY_COMPARE(registro->verticalScrollBar()->value(), registro->verticalScrollBar()->maximum());
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-simulation-ended")));
    }

    void figuresMoveEverySecond() {
        Banco banco;
        banco.prepara(Scena{.sent = 3, .inCorso = true, .inPausa = true, .secondi = 30});
        SendDashboardView foglio(banco.motore);
        QVERIFY(mostra(foglio));
        QCOMPARE(testoDi(&foglio, "datoTempoTrascorso"), QStringLiteral("30 s"));
        // Nothing changes in the engine while paused; the clock alone moves the figures.
        banco.ora = banco.ora.addSecs(45);
        QTRY_COMPARE_WITH_TIMEOUT(testoDi(&foglio, "datoTempoTrascorso"), QStringLiteral("1 m 15 s"), 3000);
    }

    void registerFollowsTheBoundedList() {
        Banco banco;
        banco.motore->avvia();
        EventiModel modello(banco.motore);
        const auto registra = [&](int da, int a, SendStatus esito) {
            for (int i = da; i <= a; ++i)
                banco.motore->registra(QStringLiteral("n%1").arg(i), esito, QStringLiteral("x"));
            modello.sincronizza();
        };
        const auto destinatario = [&](int riga) {
            return modello.index(riga, EventiModel::destinatario).data().toString();
        };
        registra(1, 4990, SendStatus::sent);
        QCOMPARE(modello.rowCount(), 4990);
        registra(4991, 5012, SendStatus::failed);
        QCOMPARE(modello.rowCount(), 5000);
        QCOMPARE(destinatario(0), QStringLiteral("n13"));
        QCOMPARE(destinatario(4999), QStringLiteral("n5012"));
        QCOMPARE(modello.index(4999, EventiModel::dettaglio).data().toString(), QStringLiteral("x"));
        QCOMPARE(modello.index(0, EventiModel::ora).data().toString(),
                 partenza.toLocalTime().time().toString(QStringLiteral("HH:mm:ss")));
        QVERIFY(!modello.index(0, EventiModel::ora).data(Qt::DecorationRole).value<QIcon>().isNull());
        // More dropped than the view held: it starts over from what the engine has.
        registra(5013, 16000, SendStatus::sent);
        QCOMPARE(modello.rowCount(), 5000);
        QCOMPARE(destinatario(0), QStringLiteral("n11001"));
        banco.motore->avvia();
        modello.sincronizza();
        QCOMPARE(modello.rowCount(), 0);
    }

    void exportReport_data() {
        QTest::addColumn<QString>("risposta"); // the dialog's answer, in a temporary folder; empty: cancelled
        QTest::newRow("written") << "rapporto.csv";
        QTest::newRow("cancelled") << QString();
        QTest::newRow("folder that does not exist") << "manca/rapporto.csv";
        QTest::newRow("a folder in place of the file") << "cartella";
    }

    void exportReport() {
        QFETCH(QString, risposta);
        QTemporaryDir cartella;
        QDir(cartella.path()).mkdir(QStringLiteral("cartella"));
        Banco banco;
        banco.motore->avvia();
        banco.motore->setDescrizione(QStringLiteral("Marzo/Aprile"), QString(), QString(), QString(), 0);
        SendDashboardView foglio(banco.motore);
        QVERIFY(mostra(foglio));
        QVERIFY(!pulsante(&foglio, "esportaRapporto")->isEnabled());

        banco.motore->registra(QStringLiteral("anna@example.org"), SendStatus::sent, QString());
        banco.ora = banco.ora.addSecs(2);
        banco.motore->registra(QStringLiteral("bruno@example.org"), SendStatus::failed,
                               QStringLiteral("Risposta inattesa a RCPT TO: 550 no, \"nessuno\""));
        banco.motore->registra(QStringLiteral("carla@example.org"), SendStatus::skipped, QStringLiteral("riga\rdue"));
        banco.motore->registra(QStringLiteral("dario@example.org"), SendStatus::test, QStringLiteral("a\nb"));
        QTRY_VERIFY(pulsante(&foglio, "esportaRapporto")->isEnabled());

        QString proposto;
        Dialoghi::rispondiSalvataggio([&](const QString& nome) {
            proposto = nome;
            return risposta.isEmpty() ? QString() : cartella.filePath(risposta);
        });
        QTest::mouseClick(pulsante(&foglio, "esportaRapporto"), Qt::LeftButton);
        QCOMPARE(proposto, QStringLiteral("rapporto-Marzo/Aprile.csv"));
        QVERIFY(TestSupport::salvaSchermata(&foglio, QStringLiteral("dashboard-export-") + QTest::currentDataTag()));
        // A failure is silent: no message, no file, and the sheet stays up as it was.
        QVERIFY(!qobject_cast<QMessageBox*>(QApplication::activeModalWidget()));
        QVERIFY(foglio.isVisible());
        const QStringList scritti = QDir(cartella.path()).entryList(QDir::Files);
        if (QTest::currentDataTag() != QLatin1String("written")) {
            QCOMPARE(scritti, QStringList());
            return;
        }
        QCOMPARE(scritti, QStringList{risposta});
        QFile file(cartella.filePath(risposta));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()),
                 QStringLiteral("ora,esito,destinatario,dettaglio\n"
                                "2025-03-04T09:00:00Z,sent,anna@example.org,\n"
                                "2025-03-04T09:00:02Z,failed,bruno@example.org,\"Risposta inattesa a RCPT TO: 550 no, "
                                "\"\"nessuno\"\"\"\n"
                                "2025-03-04T09:00:02Z,skipped,carla@example.org,riga\rdue\n"
                                "2025-03-04T09:00:02Z,test,dario@example.org,\"a\nb\"\n"));
    }
};

BREZZARIO_TEST_MAIN(TestDashboard)
#include "tst_dashboard.moc"
