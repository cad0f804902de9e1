// A new user's whole journey through the real main window, section by section from the sidebar: a profile
// and its connection test, a spreadsheet export, a template with fields and an attachment, a campaign run to
// its end against a real server, the history, the excluded addresses, and the demo data put in and taken out
// around the user's own.
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
#include "screens/history/HistoryModel.h"
#include "screens/history/HistoryView.h"
#include "screens/lists/ImportSheet.h"
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

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <algorithm>

namespace {

template <class T> T* trova(QWidget* radice, const QString& nome) {
    return radice->findChild<T*>(nome);
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

    // 2. A spreadsheet export with a title row and an address the server refuses.
    QFile file(m_cartella.filePath(QStringLiteral("clienti.csv")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Elenco clienti al 1 marzo;;\r\nNome;Email;Citta\r\nAnna;anna@ditta.it;Bari\r\n"
               "Bruno;bruno@ditta.it;Lecce\r\nCarla;nessuno@ditta.it;Roma\r\n");
    file.close();
    auto* liste = vai<ListsView>("liste");
    QVERIFY(liste);
    Dialoghi::rispondiApertura([&] { return file.fileName(); });
    QTest::mouseClick(trova<QPushButton>(liste, QStringLiteral("importaCSV")), Qt::LeftButton);
    Dialoghi::rispondiApertura({});
    QTRY_VERIFY(liste->foglio() && liste->foglio()->isVisible());
    QTest::mouseClick(trova<QPushButton>(liste->foglio(), QStringLiteral("importa")), Qt::LeftButton);
    QTRY_VERIFY(!liste->foglio());
    QCOMPARE(store.all<ContactList>().size(), 1);
    const ContactList lista = store.all<ContactList>().first();
    QCOMPARE(store.rowCount(lista.id), 3);
    foto(QStringLiteral("2-lista"));

    // 3. A template with two fields from the side panel and an attachment; its preview on a row.
    auto* modelli = vai<TemplatesView>("modelli");
    QVERIFY(modelli);
    QTest::mouseClick(trova<QToolButton>(modelli, QStringLiteral("nuovoModello")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(modelli->editor()->isReady(), 30000);
    digita(trova<QLineEdit>(modelli, QStringLiteral("oggetto")), QStringLiteral("Novità per voi"));
    QTRY_VERIFY(trova<QWidget>(modelli, QStringLiteral("chip-Nome")));
    QTest::mouseClick(trova<QAbstractButton>(modelli, QStringLiteral("chip-Nome")), Qt::LeftButton);
    QTest::mouseClick(trova<QAbstractButton>(modelli, QStringLiteral("chip-Citta")), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(store.all<MessageTemplate>().first().html.contains(QStringLiteral("{{Citta}}")), 10000);
    QVERIFY(store.all<MessageTemplate>().first().html.contains(QStringLiteral("{{Nome}}")));
    QFile listino(m_cartella.filePath(QStringLiteral("listino.pdf")));
    QVERIFY(listino.open(QIODevice::WriteOnly));
    listino.write("%PDF-1.4 listino di primavera");
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
    QCOMPARE(server.messages().size(), 2);
    foto(QStringLiteral("4-campagna"));

    // 5. Every outcome in the history, the refused address excluded, each row's last outcome.
    auto* storico = vai<HistoryView>("storico");
    QVERIFY(storico);
    QTRY_COMPARE(storico->modello()->righe(), qint64(3));
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
    QCOMPARE(store.all<SendLog>().size(), 23);
    QCOMPARE(store.all<Suppression>().size(), 8);
    storico = vai<HistoryView>("storico");
    QTRY_COMPARE(storico->modello()->righe(), qint64(23));
    foto(QStringLiteral("7-scenario-storico"));
    vai<QWidget>("campagne");
    foto(QStringLiteral("7-scenario-campagne"));
    impostazioni = vai<SettingsView>("impostazioni");
    QTest::mouseClick(trova<QPushButton>(impostazioni, QStringLiteral("esempioRimuovi")), Qt::LeftButton);
    QCOMPARE(store.all<ContactList>().size(), 1);
    QCOMPARE(store.all<ContactList>().first().id, lista.id);
    QCOMPARE(store.rowCount(lista.id), 3);
    QCOMPARE(store.all<MessageTemplate>().size(), 1);
    QCOMPARE(store.all<Campaign>().size(), 1);
    QCOMPARE(store.all<SendLog>().size(), 3);
    QCOMPARE(store.suppressedEmails(), QSet<QString>{"nessuno@ditta.it"});
    vai<QWidget>("liste");
    QTest::qWait(500); // the lists' progress is read beside the window
    foto(QStringLiteral("8-rimossi"));
    m_app.reset();
}

BREZZARIO_TEST_MAIN(TestJourney)
#include "tst_journey.moc"
