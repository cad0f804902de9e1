#include "screens/templates/TemplatesView.h"

#include "screens/editor/EditorController.h"
#include "screens/templates/ModelliListModel.h"
#include "screens/templates/PannelloLaterale.h"
#include "screens/templates/PreviewSheet.h"
#include "screens/templates/Stile.h"
#include "screens/templates/TemplateEditorPane.h"
#include "screens/templates/TemplatesModel.h"
#include "ui/Ambiente.h"
#include "ui/Comandi.h"
#include "ui/Dialoghi.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// Reading files and pictures can take a moment; the pointer says so.
struct CursoreOccupato {
    CursoreOccupato() { QApplication::setOverrideCursor(Qt::BusyCursor); }
    ~CursoreOccupato() { QApplication::restoreOverrideCursor(); }
};

} // namespace

TemplatesView::TemplatesView(Ambiente& ambiente, QWidget* genitore, const QString& radiceRisorse)
    : QWidget(genitore), m_ambiente(ambiente), m_radiceRisorse(radiceRisorse), m_editor(new EditorController(this)),
      m_modelli(new ModelliListModel(this)) {
    setObjectName(QStringLiteral("schermata-modelli"));
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* divisore = new QSplitter(Qt::Horizontal, this);
    divisore->setChildrenCollapsible(false);
    divisore->addWidget(creaColonnaElenco());
    m_dettaglio = new QStackedWidget(divisore);
    m_dettaglio->setMinimumWidth(460);
    m_segnaposto = creaSegnaposto();
    m_dettaglio->addWidget(m_segnaposto);
    divisore->addWidget(m_dettaglio);
    divisore->setStretchFactor(0, 0);
    divisore->setStretchFactor(1, 1);
    divisore->setSizes({220, 900});
    riga->addWidget(divisore);

    m_rinfresco = new Rinfresco(
        m_ambiente.store, Store::MessageTemplates | Store::TemplateAttachments | Store::ContactLists,
        [this](Store::Entities cosa) { aggiorna(cosa); }, this);
    aggiorna(Store::MessageTemplates | Store::TemplateAttachments | Store::ContactLists);
}

TemplatesView::~TemplatesView() = default;

QWidget* TemplatesView::creaColonnaElenco() {
    auto* colonna = new QWidget(this);
    colonna->setObjectName(QStringLiteral("colonnaModelli"));
    colonna->setMinimumWidth(180);
    colonna->setMaximumWidth(280);
    auto* disposizione = new QVBoxLayout(colonna);
    disposizione->setContentsMargins(8, 8, 8, 8);
    disposizione->setSpacing(6);
    auto* nuovo = new QToolButton(colonna);
    nuovo->setObjectName(QStringLiteral("nuovoModello"));
    nuovo->setText(tr("Nuovo modello"));
    nuovo->setIcon(Symbols::iconaColorata(QStringLiteral("plus"), Palette::colore(Colore::accent)));
    nuovo->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    nuovo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(nuovo, &QToolButton::clicked, this, &TemplatesView::nuovoModello);
    disposizione->addWidget(nuovo);

    m_elenco = new QListView(colonna);
    eliminaConCanc(m_elenco, [this] {
        if (m_selezione > 0)
            elimina(m_selezione);
    });
    m_elenco->setObjectName(QStringLiteral("elencoModelli"));
    m_elenco->setModel(m_modelli);
    m_elenco->setItemDelegate(new ModelloDelegate(m_elenco));
    m_elenco->setSelectionMode(QAbstractItemView::SingleSelection);
    m_elenco->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_elenco->setUniformItemSizes(true);
    m_elenco->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_elenco, &QListView::customContextMenuRequested, this, &TemplatesView::mostraMenu);
    connect(m_elenco->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& attuale) {
                if (attuale.isValid())
                    seleziona(m_modelli->id(attuale.row()));
            });
    disposizione->addWidget(m_elenco, 1);
    return colonna;
}

QWidget* TemplatesView::creaSegnaposto() {
    auto* segnaposto = new QWidget(this);
    segnaposto->setObjectName(QStringLiteral("nessunModello"));
    auto* colonna = new QVBoxLayout(segnaposto);
    colonna->addStretch(1);
    auto* immagine = new QLabel(segnaposto);
    immagine->setPixmap(
        Symbols::pixmap(QStringLiteral("doc.richtext"), Palette::colore(Colore::secondary), 56, devicePixelRatioF()));
    immagine->setAlignment(Qt::AlignCenter);
    colonna->addWidget(immagine);
    auto* titolo = new QLabel(tr("Nessun modello selezionato"), segnaposto);
    titolo->setFont(carattereScalato(titolo->font(), 1.4, QFont::DemiBold));
    titolo->setAlignment(Qt::AlignCenter);
    colonna->addWidget(titolo);
    auto* testo = new QLabel(tr("Crea un modello, scrivilo con la formattazione che vuoi e inserisci i campi del CSV "
                                "come banner."),
                             segnaposto);
    testo->setWordWrap(true);
    testo->setAlignment(Qt::AlignCenter);
    testo->setFixedWidth(420);
    testo->setStyleSheet(Stile::testoColorato(Palette::colore(Colore::secondary)));
    auto* centro = new QHBoxLayout;
    centro->addStretch(1);
    centro->addWidget(testo);
    centro->addStretch(1);
    colonna->addLayout(centro);
    colonna->addStretch(1);
    return segnaposto;
}

void TemplatesView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (m_apparsa)
        return;
    m_apparsa = true;
    if (m_listaRiferimento == 0 && !m_liste.isEmpty())
        setListaRiferimento(m_liste.first().id);
    if (m_selezione == 0 && m_modelli->rowCount() > 0)
        seleziona(m_modelli->id(0));
}

std::optional<ContactList> TemplatesView::riferimento() const {
    for (const ContactList& lista : m_liste)
        if (lista.id == m_listaRiferimento)
            return lista;
    return std::nullopt;
}

void TemplatesView::seleziona(RecordId id) {
    const auto modello = id ? m_ambiente.store.find<MessageTemplate>(id) : std::nullopt;
    const RecordId nuova = modello ? id : 0;
    if (nuova == m_selezione)
        return;
    m_selezione = nuova;
    m_allegati = modello ? m_ambiente.store.attachments(id) : QList<TemplateAttachment>();
    if (modello && !m_pane) {
        m_pane = new TemplateEditorPane(m_editor, modello->html, id, m_dettaglio, m_radiceRisorse);
        m_dettaglio->addWidget(m_pane);
        connect(m_pane, &TemplateEditorPane::corpoCambiato, this, [this](RecordId modello, const QString& html) {
            TemplatesModel::applicaCorpo(m_ambiente.store, modello, html);
        });
        connect(m_pane, &TemplateEditorPane::intestazioneCambiata, this,
                [this](const QString& nome, const QString& oggetto) {
                    TemplatesModel::applicaIntestazione(m_ambiente.store, m_selezione, nome, oggetto);
                });
        PannelloLaterale* pannello = m_pane->pannello();
        connect(pannello, &PannelloLaterale::listaScelta, this, &TemplatesView::setListaRiferimento);
        connect(pannello, &PannelloLaterale::aggiungiAllegati, this, &TemplatesView::aggiungiAllegati);
        connect(pannello, &PannelloLaterale::eliminaAllegato, this,
                [this](RecordId allegato) { TemplatesModel::eliminaAllegato(m_ambiente.store, allegato); });
        connect(pannello, &PannelloLaterale::anteprima, this, &TemplatesView::mostraAnteprima);
    }
    // The page gets the new content tagged with its template: an edit of the old one still on its way
    // is written back to the old one, never to this.
    m_editor->setContent(modello ? modello->html : QString(), m_selezione);
    aggiornaCampiEditor();

    const int riga = m_modelli->riga(m_selezione);
    if (riga >= 0 && m_elenco->currentIndex().row() != riga)
        m_elenco->setCurrentIndex(m_modelli->index(riga));
    else if (riga < 0)
        m_elenco->selectionModel()->clear();
    if (modello)
        m_pane->mostra(*modello, riferimento(), m_liste, m_allegati, true);
    m_dettaglio->setCurrentWidget(modello ? static_cast<QWidget*>(m_pane) : m_segnaposto);
}

void TemplatesView::setListaRiferimento(RecordId lista) {
    if (lista == m_listaRiferimento)
        return;
    m_listaRiferimento = lista;
    aggiornaCampiEditor();
    aggiorna({});
}

void TemplatesView::aggiornaCampiEditor() {
    m_editor->setFields(TemplatesModel::campiDisponibili(riferimento()));
}

void TemplatesView::aggiorna(Store::Entities cosa, bool nuovaSelezione) {
    if (cosa & Store::MessageTemplates)
        m_modelli->imposta(TemplatesModel::modelli(m_ambiente.store));
    if (cosa & Store::ContactLists) {
        m_liste = TemplatesModel::liste(m_ambiente.store);
        if (m_listaRiferimento && !riferimento()) {
            m_listaRiferimento = 0;
            aggiornaCampiEditor();
        }
    }
    if (m_selezione && m_modelli->riga(m_selezione) < 0) {
        seleziona(0); // deleted elsewhere
        return;
    }
    if (m_selezione) {
        const int riga = m_modelli->riga(m_selezione);
        if (m_elenco->currentIndex().row() != riga) {
            const QSignalBlocker blocco(m_elenco->selectionModel());
            m_elenco->setCurrentIndex(m_modelli->index(riga));
        }
    }
    if (!m_selezione || !m_pane)
        return;
    if (cosa & Store::TemplateAttachments)
        m_allegati = m_ambiente.store.attachments(m_selezione);
    if (const auto modello = m_ambiente.store.find<MessageTemplate>(m_selezione))
        m_pane->mostra(*modello, riferimento(), m_liste, m_allegati, nuovaSelezione);
}

void TemplatesView::nuovoModello() {
    const RecordId id = TemplatesModel::nuovoModello(m_ambiente.store);
    m_rinfresco->esegui();
    aggiorna(Store::MessageTemplates);
    seleziona(id);
}

void TemplatesView::duplica(RecordId modello) {
    const RecordId copia = TemplatesModel::duplica(m_ambiente.store, modello);
    if (!copia)
        return;
    aggiorna(Store::MessageTemplates);
    seleziona(copia);
}

void TemplatesView::elimina(RecordId modello) {
    if (modello == m_selezione)
        seleziona(0);
    TemplatesModel::elimina(m_ambiente.store, modello);
    aggiorna(Store::MessageTemplates);
}

void TemplatesView::aggiungiAllegati() {
    if (!m_selezione)
        return;
    const QStringList percorsi = Dialoghi::fileMultipliDaAprire(this, tr("Aggiungi allegati"));
    if (percorsi.isEmpty())
        return;
    const CursoreOccupato occupato;
    TemplatesModel::aggiungiAllegati(m_ambiente.store, m_selezione, percorsi);
}

void TemplatesView::mostraAnteprima() {
    const auto modello = m_ambiente.store.find<MessageTemplate>(m_selezione);
    if (!modello)
        return;
    if (m_anteprima)
        m_anteprima->close();
    m_anteprima = new PreviewSheet(*modello, riferimento(), m_ambiente.settings, m_ambiente.store, this);
    m_anteprima->setAttribute(Qt::WA_DeleteOnClose);
    m_anteprima->setWindowModality(Qt::WindowModal);
    connect(m_anteprima, &QObject::destroyed, this, [this] { m_anteprima = nullptr; });
    m_anteprima->open();
}

void TemplatesView::mostraMenu(const QPoint& punto) {
    const QModelIndex indice = m_elenco->indexAt(punto);
    if (!indice.isValid())
        return;
    const RecordId id = m_modelli->id(indice.row());
    QMenu menu(this);
    connect(menu.addAction(tr("Duplica")), &QAction::triggered, this, [this, id] { duplica(id); });
    connect(menu.addAction(tr("Elimina")), &QAction::triggered, this, [this, id] { elimina(id); });
    menu.exec(m_elenco->viewport()->mapToGlobal(punto));
}
