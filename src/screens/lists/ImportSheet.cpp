#include "screens/lists/ImportSheet.h"

#include "ui/Formati.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int larghezzaCella = 130;

QLabel* nota(const QString& testo, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    etichetta->setWordWrap(true);
    etichetta->setFont(carattereScalato(etichetta->font(), 0.9));
    etichetta->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    return etichetta;
}

} // namespace

ImportSheet::ImportSheet(PendingImport pending, Store& store, QWidget* genitore)
    : QDialog(genitore), m_stato(std::move(pending)), m_store(store) {
    setObjectName(QStringLiteral("foglioImportazione"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Importa CSV"));
    setMinimumSize(760, 800);
    resize(760, 800);

    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(24, 20, 24, 16);
    colonna->setSpacing(10);
    auto* titolo = new QLabel(tr("Importa ") + QFileInfo(m_stato.pending().url).fileName(), this);
    titolo->setObjectName(QStringLiteral("titoloFoglio"));
    titolo->setFont(carattereScalato(titolo->font(), 1.35, QFont::DemiBold));
    colonna->addWidget(titolo);
    m_fatti = nota(QString(), this);
    m_fatti->setObjectName(QStringLiteral("fattiFile"));
    colonna->addWidget(m_fatti);
    m_modulo = new QWidget(this);
    auto* corpo = new QVBoxLayout(m_modulo);
    corpo->setContentsMargins(0, 0, 0, 0);
    corpo->addWidget(creaModulo());
    corpo->addWidget(creaAnteprima(), 1);
    colonna->addWidget(m_modulo, 1);

    auto* piede = new QHBoxLayout;
    m_iconaPiede = new QLabel(this);
    m_iconaPiede->setPixmap(Symbols::pixmap(QStringLiteral("exclamationmark.triangle.fill"),
                                            Palette::colore(Colore::orange), 16, devicePixelRatioF()));
    m_piede = new QLabel(this);
    m_piede->setObjectName(QStringLiteral("piede"));
    piede->addWidget(m_iconaPiede);
    piede->addWidget(m_piede, 1);
    m_progresso = new QProgressBar(this);
    m_progresso->setObjectName(QStringLiteral("progresso"));
    m_progresso->setTextVisible(false);
    m_progresso->setMaximumWidth(220);
    m_progresso->hide();
    piede->addWidget(m_progresso);
    auto* annulla = new QPushButton(tr("Annulla"), this);
    m_annulla = annulla;
    annulla->setObjectName(QStringLiteral("annulla"));
    m_importa = new QPushButton(tr("Importa"), this);
    m_importa->setObjectName(QStringLiteral("importa"));
    m_importa->setDefault(true);
    piede->addWidget(annulla);
    piede->addWidget(m_importa);
    colonna->addLayout(piede);

    connect(annulla, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_importa, &QPushButton::clicked, this, &ImportSheet::importa);
    mostraTabella();
}

ImportSheet::~ImportSheet() {
    // A screen closed halfway through an import: the rest goes in now, so no later save commits half a list.
    if (m_importazione && !m_importazione->finita()) {
        while (!m_importazione->prossimaFetta()) {
        }
        QApplication::restoreOverrideCursor();
    }
}

QWidget* ImportSheet::creaModulo() {
    auto* modulo = new QWidget(this);
    auto* campi = new QFormLayout(modulo);
    campi->setContentsMargins(0, 6, 0, 6);
    campi->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    m_nome = new QLineEdit(m_stato.nome, modulo);
    m_nome->setObjectName(QStringLiteral("nomeLista"));
    campi->addRow(tr("Nome lista"), m_nome);
    m_tag = new QLineEdit(modulo);
    m_tag->setObjectName(QStringLiteral("contrassegno"));
    campi->addRow(tr("Contrassegno"), m_tag);
    campi->addRow(QString(), nota(tr("Etichetta libera per ritrovare la lista (es. \"clienti 2026\")."), modulo));
    m_note = new QLineEdit(modulo);
    m_note->setObjectName(QStringLiteral("note"));
    campi->addRow(tr("Note"), m_note);

    m_riga = new QSpinBox(modulo);
    m_riga->setObjectName(QStringLiteral("rigaIntestazione"));
    m_riga->setPrefix(tr("riga "));
    // The stepper shows rows from 1, the state counts them from 0.
    m_riga->setRange(1, int(m_stato.massimaRigaIntestazione()) + 1);
    m_riga->setValue(int(m_stato.rigaIntestazione()) + 1);
    m_riga->setMinimumWidth(110);
    auto* righe = new QHBoxLayout;
    righe->addWidget(m_riga);
    righe->addStretch(1);
    campi->addRow(tr("Riga con i nomi delle colonne"), righe);
    campi->addRow(QString(), nota(tr("I file esportati da Numbers o Excel iniziano spesso con il titolo della tabella: "
                                     "qui si indica dove sono davvero le intestazioni."),
                                  modulo));
    m_colonneTrovate = new QLabel(modulo);
    m_colonneTrovate->setObjectName(QStringLiteral("colonneTrovate"));
    m_colonneTrovate->setWordWrap(true);
    m_colonneTrovate->setTextInteractionFlags(Qt::TextSelectableByMouse);
    campi->addRow(tr("Colonne trovate"), m_colonneTrovate);
    m_colonna = new QComboBox(modulo);
    m_colonna->setObjectName(QStringLiteral("colonnaEmail"));
    m_colonna->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    auto* scelta = new QHBoxLayout;
    scelta->addWidget(m_colonna);
    scelta->addStretch(1);
    campi->addRow(tr("Colonna email"), scelta);
    m_scarta = new QCheckBox(tr("Scarta le righe senza email valida"), modulo);
    m_scarta->setObjectName(QStringLiteral("scartaSenzaEmail"));
    m_scarta->setChecked(m_stato.scartaSenzaEmail);
    campi->addRow(QString(), m_scarta);
    m_rimuovi = new QCheckBox(tr("Rimuovi indirizzi duplicati"), modulo);
    m_rimuovi->setObjectName(QStringLiteral("rimuoviDuplicati"));
    m_rimuovi->setChecked(m_stato.rimuoviDuplicati);
    campi->addRow(QString(), m_rimuovi);

    connect(m_nome, &QLineEdit::textChanged, this, [this](const QString& testo) {
        m_stato.nome = testo;
        mostraConteggio();
    });
    connect(m_tag, &QLineEdit::textChanged, this, [this](const QString& testo) { m_stato.tag = testo; });
    connect(m_note, &QLineEdit::textChanged, this, [this](const QString& testo) { m_stato.note = testo; });
    connect(m_riga, &QSpinBox::valueChanged, this, [this](int valore) {
        m_stato.setRigaIntestazione(valore - 1);
        mostraTabella();
    });
    connect(m_colonna, &QComboBox::currentTextChanged, this, [this](const QString& testo) {
        if (testo.isEmpty() && m_colonna->count() > 0)
            return; // the picker is being filled
        m_stato.colonnaEmail = testo;
        mostraConteggio();
    });
    connect(m_scarta, &QCheckBox::toggled, this, [this](bool acceso) {
        m_stato.scartaSenzaEmail = acceso;
        mostraConteggio();
    });
    connect(m_rimuovi, &QCheckBox::toggled, this, [this](bool acceso) {
        m_stato.rimuoviDuplicati = acceso;
        mostraConteggio();
    });
    return modulo;
}

QWidget* ImportSheet::creaAnteprima() {
    auto* pannello = new QWidget(this);
    auto* colonna = new QVBoxLayout(pannello);
    colonna->setContentsMargins(0, 0, 0, 0);
    auto* titolo = new QLabel(tr("Anteprima"), pannello);
    titolo->setFont(carattereScalato(titolo->font(), 1.0, QFont::DemiBold));
    colonna->addWidget(titolo);
    m_griglia = new QStandardItemModel(this);
    m_anteprima = new QTableView(pannello);
    m_anteprima->setObjectName(QStringLiteral("anteprima"));
    // Tab goes on to the next field; the arrows move within the table.
    m_anteprima->setTabKeyNavigation(false);
    m_anteprima->setModel(m_griglia);
    m_anteprima->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_anteprima->setSelectionMode(QAbstractItemView::NoSelection);
    m_anteprima->verticalHeader()->hide();
    m_anteprima->horizontalHeader()->setDefaultSectionSize(larghezzaCella);
    m_anteprima->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_anteprima->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_anteprima->setWordWrap(false);
    m_anteprima->setTextElideMode(Qt::ElideRight);
    colonna->addWidget(m_anteprima, 1);
    return pannello;
}

void ImportSheet::mostraTabella() {
    const CSVParser::Table& tabella = m_stato.tabellaCorrente();
    m_fatti->setText(formato(tr("%lld righe"), qint64(tabella.rows.size())) + QStringLiteral(" · ") +
                     formato(tr("%lld colonne"), qint64(tabella.columns.size())) + QStringLiteral(" · ") +
                     tr("separatore ") + m_stato.descrizioneDelimitatore() + QStringLiteral(" · ") +
                     tabella.encodingName);
    m_colonneTrovate->setText(tabella.columns.join(QStringLiteral(" · ")));

    const QString scelta = m_stato.colonnaEmail;
    {
        const QSignalBlocker fermo(m_colonna);
        m_colonna->clear();
        m_colonna->addItems(tabella.columns);
        m_colonna->setCurrentIndex(int(tabella.columns.indexOf(scelta)));
    }

    const QList<QStringList> righe = m_stato.righeAnteprima();
    m_griglia->clear();
    m_griglia->setColumnCount(int(tabella.columns.size()));
    m_griglia->setRowCount(int(righe.size()));
    m_griglia->setHorizontalHeaderLabels(tabella.columns);
    for (int r = 0; r < righe.size(); ++r)
        for (int c = 0; c < tabella.columns.size(); ++c)
            m_griglia->setItem(r, c, new QStandardItem(c < righe.at(r).size() ? righe.at(r).at(c) : QString()));
    mostraConteggio();
}

void ImportSheet::mostraConteggio() {
    const QStringList& colonne = m_stato.tabellaCorrente().columns;
    for (int c = 0; c < colonne.size(); ++c) {
        const bool email = colonne.at(c) == m_stato.colonnaEmail;
        m_griglia->setHeaderData(c, Qt::Horizontal, email ? QVariant(Palette::colore(Colore::accent)) : QVariant(),
                                 Qt::ForegroundRole);
        QFont carattere = m_anteprima->horizontalHeader()->font();
        carattere.setWeight(email ? QFont::DemiBold : QFont::Normal);
        m_griglia->setHeaderData(c, Qt::Horizontal, carattere, Qt::FontRole);
    }
    const qsizetype valide = m_stato.conteggioValide();
    m_iconaPiede->setVisible(valide == 0);
    m_piede->setText(valide == 0 ? tr("Nessun indirizzo valido nella colonna scelta.")
                                 : tr("Verranno importati ") + QString::number(valide) + tr(" destinatari validi."));
    m_importa->setEnabled(m_stato.importabile());
}

void ImportSheet::importa() {
    if (!m_stato.importabile() || m_importazione)
        return;
    // The rows go in a slice per turn of the event loop, so the window stays alive and shows how far it got.
    m_modulo->setEnabled(false);
    m_importa->setEnabled(false);
    m_annulla->setEnabled(false);
    m_iconaPiede->hide();
    m_piede->setText(tr("Importazione in corso…"));
    m_progresso->setRange(0, int(m_stato.tabellaCorrente().rows.size()));
    m_progresso->setValue(0);
    m_progresso->show();
    QApplication::setOverrideCursor(Qt::BusyCursor);
    m_importazione = std::make_unique<Importazione>(m_stato, m_store);
    QTimer::singleShot(0, this, &ImportSheet::prossimaFetta);
}

void ImportSheet::prossimaFetta() {
    if (!m_importazione->prossimaFetta()) {
        m_progresso->setValue(int(m_importazione->fatte()));
        QTimer::singleShot(0, this, &ImportSheet::prossimaFetta);
        return;
    }
    QApplication::restoreOverrideCursor();
    const ContactList lista = m_importazione->lista();
    Q_EMIT completata(lista);
    accept();
}

void ImportSheet::reject() {
    // Once the rows are going in, the sheet closes only when they are all in.
    if (!m_importazione)
        QDialog::reject();
}
