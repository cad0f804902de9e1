#include "screens/suppressions/SuppressionView.h"

#include "records/CSVText.h"
#include "records/EmailSyntax.h"
#include "screens/suppressions/DettaglioEsclusione.h"
#include "screens/suppressions/ImportaEsclusi.h"
#include "screens/suppressions/RiquadroMotivo.h"
#include "screens/suppressions/SuppressionModel.h"
#include "ui/CampoRicerca.h"
#include "ui/Dialoghi.h"
#include "ui/Formati.h"
#include "ui/PresentazioneMotivo.h"
#include "ui/Rinfresco.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int riquadriPerRiga = 5;

QFrame* divisore(QWidget* genitore) {
    auto* linea = new QFrame(genitore);
    linea->setFrameShape(QFrame::HLine);
    linea->setFrameShadow(QFrame::Sunken);
    return linea;
}

} // namespace

SuppressionView::SuppressionView(Ambiente& ambiente, QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("schermata-esclusi"));
    m_modello = new SuppressionModel(ambiente.store, this);
    m_importa = new ImportaEsclusi(ambiente.store, *m_modello, this);
    m_rinfresco = new Rinfresco(
        ambiente.store, Store::Suppressions, [this](Store::Entities) { m_modello->segui(); }, this);

    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(16, 12, 16, 12);
    colonna->setSpacing(10);

    auto* riepilogo = new QWidget(this);
    riepilogo->setObjectName(QStringLiteral("riepilogoEsclusi"));
    m_griglia = new QGridLayout(riepilogo);
    m_griglia->setContentsMargins(0, 0, 0, 0);
    m_griglia->setSpacing(8);
    for (int i = 0; i <= int(tuttiIMotivi().size()); ++i) {
        auto* riquadro = new RiquadroMotivo(riepilogo);
        riquadro->setObjectName(i == 0 ? QStringLiteral("riquadro-tutti")
                                       : QStringLiteral("riquadro-") + rawValue(tuttiIMotivi().at(i - 1)));
        const std::optional<MotivoEsclusione> motivo = i == 0 ? std::nullopt : std::optional(tuttiIMotivi().at(i - 1));
        connect(riquadro, &QAbstractButton::clicked, this, [this, motivo] {
            // A click on the active category's tile goes back to all entries.
            m_modello->setFiltro(motivo && m_modello->filtro() == motivo ? std::nullopt : motivo);
        });
        m_riquadri.append(riquadro);
    }
    colonna->addWidget(riepilogo);
    colonna->addWidget(divisore(this));
    colonna->addWidget(creaComandi());
    colonna->addWidget(divisore(this));

    m_tabella = new QTableView(this);
    m_tabella->setObjectName(QStringLiteral("tabellaEsclusi"));
    // Tab goes on to the next field; the arrows move within the table.
    m_tabella->setTabKeyNavigation(false);
    m_tabella->setModel(m_modello);
    m_tabella->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tabella->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tabella->setAlternatingRowColors(true);
    m_tabella->setShowGrid(false);
    m_tabella->setWordWrap(true);
    m_tabella->setTextElideMode(Qt::ElideRight);
    m_tabella->verticalHeader()->hide();
    // Room for two lines of the explanation, one height for all, so that 100,000 rows are never measured.
    m_tabella->verticalHeader()->setDefaultSectionSize(2 * m_tabella->fontMetrics().lineSpacing() + 10);
    QHeaderView* testata = m_tabella->horizontalHeader();
    testata->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    testata->setSectionResizeMode(QHeaderView::Interactive);
    testata->setSectionResizeMode(SuppressionModel::significato, QHeaderView::Stretch);
    const int carattere = m_tabella->fontMetrics().averageCharWidth();
    m_tabella->setColumnWidth(SuppressionModel::indirizzo, 30 * carattere);
    m_tabella->setColumnWidth(SuppressionModel::perche, 30 * carattere);
    m_tabella->setColumnWidth(SuppressionModel::dal,
                              m_tabella->fontMetrics().horizontalAdvance(dataOraBreve(QDateTime::currentDateTime())) +
                                  3 * carattere);
    connect(m_tabella->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SuppressionView::selezioneCambiata);

    m_dettaglio = new DettaglioEsclusione(this);
    auto* scorrimento = new QScrollArea(this);
    scorrimento->setObjectName(QStringLiteral("pannelloDettaglio"));
    scorrimento->setWidget(m_dettaglio);
    scorrimento->setWidgetResizable(true);
    scorrimento->setFrameShape(QFrame::NoFrame);
    scorrimento->setMinimumWidth(300);
    connect(m_dettaglio, &DettaglioEsclusione::togliRichiesto, this, [this](RecordId id) { m_modello->togli(id); });

    auto* divisa = new QSplitter(Qt::Horizontal, this);
    divisa->addWidget(m_tabella);
    divisa->addWidget(scorrimento);
    divisa->setStretchFactor(0, 3);
    divisa->setStretchFactor(1, 1);
    divisa->setChildrenCollapsible(false);
    colonna->addWidget(divisa, 1);

    connect(m_modello, &SuppressionModel::modelAboutToBeReset, this, [this] { m_ripristino = true; });
    connect(m_modello, &SuppressionModel::cambiato, this, &SuppressionView::seguiModello);
    connect(m_importa, &ImportaEsclusi::finito, this, [] { QApplication::restoreOverrideCursor(); });
    seguiModello();
}

QWidget* SuppressionView::creaComandi() {
    auto* barra = new QWidget(this);
    auto* riga = new QHBoxLayout(barra);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(8);

    m_nuovoIndirizzo = new QLineEdit(barra);
    m_nuovoIndirizzo->setObjectName(QStringLiteral("nuovoIndirizzo"));
    m_nuovoIndirizzo->setPlaceholderText(tr("Indirizzo da escludere"));
    m_nuovoIndirizzo->setMinimumWidth(200);
    riga->addWidget(m_nuovoIndirizzo, 2);
    m_motivo = new QLineEdit(barra);
    m_motivo->setObjectName(QStringLiteral("motivoEsclusione"));
    m_motivo->setPlaceholderText(tr("Motivo (facoltativo)"));
    m_motivo->setMinimumWidth(160);
    riga->addWidget(m_motivo, 2);
    m_aggiungi = new QPushButton(tr("Aggiungi"), barra);
    m_aggiungi->setObjectName(QStringLiteral("aggiungiEscluso"));
    riga->addWidget(m_aggiungi);
    connect(m_nuovoIndirizzo, &QLineEdit::textChanged, this, &SuppressionView::aggiornaComandi);
    connect(m_aggiungi, &QPushButton::clicked, this, &SuppressionView::aggiungi);
    connect(m_nuovoIndirizzo, &QLineEdit::returnPressed, this, &SuppressionView::aggiungi);
    connect(m_motivo, &QLineEdit::returnPressed, this, &SuppressionView::aggiungi);

    auto* importa = new QPushButton(Symbols::icona(QStringLiteral("square.and.arrow.down")), tr("Importa…"), barra);
    importa->setObjectName(QStringLiteral("importaEsclusi"));
    connect(importa, &QPushButton::clicked, this, &SuppressionView::importa);
    riga->addWidget(importa);
    m_esporta = new QPushButton(Symbols::icona(QStringLiteral("square.and.arrow.up")), tr("Esporta…"), barra);
    m_esporta->setObjectName(QStringLiteral("esportaEsclusi"));
    connect(m_esporta, &QPushButton::clicked, this, &SuppressionView::esporta);
    riga->addWidget(m_esporta);
    riga->addSpacing(12);

    m_ricerca = campoRicerca(tr("Cerca"), "ricercaEsclusi", 160, barra);
    riga->addWidget(m_ricerca, 1);
    connect(m_ricerca, &QLineEdit::textChanged, m_modello, &SuppressionModel::setRicerca);

    m_contatore = new QLabel(barra);
    m_contatore->setObjectName(QStringLiteral("contatoreEsclusi"));
    m_contatore->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    riga->addWidget(m_contatore);
    return barra;
}

void SuppressionView::rinfrescaOra() {
    m_rinfresco->esegui();
}

void SuppressionView::seguiModello() {
    // A reset of the table drops its selection; the chosen entry stays chosen by its identity.
    m_ripristino = true;
    const int riga = m_selezione ? m_modello->rigaDi(*m_selezione) : -1;
    if (riga >= 0)
        m_tabella->selectRow(riga);
    else
        m_tabella->clearSelection();
    m_ripristino = false;
    ricostruisciRiquadri();
    m_contatore->setText(
        tr("%1 di %2").arg(QLocale().toString(m_modello->filtrati()), QLocale().toString(m_modello->tutti())));
    aggiornaComandi();
    mostraDettaglio();
}

void SuppressionView::ricostruisciRiquadri() {
    for (RiquadroMotivo* riquadro : m_riquadri) {
        m_griglia->removeWidget(riquadro);
        riquadro->hide();
    }
    QList<RiquadroMotivo*> visibili;
    RiquadroMotivo* tutti = m_riquadri.first();
    tutti->imposta(
        {tr("Tutti gli esclusi"), m_modello->tutti(), QStringLiteral("nosign"), Colore::primary, !m_modello->filtro()});
    visibili.append(tutti);
    for (const SuppressionModel::Conteggio& conteggio : m_modello->conteggi()) {
        RiquadroMotivo* riquadro = m_riquadri.at(1 + int(conteggio.motivo));
        riquadro->imposta({PresentazioneMotivo::etichetta(conteggio.motivo), conteggio.quanti,
                           PresentazioneMotivo::simbolo(conteggio.motivo),
                           PresentazioneMotivo::colore(conteggio.motivo), m_modello->filtro() == conteggio.motivo});
        visibili.append(riquadro);
    }
    for (int i = 0; i < visibili.size(); ++i) {
        m_griglia->addWidget(visibili.at(i), i / riquadriPerRiga, i % riquadriPerRiga);
        visibili.at(i)->show();
    }
    for (int colonna = 0; colonna < riquadriPerRiga; ++colonna)
        m_griglia->setColumnStretch(colonna, 1);
}

void SuppressionView::selezioneCambiata() {
    if (m_ripristino)
        return;
    const QModelIndexList scelte = m_tabella->selectionModel()->selectedRows();
    const SuppressionModel::Voce* voce = scelte.isEmpty() ? nullptr : m_modello->voce(scelte.first().row());
    m_selezione = voce ? std::optional(voce->esclusione.id) : std::nullopt;
    mostraDettaglio();
}

void SuppressionView::mostraDettaglio() {
    const SuppressionModel::Voce* scelta = m_selezione ? m_modello->trova(*m_selezione) : nullptr;
    QWidget* pannello = m_dettaglio->parentWidget()->parentWidget();
    if (scelta)
        m_dettaglio->mostra(*scelta);
    pannello->setVisible(scelta != nullptr);
}

void SuppressionView::aggiornaComandi() {
    m_aggiungi->setEnabled(isValidEmailSyntax(m_nuovoIndirizzo->text()));
    m_esporta->setEnabled(m_modello->tutti() > 0);
}

void SuppressionView::aggiungi() {
    if (!m_modello->aggiungi(m_nuovoIndirizzo->text(), m_motivo->text()))
        return;
    m_nuovoIndirizzo->clear();
    m_motivo->clear();
}

void SuppressionView::importa() {
    if (m_importa->inCorso())
        return;
    const QString percorso = Dialoghi::fileDaAprire(this, tr("Importa indirizzi da escludere"),
                                                    tr("Testo (*.csv *.txt *.tsv *.text);;Tutti i file (*)"));
    if (percorso.isEmpty())
        return;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    m_importa->avvia(percorso);
}

void SuppressionView::esporta() {
    const QString percorso = Dialoghi::fileDaSalvare(this, tr("Esporta…"), QStringLiteral("esclusi.csv"),
                                                     tr("Testo separato da virgole (*.csv)"));
    if (percorso.isEmpty())
        return;
    CSVText::scrivi(percorso, m_modello->testoCSV()); // a failing write is ignored, as every file write is
}
