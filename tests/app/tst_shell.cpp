#include "app/BrezzarioApp.h"
#include "app/CreditsView.h"
#include "app/MainWindow.h"
#include "app/SettingsWindow.h"
#include "app/Symbols.h"
#include "app/TitoloBarra.h"
#include "app/VoceSidebar.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "Screenshot.h"
#include "TestEnvironment.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
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
    void initTestCase();
    void cleanup();
    void startOpensOnLists();
    void sectionsInOrder_data();
    void sectionsInOrder();
    void switchingRebuildsTheDetail_data();
    void switchingRebuildsTheDetail();
    void simulationShortcutTwiceStartsOne();
    void linksOpenInTheBrowser_data();
    void linksOpenInTheBrowser();
    void titleBar_data();
    void titleBar();
    void creditsVersion_data();
    void creditsVersion();
    void settingsWindow();
    void storeOpensWithFallback_data();
    void storeOpensWithFallback();
    void closingTheLastWindowEndsTheProcess();

private:
    std::unique_ptr<BrezzarioApp> nuovaApp();
    Browser m_browser;
    QTemporaryDir m_archivi;
};

void TestShell::initTestCase() {
    Q_INIT_RESOURCE(resources);
    BrezzarioApp::preparaApplicazione();
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &m_browser, "apri");
}

void TestShell::cleanup() {
    m_browser.aperti.clear();
    QCoreApplication::setApplicationVersion(QString());
}

std::unique_ptr<BrezzarioApp> TestShell::nuovaApp() {
    static int numero = 0;
    const QString percorso = m_archivi.filePath(QStringLiteral("archivio-%1.sqlite").arg(++numero));
    return std::make_unique<BrezzarioApp>([percorso] { return Store::open(percorso); });
}

void TestShell::startOpensOnLists() {
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));

    QCOMPARE(finestra.sezione(), Sezione::liste);
    QCOMPARE(finestra.windowTitle(), QStringLiteral("Liste CSV"));
    QCOMPARE(finestra.schermata()->objectName(), QStringLiteral("schermata-liste"));
    QCOMPARE(finestra.minimumSize(), QSize(980, 620));
    QCOMPARE(finestra.size(), QSize(1340, 880));
    auto* sidebar = finestra.findChild<QWidget*>(QStringLiteral("sidebar"));
    QCOMPARE(sidebar->minimumWidth(), 200);
    QCOMPARE(sidebar->maximumWidth(), 280);
    QCOMPARE(sidebar->width(), 216);
    for (VoceSidebar* voce : finestra.findChildren<VoceSidebar*>())
        QCOMPARE(voce->attiva(), voce->voce() == Sezione::liste);
    // No logo is shipped: the bar spells the name.
    auto* titolo = finestra.findChild<QLabel*>(QStringLiteral("titoloBarraContenuto"));
    QCOMPARE(titolo->text(), QStringLiteral("BREZZARIO"));
    QVERIFY(TestSupport::salvaSchermata(&finestra, QStringLiteral("shell-start")));
}

void TestShell::sectionsInOrder_data() {
    QTest::addColumn<int>("posizione");
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("titolo");
    QTest::newRow("liste") << 0 << "liste"
                           << "Liste CSV";
    QTest::newRow("modelli") << 1 << "modelli"
                             << "Modelli";
    QTest::newRow("campagne") << 2 << "campagne"
                              << "Campagne";
    QTest::newRow("storico") << 3 << "storico"
                             << "Storico invii";
    QTest::newRow("esclusi") << 4 << "esclusi"
                             << "Esclusi";
    QTest::newRow("impostazioni") << 5 << "impostazioni"
                                  << "Impostazioni";
}

void TestShell::sectionsInOrder() {
    QFETCH(int, posizione);
    QFETCH(QString, raw);
    QFETCH(QString, titolo);
    QCOMPARE(tutteLeSezioni().size(), 6);
    const Sezione sezione = tutteLeSezioni().at(posizione);
    QCOMPARE(rawValue(sezione), raw);
    QCOMPARE(::titolo(sezione), titolo);
    // Every symbol resolves to an icon of the theme, also on a platform that names no theme.
    QVERIFY2(!Symbols::icona(simbolo(sezione)).isNull(), qPrintable(simbolo(sezione)));
    // Tinted, it draws something, and only in the colour asked for.
    const QImage tinta = Symbols::pixmap(simbolo(sezione), QColor(200, 0, 0), 24).toImage();
    int inchiostro = 0;
    for (int y = 0; y < tinta.height(); ++y)
        for (int x = 0; x < tinta.width(); ++x) {
            const QColor punto = tinta.pixelColor(x, y);
            if (punto.alpha() == 0)
                continue;
            ++inchiostro;
            QCOMPARE(punto.green(), 0);
        }
    QVERIFY(inchiostro > 20);

    auto app = nuovaApp();
    auto* sidebar = app->finestraPrincipale().findChild<QWidget*>(QStringLiteral("sidebar"));
    const QList<VoceSidebar*> voci = sidebar->findChildren<VoceSidebar*>();
    QCOMPARE(voci.size(), 6);
    QCOMPARE(voci.at(posizione)->objectName(), QStringLiteral("voce-") + raw);
    QCOMPARE(voci.at(posizione)->text(), titolo);
    // Rows stand top to bottom in the order of the sections.
    app->finestraPrincipale().show();
    QVERIFY(QTest::qWaitForWindowExposed(&app->finestraPrincipale()));
    if (posizione > 0)
        QVERIFY(voci.at(posizione)->y() > voci.at(posizione - 1)->y());
}

void TestShell::switchingRebuildsTheDetail_data() {
    QTest::addColumn<QStringList>("clic");
    QTest::addColumn<QString>("finale");
    QTest::addColumn<bool>("nuova"); // whether the last click built a new screen
    QTest::newRow("to esclusi") << QStringList{"esclusi"} << "Esclusi" << true;
    QTest::newRow("away and back") << QStringList{"campagne", "liste"} << "Liste CSV" << true;
    QTest::newRow("through all") << QStringList{"modelli", "campagne", "storico", "esclusi", "impostazioni"}
                                 << "Impostazioni" << true;
    QTest::newRow("same section keeps its screen") << QStringList{"storico", "storico"} << "Storico invii" << false;
}

void TestShell::switchingRebuildsTheDetail() {
    QFETCH(QStringList, clic);
    QFETCH(QString, finale);
    QFETCH(bool, nuova);
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    QPointer<QWidget> precedente;
    for (const QString& raw : clic) {
        precedente = finestra.schermata();
        auto* voce = finestra.findChild<VoceSidebar*>(QStringLiteral("voce-") + raw);
        QVERIFY(voce);
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
    QCOMPARE(finestra.findChild<QWidget*>(QStringLiteral("dettaglio"))
                 ->findChildren<QWidget*>(QRegularExpression(QStringLiteral("^schermata-")), Qt::FindDirectChildrenOnly)
                 .size(),
             1);
    QVERIFY(TestSupport::salvaSchermata(&finestra, QStringLiteral("shell-switch-") + QTest::currentDataTag()));
}

void TestShell::simulationShortcutTwiceStartsOne() {
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    QApplication::setActiveWindow(&finestra);
    const std::shared_ptr<SendEngine> motore = finestra.motoreSimulazione();
    QVERIFY(!motore->isRunning());

    QTest::keyClick(&finestra, Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(motore->isRunning());
    QVERIFY(finestra.mostraSimulazione());
    QCOMPARE(motore->total(), 60);
    QCOMPARE(motore->pausaImpostata(), 0.18);
    QTRY_VERIFY(motore->processed() >= 2);
    const QDateTime inizio = *motore->inizio();
    const quint64 generazione = motore->generazione();

    // Again through the keyboard and through the menu: the first simulation goes on alone.
    QTest::keyClick(QApplication::activeWindow() ? QApplication::activeWindow() : &finestra, Qt::Key_S,
                    Qt::ControlModifier | Qt::ShiftModifier);
    finestra.findChild<QAction*>(QStringLiteral("azioneSimula"))->trigger();
    QCOMPARE(motore->generazione(), generazione);
    QCOMPARE(*motore->inizio(), inizio);
    QVERIFY(motore->processed() >= 2);
    QCOMPARE(finestra.findChildren<SendDashboardView*>().size(), 1);
    SendDashboardView* cruscotto = finestra.cruscottoSimulazione();
    QVERIFY(cruscotto && cruscotto->isVisible());
    QCOMPARE(cruscotto->windowModality(), Qt::WindowModal);
    QCOMPARE(cruscotto->motore(), motore);
    QVERIFY(TestSupport::salvaSchermata(cruscotto, QStringLiteral("shell-simulation-running")));

    QTest::mouseClick(cruscotto->findChild<QPushButton*>(QStringLiteral("interrompi")), Qt::LeftButton);
    QTRY_VERIFY(!motore->isRunning());
    QCOMPARE(
        motore->activityLog().count(QStringLiteral("Simulazione avviata: nessun messaggio verrà spedito davvero.")), 1);
    QTest::mouseClick(cruscotto->findChild<QPushButton*>(QStringLiteral("principale")), Qt::LeftButton);
    QTRY_VERIFY(!finestra.cruscottoSimulazione());
    QVERIFY(!finestra.mostraSimulazione());

    // Once ended, the command starts another simulation on the same engine.
    finestra.findChild<QAction*>(QStringLiteral("azioneSimula"))->trigger();
    QVERIFY(motore->isRunning());
    QCOMPARE(finestra.motoreSimulazione(), motore);
    QVERIFY(motore->generazione() != generazione);
    QVERIFY(finestra.cruscottoSimulazione());
    motore->cancel();
    QTRY_VERIFY(!motore->isRunning());
}

void TestShell::linksOpenInTheBrowser_data() {
    QTest::addColumn<QString>("oggetto");
    QTest::addColumn<QString>("indirizzo");
    QTest::newRow("Cerca aggiornamenti…") << "azioneAggiornamenti"
                                          << "https://www.nembrosa.example/brezzario/versioni";
    QTest::newRow("maker's site") << "sitoProduttore"
                                  << "https://www.nembrosa.example";
}

void TestShell::linksOpenInTheBrowser() {
    QFETCH(QString, oggetto);
    QFETCH(QString, indirizzo);
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    if (auto* azione = finestra.findChild<QAction*>(oggetto)) {
        QCOMPARE(azione->text(), QStringLiteral("Cerca aggiornamenti…"));
        azione->trigger();
    } else {
        auto* pulsante = finestra.findChild<QPushButton*>(oggetto);
        QVERIFY(pulsante);
        QCOMPARE(pulsante->text(), QStringLiteral("nembrosa.example"));
        QTest::mouseClick(pulsante, Qt::LeftButton);
    }
    QCOMPARE(m_browser.aperti, QList<QUrl>{QUrl(indirizzo)});
}

void TestShell::titleBar_data() {
    QTest::addColumn<bool>("conLogo");
    QTest::addColumn<bool>("nellaRadice");
    QTest::newRow("no picture") << false << false;
    QTest::newRow("picture in Media") << true << false;
    QTest::newRow("picture in the root") << true << true;
}

void TestShell::titleBar() {
    QFETCH(bool, conLogo);
    QFETCH(bool, nellaRadice);
    QTemporaryDir risorse;
    QDir(risorse.path()).mkdir(QStringLiteral("Media"));
    if (conLogo) {
        QImage immagine(400, 100, QImage::Format_ARGB32);
        immagine.fill(Qt::darkCyan);
        const QString cartella = nellaRadice ? risorse.path() : risorse.filePath(QStringLiteral("Media"));
        QVERIFY(immagine.save(cartella + QStringLiteral("/brezzario-titolo.png")));
    }
    TitoloBarra barra(nullptr, {risorse.filePath(QStringLiteral("Media")), risorse.path()});
    QCOMPARE(barra.mostraLogo(), conLogo);
    auto* contenuto = barra.findChild<QLabel*>(QStringLiteral("titoloBarraContenuto"));
    if (conLogo) {
        QCOMPARE(contenuto->pixmap().height(), 50);
        QCOMPARE(contenuto->accessibleName(), QStringLiteral("Brezzario — Nembrosa Software"));
        QVERIFY(contenuto->text().isEmpty());
    } else {
        QCOMPARE(contenuto->text(), QStringLiteral("BREZZARIO"));
    }
}

void TestShell::creditsVersion_data() {
    QTest::addColumn<QString>("versione");
    QTest::addColumn<QString>("testo");
    QTest::newRow("build version") << "1.0.0"
                                   << "Brezzario 1.0.0";
    QTest::newRow("other version") << "2.3.1"
                                   << "Brezzario 2.3.1";
    QTest::newRow("no version") << ""
                                << "Brezzario 1.0";
}

void TestShell::creditsVersion() {
    QFETCH(QString, versione);
    QFETCH(QString, testo);
    QCoreApplication::setApplicationVersion(versione);
    CreditsView credits;
    QCOMPARE(credits.findChild<QLabel*>(QStringLiteral("versione"))->text(), testo);
}

void TestShell::settingsWindow() {
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    QAction* azione = finestra.findChild<QAction*>(QStringLiteral("azioneImpostazioni"));
    QVERIFY(!azione->shortcuts().isEmpty());
    QCOMPARE(azione->menuRole(), QAction::PreferencesRole);
    azione->trigger();
    QPointer<SettingsWindow> impostazioni = app->finestraImpostazioni();
    QVERIFY(impostazioni);
    QVERIFY(QTest::qWaitForWindowExposed(impostazioni));
    QVERIFY(impostazioni->isWindow());
    QCOMPARE(impostazioni->width(), 560);
    QCOMPARE(impostazioni->minimumWidth(), 560);
    QCOMPARE(impostazioni->maximumWidth(), 560);
    QVERIFY(impostazioni->maximumHeight() > 2000);
    QVERIFY(impostazioni->findChild<QWidget*>(QStringLiteral("schermata-impostazioni")));
    QVERIFY(TestSupport::salvaSchermata(impostazioni, QStringLiteral("shell-settings-window")));
    // The command brings the same window forward rather than a second one.
    azione->trigger();
    QCOMPARE(app->finestraImpostazioni(), impostazioni.data());
    // It lives apart from the main window's section of the same name.
    QTest::mouseClick(finestra.findChild<VoceSidebar*>(QStringLiteral("voce-impostazioni")), Qt::LeftButton);
    QVERIFY(finestra.schermata() != impostazioni->findChild<QWidget*>(QStringLiteral("schermata-impostazioni")));
    impostazioni->close();
    QTRY_VERIFY(impostazioni.isNull());
}

void TestShell::storeOpensWithFallback_data() {
    QTest::addColumn<QByteArray>("contenuto"); // empty: no file before the start
    QTest::addColumn<bool>("inMemoria");
    QTest::newRow("fresh start creates the file") << QByteArray() << false;
    QTest::newRow("damaged file gives a store in memory") << QByteArray("questo non è un archivio", 24) << true;
}

void TestShell::storeOpensWithFallback() {
    QFETCH(QByteArray, contenuto);
    QFETCH(bool, inMemoria);
    const QString percorso = Store::defaultPath();
    QFile::remove(percorso);
    QVERIFY(percorso.startsWith(TestSupport::IsolatedEnvironment::home()));
    if (!contenuto.isEmpty()) {
        QDir().mkpath(QFileInfo(percorso).path());
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contenuto);
    }
    {
        if (inMemoria)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Brezzario: archivio non apribile")));
        BrezzarioApp app;
        QCOMPARE(app.store().isInMemory(), inMemoria);
        QCOMPARE(app.finestraPrincipale().sezione(), Sezione::liste);
    }
    if (inMemoria) {
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), contenuto); // the damaged file is left as it was
    } else {
        QVERIFY(QFile::exists(percorso));
    }
    QFile::remove(percorso);
}

void TestShell::closingTheLastWindowEndsTheProcess() {
    QVERIFY(QGuiApplication::quitOnLastWindowClosed());
    auto app = nuovaApp();
    MainWindow& finestra = app->finestraPrincipale();
    finestra.show();
    QVERIFY(QTest::qWaitForWindowExposed(&finestra));
    QSignalSpy ultima(qApp, &QGuiApplication::lastWindowClosed);
    // The event loop returns, with no question asked, as soon as the window has gone; the guard only
    // keeps a broken build from hanging here.
    QTimer::singleShot(0, &finestra, &QWidget::close);
    QTimer guardia;
    guardia.setSingleShot(true);
    connect(&guardia, &QTimer::timeout, qApp, [] { QCoreApplication::exit(7); });
    guardia.start(10000);
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(ultima.count(), 1);
}

BREZZARIO_TEST_MAIN(TestShell)
#include "tst_shell.moc"
