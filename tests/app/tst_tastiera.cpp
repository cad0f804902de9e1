// The program from the keyboard, through the real main window: Esc closes each sheet and writes nothing, and
// Tab walks every form in the order a person reads it.
#include "GiroTab.h"
#include "MemoryKeychain.h"
#include "Screenshot.h"
#include "TempStore.h"
#include "TestEnvironment.h"

#include "app/BrezzarioApp.h"
#include "app/MainWindow.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "screens/campaigns/CampaignDetailView.h"
#include "screens/campaigns/CampaignsView.h"
#include "screens/lists/ImportSheet.h"
#include "screens/lists/ListDetailView.h"
#include "screens/lists/ListsView.h"
#include "screens/templates/PreviewSheet.h"
#include "screens/templates/TemplatesView.h"
#include "settings/Keychain.h"
#include "settings/SettingsStore.h"
#include "ui/Dialoghi.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEngineView>

namespace {

// What the store holds, in one line, to see that a closed sheet left it as it was.
QString contenuto(Store& store) {
    QStringList parti;
    for (const MessageTemplate& modello : store.all<MessageTemplate>())
        parti << QStringLiteral("modello %1 %2 %3").arg(modello.name, modello.subject, modello.html);
    for (const Campaign& campagna : store.all<Campaign>())
        parti << QStringLiteral("campagna %1 %2").arg(campagna.name, rawValue(campagna.status()));
    parti << QStringLiteral("liste %1 invii %2 esclusi %3")
                 .arg(store.all<ContactList>().size())
                 .arg(store.all<SendLog>().size())
                 .arg(store.all<Suppression>().size());
    return parti.join(u'\n');
}

} // namespace

class TestTastiera : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        BrezzarioApp::preparaApplicazione();
        Keychain::setBackend(std::make_unique<MemoryKeychain>());
    }
    void cleanup() { m_app.reset(); }

    void escChiudeIFogli_data();
    void escChiudeIFogli();
    void ordineTab_data();
    void ordineTab();

private:
    // The program on a store of its own holding a list of two addresses, a template and a campaign joining
    // them, with a sending profile filled in; its window on screen.
    bool apri();
    template <class T> T* vai(Sezione sezione) {
        m_app->finestraPrincipale().vaiA(sezione);
        return qobject_cast<T*>(m_app->finestraPrincipale().schermata());
    }
    // Opens the sheet a row names and gives it, shown; the confirm dialog is looked for while it runs.
    QWidget* apriFoglio(const QString& foglio);
    QString fileCSV();

    QTemporaryDir m_cartella;
    std::unique_ptr<BrezzarioApp> m_app;
    RecordId m_campagna = 0;
};

bool TestTastiera::apri() {
    static int numero = 0;
    const QString percorso = m_cartella.filePath(QStringLiteral("archivio-%1.sqlite").arg(++numero));
    m_app = std::make_unique<BrezzarioApp>([percorso] { return Store::open(percorso); });
    Store& store = m_app->store();
    m_campagna = TestSupport::campagnaSuLista(store, {"anna@ditta.it", "bruno@ditta.it", "carla@ditta.it"}).id;
    // Tables with rows: an empty one lets Tab through whatever it does with the key.
    for (const char* indirizzo : {"dario@ditta.it", "elena@ditta.it"}) {
        SendLog log(QString::fromLatin1(indirizzo), QStringLiteral("Saldi"), SendStatus::sent, {},
                    QStringLiteral("Brevo"));
        store.insert(log);
        Suppression esclusione(QString::fromLatin1(indirizzo), QStringLiteral("550 casella inesistente"));
        store.insert(esclusione);
    }
    store.save();
    SMTPConfig config = m_app->settings().config();
    config.host = QStringLiteral("127.0.0.1");
    config.username = QStringLiteral("negozio@prova.example");
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.verificaDomini = false;
    m_app->settings().setConfig(config);
    m_app->settings().caricaPasswordSeServe();
    m_app->settings().setPassword(QStringLiteral("segreta"));
    MainWindow& finestra = m_app->finestraPrincipale();
    finestra.show();
    return QTest::qWaitForWindowActive(&finestra);
}

QString TestTastiera::fileCSV() {
    const QString percorso = m_cartella.filePath(QStringLiteral("nuovi.csv"));
    QFile file(percorso);
    if (file.open(QIODevice::WriteOnly))
        file.write("Nome;Email\r\nCarla;carla@ditta.it\r\nDario;dario@ditta.it\r\n");
    return percorso;
}

QWidget* TestTastiera::apriFoglio(const QString& foglio) {
    MainWindow& finestra = m_app->finestraPrincipale();
    if (foglio == QLatin1String("importazione")) {
        auto* liste = vai<ListsView>(Sezione::liste);
        const QString percorso = fileCSV();
        Dialoghi::rispondiApertura([percorso] { return percorso; });
        QTest::keyClick(&finestra, Qt::Key_N, Qt::ControlModifier);
        Dialoghi::rispondiApertura({});
        return QTest::qWaitFor([liste] { return liste->foglio() && liste->foglio()->isVisible(); }) ? liste->foglio()
                                                                                                    : nullptr;
    }
    if (foglio == QLatin1String("anteprima")) {
        auto* modelli = vai<TemplatesView>(Sezione::modelli);
        auto* pulsante = modelli->findChild<QPushButton*>(QStringLiteral("anteprima"));
        if (!QTest::qWaitFor([pulsante] { return pulsante && pulsante->isVisible(); }))
            return nullptr;
        QTest::mouseClick(pulsante, Qt::LeftButton);
        return modelli->anteprima();
    }
    if (foglio == QLatin1String("cruscotto")) {
        QTest::keyClick(&finestra, Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QWidget* cruscotto = finestra.cruscottoSimulazione();
        // While the simulation runs, its pause and stop buttons are stops too.
        return cruscotto && QTest::qWaitFor([cruscotto] {
                   return cruscotto->findChild<QPushButton*>(QStringLiteral("pausa"))->isVisible();
               })
                   ? cruscotto
                   : nullptr;
    }
    if (foglio == QLatin1String("lista")) {
        auto* liste = vai<ListsView>(Sezione::liste);
        liste->seleziona(m_app->store().all<ContactList>().constFirst().id);
        return liste->dettaglio();
    }
    if (foglio == QLatin1String("campagna")) {
        auto* campagne = vai<CampaignsView>(Sezione::campagne);
        campagne->seleziona(m_campagna);
        return campagne->dettaglio();
    }
    return nullptr;
}

void TestTastiera::escChiudeIFogli_data() {
    QTest::addColumn<QString>("foglio");
    QTest::newRow("the import sheet") << "importazione";
    QTest::newRow("the preview and test send") << "anteprima";
    QTest::newRow("the dashboard of a simulation") << "cruscotto";
    QTest::newRow("the question before a run") << "conferma";
}

// Esc closes what is in front and leaves the store as it was: no list imported, no test sent, no run started.
void TestTastiera::escChiudeIFogli() {
    QFETCH(QString, foglio);
    QVERIFY(apri());
    Store& store = m_app->store();
    const QString prima = contenuto(store);
    if (foglio == QLatin1String("conferma")) {
        auto* dettaglio = qobject_cast<CampaignDetailView*>(apriFoglio(QStringLiteral("campagna")));
        QVERIFY(dettaglio);
        auto* avvia = dettaglio->findChild<QPushButton*>(QStringLiteral("avvia"));
        QTRY_VERIFY(avvia->isEnabled());
        QString domanda;
        bool chiusa = false;
        QTimer::singleShot(200, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            domanda = box->text();
            QTest::keyClick(box, Qt::Key_Escape);
            chiusa = !box->isVisible();
        });
        QTest::mouseClick(avvia, Qt::LeftButton);
        QCOMPARE(domanda, QStringLiteral("Inviare 3 messaggi?"));
        QVERIFY(chiusa);
        QVERIFY(!dettaglio->findChild<QWidget*>(QStringLiteral("statoInvio"))->isVisible());
    } else {
        QPointer<QWidget> aperto = apriFoglio(foglio);
        QVERIFY(aperto);
        QTRY_VERIFY(aperto->isVisible());
        // The key goes where the person's typing would: the sheet's own focused field, or the message itself
        // when the person has clicked in the preview.
        QWidget* fuoco = aperto->focusWidget() ? aperto->focusWidget() : aperto.data();
        if (auto* pagina = aperto->findChild<QWebEngineView*>()) {
            QTRY_VERIFY(pagina->focusProxy());
            fuoco = pagina->focusProxy();
            fuoco->setFocus(Qt::MouseFocusReason);
        }
        QTest::keyClick(fuoco, Qt::Key_Escape);
        QTRY_VERIFY(!aperto || !aperto->isVisible());
        if (foglio == QLatin1String("cruscotto")) {
            // The dashboard only hides: the simulation goes on, and a simulation writes nothing.
            const std::shared_ptr<SendEngine> motore = m_app->finestraPrincipale().motoreSimulazione();
            motore->cancel();
            QTRY_VERIFY(!motore->isRunning());
        }
    }
    QCOMPARE(contenuto(store), prima);
}

void TestTastiera::ordineTab_data() {
    QTest::addColumn<QString>("modulo");
    QTest::addColumn<QString>("primo");
    QTest::newRow("settings") << "impostazioni"
                              << "profilo";
    QTest::newRow("the import sheet") << "importazione"
                                      << "nomeLista";
    QTest::newRow("the preview and test send") << "anteprima"
                                               << "sorgente";
    QTest::newRow("a campaign") << "campagna"
                                << "nome";
    QTest::newRow("a template") << "modello"
                                << "nomeModello";
    QTest::newRow("the excluded addresses") << "esclusi"
                                            << "riquadro-tutti";
    QTest::newRow("the history") << "storico"
                                 << "filtroStato";
    QTest::newRow("a list") << "lista"
                            << "nomeLista";
    QTest::newRow("the dashboard of a simulation") << "cruscotto"
                                                   << "scorrimentoProblemi";
}

// From the first field of each form, Tab reaches every field and button in reading order, top to bottom and
// left to right within a row.
void TestTastiera::ordineTab() {
    QFETCH(QString, modulo);
    QFETCH(QString, primo);
    QVERIFY(apri());
    QWidget* contenitore = nullptr;
    if (modulo == QLatin1String("impostazioni"))
        contenitore = vai<QWidget>(Sezione::impostazioni);
    else if (modulo == QLatin1String("modello"))
        contenitore = vai<QWidget>(Sezione::modelli)->findChild<QWidget*>(QStringLiteral("templateEditorPane"));
    else if (modulo == QLatin1String("esclusi"))
        contenitore = vai<QWidget>(Sezione::esclusi);
    else if (modulo == QLatin1String("storico"))
        contenitore = vai<QWidget>(Sezione::storico);
    else
        contenitore = apriFoglio(modulo);
    QVERIFY(contenitore);
    QWidget* inizio = nullptr;
    QVERIFY(QTest::qWaitFor([&] { return (inizio = contenitore->findChild<QWidget*>(primo)) && inizio->isVisible(); }));
    const TestSupport::Giro giroTab = TestSupport::giroDelTab(contenitore, inizio);
    const QList<QWidget*>& giro = giroTab.tappe;
    QStringList nomi;
    for (QWidget* tappa : giro)
        nomi << tappa->objectName() + u':' + QString::fromLatin1(tappa->metaObject()->className());
    const QString trappola = giroTab.trappola ? giroTab.trappola->objectName() : QString();
    QVERIFY2(!giroTab.trappola, qPrintable(QStringLiteral("Tab stays in ") + trappola));
    const QString fuoriOrdine = TestSupport::primoFuoriOrdine(contenitore, giro);
    QVERIFY2(fuoriOrdine.isEmpty(), qPrintable(fuoriOrdine + QStringLiteral("\n") + nomi.join(u'\n')));
    const QStringList mancanti = TestSupport::senzaTappa(contenitore, giro);
    QVERIFY2(mancanti.isEmpty(), qPrintable(mancanti.join(u'\n') + QStringLiteral("\n--\n") + nomi.join(u'\n')));
    QVERIFY2(giro.size() >= 3, qPrintable(nomi.join(u'\n')));
}

BREZZARIO_TEST_MAIN(TestTastiera)
#include "tst_tastiera.moc"
