#include "screens/lists/ListDetailModel.h"

#include "records/CSVText.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "screens/lists/ListeModel.h"
#include "screens/lists/StatoLista.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Symbols.h"

#include "screens/lists/AParte.h"
#include <QCoreApplication>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QPalette>

#include <numeric>
#include <utility>

namespace {

// Between two values of a row in its search text: a character nobody types, so no match spans two values.
constexpr QChar separatore(0x1F);

QList<QString> testiDiRicerca(const QList<QString>& valori) {
    QList<QString> testi;
    testi.reserve(valori.size());
    for (const QString& codificati : valori) {
        QString testo;
        const RowValues riga = Store::decodeRowValues(codificati.toUtf8());
        for (auto it = riga.cbegin(); it != riga.cend(); ++it) {
            testo += Text::lowercased(it.value());
            testo += separatore;
        }
        testi.append(std::move(testo));
    }
    return testi;
}

// The three icons of a row's state, made once: data() is asked for them at every paint of every row.
const QIcon& iconaStato(StatoRiga stato) {
    static const auto fai = [](StatoRiga s) {
        QIcon icona = Symbols::iconaColorata(simbolo(s), Palette::colore(colore(s)));
        // On a selected row the state's colour would vanish into the highlight.
        const QColor scelta = QGuiApplication::palette().color(QPalette::HighlightedText);
        for (int lato : {16, 24, 32})
            icona.addPixmap(Symbols::pixmap(simbolo(s), scelta, lato), QIcon::Selected);
        return icona;
    };
    static const QIcon icone[] = {fai(StatoRiga::esclusa), fai(StatoRiga::valida), fai(StatoRiga::nonValida)};
    return icone[int(stato)];
}

// Beyond this many decoded rows the cache starts again: a table shows a screenful at a time.
constexpr qsizetype valoriInCache = 4096;

} // namespace

ListDetailModel::ListDetailModel(Store& store, RecordId lista, QObject* genitore)
    : QAbstractTableModel(genitore), m_store(store), m_id(lista) {
    ricarica();
    // A change of the head alone (typing a name) reads the list again, not its rows.
    new Rinfresco(
        store, Store::ContactLists | Store::ContactRows,
        [this](Store::Entities cosa) {
            if (cosa & Store::ContactRows)
                ricarica();
            else
                rileggiTesta();
        },
        this);
}

void ListDetailModel::rileggiTesta() {
    m_lista = m_store.find<ContactList>(m_id);
    if (m_lista && m_lista->columns != m_colonne) {
        ricarica();
        return;
    }
    Q_EMIT testaCambiata();
}

ListDetailModel::~ListDetailModel() = default;

struct ListDetailModel::Caricamento {
    QList<Store::RigaDettaglio> righe;
    QList<QString> testi;
    int validi = 0;
};

ListDetailModel::Caricamento ListDetailModel::carica(QList<Store::RigaDettaglio> righe) {
    Caricamento caricamento;
    for (const Store::RigaDettaglio& riga : std::as_const(righe))
        if (!riga.isExcluded && isValidEmailSyntax(riga.email))
            ++caricamento.validi;
    QList<QString> valori;
    valori.reserve(righe.size());
    for (const Store::RigaDettaglio& riga : std::as_const(righe))
        valori.append(riga.valori);
    caricamento.testi = testiDiRicerca(valori);
    caricamento.righe = std::move(righe);
    return caricamento;
}

void ListDetailModel::ricarica() {
    m_lista = m_store.find<ContactList>(m_id);
    const quint64 generazione = ++m_generazione;
    if (!m_lista) {
        applica({});
        return;
    }
    if (m_lista->columns != m_colonne) {
        // The table's columns are the list's own: shown at once, before the rows arrive.
        beginResetModel();
        m_colonne = m_lista->columns;
        endResetModel();
    }
    // On a store file with nothing pending, a large list is read, counted and made searchable beside the
    // interface; what is shown meanwhile is the previous reading.
    // One reading at a time: changes that come meanwhile ask for one more reading when it ends.
    if (m_store.leggibileAParte()) {
        if (m_inLettura) {
            m_daRileggere = true;
            return;
        }
        m_inLettura = true;
        aParte<Caricamento>(
            this, [percorso = m_store.path(), id = m_id] { return carica(Store::righeDettaglio(percorso, id)); },
            [this, generazione](Caricamento caricamento) {
                m_inLettura = false;
                if (generazione == m_generazione && !m_daRileggere)
                    applica(std::move(caricamento));
                if (std::exchange(m_daRileggere, false))
                    ricarica();
            });
        return;
    }
    applica(carica(m_store.righeDettaglio(m_id)));
}

void ListDetailModel::applica(Caricamento caricamento) {
    beginResetModel();
    m_colonne = m_lista ? m_lista->columns : QStringList();
    m_righe = std::move(caricamento.righe);
    m_testi = std::move(caricamento.testi);
    m_validi = caricamento.validi;
    m_valori.clear();
    m_caricato = true;
    filtra();
    endResetModel();
    Q_EMIT testaCambiata();
    Q_EMIT righeCambiate();
}

void ListDetailModel::setRicerca(const QString& ricerca) {
    if (ricerca == m_ricerca)
        return;
    m_ricerca = ricerca;
    beginResetModel();
    filtra();
    endResetModel();
    Q_EMIT righeCambiate();
}

void ListDetailModel::filtra() {
    m_filtrate.clear();
    if (m_ricerca.isEmpty()) {
        m_filtrate.resize(m_righe.size());
        std::iota(m_filtrate.begin(), m_filtrate.end(), 0);
        return;
    }
    const QString cercato = Text::lowercased(m_ricerca);
    for (int i = 0; i < m_testi.size(); ++i)
        if (m_testi.at(i).contains(cercato))
            m_filtrate.append(i);
}

QList<RecordId> ListDetailModel::righeSelezionate() const {
    QList<RecordId> risultato;
    for (const Store::RigaDettaglio& riga : m_righe)
        if (m_selezione.contains(riga.id))
            risultato.append(riga.id);
    return risultato;
}

RecordId ListDetailModel::idAlla(int riga) const {
    return riga >= 0 && riga < m_filtrate.size() ? m_righe.at(m_filtrate.at(riga)).id : 0;
}

int ListDetailModel::rigaDi(RecordId id) const {
    for (int i = 0; i < m_filtrate.size(); ++i)
        if (m_righe.at(m_filtrate.at(i)).id == id)
            return i;
    return -1;
}

void ListDetailModel::salvaLista() {
    if (!m_lista)
        return;
    m_store.update(*m_lista);
    m_store.save();
}

void ListDetailModel::setNome(const QString& nome) {
    if (m_lista && m_lista->name != nome) {
        m_lista->name = nome;
        salvaLista();
    }
}

void ListDetailModel::setTag(const QString& tag) {
    if (m_lista && m_lista->tag != tag) {
        m_lista->tag = tag;
        salvaLista();
    }
}

void ListDetailModel::setNote(const QString& note) {
    if (m_lista && m_lista->note != note) {
        m_lista->note = note;
        salvaLista();
    }
}

void ListDetailModel::setArchiviata(bool archiviata) {
    if (m_lista && m_lista->isArchived != archiviata) {
        m_lista->isArchived = archiviata;
        salvaLista();
    }
}

void ListDetailModel::setColonnaEmail(const QString& colonna) {
    if (!m_lista || m_lista->emailColumn == colonna)
        return;
    m_lista->emailColumn = colonna;
    m_store.update(*m_lista);
    m_store.ricalcolaEmail(m_id, colonna);
    m_store.save();
}

void ListDetailModel::escludiSelezionate() {
    m_store.impostaEsclusione(righeSelezionate(), true);
    m_store.save();
}

void ListDetailModel::includiSelezionate() {
    m_store.impostaEsclusione(righeSelezionate(), false);
    m_store.save();
}

void ListDetailModel::aggiungiAgliEsclusiGlobali() {
    if (!m_lista)
        return;
    for (const Store::RigaDettaglio& riga : std::as_const(m_righe))
        if (m_selezione.contains(riga.id) && isValidEmailSyntax(riga.email))
            aggiungiEsclusione(m_store, riga.email, m_lista->name);
    m_store.save();
}

void ListDetailModel::esporta(const QString& percorso) const {
    if (m_lista)
        CSVText::scrivi(percorso, testoEsportazione(*m_lista, m_store.righeOrdinatePerEmail(m_id)));
}

int ListDetailModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_filtrate.size());
}

int ListDetailModel::columnCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_colonne.size()) + 4;
}

const RowValues& ListDetailModel::valori(int indice) const {
    auto trovati = m_valori.constFind(indice);
    if (trovati != m_valori.constEnd())
        return *trovati;
    if (m_valori.size() >= valoriInCache)
        m_valori.clear();
    return *m_valori.insert(indice, Store::decodeRowValues(m_righe.at(indice).valori.toUtf8()));
}

QVariant ListDetailModel::data(const QModelIndex& indice, int ruolo) const {
    if (!indice.isValid() || indice.row() >= m_filtrate.size())
        return {};
    const int posizione = m_filtrate.at(indice.row());
    const Store::RigaDettaglio& riga = m_righe.at(posizione);
    const int colonna = indice.column();
    if (colonna == 0) {
        const StatoRiga stato = statoRiga(riga.isExcluded, riga.email);
        if (ruolo == Qt::DecorationRole)
            return iconaStato(stato);
        if (ruolo == Qt::ToolTipRole)
            return testo(stato);
        return {};
    }
    if (colonna <= m_colonne.size()) {
        if (ruolo == Qt::DisplayRole || ruolo == Qt::ToolTipRole)
            return valori(posizione).value(m_colonne.at(colonna - 1));
        return {};
    }
    if (colonna == colonnaRicevute()) {
        if (ruolo == Qt::DisplayRole)
            return riga.inviateCount >= 1 ? QString::number(riga.inviateCount) : QStringLiteral("—");
        if (ruolo == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    }
    if (colonna == colonnaUltimoInvio()) {
        if (ruolo == Qt::DisplayRole)
            return riga.ultimoInvio ? dataNumerica(*riga.ultimoInvio) : tr("mai");
        return {};
    }
    if (colonna == colonnaUltimoEsito()) {
        if (ruolo == Qt::DisplayRole)
            return parolaEsito(riga.ultimoEsitoRaw);
        if (ruolo == Qt::ForegroundRole)
            return Palette::colore(coloreEsito(riga.ultimoEsitoRaw));
        if (ruolo == Qt::ToolTipRole)
            return aiutoEsito(riga.ultimoDettaglio, riga.ultimaCampagna);
    }
    return {};
}

QVariant ListDetailModel::headerData(int sezione, Qt::Orientation orientamento, int ruolo) const {
    if (orientamento != Qt::Horizontal || ruolo != Qt::DisplayRole)
        return QAbstractTableModel::headerData(sezione, orientamento, ruolo);
    if (sezione == 0)
        return QString();
    if (sezione <= m_colonne.size())
        return m_colonne.at(sezione - 1);
    if (sezione == colonnaRicevute())
        return tr("Ricevute");
    if (sezione == colonnaUltimoInvio())
        return tr("Ultimo invio");
    if (sezione == colonnaUltimoEsito())
        return tr("Ultimo esito");
    return {};
}

QString testoEsportazione(const ContactList& lista, const QList<ContactRow>& righe) {
    QString testo = CSVText::riga(lista.columns + colonneStorico());
    for (const ContactRow& riga : righe) {
        QStringList campi;
        campi.reserve(lista.columns.size() + colonneStorico().size());
        for (const QString& colonna : lista.columns)
            campi.append(riga.values.value(colonna));
        campi.append(riga.valoriStorico());
        testo += CSVText::riga(campi);
    }
    return testo;
}

void aggiungiEsclusione(Store& store, const QString& email, const QString& nomeLista) {
    const QString indirizzo = Text::normalizedAddress(email);
    if (store.esclusionePer(indirizzo))
        return;
    Suppression esclusione(indirizzo, QCoreApplication::translate("ListsView", "aggiunta dalla lista ") + nomeLista);
    store.insert(esclusione);
}
