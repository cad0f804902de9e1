#include "AiosmtpdServer.h"
#include "Loopback.h"
#include "MemoryKeychain.h"
#include "NsdServer.h"
#include "Screenshot.h"
#include "TempStore.h"
#include "TestCA.h"

#include "app/BrezzarioApp.h"
#include "checks/Dig.h"
#include "engine/SendEngine.h"
#include "import/ListImport.h"
#include "screens/campaigns/CampaignDetailView.h"
#include "screens/campaigns/CampaignReadings.h"
#include "screens/campaigns/CampaignsView.h"
#include "screens/dashboard/SendDashboardView.h"
#include "settings/Keychain.h"
#include "settings/Preset.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"
#include "ui/Ambiente.h"
#include "ui/Dialoghi.h"
#include "ui/Formati.h"
#include "ui/Rinfresco.h"
#include "ui/Riquadri.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

// A list of `quanti` addresses, a template and a campaign joining them, in a real store file.
struct Archivio {
    TempStore temp;
    Store& store;
    Campaign campagna;

    explicit Archivio(int quanti, const QString& html = QString()) : store(*temp.store) {
        QStringList indirizzi;
        for (int i = 0; i < quanti; ++i)
            indirizzi.append(QStringLiteral("cliente%1@ditta.it").arg(i));
        campagna = TestSupport::campagnaSuLista(store, indirizzi);
        if (auto modello = store.find<MessageTemplate>(campagna.templateId); modello && !html.isEmpty()) {
            modello->html = html;
            store.update(*modello);
            store.save();
        }
    }
    // `quanti` logs of the given status for the first addresses, `oreFa` hours ago, under the profile "Brevo".
    void registra(int quanti, SendStatus stato, int oreFa, bool dellaCampagna) {
        for (int i = 0; i < quanti; ++i) {
            SendLog log(QStringLiteral("cliente%1@ditta.it").arg(i), QStringLiteral("Saldi"), stato, {},
                        QStringLiteral("Brevo"));
            log.date = QDateTime::currentDateTimeUtc().addSecs(-3600 * oreFa);
            log.campaignId = dellaCampagna ? campagna.id : 0;
            store.insert(log);
        }
        store.save();
    }
};

ProfiloAttivo brevo(int limite, double pausa = 2.0) {
    return {QStringLiteral("Brevo"),
            QStringLiteral("negozio@prova.example"),
            QStringLiteral("smtp-relay.brevo.com"),
            pausa,
            limite,
            true};
}

QString riga(const QWidget* vista, const char* nome) {
    const auto* etichetta = vista->findChild<QLabel*>(QString::fromLatin1(nome));
    return etichetta && etichetta->isVisibleTo(vista->window()) ? etichetta->text() : QString();
}

} // namespace

class TestCampaigns : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void letture_data();
    void letture();
    void riferimentiRotti();
    void dominio_data();
    void dominio();
    void unMessaggioEdElimina();
    void daCapoAFine();
    void pausaRipresaInterruzione();
    void corsaOltreLaSchermata();

private:
    // The screen shown, its engine's sessions trusting the test authority.
    bool mostra(CampaignsView& vista) {
        const SMTPSession::Options sessione = AiosmtpdServer::sessionOptions(&m_ca);
        vista.motore()->setFabbricaSessionePerTest([sessione](const SMTPConfig& c, const QString& p) {
            return std::make_unique<SMTPSession>(c, p, sessione);
        });
        vista.resize(1200, 900);
        vista.show();
        return QTest::qWaitForWindowExposed(&vista);
    }

    // A profile that sends from ditta.it to the server at the given pace, with no quota and no domain checks,
    // its password in the keychain.
    void profiloVerso(const AiosmtpdServer& server, double pausa, SettingsStore& settings) {
        SMTPConfig config = server.config();
        config.fromEmail = QStringLiteral("negozio@ditta.it");
        config.delayBetweenMessages = pausa;
        config.dailyLimit = 0;
        config.verificaDomini = false;
        settings.setConfig(config);
        m_segreti->insert({Keychain::servizio, settings.accountCorrente()},
                          AiosmtpdServer::Options().password.toUtf8());
    }

    TestCA m_ca;
    std::unique_ptr<NsdServer> m_nsd;
    std::shared_ptr<QHash<MemoryKeychain::Key, QByteArray>> m_segreti;
};

void TestCampaigns::initTestCase() {
    BrezzarioApp::preparaApplicazione();
    auto portachiavi = std::make_unique<MemoryKeychain>();
    m_segreti = portachiavi->entries;
    Keychain::setBackend(std::move(portachiavi));
    // The sender's domain prova.example publishes an MX and nothing else: no SPF, no DKIM, no DMARC. ditta.it
    // publishes all three, so a run from it shows no domain warning.
    m_nsd = std::make_unique<NsdServer>(QString::fromLatin1(Loopback::campaignsDns));
    QVERIFY2(m_nsd->start({{QStringLiteral("prova.example"), QStringLiteral("@ IN MX 10 mx\nmx IN A 192.0.2.7\n")},
                           {QStringLiteral("ditta.it"),
                            QStringLiteral("@ IN MX 10 mx\nmx IN A 192.0.2.8\n"
                                           "@ IN TXT \"v=spf1 mx -all\"\n"
                                           "mail._domainkey IN TXT \"v=DKIM1; k=rsa; p=MIGfMA0GCSqGSIb3\"\n"
                                           "_dmarc IN TXT \"v=DMARC1; p=quarantine; rua=mailto:dmarc@ditta.it\"\n")}}),
             qPrintable(m_nsd->error()));
    Dig::setResolverForTests(QString::fromLatin1(Loopback::campaignsDns));
    SendEngine::setControlloDominiPerTest(QString::fromLatin1(Loopback::campaignsDns));
}

void TestCampaigns::letture_data() {
    QTest::addColumn<int>("indirizzi");
    QTest::addColumn<int>("limite");
    QTest::addColumn<int>("inviateOggiAltrove"); // sent in the last 24 hours by other campaigns
    QTest::addColumn<int>("giaInviateQui");      // sent by this campaign, two days ago
    QTest::addColumn<qint64>("partiranno");
    QTest::addColumn<QString>("etichetta");
    QTest::addColumn<bool>("pronta");
    QTest::addColumn<QString>("quota");
    QTest::addColumn<QString>("attesa");

    QTest::newRow("quota cuts the run") << 100 << 40 << 30 << 0 << qint64(10)
                                        << "Avvia invio (10 ora, 100 da contattare)" << true
                                        << "Con Brevo, nelle ultime 24 ore sono partiti 30 messaggi su un tetto di 40: "
                                           "oggi ne restano 10."
                                        << "Gli altri 90 restano in attesa: premi di nuovo \"Riprendi invio\" domani "
                                           "per continuare da dove eri rimasto.";
    QTest::newRow("limit 0 means no limit") << 100 << 0 << 30 << 0 << qint64(100) << "Avvia invio (100)" << true << ""
                                            << "";
    QTest::newRow("everything sent") << 5 << 300 << 0 << 5 << qint64(0) << "Quota di oggi esaurita" << false
                                     << "Con Brevo, nelle ultime 24 ore sono partiti 0 messaggi su un tetto di 300: "
                                        "oggi ne restano 300."
                                     << "";
    QTest::newRow("quota used up") << 5 << 30 << 30 << 0 << qint64(0) << "Quota di oggi esaurita" << false
                                   << "Con Brevo, nelle ultime 24 ore sono partiti 30 messaggi su un tetto di 30: oggi "
                                      "ne restano 0."
                                   << "Gli altri 5 restano in attesa: premi di nuovo \"Riprendi invio\" domani per "
                                      "continuare da dove eri rimasto.";
    QTest::newRow("resumed") << 5 << 0 << 0 << 2 << qint64(3) << "Riprendi invio (3)" << true << ""
                             << "";
}

void TestCampaigns::letture() {
    QFETCH(int, indirizzi);
    QFETCH(int, limite);
    QFETCH(int, inviateOggiAltrove);
    QFETCH(int, giaInviateQui);
    Archivio archivio(indirizzi);
    // Other campaigns' logs count for the quota only: they are for addresses outside this list.
    for (int i = 0; i < inviateOggiAltrove; ++i) {
        SendLog log(QStringLiteral("altro%1@ditta.it").arg(i), QStringLiteral("Altro"), SendStatus::sent, {},
                    QStringLiteral("Brevo"));
        archivio.store.insert(log);
    }
    archivio.store.save();
    archivio.registra(giaInviateQui, SendStatus::sent, 48, true);

    const LettureCampagna l = CampaignReadings::leggi(archivio.campagna, archivio.store, brevo(limite), false);
    QTEST(l.partiranno, "partiranno");
    QTEST(l.etichettaAvvio, "etichetta");
    QTEST(l.pronta, "pronta");
    QTEST(l.rigaQuota(brevo(limite)), "quota");
    QTEST(l.rigaAttesa(), "attesa");
    QCOMPARE(l.daContattare, qsizetype(indirizzi - giaInviateQui));
    QCOMPARE(l.giaInviate, qint64(giaInviateQui));
    // Those already sent are told by their own tile, never among the excluded.
    QCOMPARE(l.esclusi, qsizetype(0));
    // A running engine holds every start back.
    QVERIFY(!CampaignReadings::leggi(archivio.campagna, archivio.store, brevo(limite), true).pronta);

    // The screen shows the same readings, with the active profile on Brevo's relay and complete. The profile
    // and its password go again afterwards: later tests start from a program never configured.
    struct Ripristino {
        QHash<MemoryKeychain::Key, QByteArray>& segreti;
        ~Ripristino() {
            QSettings(QStringLiteral("velarmo"), QStringLiteral("Brezzario")).clear();
            segreti.clear();
        }
    } ripristino{*m_segreti};
    SettingsStore settings;
    const ProfiloAttivo profilo = brevo(limite);
    SMTPConfig config = configPredefinita(Preset::brevo);
    config.username = QStringLiteral("8a1b2c001@smtp-brevo.com");
    config.fromName = QStringLiteral("Ferramenta Rossi");
    config.fromEmail = profilo.fromEmail;
    config.dailyLimit = limite;
    settings.setConfig(config);
    settings.setNomeProfiloAttivo(profilo.nome);
    m_segreti->insert({Keychain::servizio, settings.accountCorrente()}, "xsmtpsib-prova");
    Ambiente ambiente{settings, archivio.store};
    CampaignsView vista(ambiente);
    QVERIFY(mostra(vista));
    vista.seleziona(archivio.campagna.id);
    CampaignDetailView* dettaglio = vista.dettaglio();
    QVERIFY(dettaglio->isVisible());
    auto* avvia = dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"));
    QTEST(avvia->text(), "etichetta");
    QTEST(avvia->isEnabled(), "pronta");
    QTEST(riga(dettaglio, "quota"), "quota");
    QTEST(riga(dettaglio, "attesa"), "attesa");
    QVERIFY(!dettaglio->findChild<QWidget*>(QStringLiteral("nonConfigurato"))->isVisible());
    // The sender's domain is checked as the detail appears; the picture waits for its verdict.
    QTRY_VERIFY_WITH_TIMEOUT(dettaglio->findChild<QWidget*>(QStringLiteral("avvisoDominio"))->isVisible(), 20000);
    const QString tag = QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-');
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-letture-") + tag);

    // The confirm dialog asks for what would go now, and "Annulla" starts nothing.
    if (!avvia->isEnabled())
        return;
    const qsizetype registri = archivio.store.all<SendLog>().size();
    QString titolo;
    QTimer::singleShot(200, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        titolo = box->text();
        TestSupport::salvaSchermata(box, QStringLiteral("campagne-conferma-") + tag);
        for (QAbstractButton* pulsante : box->buttons())
            if (pulsante->text() == QStringLiteral("Annulla"))
                pulsante->click();
    });
    QTest::mouseClick(avvia, Qt::LeftButton);
    QCOMPARE(titolo, QStringLiteral("Inviare %1 messaggi?").arg(l.partiranno));
    QVERIFY(!vista.motore()->isRunning());
    QVERIFY(!dettaglio->cruscotto());
    QCOMPARE(archivio.store.all<SendLog>().size(), registri);
}

// A deleted list: the banner, no recipients, no missing fields, and the counters of what was sent stay.
void TestCampaigns::riferimentiRotti() {
    Archivio archivio(3, QStringLiteral("<p>{{nome}} {{citta}}</p>"));
    LettureCampagna prima = CampaignReadings::leggi(archivio.campagna, archivio.store, brevo(0, 5), false);
    QCOMPARE(prima.campiMancanti, QStringList{"citta"});
    QCOMPARE(
        prima.rigaCampiMancanti(),
        QStringLiteral("Il modello usa campi che questa lista non ha: citta. Verranno sostituiti con testo vuoto."));
    archivio.registra(1, SendStatus::sent, 1, true);
    archivio.registra(1, SendStatus::failed, 1, true);
    archivio.store.remove<ContactList>(archivio.campagna.listId);
    archivio.store.save();

    const LettureCampagna l = CampaignReadings::leggi(archivio.campagna, archivio.store, brevo(0, 5), false);
    QVERIFY(l.riferimentiRotti);
    QVERIFY(!l.listaValida);
    QVERIFY(l.campiMancanti.isEmpty());
    QCOMPARE(l.daContattare, qsizetype(0));
    QCOMPARE(l.giaInviate, qint64(1));
    QCOMPARE(l.errori, qint64(1));
    QVERIFY(!l.pronta);
    QCOMPARE(l.fineprevista, QStringLiteral("—"));
}

void TestCampaigns::dominio_data() {
    QTest::addColumn<QString>("mittente");
    QTest::addColumn<QString>("dominio");
    QTest::newRow("an address") << "negozio@prova.example"
                                << "prova.example";
    QTest::newRow("no @: the whole text") << "prova.example"
                                          << "prova.example";
    QTest::newRow("two @: after the last") << "a@b@ditta.it"
                                           << "ditta.it";
    QTest::newRow("ends with @") << "negozio@"
                                 << "";
}

void TestCampaigns::dominio() {
    QFETCH(QString, mittente);
    QTEST(CampaignReadings::dominioMittente(mittente), "dominio");
    // One message takes one second whatever the pause; none takes none.
    QCOMPARE(CampaignReadings::stima(7.5, 1), 1.0);
    QCOMPARE(CampaignReadings::stima(7.5, 0), 0.0);
    QCOMPARE(CampaignReadings::stima(2.0, 10), 28.0);
}

// One message: "messaggio" and one second whatever the pause. Deleting the selected campaign from the list
// empties the selection and shows the placeholder; its logs go with it.
void TestCampaigns::unMessaggioEdElimina() {
    Archivio archivio(1);
    const LettureCampagna l = CampaignReadings::leggi(archivio.campagna, archivio.store, brevo(0, 12.5), false);
    QCOMPARE(l.partiranno, qint64(1));
    const QList<DatoTondo> dati = l.datiTondi(brevo(0, 12.5));
    QCOMPARE(dati.at(0).dettaglio, QStringLiteral("messaggio"));
    QCOMPARE(dati.at(1).valore, QStringLiteral("12.5"));
    QCOMPARE(l.stimaSecondi, 1.0);
    QCOMPARE(dati.at(2).valore, durataLeggibile(1.0));

    SettingsStore settings;
    Ambiente ambiente{settings, archivio.store};
    CampaignsView vista(ambiente);
    vista.resize(1000, 700);
    vista.show();
    QVERIFY(QTest::qWaitForWindowExposed(&vista));
    vista.seleziona(archivio.campagna.id);
    QVERIFY(vista.dettaglio()->isVisible());
    // Not configured: the start waits for the settings, and says so.
    QVERIFY(!vista.dettaglio()->findChild<QPushButton*>(QStringLiteral("avvia"))->isEnabled());
    QVERIFY(vista.dettaglio()->findChild<QWidget*>(QStringLiteral("nonConfigurato"))->isVisible());
    vista.elimina(archivio.campagna.id);
    QCOMPARE(vista.selezione(), RecordId(0));
    QVERIFY(!vista.dettaglio()->isVisible());
    QVERIFY(archivio.store.all<Campaign>().isEmpty());
    QCOMPARE(vista.elenco()->count(), 0);
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-nessuna-selezionata"));
}

// The whole path on screen: a spreadsheet export imported through the import logic, "Nuova campagna", the
// domain warning from NSD, the confirm dialog's words, a run against aiosmtpd with implicit TLS and AUTH that
// refuses one address at RCPT, and the detail after it.
void TestCampaigns::daCapoAFine() {
    AiosmtpdServer::Options opzioni = AiosmtpdServer::withTls(m_ca, QString::fromLatin1(Loopback::campaignsSmtp));
    opzioni.rejectAtRcpt = {{QStringLiteral("^nessuno@"), QStringLiteral("550 5.1.1 Utente sconosciuto")}};
    AiosmtpdServer server(opzioni);
    QVERIFY2(server.start(), qPrintable(server.errorString()));

    TempStore temp;
    Store& store = *temp.store;
    SettingsStore settings;
    SMTPConfig config = server.config();
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    settings.setConfig(config);
    m_segreti->insert({Keychain::servizio, settings.accountCorrente()}, AiosmtpdServer::Options().password.toUtf8());
    Ambiente ambiente{settings, store};

    QTemporaryDir cartella;
    QFile file(cartella.filePath(QStringLiteral("clienti.csv")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Elenco clienti 2026;;\r\nNome;Email;Citta\r\nAnna;anna@ditta.it;Bari\r\nBruno;bruno@ditta.it;Lecce\r\n"
               "Carla;nessuno@ditta.it;Roma\r\nDario;;Roma\r\n");
    file.close();
    LetturaFile letto = leggiFile(file.fileName());
    QVERIFY2(letto.pending, qPrintable(letto.errore));
    ImportSheetState foglio(std::move(*letto.pending));
    QCOMPARE(foglio.rigaIntestazione(), qsizetype(1));
    QCOMPARE(foglio.colonnaEmail, QStringLiteral("Email"));
    foglio.scartaSenzaEmail = false;
    foglio.importa(store);
    MessageTemplate modello(QStringLiteral("Saldi"), QStringLiteral("Saldi per {{Nome}}"),
                            QStringLiteral("<p>Gentile {{Nome}} di {{Citta}}</p>"));
    store.insert(modello);
    store.save();

    CampaignsView vista(ambiente);
    QVERIFY(mostra(vista));
    QVERIFY(vista.pulsanteNuova()->isEnabled());
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-vuoto"));

    QTest::mouseClick(vista.pulsanteNuova(), Qt::LeftButton);
    const QList<Campaign> campagne = store.all<Campaign>();
    QCOMPARE(campagne.size(), 1);
    QVERIFY(campagne.first().name.startsWith(QStringLiteral("Campagna del ")));
    QCOMPARE(vista.selezione(), campagne.first().id);
    CampaignDetailView* dettaglio = vista.dettaglio();
    QVERIFY(dettaglio->isVisible());
    const LettureCampagna& l = dettaglio->letture();
    QCOMPARE(l.daContattare, qsizetype(3));
    QCOMPARE(l.righeEsclusi(), QStringList{"1 indirizzo non valido"});
    QCOMPARE(l.etichettaAvvio, QStringLiteral("Avvia invio (3)"));
    auto* avvia = dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"));
    QCOMPARE(avvia->text(), QStringLiteral("Avvia invio (3)"));
    QVERIFY(avvia->isEnabled());
    QCOMPARE(riga(dettaglio, "quota"), QString());

    // The sender's domain has no SPF, DKIM or DMARC: the warning shows, and stops nothing.
    QTRY_VERIFY_WITH_TIMEOUT(dettaglio->findChild<QWidget*>(QStringLiteral("avvisoDominio"))->isVisible(), 20000);
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-dettaglio-avviso-dominio"));

    // The real confirm dialog: looked at, then answered with its own button.
    QString titolo, testo;
    QTimer::singleShot(200, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        titolo = box->text();
        testo = box->informativeText();
        TestSupport::salvaSchermata(box, QStringLiteral("campagne-conferma"));
        for (QAbstractButton* pulsante : box->buttons())
            if (pulsante->text() == QStringLiteral("Avvia invio"))
                pulsante->click();
    });
    QTest::mouseClick(avvia, Qt::LeftButton);
    QCOMPARE(titolo, QStringLiteral("Inviare 3 messaggi?"));
    QVERIFY2(testo.startsWith(QStringLiteral("Partiranno 3 messaggi da negozio@prova.example con ") +
                              settings.nomeProfiloAttivo() + QStringLiteral(", uno ogni 0.0 secondi (circa ")),
             qPrintable(testo));
    QVERIFY2(testo.contains(QStringLiteral("\n\nAttenzione: il dominio prova.example non è autenticato per ")),
             qPrintable(testo));
    QVERIFY(dettaglio->cruscotto());

    QTRY_VERIFY_WITH_TIMEOUT(!vista.motore()->isRunning() && vista.motore()->processed() == 3, 60000);
    // The screen follows the store within its refresh interval.
    QTRY_VERIFY_WITH_TIMEOUT(dettaglio->letture().giaInviate == 2 && dettaglio->letture().errori == 1, 5000);
    QCOMPARE(server.messages().size(), 2);
    // The address refused for good went to the excluded ones: nobody is left, and the reasons say why.
    QCOMPARE(dettaglio->letture().righeEsclusi(), (QStringList{"1 in lista esclusi", "1 indirizzo non valido"}));
    QCOMPARE(avvia->text(), QStringLiteral("Quota di oggi esaurita"));
    QVERIFY(!avvia->isEnabled());
    const QString elenco = vista.elenco()->itemWidget(vista.elenco()->item(0))->findChildren<QLabel*>().last()->text();
    QVERIFY2(elenco.contains(QStringLiteral("2 inviate")) && elenco.contains(QStringLiteral("1 errori")),
             qPrintable(elenco));
    // The dashboard stays up after the run until the user closes it.
    QVERIFY(dettaglio->cruscotto()->isVisible());
    TestSupport::salvaSchermata(dettaglio->cruscotto(), QStringLiteral("campagne-cruscotto"));
    dettaglio->cruscotto()->close();
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-dopo-invio"));
}

// A run at a pace of one message every 0.4 s: "Pausa" holds it, "Riprendi" goes on, "Interrompi" ends it as
// paused, and the detail shows the running controls meanwhile.
void TestCampaigns::pausaRipresaInterruzione() {
    AiosmtpdServer server(AiosmtpdServer::withTls(m_ca, QString::fromLatin1(Loopback::campaignsSmtp)));
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    Archivio archivio(40);
    SettingsStore settings;
    profiloVerso(server, 0.4, settings);
    Ambiente ambiente{settings, archivio.store};
    CampaignsView vista(ambiente);
    QVERIFY(mostra(vista));
    vista.seleziona(archivio.campagna.id);
    CampaignDetailView* dettaglio = vista.dettaglio();
    QCOMPARE(dettaglio->letture().etichettaAvvio, QStringLiteral("Avvia invio (40)"));
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-dettaglio-pronto"));

    Dialoghi::rispondiDomanda([](const QString&, const QString&) { return 0; });
    dettaglio->chiediAvvio();
    Dialoghi::rispondiDomanda({});
    SendEngine& motore = *vista.motore();
    QTRY_VERIFY_WITH_TIMEOUT(motore.sent() >= 2, 20000);
    dettaglio->cruscotto()->close();
    auto* pausa = dettaglio->findChild<QPushButton*>(QStringLiteral("pausa"));
    QTRY_VERIFY(pausa->isVisible());
    QCOMPARE(pausa->text(), QStringLiteral("Pausa"));
    QVERIFY(!dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"))->isVisible());
    QVERIFY(riga(dettaglio, "statoInvio").startsWith(QStringLiteral("Invio in corso: ")));
    // The detail and the list follow the run within their refresh interval.
    QTRY_VERIFY_WITH_TIMEOUT(dettaglio->letture().giaInviate >= 2, 5000);
    // ditta.it is authenticated: once its check is back, no warning stands above the run.
    QTRY_VERIFY_WITH_TIMEOUT(dettaglio->esitoDNS().has_value(), 20000);
    QCOMPARE(dettaglio->esitoDNS()->dkim.caso, DNSCheck::Esito::ok);
    QVERIFY(!dettaglio->findChild<QWidget*>(QStringLiteral("avvisoDominio"))->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(vista.elenco()
                                 ->itemWidget(vista.elenco()->item(0))
                                 ->findChildren<QLabel*>()
                                 .last()
                                 ->text()
                                 .startsWith(QStringLiteral("In corso")),
                             5000);
    TestSupport::salvaSchermata(&vista, QStringLiteral("campagne-in-corso"));

    QTest::mouseClick(pausa, Qt::LeftButton);
    QVERIFY(motore.isPaused());
    QTRY_COMPARE(pausa->text(), QStringLiteral("Riprendi"));
    // At most the message under way when the pause came goes out.
    const qint64 inPausa = motore.processed();
    QTest::qWait(1500);
    QVERIFY2(motore.processed() <= inPausa + 1, qPrintable(QString::number(motore.processed() - inPausa)));
    const qint64 fermo = motore.processed();
    // The dashboard opened again during the pause shows it, and offers to resume.
    QTest::mouseClick(dettaglio->findChild<QPushButton*>(QStringLiteral("apriCruscotto")), Qt::LeftButton);
    QTRY_VERIFY(dettaglio->cruscotto() && dettaglio->cruscotto()->isVisible());
    SendDashboardView* cruscotto = dettaglio->cruscotto();
    QCOMPARE(cruscotto->findChild<BadgeView*>(QStringLiteral("badgeStato"))->testo(), QStringLiteral("In pausa"));
    QCOMPARE(cruscotto->findChild<QPushButton*>(QStringLiteral("pausa"))->text(), QStringLiteral("Riprendi"));
    QCOMPARE(cruscotto->findChild<QPushButton*>(QStringLiteral("principale"))->text(), QStringLiteral("Nascondi"));
    TestSupport::salvaSchermata(cruscotto, QStringLiteral("campagne-cruscotto-in-pausa"));
    cruscotto->close();
    QVERIFY(motore.isPaused());
    QTest::mouseClick(pausa, Qt::LeftButton);
    QVERIFY(!motore.isPaused());
    QTRY_VERIFY_WITH_TIMEOUT(motore.processed() > fermo, 10000);

    QTest::mouseClick(dettaglio->findChild<QPushButton*>(QStringLiteral("interrompi")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!motore.isRunning(), 10000);
    QCOMPARE(archivio.store.find<Campaign>(archivio.campagna.id)->status(), CampaignStatus::paused);
    QVERIFY(motore.processed() < 40);
    const qint64 restano = 40 - qint64(server.messages().size());
    QTRY_COMPARE(dettaglio->letture().daContattare, qsizetype(restano));
    QCOMPARE(dettaglio->letture().etichettaAvvio, QStringLiteral("Riprendi invio (%1)").arg(restano));
    QTRY_VERIFY(dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"))->isVisible());
}

// The user leaves the section during a run and comes back: the run goes on with the engine of the screen that
// is gone, and the screen made afresh holds the start back until it ends, so nobody gets the message twice.
void TestCampaigns::corsaOltreLaSchermata() {
    AiosmtpdServer server(AiosmtpdServer::withTls(m_ca, QString::fromLatin1(Loopback::campaignsSmtp)));
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    Archivio archivio(30);
    SettingsStore settings;
    profiloVerso(server, 0.3, settings);
    Ambiente ambiente{settings, archivio.store};
    auto prima = std::make_unique<CampaignsView>(ambiente);
    QVERIFY(mostra(*prima));
    prima->seleziona(archivio.campagna.id);
    Dialoghi::rispondiDomanda([](const QString&, const QString&) { return 0; });
    prima->dettaglio()->chiediAvvio();
    Dialoghi::rispondiDomanda({});
    const std::shared_ptr<SendEngine> motore = prima->motore();
    QTRY_VERIFY_WITH_TIMEOUT(motore->sent() >= 1, 20000);
    prima->dettaglio()->cruscotto()->close();
    prima.reset();
    QVERIFY(motore->isRunning());

    CampaignsView dopo(ambiente);
    QVERIFY(mostra(dopo));
    dopo.seleziona(archivio.campagna.id);
    CampaignDetailView* dettaglio = dopo.dettaglio();
    auto* avvia = dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"));
    QVERIFY(avvia->isVisible());
    QVERIFY(!avvia->isEnabled());
    QVERIFY(dettaglio->findChild<QWidget*>(QStringLiteral("altroInvio"))->isVisible());
    TestSupport::salvaSchermata(&dopo, QStringLiteral("campagne-invio-in-secondo-piano"));
    // Even asked directly, the new screen's engine sends nobody while the other run goes on.
    QCoro::waitFor(dopo.motore()->run(*archivio.store.find<Campaign>(archivio.campagna.id), settings, archivio.store));
    QCOMPARE(dopo.motore()->sent(), qint64(0));

    motore->cancel();
    QTRY_VERIFY_WITH_TIMEOUT(!motore->isRunning(), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!dettaglio->findChild<QWidget*>(QStringLiteral("altroInvio"))->isVisible(), 5000);
    const qint64 restano = 30 - qint64(server.messages().size());
    QTRY_COMPARE(avvia->text(), QStringLiteral("Riprendi invio (%1)").arg(restano));
    QVERIFY(avvia->isEnabled());
    QStringList destinatari;
    for (const auto& messaggio : server.messages())
        destinatari += messaggio.rcptTos;
    QCOMPARE(destinatari.size(), QSet<QString>(destinatari.cbegin(), destinatari.cend()).size());
}

BREZZARIO_TEST_MAIN(TestCampaigns)
#include "tst_campaigns.moc"
