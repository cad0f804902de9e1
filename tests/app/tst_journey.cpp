// A new user's whole journey through the real main window, section by section from the sidebar: a profile
// and its connection test, a spreadsheet export, a template with fields, a picture, a button and an attachment,
// its preview and a test send, a campaign run to its end against a real server, the history, the excluded
// addresses, and the demo data put in and taken out around the user's own. The user guide's pictures of these
// steps are this test's screenshots.
#include "AiosmtpdServer.h"
#include "Loopback.h"
#include "MemoryKeychain.h"
#include "NsdServer.h"
#include "Screenshot.h"
#include "TestCA.h"

#include "app/BrezzarioApp.h"
#include "app/MainWindow.h"
#include "checks/Dig.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "screens/campaigns/CampaignDetailView.h"
#include "screens/campaigns/CampaignsView.h"
#include "screens/dashboard/SendDashboardView.h"
#include "screens/editor/EditorController.h"
#include "screens/editor/Popovers.h"
#include "screens/editor/RichTextEditor.h"
#include "screens/history/HistoryModel.h"
#include "screens/history/HistoryView.h"
#include "screens/lists/ImportSheet.h"
#include "screens/lists/ListDetailView.h"
#include "screens/lists/ListsView.h"
#include "screens/settings/SettingsModel.h"
#include "screens/settings/SettingsView.h"
#include "screens/templates/PreviewSheet.h"
#include "screens/templates/TemplatesView.h"
#include "settings/Keychain.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"
#include "ui/Dialoghi.h"
#include "ui/Riquadri.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLinearGradient>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace {

template <class T> T* trova(QWidget* radice, const QString& nome) {
    return radice->findChild<T*>(nome);
}

// A wide picture of the kind a shop puts at the top of a message: a coloured band with a headline.
QImage locandina(int larghezza, int altezza) {
    QImage immagine(larghezza, altezza, QImage::Format_RGB32);
    QPainter pittore(&immagine);
    QLinearGradient sfondo(0, 0, larghezza, altezza);
    sfondo.setColorAt(0, QColor(0x10, 0xa9, 0x9b));
    sfondo.setColorAt(1, QColor(0x1a, 0x57, 0xdb));
    pittore.fillRect(immagine.rect(), sfondo);
    QFont carattere = pittore.font();
    carattere.setPixelSize(altezza / 4);
    carattere.setBold(true);
    pittore.setFont(carattere);
    pittore.setPen(Qt::white);
    pittore.drawText(immagine.rect(), Qt::AlignCenter, QStringLiteral("Saldi di primavera"));
    return immagine;
}

void digita(QLineEdit* campo, const QString& testo) {
    campo->setFocus();
    campo->selectAll();
    QTest::keyClick(campo, Qt::Key_Backspace);
    // QTest types ASCII only; anything else arrives as a paste would.
    if (std::all_of(testo.cbegin(), testo.cend(), [](QChar c) { return c.unicode() < 0x80; }))
        QTest::keyClicks(campo, testo);
    else
        campo->insert(testo);
    QTest::keyClick(campo, Qt::Key_Tab);
}

} // namespace

class TestJourney : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void viaggio();

private:
    // Clicks a section in the sidebar, as a person does, and hands back its screen.
    template <class T> T* vai(const char* sezione) {
        QTest::mouseClick(
            trova<QWidget>(&m_app->finestraPrincipale(), QStringLiteral("voce-") + QLatin1String(sezione)),
            Qt::LeftButton);
        return qobject_cast<T*>(m_app->finestraPrincipale().schermata());
    }
    void foto(const QString& passo) {
        TestSupport::salvaSchermata(&m_app->finestraPrincipale(), QStringLiteral("viaggio-") + passo);
    }

    TestCA m_ca;
    std::unique_ptr<NsdServer> m_nsd;
    QTemporaryDir m_cartella;
    std::unique_ptr<BrezzarioApp> m_app;
};

void TestJourney::initTestCase() {
    BrezzarioApp::preparaApplicazione();
    Keychain::setBackend(std::make_unique<MemoryKeychain>());
    m_nsd = std::make_unique<NsdServer>(QString::fromLatin1(Loopback::journeyDns));
    QVERIFY2(m_nsd->start({{QStringLiteral("ditta.it"), QStringLiteral("@ IN MX 10 mx\nmx IN A 192.0.2.8\n")},
                           {QStringLiteral("prova.example"), QStringLiteral("@ IN MX 10 mx\nmx IN A 192.0.2.7\n")}}),
             qPrintable(m_nsd->error()));
    Dig::setResolverForTests(QString::fromLatin1(Loopback::journeyDns));
    SendEngine::setControlloDominiPerTest(QString::fromLatin1(Loopback::journeyDns));
    SettingsModel::setOpzioniSessionePerTest(AiosmtpdServer::sessionOptions(&m_ca));
}

void TestJourney::viaggio() {
    AiosmtpdServer::Options opzioni = AiosmtpdServer::withTls(m_ca, QString::fromLatin1(Loopback::journeySmtp));
    opzioni.rejectAtRcpt = {{QStringLiteral("^nessuno@"), QStringLiteral("550 5.1.1 Utente sconosciuto")}};
    AiosmtpdServer server(opzioni);
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    const QString percorso = m_cartella.filePath(QStringLiteral("brezzario.sqlite"));
    m_app = std::make_unique<BrezzarioApp>([percorso] { return Store::open(percorso); });
    MainWindow& finestra = m_app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    Store& store = m_app->store();

    // 0. An empty program opens on the lists, with nothing chosen and the import a click away.
    QCOMPARE(finestra.windowTitle(), QStringLiteral("Liste CSV"));
    auto* iniziale = qobject_cast<ListsView*>(finestra.schermata());
    QVERIFY(iniziale);
    QVERIFY(trova<QWidget>(iniziale, QStringLiteral("nessunaLista"))->isVisible());
    QVERIFY(trova<QPushButton>(iniziale, QStringLiteral("importaCSV"))->isEnabled());
    foto(QStringLiteral("0-avvio"));

    // 1. A profile on the settings screen, and its connection test against the real server.
    auto* impostazioni = vai<SettingsView>("impostazioni");
    QVERIFY(impostazioni);
    QComboBox* provider = trova<QComboBox>(impostazioni, QStringLiteral("provider"));
    provider->setCurrentIndex(provider->count() - 1);
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("host")), QString::fromLatin1(Loopback::journeySmtp));
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("porta")), QString::number(server.options().port));
    trova<QCheckBox>(impostazioni, QStringLiteral("tls"))->setChecked(true);
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("nomeUtente")), server.options().username);
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("password")), server.options().password);
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("indirizzoMittente")),
           QStringLiteral("negozio@prova.example"));
    digita(trova<QLineEdit>(impostazioni, QStringLiteral("limite")), QStringLiteral("0"));
    QTest::mouseClick(trova<QPushButton>(impostazioni, QStringLiteral("provaConnessione")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!impostazioni->provaInCorso(), 20000);
    QVERIFY(impostazioni->provaRiuscita());
    foto(QStringLiteral("1-impostazioni"));
    SMTPConfig config = m_app->settings().config();
    QCOMPARE(config.host, QString::fromLatin1(Loopback::journeySmtp));
    config.delayBetweenMessages = 0; // the slider's own steps are tested with the settings screen
    m_app->settings().setConfig(config);

    // 2. A spreadsheet export as Excel writes it: a title row and an empty one above the header, semicolons,
    // a comma inside a name, a row without an address, and an address the server refuses.
    QFile file(m_cartella.filePath(QStringLiteral("clienti.csv")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("Elenco clienti al 1 marzo;;;\r\n;;;\r\nNome;Azienda;Email;Città\r\n"
                              "Anna;Bianchi & Figli Snc;anna@ditta.it;Bari\r\n"
                              "Bruno;\"Rossi, Verdi Srl\";bruno@ditta.it;Lecce\r\n"
                              "Carla;Gallo Impianti;nessuno@ditta.it;Roma\r\n"
                              "Dario;Ferri Costruzioni;;Roma\r\n")
                   .toUtf8());
    file.close();
    auto* liste = vai<ListsView>("liste");
    QVERIFY(liste);
    Dialoghi::rispondiApertura([&] { return file.fileName(); });
    QTest::mouseClick(trova<QPushButton>(liste, QStringLiteral("importaCSV")), Qt::LeftButton);
    Dialoghi::rispondiApertura({});
    QTRY_VERIFY(liste->foglio() && liste->foglio()->isVisible());
    // The header found under the title (the empty row isn't counted), the address column by its name.
    QCOMPARE(trova<QSpinBox>(liste->foglio(), QStringLiteral("rigaIntestazione"))->text(), QStringLiteral("riga 2"));
    QCOMPARE(trova<QComboBox>(liste->foglio(), QStringLiteral("colonnaEmail"))->currentText(), QStringLiteral("Email"));
    QCOMPARE(trova<QLabel>(liste->foglio(), QStringLiteral("piede"))->text(),
             QStringLiteral("Verranno importati 3 destinatari validi."));
    digita(trova<QLineEdit>(liste->foglio(), QStringLiteral("nomeLista")), QStringLiteral("Clienti di marzo"));
    digita(trova<QLineEdit>(liste->foglio(), QStringLiteral("contrassegno")), QStringLiteral("clienti 2026"));
    TestSupport::salvaSchermata(liste->foglio(), QStringLiteral("viaggio-2-importa"));
    QTest::mouseClick(trova<QPushButton>(liste->foglio(), QStringLiteral("importa")), Qt::LeftButton);
    QTRY_VERIFY(!liste->foglio());
    QCOMPARE(store.all<ContactList>().size(), 1);
    const ContactList lista = store.all<ContactList>().first();
    QCOMPARE(lista.name, QStringLiteral("Clienti di marzo"));
    QCOMPARE(lista.tag, QStringLiteral("clienti 2026"));
    QCOMPARE(store.rowCount(lista.id), 3);
    // The new list is shown once its rows are read beside the window.
    QVERIFY(liste->dettaglio());
    QTRY_COMPARE(trova<QLabel>(liste->dettaglio(), QStringLiteral("conteggio"))->text(),
                 QStringLiteral("3 destinatari validi su 3"));
    foto(QStringLiteral("2-lista"));

    // 3. A template with two fields from the side panel and an attachment; its preview on a row.
    auto* modelli = vai<TemplatesView>("modelli");
    QVERIFY(modelli);
    QTest::mouseClick(trova<QToolButton>(modelli, QStringLiteral("nuovoModello")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(modelli->editor()->isReady(), 30000);
    digita(trova<QLineEdit>(modelli, QStringLiteral("nomeModello")), QStringLiteral("Saldi di primavera"));
    digita(trova<QLineEdit>(modelli, QStringLiteral("oggetto")), QStringLiteral("Offerte di primavera"));
    QCOMPARE(store.all<MessageTemplate>().first().name, QStringLiteral("Saldi di primavera"));
    QTRY_VERIFY(trova<QWidget>(modelli, QStringLiteral("chip-Nome")));
    // The text typed over the new template's, with two fields put at the caret from the side panel.
    QWidget* pagina = modelli->findChild<RichTextEditor*>()->focusProxy();
    QVERIFY(pagina);
    QTest::mouseClick(pagina, Qt::LeftButton, {}, QPoint(120, 40));
    QTest::keyClick(pagina, Qt::Key_A, Qt::ControlModifier);
    // Keys reach the page a moment after they are sent: each chip waits for the text before it, as a person's
    // click comes after the typing.
    auto scritto = [&](const QString& parte) { return store.all<MessageTemplate>().first().html.contains(parte); };
    QTest::keyClicks(pagina, QStringLiteral("Gentile "));
    QTRY_VERIFY_WITH_TIMEOUT(scritto(QStringLiteral("Gentile")), 10000);
    QTest::mouseClick(trova<QAbstractButton>(modelli, QStringLiteral("chip-Nome")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(scritto(QStringLiteral("{{Nome}}")), 10000);
    QTest::keyClick(pagina, Qt::Key_Comma);
    QTest::keyClick(pagina, Qt::Key_Return);
    QTest::keyClicks(pagina, QStringLiteral("per i nostri clienti di "));
    QTRY_VERIFY_WITH_TIMEOUT(scritto(QStringLiteral("clienti di")), 10000);
    QTest::mouseClick(trova<QAbstractButton>(modelli, QStringLiteral("chip-Città")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(scritto(QStringLiteral("{{Città}}")), 10000);
    QTest::keyClicks(pagina, QStringLiteral(" abbiamo preparato gli sconti di primavera, fino a fine mese."));
    QTest::keyClick(pagina, Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(store.all<MessageTemplate>().first().html.contains(QStringLiteral("fine mese.")), 10000);
    const QString testo = store.all<MessageTemplate>().first().html;
    QVERIFY2(testo.contains(QStringLiteral("Gentile&nbsp;{{Nome}},")), qPrintable(testo));
    QVERIFY2(testo.contains(QStringLiteral("clienti di&nbsp;{{Città}} abbiamo")), qPrintable(testo));
    QVERIFY2(!testo.contains(QStringLiteral("scrivi qui")), qPrintable(testo));
    // A picture from the toolbar, made smaller and stored in the template itself.
    const QString locandinaSaldi = m_cartella.filePath(QStringLiteral("saldi.png"));
    QVERIFY(locandina(2400, 600).save(locandinaSaldi));
    Dialoghi::rispondiApertura([&] { return locandinaSaldi; });
    QTest::mouseClick(trova<QToolButton>(modelli, QStringLiteral("immagine")), Qt::LeftButton);
    Dialoghi::rispondiApertura({});
    QTRY_VERIFY_WITH_TIMEOUT(
        store.all<MessageTemplate>().first().html.contains(QStringLiteral("<img src=\"data:image/")), 10000);
    // A button from its window, filled in as a person does.
    QTimer::singleShot(0, [] {
        auto* finestra = qobject_cast<ButtonPopover*>(QApplication::activeModalWidget());
        if (!finestra)
            return;
        digita(finestra->url(), QStringLiteral("https://www.ditta.example/saldi"));
        digita(finestra->etichetta(), QStringLiteral("Guarda le offerte"));
        TestSupport::salvaSchermata(finestra, QStringLiteral("viaggio-3-pulsante"));
        QTest::mouseClick(finestra->inserisci(), Qt::LeftButton);
    });
    QTest::mouseClick(trova<QToolButton>(modelli, QStringLiteral("bottone")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(
        store.all<MessageTemplate>().first().html.contains(QStringLiteral("href=\"https://www.ditta.example/saldi\"")),
        10000);
    const QString corpo = store.all<MessageTemplate>().first().html;
    QVERIFY2(corpo.contains(QStringLiteral("<table role=\"presentation\"")), qPrintable(corpo));
    QVERIFY2(corpo.contains(QStringLiteral(">Guarda le offerte</a>")), qPrintable(corpo));
    QFile listino(m_cartella.filePath(QStringLiteral("listino.pdf")));
    QVERIFY(listino.open(QIODevice::WriteOnly));
    listino.write("%PDF-1.4 listino di primavera" + QByteArray(48000, ' '));
    listino.close();
    Dialoghi::rispondiAperturaMultipla([&] { return QStringList{listino.fileName()}; });
    QTest::mouseClick(trova<QToolButton>(modelli, QStringLiteral("aggiungiAllegati")), Qt::LeftButton);
    Dialoghi::rispondiAperturaMultipla({});
    QCOMPARE(store.attachments(store.all<MessageTemplate>().first().id).size(), 1);
    QTest::mouseClick(trova<QPushButton>(modelli, QStringLiteral("anteprima")), Qt::LeftButton);
    QTRY_VERIFY(modelli->anteprima() && modelli->anteprima()->isVisible());
    QTRY_VERIFY(modelli->anteprima()->corpoRenderizzato().contains(QStringLiteral("Anna")));
    QTest::qWait(800); // the web view paints the page a moment after it has it
    TestSupport::salvaSchermata(modelli->anteprima(), QStringLiteral("viaggio-3-anteprima"));
    // The test send: one real message to the user's own address, through the real server.
    const SMTPSession::Options sessioneProva = AiosmtpdServer::sessionOptions(&m_ca);
    modelli->anteprima()->motore()->setFabbricaSessionePerTest([sessioneProva](const SMTPConfig& c, const QString& p) {
        return std::make_unique<SMTPSession>(c, p, sessioneProva);
    });
    auto* indirizzoProva = trova<QLineEdit>(modelli->anteprima(), QStringLiteral("indirizzoProva"));
    indirizzoProva->setFocus();
    QTest::keyClicks(indirizzoProva, QStringLiteral("titolare@ditta.it"));
    QTest::mouseClick(trova<QPushButton>(modelli->anteprima(), QStringLiteral("inviaProva")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!modelli->anteprima()->invioInCorso(), 30000);
    QCOMPARE(modelli->anteprima()->esito().value_or(QString()),
             QStringLiteral("Messaggio di prova inviato a titolare@ditta.it."));
    QCOMPARE(server.messages().size(), 1);
    QCOMPARE(server.messages().first().rcptTos, QStringList{"titolare@ditta.it"});
    TestSupport::salvaSchermata(modelli->anteprima(), QStringLiteral("viaggio-3-prova"));
    modelli->anteprima()->close();
    foto(QStringLiteral("3-modello"));

    // 4. A campaign, confirmed, run to its end; the dashboard closed.
    auto* campagne = vai<CampaignsView>("campagne");
    QVERIFY(campagne);
    const SMTPSession::Options sessione = AiosmtpdServer::sessionOptions(&m_ca);
    campagne->motore()->setFabbricaSessionePerTest(
        [sessione](const SMTPConfig& c, const QString& p) { return std::make_unique<SMTPSession>(c, p, sessione); });
    QTest::mouseClick(campagne->pulsanteNuova(), Qt::LeftButton);
    CampaignDetailView* dettaglio = campagne->dettaglio();
    QCOMPARE(dettaglio->letture().etichettaAvvio, QStringLiteral("Avvia invio (3)"));
    Dialoghi::rispondiDomanda([](const QString&, const QString&) { return 0; });
    QTest::mouseClick(trova<QPushButton>(dettaglio, QStringLiteral("avvia")), Qt::LeftButton);
    Dialoghi::rispondiDomanda({});
    QTRY_VERIFY_WITH_TIMEOUT(!campagne->motore()->isRunning() && campagne->motore()->processed() == 3, 60000);
    QVERIFY(dettaglio->cruscotto());
    TestSupport::salvaSchermata(dettaglio->cruscotto(), QStringLiteral("viaggio-4-cruscotto"));
    dettaglio->cruscotto()->close();
    QCOMPARE(server.messages().size(), 3); // the test and two of the three
    foto(QStringLiteral("4-campagna"));

    // 5. Every outcome in the history, the refused address excluded, each row's last outcome.
    auto* storico = vai<HistoryView>("storico");
    QVERIFY(storico);
    QTRY_COMPARE(storico->modello()->righe(), qint64(4));
    foto(QStringLiteral("5-storico"));
    vai<QWidget>("esclusi");
    const QList<Suppression> esclusi = store.all<Suppression>();
    QCOMPARE(esclusi.size(), 1);
    QCOMPARE(esclusi.first().email, QStringLiteral("nessuno@ditta.it"));
    QCOMPARE(esclusi.first().motivo(), MotivoEsclusione::casellaInesistente);
    foto(QStringLiteral("6-esclusi"));
    QHash<QString, std::optional<SendStatus>> ultimi;
    for (const ContactRow& riga : store.rows(lista.id))
        ultimi.insert(riga.email, riga.ultimoEsito());
    QCOMPARE(ultimi.value(QStringLiteral("anna@ditta.it")), std::optional(SendStatus::sent));
    QCOMPARE(ultimi.value(QStringLiteral("nessuno@ditta.it")), std::optional(SendStatus::failed));

    // A second run has nobody left: the button says so and stays off.
    campagne = vai<CampaignsView>("campagne");
    campagne->seleziona(store.all<Campaign>().first().id);
    QCOMPARE(campagne->dettaglio()->letture().daContattare, qsizetype(0));
    QVERIFY(!trova<QPushButton>(campagne->dettaglio(), QStringLiteral("avvia"))->isEnabled());

    // 6. The whole demo scenario, seen on the screens, then taken away leaving the user's data alone.
    impostazioni = vai<SettingsView>("impostazioni");
    QTest::mouseClick(trova<QPushButton>(impostazioni, QStringLiteral("esempioScenario")), Qt::LeftButton);
    QCOMPARE(store.all<ContactList>().size(), 2);
    QCOMPARE(store.all<Campaign>().size(), 2);
    QCOMPARE(store.all<SendLog>().size(), 24);
    QCOMPARE(store.all<Suppression>().size(), 8);
    auto* esitoEsempio = trova<QLabel>(impostazioni, QStringLiteral("esitoEsempio"));
    QCOMPARE(esitoEsempio->text(), QStringLiteral("Creata la campagna \"Presentazione di primavera (esempio)\" con 20 "
                                                  "invii nello storico e 7 esclusi dimostrativi."));
    impostazioni->scorrimento()->ensureWidgetVisible(esitoEsempio, 0, 160);
    foto(QStringLiteral("7-scenario-impostazioni"));
    storico = vai<HistoryView>("storico");
    QTRY_COMPARE(storico->modello()->righe(), qint64(24));
    foto(QStringLiteral("7-scenario-storico"));
    // The demo's excluded addresses under their kinds, beside the user's own; one read in detail.
    vai<QWidget>("esclusi");
    auto* tabellaEsclusi = trova<QTableView>(&finestra, QStringLiteral("tabellaEsclusi"));
    QTRY_COMPARE(tabellaEsclusi->model()->rowCount(), 8);
    for (const char* tipo :
         {"casellaInesistente", "dominioInesistente", "dominioSenzaPosta", "rifiutatoDalServer", "importato"})
        QTRY_VERIFY2(trova<QWidget>(&finestra, QStringLiteral("riquadro-") + QLatin1String(tipo))->isVisible(), tipo);
    const QString motivoDemo =
        QStringLiteral("rifiutato dal server: 550 5.1.1 Recipient address rejected: User unknown");
    int scelta = -1;
    for (int riga = 0; riga < tabellaEsclusi->model()->rowCount(); ++riga)
        if (tabellaEsclusi->model()->index(riga, 0).data().toString() != QStringLiteral("nessuno@ditta.it") &&
            tabellaEsclusi->model()->index(riga, 1).data().toString() == QStringLiteral("Casella inesistente"))
            scelta = riga;
    QVERIFY(scelta >= 0);
    tabellaEsclusi->selectRow(scelta);
    QTRY_VERIFY(trova<QWidget>(&finestra, QStringLiteral("togliEscluso"))->isVisible());
    QCOMPARE(trova<QLabel>(&finestra, QStringLiteral("rispostaDettaglio"))->text(), motivoDemo);
    QVERIFY(trova<QLabel>(&finestra, QStringLiteral("avvisoDettaglio"))->isVisible());
    foto(QStringLiteral("7-scenario-esclusi"));
    vai<QWidget>("campagne");
    foto(QStringLiteral("7-scenario-campagne"));
    impostazioni = vai<SettingsView>("impostazioni");
    QTest::mouseClick(trova<QPushButton>(impostazioni, QStringLiteral("esempioRimuovi")), Qt::LeftButton);
    // One campaign (its 20 logs go with it), one list, one template and 7 excluded addresses.
    QCOMPARE(trova<QLabel>(impostazioni, QStringLiteral("esitoEsempio"))->text(),
             QStringLiteral("Rimossi 10 elementi dimostrativi. I dati veri non sono stati toccati."));
    QCOMPARE(store.all<ContactList>().size(), 1);
    QCOMPARE(store.all<ContactList>().first().id, lista.id);
    QCOMPARE(store.rowCount(lista.id), 3);
    QCOMPARE(store.all<MessageTemplate>().size(), 1);
    QCOMPARE(store.all<Campaign>().size(), 1);
    QCOMPARE(store.all<SendLog>().size(), 4);
    QCOMPARE(store.suppressedEmails(), QSet<QString>{"nessuno@ditta.it"});
    vai<QWidget>("liste");
    QTest::qWait(500); // the lists' progress is read beside the window
    foto(QStringLiteral("8-rimossi"));
    m_app.reset();
}

BREZZARIO_TEST_MAIN(TestJourney)
#include "tst_journey.moc"
