#include "screens/campaigns/CampaignsView.h"

#include "engine/SendEngine.h"
#include "screens/campaigns/CampaignDetailView.h"
#include "screens/campaigns/CampaignReadings.h"
#include "ui/Ambiente.h"
#include "ui/Comandi.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Riquadri.h"
#include "ui/Segnaposto.h"
#include "ui/Symbols.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr Store::Entities mostrate = Store::Campaigns | Store::ContactLists | Store::ContactRows |
                                     Store::MessageTemplates | Store::SendLogs | Store::Suppressions;

// A row of the list: the name, and under it the status, what was sent and, in red, the errors.
QWidget* rigaCampagna(const Campaign& campagna, qint64 inviate, qint64 errori, int larghezza, QWidget* genitore) {
    auto* riga = new QWidget(genitore);
    auto* colonna = new QVBoxLayout(riga);
    colonna->setContentsMargins(8, 5, 8, 5);
    colonna->setSpacing(1);
    auto* nome = new QLabel(riga);
    nome->setFont(carattereScalato(nome->font(), 1.0, QFont::DemiBold));
    // A long name ends in an ellipsis rather than widening the column; the whole of it is in the tooltip.
    nome->setText(QFontMetrics(nome->font()).elidedText(campagna.name, Qt::ElideRight, larghezza - 16));
    nome->setToolTip(campagna.name);
    auto* stato = new QLabel(riga);
    stato->setFont(carattereScalato(stato->font(), 0.85));
    QString testo = CampaignReadings::statoInElenco(campagna, inviate).toHtmlEscaped();
    const QString rosso = CampaignReadings::erroriInElenco(errori);
    if (!rosso.isEmpty())
        testo += QStringLiteral(" <span style=\"color: %1\">%2</span>")
                     .arg(Palette::css(Palette::colore(Colore::red)), rosso.toHtmlEscaped());
    stato->setText(testo);
    stato->setTextFormat(Qt::RichText);
    stato->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    colonna->addWidget(nome);
    colonna->addWidget(stato);
    return riga;
}

} // namespace

CampaignsView::CampaignsView(Ambiente& ambiente, QWidget* genitore)
    : QWidget(genitore), m_ambiente(ambiente), m_motore(std::make_shared<SendEngine>()) {
    setObjectName(QStringLiteral("schermata-campagne"));
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* divisore = new QSplitter(Qt::Horizontal, this);
    divisore->setChildrenCollapsible(false);
    divisore->addWidget(creaColonnaElenco());
    m_destra = new QStackedWidget(divisore);
    m_destra->setMinimumWidth(460);
    m_destra->addWidget(creaSegnaposto(QStringLiteral("paperplane"), tr("Nessuna campagna selezionata"),
                                       tr("Una campagna unisce una lista e un modello, e tiene traccia di chi ha già "
                                          "ricevuto il messaggio."),
                                       m_destra));
    auto* scorrimento = new QScrollArea(m_destra);
    scorrimento->setWidgetResizable(true);
    scorrimento->setFrameShape(QFrame::NoFrame);
    m_dettaglio = new CampaignDetailView(m_ambiente, m_motore, scorrimento);
    scorrimento->setWidget(m_dettaglio);
    m_destra->addWidget(scorrimento);
    divisore->addWidget(m_destra);
    divisore->setStretchFactor(0, 0);
    divisore->setStretchFactor(1, 1);
    divisore->setSizes({240, 900});
    riga->addWidget(divisore);

    // Every figure of the detail comes from one plan of the whole list: twice a second is plenty while a run
    // saves after every message.
    m_differita = new QTimer(this);
    m_differita->setSingleShot(true);
    connect(m_differita, &QTimer::timeout, this, [this] { aggiorna({}); });
    m_rinfresco = new Rinfresco(
        m_ambiente.store, mostrate, [this](Store::Entities cosa) { aggiorna(cosa); }, this, 500);
    leggi(mostrate);
}

CampaignsView::~CampaignsView() = default;

QWidget* CampaignsView::creaColonnaElenco() {
    auto* colonna = new QWidget(this);
    colonna->setObjectName(QStringLiteral("colonnaCampagne"));
    colonna->setMinimumWidth(190);
    colonna->setMaximumWidth(320);
    auto* disposizione = new QVBoxLayout(colonna);
    disposizione->setContentsMargins(8, 8, 8, 8);
    disposizione->setSpacing(6);
    m_nuova = new QPushButton(Symbols::icona(QStringLiteral("plus")), tr("Nuova campagna"), colonna);
    m_nuova->setObjectName(QStringLiteral("nuovaCampagna"));
    connect(m_nuova, &QPushButton::clicked, this, &CampaignsView::nuovaCampagna);
    disposizione->addWidget(m_nuova);
    m_elenco = new QListWidget(colonna);
    eliminaConCanc(m_elenco, [this] {
        if (m_selezione > 0)
            elimina(m_selezione);
    });
    m_elenco->setObjectName(QStringLiteral("elencoCampagne"));
    m_elenco->setContextMenuPolicy(Qt::CustomContextMenu);
    m_elenco->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Names are shortened to the column's width: when the column changes width, they are made again.
    m_elenco->viewport()->installEventFilter(this);
    connect(m_elenco, &QListWidget::customContextMenuRequested, this, &CampaignsView::mostraMenu);
    connect(m_elenco, &QListWidget::currentRowChanged, this, [this](int riga) {
        const RecordId id = riga >= 0 ? m_elenco->item(riga)->data(Qt::UserRole).toLongLong() : 0;
        if (id != m_selezione) {
            m_selezione = id;
            mostraDettaglio();
        }
    });
    disposizione->addWidget(m_elenco, 1);
    return colonna;
}

void CampaignsView::aggiorna(Store::Entities cosa) {
    // A run saves after every message and each reading plans the whole list: while this screen's engine runs,
    // the figures follow every two seconds, so that the run keeps its pace.
    m_inAttesa |= cosa;
    if (m_motore->isRunning() && m_ultimaLettura.isValid() && m_ultimaLettura.elapsed() < 2000) {
        if (!m_differita->isActive())
            m_differita->start(int(2000 - m_ultimaLettura.elapsed()));
        return;
    }
    leggi({});
}

void CampaignsView::leggi(Store::Entities cosa) {
    cosa |= std::exchange(m_inAttesa, {});
    m_ultimaLettura.start();
    Store& store = m_ambiente.store;
    if (cosa & (Store::ContactLists | Store::ContactRows)) {
        m_liste = store.all<ContactList>();
        std::sort(m_liste.begin(), m_liste.end(),
                  [](const ContactList& a, const ContactList& b) { return a.importedAt > b.importedAt; });
        // Counting valid rows reads every row: not at each of a run's saves, only when lists change or no run
        // is going on.
        if ((cosa & Store::ContactLists) || !m_motore->isRunning()) {
            m_validiPerLista.clear();
            for (const ContactList& lista : std::as_const(m_liste))
                m_validiPerLista.insert(lista.id, store.validRowCount(lista.id));
        }
    }
    if (cosa & Store::MessageTemplates) {
        m_modelli = store.all<MessageTemplate>();
        std::sort(m_modelli.begin(), m_modelli.end(),
                  [](const MessageTemplate& a, const MessageTemplate& b) { return a.updatedAt > b.updatedAt; });
    }
    m_campagne = store.all<Campaign>();
    std::sort(m_campagne.begin(), m_campagne.end(),
              [](const Campaign& a, const Campaign& b) { return a.createdAt > b.createdAt; });
    m_nuova->setEnabled(!m_liste.isEmpty() && !m_modelli.isEmpty());
    riempiElenco();
    mostraDettaglio();
}

void CampaignsView::riempiElenco() {
    const QSignalBlocker blocco(m_elenco);
    m_elenco->clear();
    int corrente = -1;
    for (const Campaign& campagna : std::as_const(m_campagne)) {
        auto* voce = new QListWidgetItem(m_elenco);
        voce->setData(Qt::UserRole, campagna.id);
        QWidget* riga =
            rigaCampagna(campagna, m_ambiente.store.sentCount(campagna.id), m_ambiente.store.failedCount(campagna.id),
                         m_elenco->viewport()->width(), m_elenco);
        voce->setSizeHint(riga->sizeHint());
        m_elenco->setItemWidget(voce, riga);
        if (campagna.id == m_selezione)
            corrente = m_elenco->count() - 1;
    }
    if (corrente < 0)
        m_selezione = 0;
    m_elenco->setCurrentRow(corrente);
}

void CampaignsView::mostraDettaglio() {
    const auto trovata =
        std::find_if(m_campagne.cbegin(), m_campagne.cend(), [this](const Campaign& c) { return c.id == m_selezione; });
    if (trovata == m_campagne.cend()) {
        m_destra->setCurrentIndex(0);
        return;
    }
    m_dettaglio->imposta(*trovata, m_liste, m_modelli, m_validiPerLista);
    m_destra->setCurrentIndex(1);
}

void CampaignsView::seleziona(RecordId campagna) {
    m_selezione = campagna;
    riempiElenco();
    mostraDettaglio();
}

void CampaignsView::nuovaCampagna() {
    if (m_liste.isEmpty() || m_modelli.isEmpty())
        return;
    Campaign campagna(CampaignReadings::nomeNuovaCampagna());
    campagna.listId = m_liste.first().id;
    campagna.templateId = m_modelli.first().id;
    m_ambiente.store.insert(campagna);
    m_ambiente.store.save();
    m_selezione = campagna.id;
    leggi(Store::Campaigns);
}

void CampaignsView::nuovo() {
    if (m_nuova->isEnabled())
        nuovaCampagna();
}

void CampaignsView::elimina(RecordId campagna) {
    if (campagna == m_selezione)
        m_selezione = 0;
    m_ambiente.store.remove<Campaign>(campagna);
    m_ambiente.store.save();
    leggi(Store::Campaigns);
}

bool CampaignsView::eventFilter(QObject* oggetto, QEvent* evento) {
    if (oggetto == m_elenco->viewport() && evento->type() == QEvent::Resize &&
        static_cast<QResizeEvent*>(evento)->oldSize().width() != m_elenco->viewport()->width())
        riempiElenco();
    return QWidget::eventFilter(oggetto, evento);
}

void CampaignsView::mostraMenu(const QPoint& punto) {
    QListWidgetItem* voce = m_elenco->itemAt(punto);
    if (!voce)
        return;
    const RecordId id = voce->data(Qt::UserRole).toLongLong();
    QMenu menu(this);
    QAction* elimina = menu.addAction(Symbols::icona(QStringLiteral("trash")), tr("Elimina"));
    if (menu.exec(m_elenco->viewport()->mapToGlobal(punto)) == elimina)
        this->elimina(id);
}
