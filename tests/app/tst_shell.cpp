#include "app/BrezzarioApp.h"
#include "app/CreditsView.h"
#include "app/MainWindow.h"
#include "app/SettingsWindow.h"
#include "app/TitoloBarra.h"
#include "app/VoceSidebar.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "Screenshot.h"
#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Comandi.h"
#include "ui/Dialoghi.h"
#include "ui/Symbols.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

// Receives the addresses that the program hands to the browser.
class Browser : public QObject {
    Q_OBJECT
public:
    QList<QUrl> aperti;
public Q_SLOTS:
    void apri(const QUrl& indirizzo) { aperti.append(indirizzo); }
};

class TestShell : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        BrezzarioApp::preparaApplicazione();
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &m_browser, "apri");
    }

    void cleanup() {
        m_browser.aperti.clear();
        QCoreApplication::setApplicationVersion(QString());
    }

    void startOpensOnLists() {
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        QCOMPARE(finestra.sezione(), Sezione::liste);
        QCOMPARE(finestra.windowTitle(), QStringLiteral("Liste CSV"));
        QCOMPARE(finestra.schermata()->objectName(), QStringLiteral("schermata-liste"));
        QCOMPARE(finestra.minimumSize(), QSize(980, 620));
        QCOMPARE(finestra.size(), QSize(1340, 880));
        auto* sidebar = finestra.findChild<QWidget*>(QStringLiteral("sidebar"));
        QCOMPARE(sidebar->minimumWidth(), 200);
        QCOMPARE(sidebar->maximumWidth(), 280);
        QCOMPARE(sidebar->width(), 216);

        // The six rows stand top to bottom in order, only the first one active, each with an icon that,
        // tinted, draws in the colour asked for and nothing else.
        const QStringList attese = {"liste=Liste CSV",       "modelli=Modelli", "campagne=Campagne",
                                    "storico=Storico invii", "esclusi=Esclusi", "impostazioni=Impostazioni"};
        const QList<VoceSidebar*> voci = sidebar->findChildren<VoceSidebar*>();
        QCOMPARE(voci.size(), attese.size());
        for (int i = 0; i < voci.size(); ++i) {
            QCOMPARE(voci[i]->objectName(), QStringLiteral("voce-") + attese[i].section(u'=', 0, 0));
            QCOMPARE(voci[i]->text(), attese[i].section(u'=', 1));
            QCOMPARE(voci[i]->attiva(), i == 0);
            QVERIFY(i == 0 || voci[i]->y() > voci[i - 1]->y());
            const QString nome = simbolo(voci[i]->voce());
            QVERIFY2(!Symbols::icona(nome).isNull(), qPrintable(nome));
            const QImage tinta = Symbols::pixmap(nome, QColor(200, 0, 0), 24).toImage();
            int inchiostro = 0;
            for (int y = 0; y < tinta.height(); ++y)
                for (int x = 0; x < tinta.width(); ++x)
                    if (tinta.pixelColor(x, y).alpha() > 0) {
                        ++inchiostro;
                        QCOMPARE(tinta.pixelColor(x, y).green(), 0);
                    }
            QVERIFY2(inchiostro > 20, qPrintable(nome));
        }
        QVERIFY(TestSupport::salvaSchermata(&finestra, QStringLiteral("shell-start")));
    }

    void switchingRebuildsTheDetail_data() {
        QTest::addColumn<QStringList>("clic");
        QTest::addColumn<QString>("finale");
        QTest::addColumn<bool>("nuova"); // whether the last click built a new screen
        QTest::newRow("away and back") << QStringList{"campagne", "liste"} << "Liste CSV" << true;
        QTest::newRow("same section keeps its screen") << QStringList{"storico", "storico"} << "Storico invii" << false;
    }

    void switchingRebuildsTheDetail() {
        QFETCH(QStringList, clic);
        QFETCH(QString, finale);
        QFETCH(bool, nuova);
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        QPointer<QWidget> precedente;
        for (const QString& raw : clic) {
            precedente = finestra.schermata();
            auto* voce = finestra.findChild<VoceSidebar*>(QStringLiteral("voce-") + raw);
            QTest::mouseClick(voce, Qt::LeftButton);
            QCOMPARE(rawValue(finestra.sezione()), raw);
            QCOMPARE(finestra.schermata()->objectName(), QStringLiteral("schermata-") + raw);
            QVERIFY(finestra.schermata()->isVisible());
            for (VoceSidebar* altra : finestra.findChildren<VoceSidebar*>())
                QCOMPARE(altra->attiva(), altra == voce);
        }
        QCOMPARE(finestra.windowTitle(), finale);
        // The screen left behind is gone, not hidden; the screen of the same section stays.
        QCOMPARE(precedente.isNull(), nuova);
        QCOMPARE(
            finestra.findChild<QWidget*>(QStringLiteral("dettaglio"))
                ->findChildren<QWidget*>(QRegularExpression(QStringLiteral("^schermata-")), Qt::FindDirectChildrenOnly)
                .size(),
            1);
        QVERIFY(TestSupport::salvaSchermata(&finestra, QStringLiteral("shell-switch-") + QTest::currentDataTag()));
    }

    void sectionShortcuts_data() {
        QTest::addColumn<int>("tasto");
        QTest::addColumn<QString>("sezione");
        QTest::newRow("Ctrl+1") << int(Qt::Key_1) << "liste";
        QTest::newRow("Ctrl+2") << int(Qt::Key_2) << "modelli";
        QTest::newRow("Ctrl+3") << int(Qt::Key_3) << "campagne";
        QTest::newRow("Ctrl+4") << int(Qt::Key_4) << "storico";
        QTest::newRow("Ctrl+5") << int(Qt::Key_5) << "esclusi";
        QTest::newRow("Ctrl+6") << int(Qt::Key_6) << "impostazioni";
    }
    // Each section is reached from the keyboard, whichever section is showing.
    void sectionShortcuts() {
        QFETCH(int, tasto);
        QFETCH(QString, sezione);
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        finestra.show();
        QVERIFY(QTest::qWaitForWindowActive(&finestra));
        finestra.vaiA(sezione == QLatin1String("liste") ? Sezione::esclusi : Sezione::liste);
        QTest::keyClick(&finestra, Qt::Key(tasto), Qt::ControlModifier);
        QCOMPARE(rawValue(finestra.sezione()), sezione);
    }

    void newItemShortcut_data() {
        QTest::addColumn<QString>("sezione");
        QTest::newRow("a list from a file") << "liste";
        QTest::newRow("a template") << "modelli";
        QTest::newRow("a campaign") << "campagne";
    }
    // Ctrl+N makes the section's new item: the file picker for a list, a template, a campaign.
    void newItemShortcut() {
        QFETCH(QString, sezione);
        auto app = apri();
        QVERIFY(app);
        Store& store = app->store();
        ContactList lista(QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email"}, QStringLiteral("email"));
        store.insert(lista);
        MessageTemplate modello(QStringLiteral("Saldi"), QStringLiteral("Saldi"), QStringLiteral("<p>Saldi</p>"));
        store.insert(modello);
        store.save();
        MainWindow& finestra = app->finestraPrincipale();
        finestra.show();
        QVERIFY(QTest::qWaitForWindowActive(&finestra));
        for (Sezione s : tutteLeSezioni())
            if (rawValue(s) == sezione)
                finestra.vaiA(s);
        int richieste = 0;
        Dialoghi::rispondiApertura([&] {
            ++richieste;
            return QString();
        });
        QTest::keyClick(&finestra, Qt::Key_N, Qt::ControlModifier);
        Dialoghi::rispondiApertura({});
        QCOMPARE(richieste, sezione == QLatin1String("liste") ? 1 : 0);
        QCOMPARE(store.all<MessageTemplate>().size(), sezione == QLatin1String("modelli") ? 2 : 1);
        QCOMPARE(store.all<Campaign>().size(), sezione == QLatin1String("campagne") ? 1 : 0);
    }

    void searchShortcut_data() {
        QTest::addColumn<QString>("sezione");
        QTest::newRow("history") << "storico";
        QTest::newRow("excluded addresses") << "esclusi";
    }
    // Ctrl+F puts the cursor in the section's search field.
    void searchShortcut() {
        QFETCH(QString, sezione);
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        finestra.show();
        QVERIFY(QTest::qWaitForWindowActive(&finestra));
        for (Sezione s : tutteLeSezioni())
            if (rawValue(s) == sezione)
                finestra.vaiA(s);
        QLineEdit* campo = dynamic_cast<ConRicerca*>(finestra.schermata())->ricerca();
        QVERIFY(campo);
        QVERIFY(!campo->hasFocus());
        QTest::keyClick(&finestra, Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(campo->hasFocus());
    }

    void deleteKey_data() {
        QTest::addColumn<QString>("sezione");
        QTest::newRow("a list") << "liste";
        QTest::newRow("a template") << "modelli";
        QTest::newRow("a campaign") << "campagne";
    }
    // Delete on a master list deletes its selected item; typed in a field it stays the text's.
    void deleteKey() {
        QFETCH(QString, sezione);
        auto app = apri();
        QVERIFY(app);
        Store& store = app->store();
        TestSupport::campagnaSuLista(store, {"anna@ditta.it"});
        MainWindow& finestra = app->finestraPrincipale();
        finestra.show();
        QVERIFY(QTest::qWaitForWindowActive(&finestra));
        for (Sezione s : tutteLeSezioni())
            if (rawValue(s) == sezione)
                finestra.vaiA(s);
        const auto quanti = [&] {
            return sezione == QLatin1String("liste")     ? store.all<ContactList>().size()
                   : sezione == QLatin1String("modelli") ? store.all<MessageTemplate>().size()
                                                         : store.all<Campaign>().size();
        };
        QAbstractItemView* elenco = nullptr;
        for (QAbstractItemView* vista : finestra.schermata()->findChildren<QAbstractItemView*>())
            if (!vista->findChildren<QAction*>(QStringLiteral("eliminaConCanc")).isEmpty())
                elenco = vista;
        QVERIFY(elenco);
        // Select the item by clicking it, as a person does.
        QTRY_VERIFY(elenco->model()->rowCount() > 0);
        // The last row: a list's master has its group's header first. A click in the moment the lists' progress
        // lands can be lost, so the person clicks again until the row is selected.
        const auto clicca = [&] {
            const int riga = elenco->model()->rowCount() - 1;
            QTest::mouseClick(elenco->viewport(), Qt::LeftButton, {},
                              elenco->visualRect(elenco->model()->index(riga, 0)).center());
            return !elenco->selectionModel()->selectedIndexes().isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(clicca(), 5000);
        QCOMPARE(quanti(), qsizetype(1));
        auto* campo = finestra.findChild<QLineEdit*>();
        if (campo && campo->isVisible()) {
            campo->setFocus();
            QTest::keyClick(campo, Qt::Key_Delete);
            QCOMPARE(quanti(), qsizetype(1));
        }
        elenco->setFocus();
        QTest::keyClick(elenco, Qt::Key_Delete);
        QCOMPARE(quanti(), qsizetype(0));
    }

    // The list under "Scorciatoie da tastiera" names every key the window's actions answer to.
    void shortcutsListed() {
        auto app = apri();
        QVERIFY(app);
        const QString testo = MainWindow::testoScorciatoie();
        int conTasto = 0;
        for (QAction* azione : app->finestraPrincipale().findChildren<QAction*>()) {
            if (azione->shortcut().isEmpty() || azione->objectName() == QLatin1String("azioneEsci") ||
                azione->objectName() == QLatin1String("azioneSimula") ||
                azione->objectName() == QLatin1String("eliminaConCanc"))
                continue;
            ++conTasto;
            const QString tasto = azione->shortcut().toString(QKeySequence::PortableText);
            QVERIFY2(testo.contains(tasto + u'\t'), qPrintable(tasto));
        }
        QCOMPARE(conTasto, 10); // six sections, new, search, settings, guide
        QVERIFY(testo.contains(QStringLiteral("Ctrl+Maiusc+S\tSimula una spedizione")));
        QVERIFY(testo.contains(QStringLiteral("Canc\t")));
    }

    void simulationShortcutTwiceStartsOne() {
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        QApplication::setActiveWindow(&finestra);
        const std::shared_ptr<SendEngine> motore = finestra.motoreSimulazione();
        QVERIFY(!motore->isRunning());

        QTest::keyClick(&finestra, Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(motore->isRunning());
        QCOMPARE(motore->total(), 60);
        QTRY_VERIFY(motore->processed() >= 2);
        const QDateTime inizio = *motore->inizio();
        const quint64 generazione = motore->generazione();

        // Again through the keyboard and through the menu: the first simulation goes on alone.
        QTest::keyClick(QApplication::activeWindow() ? QApplication::activeWindow() : &finestra, Qt::Key_S,
                        Qt::ControlModifier | Qt::ShiftModifier);
        auto* azione = finestra.findChild<QAction*>(QStringLiteral("azioneSimula"));
        azione->trigger();
        QCOMPARE(motore->generazione(), generazione);
        QCOMPARE(*motore->inizio(), inizio);
        QCOMPARE(finestra.findChildren<SendDashboardView*>().size(), 1);
        SendDashboardView* cruscotto = finestra.cruscottoSimulazione();
        QVERIFY(cruscotto && cruscotto->isVisible());
        QCOMPARE(cruscotto->windowModality(), Qt::WindowModal);
        QCOMPARE(cruscotto->motore(), motore);
        QVERIFY(TestSupport::salvaSchermata(cruscotto, QStringLiteral("shell-simulation-running")));

        QTest::mouseClick(cruscotto->findChild<QPushButton*>(QStringLiteral("interrompi")), Qt::LeftButton);
        QTRY_VERIFY(!motore->isRunning());
        QCOMPARE(
            motore->activityLog().count(QStringLiteral("Simulazione avviata: nessun messaggio verrà spedito davvero.")),
            1);
        QTest::mouseClick(cruscotto->findChild<QPushButton*>(QStringLiteral("principale")), Qt::LeftButton);
        QTRY_VERIFY(!finestra.cruscottoSimulazione());
        QVERIFY(!finestra.mostraSimulazione());

        // Once ended, the command starts another simulation on the same engine.
        azione->trigger();
        QVERIFY(motore->isRunning());
        QVERIFY(motore->generazione() != generazione);
        QVERIFY(finestra.cruscottoSimulazione());
        motore->cancel();
        QTRY_VERIFY(!motore->isRunning());
    }

    void linksOpenInTheBrowser_data() {
        QTest::addColumn<QString>("oggetto");
        QTest::addColumn<QString>("indirizzo");
        QTest::newRow("Cerca aggiornamenti…") << "azioneAggiornamenti"
                                              << "https://www.nembrosa.example/brezzario/versioni";
        QTest::newRow("maker's site") << "sitoProduttore"
                                      << "https://www.nembrosa.example";
    }

    void linksOpenInTheBrowser() {
        QFETCH(QString, oggetto);
        QFETCH(QString, indirizzo);
        auto app = apri();
        QVERIFY(app);
        if (auto* azione = app->finestraPrincipale().findChild<QAction*>(oggetto))
            azione->trigger();
        else
            QTest::mouseClick(app->finestraPrincipale().findChild<QPushButton*>(oggetto), Qt::LeftButton);
        QCOMPARE(m_browser.aperti, QList<QUrl>{QUrl(indirizzo)});
    }

    // F1 opens the guide's first page, built beside the program, in the browser.
    void guideOpensInTheBrowser() {
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        QVERIFY(QTest::qWaitForWindowActive(&finestra));
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &m_browser, "apri");
        QTest::keyClick(&finestra, Qt::Key_F1);
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(m_browser.aperti.size(), 1);
        const QString pagina = m_browser.aperti.constFirst().toLocalFile();
        QVERIFY2(pagina.endsWith(QStringLiteral("/share/brezzario/guida/index.html")), qPrintable(pagina));
        QFile file(pagina);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(file.readAll());
        QVERIFY(html.contains(QStringLiteral("<title>Guida di Brezzario")));
        // Its links lead to the chapters' own pages, and every one of them is there.
        QRegularExpression collegamento(QStringLiteral("href=\"([^\":]+\\.html)\""));
        int capitoli = 0;
        for (auto trovato = collegamento.globalMatch(html); trovato.hasNext(); ++capitoli) {
            const QString capitolo = QFileInfo(pagina).dir().filePath(trovato.next().captured(1));
            QVERIFY2(QFile::exists(capitolo), qPrintable(capitolo));
        }
        QVERIFY(capitoli >= 10);
    }

    void qtSpeaksItalian_data() {
        QTest::addColumn<QString>("contesto");
        QTest::addColumn<QString>("testo");
        QTest::addColumn<QString>("atteso");
        QTest::newRow("a panel's cancel button") << "QPlatformTheme"
                                                 << "Cancel"
                                                 << "Annulla";
        QTest::newRow("the file panel's folder") << "QFileDialog"
                                                 << "Look in:"
                                                 << "Cerca in:";
        QTest::newRow("the Shift key") << "QShortcut"
                                       << "Shift"
                                       << "Maiusc";
        QTest::newRow("the Delete key") << "QShortcut"
                                        << "Del"
                                        << "Canc";
    }
    // Qt's own words in the panels and menus are Italian like the rest, whatever the system's language.
    void qtSpeaksItalian() {
        QFETCH(QString, contesto);
        QFETCH(QString, testo);
        QFETCH(QString, atteso);
        QCOMPARE(QCoreApplication::translate(qPrintable(contesto), qPrintable(testo)), atteso);
    }

    void titleBar_data() {
        QTest::addColumn<QString>("cartellaLogo"); // where the picture lies; empty: nowhere
        QTest::newRow("no picture") << QString();
        QTest::newRow("picture in Media") << "Media";
        QTest::newRow("picture in the root") << ".";
    }

    void titleBar() {
        QFETCH(QString, cartellaLogo);
        QTemporaryDir risorse;
        QDir(risorse.path()).mkdir(QStringLiteral("Media"));
        if (!cartellaLogo.isEmpty()) {
            QImage immagine(400, 100, QImage::Format_ARGB32);
            immagine.fill(Qt::darkCyan);
            QVERIFY(immagine.save(risorse.filePath(cartellaLogo + QStringLiteral("/brezzario-titolo.png"))));
        }
        TitoloBarra barra(nullptr, {risorse.filePath(QStringLiteral("Media")), risorse.path()});
        QCOMPARE(barra.mostraLogo(), !cartellaLogo.isEmpty());
        auto* contenuto = barra.findChild<QLabel*>(QStringLiteral("titoloBarraContenuto"));
        QCOMPARE(contenuto->text(), cartellaLogo.isEmpty() ? QStringLiteral("BREZZARIO") : QString());
        if (!cartellaLogo.isEmpty()) {
            QCOMPARE(contenuto->pixmap().height(), 50);
            QCOMPARE(contenuto->accessibleName(), QStringLiteral("Brezzario — Nembrosa Software"));
        }
    }

    void creditsVersion_data() {
        QTest::addColumn<QString>("versione");
        QTest::addColumn<QString>("testo");
        QTest::newRow("build version") << "2.3.1"
                                       << "Brezzario 2.3.1";
        QTest::newRow("no version") << ""
                                    << "Brezzario 1.0";
    }

    void creditsVersion() {
        QFETCH(QString, versione);
        QFETCH(QString, testo);
        QCoreApplication::setApplicationVersion(versione);
        CreditsView credits;
        QCOMPARE(credits.findChild<QLabel*>(QStringLiteral("versione"))->text(), testo);
    }

    void settingsWindow() {
        auto app = apri();
        QVERIFY(app);
        MainWindow& finestra = app->finestraPrincipale();
        QAction* azione = finestra.findChild<QAction*>(QStringLiteral("azioneImpostazioni"));
        QVERIFY(!azione->shortcuts().isEmpty());
        QCOMPARE(azione->menuRole(), QAction::PreferencesRole);
        azione->trigger();
        QPointer<SettingsWindow> impostazioni = app->finestraImpostazioni();
        QVERIFY(impostazioni);
        QVERIFY(QTest::qWaitForWindowExposed(impostazioni));
        QCOMPARE(impostazioni->width(), 560);
        QCOMPARE(impostazioni->minimumWidth(), impostazioni->maximumWidth());
        QVERIFY(impostazioni->maximumHeight() > 2000);
        QVERIFY(TestSupport::salvaSchermata(impostazioni, QStringLiteral("shell-settings-window")));
        // The command brings the same window forward rather than a second one; the main window's section of
        // the same name has a screen of its own.
        azione->trigger();
        QCOMPARE(app->finestraImpostazioni(), impostazioni.data());
        QTest::mouseClick(finestra.findChild<VoceSidebar*>(QStringLiteral("voce-impostazioni")), Qt::LeftButton);
        auto* propria = impostazioni->findChild<QWidget*>(QStringLiteral("schermata-impostazioni"));
        QVERIFY(propria && finestra.schermata() != propria);
        impostazioni->close();
        QTRY_VERIFY(impostazioni.isNull());
    }

    void storeOpensWithFallback_data() {
        QTest::addColumn<QByteArray>("contenuto"); // empty: no file before the start
        QTest::newRow("fresh start creates the file") << QByteArray();
        QTest::newRow("damaged file gives a store in memory") << QByteArray("questo non è un archivio", 24);
    }

    void storeOpensWithFallback() {
        QFETCH(QByteArray, contenuto);
        const bool inMemoria = !contenuto.isEmpty();
        const QString percorso = Store::defaultPath();
        // The row before may leave its write-ahead log behind, while the lists screen's reader closes; a
        // damaged file must not meet another file's log.
        for (const char* parte : {"", "-wal", "-shm"})
            QFile::remove(percorso + QLatin1String(parte));
        QVERIFY(percorso.startsWith(TestSupport::IsolatedEnvironment::home()));
        if (inMemoria) {
            QDir().mkpath(QFileInfo(percorso).path());
            QFile file(percorso);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(contenuto);
        }
        {
            if (inMemoria)
                QTest::ignoreMessage(QtWarningMsg,
                                     QRegularExpression(QStringLiteral("^Brezzario: archivio non apribile")));
            BrezzarioApp app;
            QCOMPARE(app.store().isInMemory(), inMemoria);
            QCOMPARE(app.finestraPrincipale().sezione(), Sezione::liste);
        }
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::ReadOnly));
        // A damaged file is left as it was.
        if (inMemoria)
            QCOMPARE(file.readAll(), contenuto);
        file.close();
        QFile::remove(percorso);
    }

    void closingTheLastWindowEndsTheProcess() {
        QVERIFY(QGuiApplication::quitOnLastWindowClosed());
        auto app = apri();
        QVERIFY(app);
        QSignalSpy ultima(qApp, &QGuiApplication::lastWindowClosed);
        // The event loop returns, with no question asked, as soon as the window has gone; the guard only
        // keeps a broken build from hanging here.
        QTimer::singleShot(0, &app->finestraPrincipale(), &QWidget::close);
        QTimer guardia;
        guardia.callOnTimeout(qApp, [] { QCoreApplication::exit(7); });
        guardia.start(10000);
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(ultima.count(), 1);
    }

private:
    // An application on a store of its own, its main window on screen; null if the window never showed.
    std::unique_ptr<BrezzarioApp> apri() {
        static int numero = 0;
        const QString percorso = m_archivi.filePath(QStringLiteral("archivio-%1.sqlite").arg(++numero));
        auto app = std::make_unique<BrezzarioApp>([percorso] { return Store::open(percorso); });
        app->finestraPrincipale().show();
        return QTest::qWaitForWindowExposed(&app->finestraPrincipale()) ? std::move(app) : nullptr;
    }

    Browser m_browser;
    QTemporaryDir m_archivi;
};

BREZZARIO_TEST_MAIN(TestShell)
#include "tst_shell.moc"
