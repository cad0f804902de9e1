#include "screens/history/HistoryView.h"

#include "records/CSVText.h"
#include "screens/history/HistoryModel.h"
#include "ui/CampoRicerca.h"
#include "ui/Dialoghi.h"
#include "ui/Formati.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

HistoryView::HistoryView(Ambiente& ambiente, QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("schermata-storico"));
    m_modello = new HistoryModel(ambiente.store, this);
    // Four refreshes a second while a run saves after every message: enough for a table that scrolls by,
    // and the run shares the thread.
    m_rinfresco = new Rinfresco(
        ambiente.store, Store::SendLogs | Store::Campaigns, [this](Store::Entities cosa) { m_modello->segui(cosa); },
        this, 250);

    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(16, 12, 16, 12);
    colonna->setSpacing(10);
    colonna->addWidget(creaBarra());

    m_tabella = new QTableView(this);
    m_tabella->setObjectName(QStringLiteral("tabellaStorico"));
    // Tab goes on to the next field; the arrows move within the table.
    m_tabella->setTabKeyNavigation(false);
    m_tabella->setModel(m_modello);
    m_tabella->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tabella->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tabella->setAlternatingRowColors(true);
    m_tabella->setShowGrid(false);
    m_tabella->setWordWrap(false);
    m_tabella->setTextElideMode(Qt::ElideRight);
    m_tabella->verticalHeader()->hide();
    // One default height for every row: with a million rows the view must never measure them.
    m_tabella->verticalHeader()->setDefaultSectionSize(m_tabella->fontMetrics().height() + 10);
    QHeaderView* testata = m_tabella->horizontalHeader();
    testata->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    testata->setSectionResizeMode(QHeaderView::Interactive);
    testata->setStretchLastSection(true);
    colonna->addWidget(m_tabella, 1);

    connect(m_modello, &HistoryModel::righeCambiate, this, &HistoryView::mostraRighe);
    mostraRighe(m_modello->righe());
}

QWidget* HistoryView::creaBarra() {
    auto* barra = new QWidget(this);
    auto* riga = new QHBoxLayout(barra);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(8);

    auto* etichetta = new QLabel(tr("Stato"), barra);
    riga->addWidget(etichetta);
    m_stato = new QComboBox(barra);
    m_stato->setObjectName(QStringLiteral("filtroStato"));
    m_stato->addItem(tr("Tutti"));
    m_stato->addItem(tr("Inviate"), int(SendStatus::sent));
    m_stato->addItem(tr("Errori"), int(SendStatus::failed));
    m_stato->addItem(tr("Saltate"), int(SendStatus::skipped));
    m_stato->addItem(tr("Prove"), int(SendStatus::test));
    etichetta->setBuddy(m_stato);
    riga->addWidget(m_stato);
    connect(m_stato, &QComboBox::currentIndexChanged, this, [this] {
        const QVariant scelto = m_stato->currentData();
        QApplication::setOverrideCursor(Qt::BusyCursor);
        m_modello->setFiltroStato(scelto.isValid() ? std::optional(SendStatus(scelto.toInt())) : std::nullopt);
        QApplication::restoreOverrideCursor();
    });

    m_ricerca = campoRicerca(tr("Cerca indirizzo o oggetto"), "ricercaStorico", 260, barra);
    riga->addWidget(m_ricerca, 1);
    connect(m_ricerca, &QLineEdit::textChanged, this, [this](const QString& testo) {
        QApplication::setOverrideCursor(Qt::BusyCursor);
        m_modello->setRicerca(testo);
        QApplication::restoreOverrideCursor();
    });

    m_contatore = new QLabel(barra);
    m_contatore->setObjectName(QStringLiteral("contatoreRighe"));
    m_contatore->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    riga->addWidget(m_contatore);

    auto* esporta = new QPushButton(Symbols::icona(QStringLiteral("square.and.arrow.up")), tr("Esporta CSV…"), barra);
    esporta->setObjectName(QStringLiteral("esportaStorico"));
    connect(esporta, &QPushButton::clicked, this, &HistoryView::esporta);
    riga->addWidget(esporta);

    // Destructive: it acts at once, so it reads in red.
    auto* svuota = new QPushButton(Symbols::iconaColorata(QStringLiteral("trash"), Palette::colore(Colore::red)),
                                   tr("Svuota storico"), barra);
    svuota->setObjectName(QStringLiteral("svuotaStorico"));
    svuota->setStyleSheet(QStringLiteral("QPushButton { color: %1; }").arg(Palette::css(Palette::colore(Colore::red))));
    connect(svuota, &QPushButton::clicked, this, &HistoryView::svuota);
    riga->addWidget(svuota);
    return barra;
}

void HistoryView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (m_dimensionata)
        return;
    // Measured once shown, when the table has the font and style it will be drawn with.
    m_dimensionata = true;
    const QFontMetrics misure = m_tabella->fontMetrics();
    const int carattere = misure.averageCharWidth();
    int etichettaPiuLarga = 0;
    for (SendStatus stato : {SendStatus::sent, SendStatus::failed, SendStatus::skipped, SendStatus::test})
        etichettaPiuLarga = qMax(etichettaPiuLarga, misure.horizontalAdvance(label(stato)));
    m_tabella->setColumnWidth(HistoryModel::quando,
                              misure.horizontalAdvance(dataOraBreve(QDateTime::currentDateTime())) + 3 * carattere);
    // Symbol, its gap and the cell's margins beside the longest label.
    m_tabella->setColumnWidth(HistoryModel::stato, etichettaPiuLarga + 16 + 10 * carattere);
    m_tabella->setColumnWidth(HistoryModel::destinatario, 32 * carattere);
    m_tabella->setColumnWidth(HistoryModel::campagna, 20 * carattere);
    m_tabella->setColumnWidth(HistoryModel::servizio, 12 * carattere);
    m_tabella->setColumnWidth(HistoryModel::oggetto, 30 * carattere);
}

void HistoryView::mostraRighe(qint64 righe) {
    // The word stays plural for 1, as a counter of a table's rows.
    m_contatore->setText(QLocale().toString(righe) + tr(" righe"));
}

void HistoryView::rinfrescaOra() {
    m_rinfresco->esegui();
}

void HistoryView::esporta() {
    const QString percorso = Dialoghi::fileDaSalvare(this, tr("Esporta CSV…"), QStringLiteral("storico-invii.csv"),
                                                     tr("Testo separato da virgole (*.csv)"));
    if (percorso.isEmpty())
        return;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    CSVText::scrivi(percorso, m_modello->testoCSV()); // a failing write is ignored, as every file write is
    QApplication::restoreOverrideCursor();
}

void HistoryView::svuota() {
    QApplication::setOverrideCursor(Qt::BusyCursor);
    m_modello->svuota();
    QApplication::restoreOverrideCursor();
}
