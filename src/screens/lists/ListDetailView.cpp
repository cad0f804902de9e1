#include "screens/lists/ListDetailView.h"

#include "screens/lists/ListDetailModel.h"
#include "screens/lists/ListeModel.h"
#include "ui/Dialoghi.h"
#include "ui/Formati.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

ListDetailView::ListDetailView(Store& store, RecordId lista, QWidget* genitore)
    : QWidget(genitore), m_store(store), m_id(lista), m_modello(new ListDetailModel(store, lista, this)) {
    setObjectName(QStringLiteral("dettaglioLista"));
    setMinimumWidth(420);
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(16, 12, 16, 12);
    colonna->setSpacing(8);
    colonna->addWidget(creaTesta());

    m_ricerca = new QLineEdit(this);
    m_ricerca->setObjectName(QStringLiteral("ricerca"));
    m_ricerca->setPlaceholderText(tr("Cerca nella lista"));
    m_ricerca->setClearButtonEnabled(true);
    colonna->addWidget(m_ricerca);

    m_tabella = new QTableView(this);
    m_tabella->setObjectName(QStringLiteral("destinatari"));
    // Tab goes on to the next field; the arrows move within the table.
    m_tabella->setTabKeyNavigation(false);
    m_tabella->setModel(m_modello);
    m_tabella->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tabella->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tabella->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tabella->setWordWrap(false);
    m_tabella->verticalHeader()->hide();
    m_tabella->verticalHeader()->setDefaultSectionSize(m_tabella->fontMetrics().height() + 8);
    m_tabella->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_tabella->horizontalHeader()->setDefaultSectionSize(140);
    m_tabella->horizontalHeader()->setHighlightSections(false);
    m_tabella->horizontalHeader()->setStretchLastSection(true);
    colonna->addWidget(m_tabella, 1);
    colonna->addWidget(creaAzioni());

    connect(m_ricerca, &QLineEdit::textChanged, m_modello, &ListDetailModel::setRicerca);
    connect(m_modello, &ListDetailModel::testaCambiata, this, &ListDetailView::mostraTesta);
    connect(m_modello, &ListDetailModel::righeCambiate, this, &ListDetailView::riapplicaSelezione);
    connect(m_tabella->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ListDetailView::selezioneCambiata);
    mostraTesta();
    aggiornaAzioni();
}

QWidget* ListDetailView::creaTesta() {
    auto* testa = new QWidget(this);
    auto* campi = new QFormLayout(testa);
    campi->setContentsMargins(0, 0, 0, 0);
    campi->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_nome = new QLineEdit(testa);
    m_nome->setObjectName(QStringLiteral("nomeLista"));
    campi->addRow(tr("Nome lista"), m_nome);
    m_tag = new QLineEdit(testa);
    m_tag->setObjectName(QStringLiteral("contrassegno"));
    m_tag->setPlaceholderText(tr("Contrassegno (es. clienti 2026)"));
    campi->addRow(tr("Contrassegno"), m_tag);
    m_note = new QPlainTextEdit(testa);
    m_note->setObjectName(QStringLiteral("note"));
    m_note->setTabChangesFocus(true);
    m_note->setFixedHeight(m_note->fontMetrics().height() * 3 + 12);
    campi->addRow(tr("Note"), m_note);
    m_colonna = new QComboBox(testa);
    m_colonna->setObjectName(QStringLiteral("colonnaEmail"));
    m_colonna->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_archiviata = new QCheckBox(tr("Archiviata"), testa);
    m_archiviata->setObjectName(QStringLiteral("archiviata"));
    auto* riga = new QHBoxLayout;
    riga->addWidget(m_colonna);
    riga->addSpacing(16);
    riga->addWidget(m_archiviata);
    riga->addStretch(1);
    campi->addRow(tr("Colonna email"), riga);

    m_origine = new QLabel(testa);
    m_origine->setObjectName(QStringLiteral("origine"));
    m_origine->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    m_conteggio = new QLabel(testa);
    m_conteggio->setObjectName(QStringLiteral("conteggio"));
    auto* sotto = new QHBoxLayout;
    sotto->addWidget(m_origine, 1);
    sotto->addWidget(m_conteggio);
    campi->addRow(sotto);

    // Each change is saved at once; typing a name does not wait for the field to lose focus.
    connect(m_nome, &QLineEdit::textEdited, m_modello, &ListDetailModel::setNome);
    connect(m_tag, &QLineEdit::textEdited, m_modello, &ListDetailModel::setTag);
    connect(m_note, &QPlainTextEdit::textChanged, this, [this] { m_modello->setNote(m_note->toPlainText()); });
    connect(m_colonna, &QComboBox::activated, this, [this](int indice) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        m_modello->setColonnaEmail(m_colonna->itemText(indice));
        QApplication::restoreOverrideCursor();
    });
    connect(m_archiviata, &QCheckBox::toggled, m_modello, &ListDetailModel::setArchiviata);
    return testa;
}

QWidget* ListDetailView::creaAzioni() {
    auto* azioni = new QWidget(this);
    auto* riga = new QHBoxLayout(azioni);
    riga->setContentsMargins(0, 0, 0, 0);
    m_escludi = new QPushButton(tr("Escludi selezionate"), azioni);
    m_escludi->setObjectName(QStringLiteral("escludi"));
    m_includi = new QPushButton(tr("Includi selezionate"), azioni);
    m_includi->setObjectName(QStringLiteral("includi"));
    m_globali = new QPushButton(tr("Aggiungi agli esclusi globali"), azioni);
    m_globali->setObjectName(QStringLiteral("esclusiGlobali"));
    auto* esporta = new QPushButton(tr("Esporta CSV…"), azioni);
    esporta->setObjectName(QStringLiteral("esporta"));
    riga->addWidget(m_escludi);
    riga->addWidget(m_includi);
    riga->addWidget(m_globali);
    m_selezionate = new QLabel(azioni);
    m_selezionate->setObjectName(QStringLiteral("selezionate"));
    m_selezionate->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    riga->addSpacing(8);
    riga->addWidget(m_selezionate);
    riga->addStretch(1);
    riga->addWidget(esporta);
    connect(m_escludi, &QPushButton::clicked, m_modello, &ListDetailModel::escludiSelezionate);
    connect(m_includi, &QPushButton::clicked, m_modello, &ListDetailModel::includiSelezionate);
    connect(m_globali, &QPushButton::clicked, m_modello, &ListDetailModel::aggiungiAgliEsclusiGlobali);
    connect(esporta, &QPushButton::clicked, this, &ListDetailView::esporta);
    return azioni;
}

void ListDetailView::mostraTesta() {
    if (!m_modello->esiste())
        return;
    const ContactList& lista = m_modello->lista();
    // Only what differs is set, so the field being typed in keeps its cursor.
    if (m_nome->text() != lista.name)
        m_nome->setText(lista.name);
    if (m_tag->text() != lista.tag)
        m_tag->setText(lista.tag);
    if (m_note->toPlainText() != lista.note) {
        const QSignalBlocker fermo(m_note);
        m_note->setPlainText(lista.note);
    }
    {
        const QSignalBlocker fermo(m_colonna);
        QStringList voci;
        for (int i = 0; i < m_colonna->count(); ++i)
            voci.append(m_colonna->itemText(i));
        if (voci != lista.columns) {
            m_colonna->clear();
            m_colonna->addItems(lista.columns);
        }
        m_colonna->setCurrentIndex(int(lista.columns.indexOf(lista.emailColumn)));
    }
    {
        const QSignalBlocker fermo(m_archiviata);
        m_archiviata->setChecked(lista.isArchived);
    }
    aggiorna(m_origine, tr("Origine: ") + lista.sourceFileName + tr(" · importata il ") + giornoEOra(lista.importedAt));
    // Until the rows arrive there is nothing to count: saying 0 would be false.
    aggiorna(m_conteggio, m_modello->caricato() ? formato(tr("%lld destinatari validi su %lld"),
                                                          qint64(m_modello->validi()), qint64(m_modello->totale()))
                                                : tr("Lettura dei destinatari…"));
    m_tabella->setColumnWidth(0, 22);
    m_tabella->setColumnWidth(m_modello->colonnaRicevute(), 70);
    m_tabella->setColumnWidth(m_modello->colonnaUltimoInvio(), 130);
    m_tabella->setColumnWidth(m_modello->colonnaUltimoEsito(), 100);
}

void ListDetailView::riapplicaSelezione() {
    m_riapplicando = true;
    QItemSelection scelta;
    const QSet<RecordId>& selezione = m_modello->selezioneRighe();
    const int ultima = m_modello->columnCount() - 1;
    for (int riga = 0; riga < m_modello->rowCount() && !selezione.isEmpty(); ++riga)
        if (selezione.contains(m_modello->idAlla(riga)))
            scelta.select(m_modello->index(riga, 0), m_modello->index(riga, ultima));
    m_tabella->selectionModel()->select(scelta, QItemSelectionModel::ClearAndSelect);
    m_riapplicando = false;
    aggiornaAzioni();
}

void ListDetailView::selezioneCambiata() {
    if (m_riapplicando)
        return;
    // Rows hidden by the search keep their place in the selection: only shown rows can be chosen or dropped.
    QSet<RecordId> selezione = m_modello->selezioneRighe();
    for (int riga = 0; riga < m_modello->rowCount(); ++riga) {
        const RecordId id = m_modello->idAlla(riga);
        if (m_tabella->selectionModel()->isRowSelected(riga))
            selezione.insert(id);
        else
            selezione.remove(id);
    }
    m_modello->setSelezioneRighe(std::move(selezione));
    aggiornaAzioni();
}

void ListDetailView::aggiornaAzioni() {
    const qsizetype quante = m_modello->righeSelezionate().size();
    const bool qualcuna = quante > 0;
    // Rows that the search hides stay selected: the count says so, since the commands act on them too.
    aggiorna(m_selezionate, quante == 0   ? QString()
                            : quante == 1 ? tr("1 selezionata")
                                          : tr("%1 selezionate").arg(quante));
    m_escludi->setEnabled(qualcuna);
    m_includi->setEnabled(qualcuna);
    m_globali->setEnabled(qualcuna);
}

void ListDetailView::esporta() {
    if (!m_modello->esiste())
        return;
    const QString percorso =
        Dialoghi::fileDaSalvare(this, tr("Esporta CSV"), m_modello->lista().name + QStringLiteral(".csv"),
                                tr("Testo separato da virgole (*.csv)"));
    if (percorso.isEmpty())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_modello->esporta(percorso);
    QApplication::restoreOverrideCursor();
}
