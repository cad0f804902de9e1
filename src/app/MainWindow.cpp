#include "app/MainWindow.h"

#include "app/CreditsView.h"
#include "app/SectionScreens.h"
#include "app/TitoloBarra.h"
#include "app/VoceSidebar.h"
#include "engine/SendEngine.h"
#include "screens/dashboard/SendDashboardView.h"
#include "ui/Comandi.h"
#include "ui/Dialoghi.h"
#include "ui/Risorse.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

namespace {
constexpr int larghezzaMinima = 980;
constexpr int altezzaMinima = 620;
constexpr int larghezzaIdeale = 1340;
constexpr int altezzaIdeale = 880;
constexpr int sidebarMinima = 200;
constexpr int sidebarIdeale = 216;
constexpr int sidebarMassima = 280;
} // namespace

MainWindow::MainWindow(Ambiente ambiente, QWidget* genitore)
    : QMainWindow(genitore), m_ambiente(ambiente), m_motoreSimulazione(std::make_shared<SendEngine>()) {
    setObjectName(QStringLiteral("principale"));
    setMinimumSize(larghezzaMinima, altezzaMinima);
    resize(larghezzaIdeale, altezzaIdeale);

    auto* barra = new QToolBar(this);
    barra->setObjectName(QStringLiteral("barraStrumenti"));
    barra->setMovable(false);
    barra->setFloatable(false);
    barra->toggleViewAction()->setEnabled(false);
    auto* sinistra = new QWidget(barra);
    sinistra->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* destra = new QWidget(barra);
    destra->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    barra->addWidget(sinistra);
    barra->addWidget(new TitoloBarra(barra));
    barra->addWidget(destra);
    addToolBar(Qt::TopToolBarArea, barra);

    auto* divisore = new QSplitter(Qt::Horizontal, this);
    divisore->setObjectName(QStringLiteral("divisore"));
    divisore->setChildrenCollapsible(false);
    divisore->addWidget(creaSidebar());
    auto* dettaglio = new QWidget(divisore);
    dettaglio->setObjectName(QStringLiteral("dettaglio"));
    m_dettaglio = new QVBoxLayout(dettaglio);
    m_dettaglio->setContentsMargins(0, 0, 0, 0);
    divisore->addWidget(dettaglio);
    divisore->setStretchFactor(0, 0);
    divisore->setStretchFactor(1, 1);
    divisore->setSizes({sidebarIdeale, larghezzaIdeale - sidebarIdeale});
    setCentralWidget(divisore);

    creaMenu();
    vaiA(Sezione::liste);
}

MainWindow::~MainWindow() = default;

QWidget* MainWindow::creaSidebar() {
    auto* sidebar = new QWidget(this);
    sidebar->setObjectName(QStringLiteral("sidebar"));
    sidebar->setMinimumWidth(sidebarMinima);
    sidebar->setMaximumWidth(sidebarMassima);
    // A shade apart from the detail, as the sidebars of desktop programs have.
    sidebar->setAutoFillBackground(true);
    QPalette tavolozza = sidebar->palette();
    tavolozza.setColor(QPalette::Window, tavolozza.color(QPalette::Window).darker(104));
    sidebar->setPalette(tavolozza);
    auto* colonna = new QVBoxLayout(sidebar);
    colonna->setContentsMargins(10, 12, 10, 0);
    colonna->setSpacing(2);
    for (Sezione sezione : tutteLeSezioni()) {
        auto* voce = new VoceSidebar(sezione, sidebar);
        connect(voce, &VoceSidebar::clicked, this, [this, sezione] { vaiA(sezione); });
        colonna->addWidget(voce);
        m_voci.append(voce);
    }
    colonna->addStretch(1);
    colonna->addWidget(new CreditsView(sidebar));
    return sidebar;
}

void MainWindow::creaMenu() {
    QMenu* applicazione = menuBar()->addMenu(tr("&Brezzario"));
    applicazione->setObjectName(QStringLiteral("menuBrezzario"));
    QAction* informazioni = applicazione->addAction(tr("Informazioni su Brezzario"));
    informazioni->setObjectName(QStringLiteral("azioneInformazioni"));
    informazioni->setMenuRole(QAction::AboutRole);
    connect(informazioni, &QAction::triggered, this, [this] {
        QMessageBox::about(this, tr("Informazioni su Brezzario"),
                           CreditsView::versione() + QStringLiteral("\n") + tr("Un programma di Nembrosa Software"));
    });
    QAction* aggiornamenti = applicazione->addAction(tr("Cerca aggiornamenti…"));
    aggiornamenti->setObjectName(QStringLiteral("azioneAggiornamenti"));
    aggiornamenti->setMenuRole(QAction::ApplicationSpecificRole);
    connect(aggiornamenti, &QAction::triggered, this, [] { QDesktopServices::openUrl(QUrl(paginaVersioni)); });
    applicazione->addSeparator();
    QAction* impostazioni = applicazione->addAction(tr("Impostazioni…"));
    impostazioni->setObjectName(QStringLiteral("azioneImpostazioni"));
    impostazioni->setMenuRole(QAction::PreferencesRole);
    QList<QKeySequence> tasti = QKeySequence::keyBindings(QKeySequence::Preferences);
    if (tasti.isEmpty())
        tasti = {QKeySequence(Qt::CTRL | Qt::Key_Comma)};
    impostazioni->setShortcuts(tasti);
    connect(impostazioni, &QAction::triggered, this, &MainWindow::impostazioniRichieste);
    applicazione->addSeparator();
    QAction* esci = applicazione->addAction(tr("Esci da Brezzario"));
    esci->setObjectName(QStringLiteral("azioneEsci"));
    esci->setMenuRole(QAction::QuitRole);
    esci->setShortcuts(QKeySequence::Quit);
    connect(esci, &QAction::triggered, qApp, &QApplication::closeAllWindows);

    QMenu* vista = menuBar()->addMenu(tr("&Vista"));
    vista->setObjectName(QStringLiteral("menuVista"));
    // Each section is a key away: Ctrl+1 to Ctrl+6, in the sidebar's order.
    int numero = 0;
    for (Sezione sezione : tutteLeSezioni()) {
        QAction* vai = vista->addAction(titolo(sezione));
        vai->setObjectName(QStringLiteral("azioneSezione-") + rawValue(sezione));
        vai->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + numero++)));
        connect(vai, &QAction::triggered, this, [this, sezione] { vaiA(sezione); });
    }
    vista->addSeparator();
    // Commands the showing screen may offer; asked of it when pressed.
    m_nuovo = vista->addAction(tr("Nuovo"));
    m_nuovo->setObjectName(QStringLiteral("azioneNuovo"));
    m_nuovo->setShortcuts(QKeySequence::New);
    connect(m_nuovo, &QAction::triggered, this, [this] {
        if (auto* schermata = dynamic_cast<ConNuovo*>(m_schermata))
            schermata->nuovo();
    });
    m_cerca = vista->addAction(tr("Cerca"));
    m_cerca->setObjectName(QStringLiteral("azioneCerca"));
    m_cerca->setShortcuts(QKeySequence::Find);
    connect(m_cerca, &QAction::triggered, this, [this] {
        auto* schermata = dynamic_cast<ConRicerca*>(m_schermata);
        if (QLineEdit* campo = schermata ? schermata->ricerca() : nullptr) {
            campo->setFocus(Qt::ShortcutFocusReason);
            campo->selectAll();
        }
    });
    vista->addSeparator();
    QAction* simula = vista->addAction(tr("Simula una spedizione"));
    simula->setObjectName(QStringLiteral("azioneSimula"));
    simula->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    simula->setShortcutContext(Qt::ApplicationShortcut);
    connect(simula, &QAction::triggered, this, &MainWindow::avviaSimulazione);

    QMenu* aiuto = menuBar()->addMenu(tr("&Aiuto"));
    aiuto->setObjectName(QStringLiteral("menuAiuto"));
    QAction* guida = aiuto->addAction(tr("Guida di Brezzario"));
    guida->setObjectName(QStringLiteral("azioneGuida"));
    guida->setShortcuts(QKeySequence::HelpContents);
    connect(guida, &QAction::triggered, this, &MainWindow::apriGuida);
    QAction* scorciatoie = aiuto->addAction(tr("Scorciatoie da tastiera"));
    scorciatoie->setObjectName(QStringLiteral("azioneScorciatoie"));
    connect(scorciatoie, &QAction::triggered, this, &MainWindow::mostraScorciatoie);
}

QString MainWindow::testoScorciatoie() {
    QStringList righe;
    int numero = 1;
    for (Sezione sezione : tutteLeSezioni())
        righe.append(tr("Ctrl+%1\t%2").arg(numero++).arg(titolo(sezione)));
    righe.append(tr("Ctrl+N\tNuova lista, nuovo modello o nuova campagna, nella sezione che li ha"));
    righe.append(tr("Ctrl+F\tCerca, nelle sezioni con un campo di ricerca"));
    righe.append(tr("Canc\tElimina la lista, il modello o la campagna scelti nella colonna a sinistra"));
    righe.append(tr("Ctrl+Maiusc+S\tSimula una spedizione"));
    righe.append(tr("Ctrl+,\tImpostazioni"));
    righe.append(tr("F1\tGuida di Brezzario"));
    righe.append(tr("Esc\tChiude la finestra in primo piano (anteprima, importazione, cruscotto)"));
    return righe.join(u'\n');
}

void MainWindow::mostraScorciatoie() {
    // Keys in one column, what they do in the other, however long the explanation.
    // The title stands in the body too: a window manager may show none.
    QString tabella = QStringLiteral("<p><b>%1</b></p><table cellspacing=\"0\" cellpadding=\"3\">")
                          .arg(tr("Scorciatoie da tastiera").toHtmlEscaped());
    for (const QString& riga : testoScorciatoie().split(u'\n')) {
        tabella += QStringLiteral("<tr><td style=\"padding-right: 18px\"><b>%1</b></td><td>%2</td></tr>")
                       .arg(riga.section(u'\t', 0, 0).toHtmlEscaped(), riga.section(u'\t', 1).toHtmlEscaped());
    }
    tabella += QStringLiteral("</table>");
    QMessageBox box(QMessageBox::NoIcon, tr("Scorciatoie da tastiera"), tabella, QMessageBox::Ok, this);
    box.setObjectName(QStringLiteral("finestraScorciatoie"));
    box.setTextFormat(Qt::RichText);
    box.exec();
}

void MainWindow::apriGuida() {
    const QString indice = Risorse::percorso(QStringLiteral("guida/index.html"));
    if (indice.isEmpty()) {
        Dialoghi::avviso(this, tr("Guida di Brezzario"),
                         tr("La guida non si trova tra i file del programma. Installa di nuovo Brezzario per "
                            "averla."));
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(indice)))
        Dialoghi::avviso(this, tr("Guida di Brezzario"),
                         tr("Il browser non si è aperto. La guida si trova qui:\n%1").arg(indice));
}

void MainWindow::vaiA(Sezione sezione) {
    if (m_schermata && sezione == m_sezione)
        return;
    m_sezione = sezione;
    for (VoceSidebar* voce : m_voci)
        voce->setAttiva(voce->voce() == sezione);
    // Built anew at every change: a screen's local state ends when the user leaves it.
    if (m_schermata) {
        m_dettaglio->removeWidget(m_schermata);
        delete m_schermata;
    }
    m_schermata = creaSchermata(sezione, m_ambiente, m_dettaglio->parentWidget());
    m_dettaglio->addWidget(m_schermata);
    m_schermata->show();
    setWindowTitle(titolo(sezione));
}

void MainWindow::avviaSimulazione() {
    if (m_motoreSimulazione->isRunning())
        return;
    m_mostraSimulazione = true;
    if (!m_cruscotto) {
        m_cruscotto = new SendDashboardView(m_motoreSimulazione, this);
        m_cruscotto->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_cruscotto, &QDialog::finished, this, [this] { m_mostraSimulazione = false; });
        m_cruscotto->open();
    }
    m_motoreSimulazione->simula(m_destinatariSimulazione, m_ritmoSimulazione);
}

void MainWindow::impostaSimulazione(int destinatari, double ritmo) {
    m_destinatariSimulazione = destinatari;
    m_ritmoSimulazione = ritmo;
}
