#include "screens/lists/ListsView.h"

#include "ui/Comandi.h"

#include "screens/lists/AParte.h"
#include "screens/lists/ImportSheet.h"
#include "screens/lists/ListDetailView.h"
#include "screens/lists/ListeModel.h"
#include "screens/lists/ListRowView.h"
#include "ui/Dialoghi.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

// The one local file of a drag, if it carries exactly one.
QString fileTrascinato(const QMimeData* dati) {
    if (!dati || !dati->hasUrls() || dati->urls().size() != 1 || !dati->urls().first().isLocalFile())
        return {};
    const QString percorso = dati->urls().first().toLocalFile();
    return QFileInfo(percorso).isFile() ? percorso : QString();
}

} // namespace

ListsView::ListsView(Ambiente& ambiente, QWidget* genitore)
    : QWidget(genitore), m_store(ambiente.store), m_modello(new ListeModel(ambiente.store, this)) {
    setObjectName(QStringLiteral("schermata-liste"));
    setAcceptDrops(true);
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(0);
    colonna->addWidget(creaBarra());

    auto* divisore = new QSplitter(Qt::Horizontal, this);
    divisore->setChildrenCollapsible(false);
    m_master = new QListView(divisore);
    eliminaConCanc(m_master, [this] {
        if (m_selezione > 0)
            eliminaLista(m_selezione);
    });
    m_master->setObjectName(QStringLiteral("elencoListe"));
    m_master->setModel(m_modello);
    m_master->setItemDelegate(new ListRowView(m_master));
    m_master->setSelectionMode(QAbstractItemView::SingleSelection);
    m_master->setContextMenuPolicy(Qt::CustomContextMenu);
    m_master->setMinimumWidth(200);
    m_master->setMaximumWidth(320);
    m_master->setUniformItemSizes(false);
    m_master->setFrameShape(QFrame::NoFrame);
    m_pannello = new QStackedWidget(divisore);
    m_pannello->setMinimumWidth(420);
    m_vuoto = creaVuoto();
    m_pannello->addWidget(m_vuoto);
    divisore->addWidget(m_master);
    divisore->addWidget(m_pannello);
    divisore->setStretchFactor(0, 0);
    divisore->setStretchFactor(1, 1);
    divisore->setSizes({270, 900});
    colonna->addWidget(divisore, 1);

    connect(m_master->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& indice) {
        const QVariant lista = indice.data(ListeModel::ListaRole);
        if (lista.isValid() && m_master->selectionModel()->isSelected(indice))
            seleziona(lista.toLongLong());
    });
    connect(m_master->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const QModelIndexList scelte = m_master->selectionModel()->selectedIndexes();
        if (!scelte.isEmpty())
            seleziona(scelte.first().data(ListeModel::ListaRole).toLongLong());
    });
    connect(m_modello, &QAbstractItemModel::modelReset, this, &ListsView::listeRicaricate);
    connect(m_master, &QWidget::customContextMenuRequested, this, [this](const QPoint& punto) {
        std::unique_ptr<QMenu> menu(creaMenu());
        if (menu)
            menu->exec(m_master->viewport()->mapToGlobal(punto));
    });
    listeRicaricate();
}

QWidget* ListsView::creaBarra() {
    auto* barra = new QWidget(this);
    barra->setObjectName(QStringLiteral("barraListe"));
    auto* riga = new QHBoxLayout(barra);
    riga->setContentsMargins(12, 8, 12, 8);
    m_lettura = new QLabel(barra);
    m_lettura->setObjectName(QStringLiteral("lettura"));
    m_lettura->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    m_lettura->hide();
    m_importa = new QPushButton(Symbols::icona(QStringLiteral("square.and.arrow.down")), tr("Importa CSV"), barra);
    m_importa->setObjectName(QStringLiteral("importaCSV"));
    riga->addStretch(1);
    riga->addWidget(m_lettura);
    riga->addWidget(m_importa);
    connect(m_importa, &QPushButton::clicked, this, &ListsView::scegliFile);
    return barra;
}

QWidget* ListsView::creaVuoto() {
    auto* vuoto = new QWidget(this);
    vuoto->setObjectName(QStringLiteral("nessunaLista"));
    auto* colonna = new QVBoxLayout(vuoto);
    colonna->addStretch(1);
    auto* immagine = new QLabel(vuoto);
    immagine->setPixmap(
        Symbols::pixmap(QStringLiteral("tablecells"), Palette::colore(Colore::secondary), 56, devicePixelRatioF()));
    immagine->setAlignment(Qt::AlignCenter);
    colonna->addWidget(immagine);
    auto* titolo = new QLabel(tr("Nessuna lista selezionata"), vuoto);
    titolo->setFont(carattereScalato(titolo->font(), 1.4, QFont::DemiBold));
    titolo->setAlignment(Qt::AlignCenter);
    colonna->addWidget(titolo);
    auto* testo = new QLabel(tr("Importa un file CSV per creare una lista di destinatari riutilizzabile."), vuoto);
    testo->setAlignment(Qt::AlignCenter);
    testo->setWordWrap(true);
    testo->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    colonna->addWidget(testo);
    colonna->addStretch(1);
    return vuoto;
}

ListsView::~ListsView() {
    // Left while a file was being read: its result will find no screen, and the cursor must not stay busy.
    if (m_leggendo)
        QApplication::restoreOverrideCursor();
}

ImportSheet* ListsView::foglio() const {
    return m_foglio;
}

ListDetailView* ListsView::dettaglio() const {
    return m_dettaglio;
}

void ListsView::seleziona(RecordId lista) {
    const int riga = m_modello->rigaDi(lista);
    m_selezione = riga < 0 ? 0 : lista;
    {
        const QSignalBlocker fermo(m_master->selectionModel());
        if (riga < 0)
            m_master->selectionModel()->clearSelection();
        else
            m_master->selectionModel()->setCurrentIndex(m_modello->index(riga), QItemSelectionModel::ClearAndSelect);
    }
    m_master->viewport()->update();
    mostraDettaglio();
}

void ListsView::listeRicaricate() {
    // The master list is read anew at each change; the selection follows the list, wherever it now stands.
    seleziona(m_selezione);
}

void ListsView::mostraDettaglio() {
    if (m_selezione == 0) {
        if (m_dettaglio)
            m_dettaglio->deleteLater();
        m_pannello->setCurrentWidget(m_vuoto);
        return;
    }
    if (m_dettaglio && m_dettaglio->lista() == m_selezione)
        return;
    if (m_dettaglio)
        m_dettaglio->deleteLater();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_dettaglio = new ListDetailView(m_store, m_selezione, m_pannello);
    m_pannello->addWidget(m_dettaglio);
    m_pannello->setCurrentWidget(m_dettaglio);
    QApplication::restoreOverrideCursor();
}

void ListsView::eliminaLista(RecordId lista) {
    if (m_selezione == lista)
        seleziona(0);
    m_store.remove<ContactList>(lista);
    m_store.save();
}

QMenu* ListsView::creaMenu() {
    const int riga = m_modello->rigaDi(m_selezione);
    if (riga < 0)
        return nullptr;
    const ContactList lista = m_modello->voce(riga).lista;
    auto* menu = new QMenu(this);
    menu->addAction(lista.isArchived ? tr("Riattiva") : tr("Archivia"), this, [this, lista] {
        ContactList cambiata = lista;
        cambiata.isArchived = !cambiata.isArchived;
        m_store.update(cambiata);
        m_store.save();
    });
    QAction* elimina = menu->addAction(Symbols::iconaColorata(QStringLiteral("trash"), Palette::colore(Colore::red)),
                                       tr("Elimina"), this, [this, lista] { eliminaLista(lista.id); });
    elimina->setObjectName(QStringLiteral("elimina"));
    return menu;
}

void ListsView::scegliFile() {
    const QString percorso =
        Dialoghi::fileDaAprire(this, tr("Importa CSV"),
                               tr("Testo separato da virgole (*.csv);;Testo (*.txt);;Testo separato da tabulazioni "
                                  "(*.tsv *.tab);;Tutti i file (*)"));
    if (!percorso.isEmpty())
        leggi(percorso);
}

void ListsView::leggi(const QString& percorso) {
    if (m_leggendo || m_foglio)
        return;
    m_leggendo = true;
    m_importa->setEnabled(false);
    m_lettura->setText(tr("Lettura di %1…").arg(QFileInfo(percorso).fileName()));
    m_lettura->show();
    QApplication::setOverrideCursor(Qt::BusyCursor);
    // A large file takes a moment to read and decode: that happens beside the interface, which stays alive.
    aParte<LetturaFile>(
        this, [percorso] { return leggiFile(percorso); },
        [this](LetturaFile lettura) {
            QApplication::restoreOverrideCursor();
            m_leggendo = false;
            m_importa->setEnabled(true);
            m_lettura->hide();
            letto(lettura);
        });
}

void ListsView::letto(const LetturaFile& lettura) {
    if (!lettura.pending) {
        Dialoghi::avviso(this, tr("Importazione non riuscita"), lettura.errore);
        return;
    }
    m_foglio = new ImportSheet(*lettura.pending, m_store, this);
    m_foglio->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_foglio, &ImportSheet::completata, this, [this](const ContactList& lista) {
        m_modello->ricarica();
        seleziona(lista.id);
    });
    m_foglio->open();
}

void ListsView::dragEnterEvent(QDragEnterEvent* evento) {
    if (!fileTrascinato(evento->mimeData()).isEmpty() && !m_leggendo && !m_foglio)
        evento->acceptProposedAction();
}

void ListsView::dropEvent(QDropEvent* evento) {
    const QString percorso = fileTrascinato(evento->mimeData());
    if (percorso.isEmpty())
        return;
    evento->acceptProposedAction();
    leggi(percorso);
}

void ListsView::nuovo() {
    scegliFile();
}

QLineEdit* ListsView::ricerca() const {
    ListDetailView* mostrato = dettaglio();
    return mostrato && mostrato->isVisible() ? mostrato->campoRicerca() : nullptr;
}
