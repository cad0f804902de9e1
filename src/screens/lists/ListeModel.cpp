#include "screens/lists/ListeModel.h"

#include "screens/lists/AParte.h"
#include "ui/Rinfresco.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace {
constexpr int intervalloRinfresco = 250;
}

ListeModel::ListeModel(Store& store, QObject* genitore) : QAbstractListModel(genitore), m_store(store) {
    ricarica();
    // While a run saves after each message, a few refreshes a second are plenty.
    new Rinfresco(
        store, Store::ContactLists | Store::ContactRows,
        [this](Store::Entities cosa) { ricarica(cosa.testFlag(Store::ContactRows)); }, this, intervalloRinfresco);
}

void ListeModel::ricarica(bool rileggiAvanzamento) {
    QList<ContactList> liste = m_store.all<ContactList>();
    std::stable_sort(liste.begin(), liste.end(),
                     [](const ContactList& a, const ContactList& b) { return a.importedAt > b.importedAt; });

    QList<Voce> voci;
    Voce attive;
    attive.intestazione = true;
    attive.titolo = tr("Attive");
    attive.legenda = true;
    voci.append(attive);
    QList<Voce> archiviate;
    for (const ContactList& lista : std::as_const(liste)) {
        Voce voce;
        voce.lista = lista;
        voce.avanzamento = m_avanzamenti.value(lista.id);
        (lista.isArchived ? archiviate : voci).append(voce);
    }
    if (!archiviate.isEmpty()) {
        Voce intestazione;
        intestazione.intestazione = true;
        intestazione.titolo = tr("Archiviate");
        voci.append(intestazione);
        voci.append(archiviate);
    }
    beginResetModel();
    m_voci = std::move(voci);
    m_liste = int(liste.size());
    endResetModel();

    // Every list's progress is one walk over all rows. A change of the lists alone (a name, an archive) keeps
    // what was read; otherwise, on a store file with nothing pending, the walk runs beside the interface, one at a
    // time, and the rows show their previous state until it is done.
    if (!rileggiAvanzamento && m_letto)
        return;
    const quint64 generazione = ++m_generazione;
    if (m_store.leggibileAParte()) {
        if (m_inLettura) {
            m_daRileggere = true;
            return;
        }
        m_inLettura = true;
        aParte<QHash<RecordId, Store::AvanzamentoLista>>(
            this, [percorso = m_store.path()] { return Store::avanzamentoListe(percorso); },
            [this, generazione](QHash<RecordId, Store::AvanzamentoLista> avanzamenti) {
                m_inLettura = false;
                if (generazione == m_generazione && !m_daRileggere)
                    applica(std::move(avanzamenti));
                if (std::exchange(m_daRileggere, false))
                    ricarica();
            });
        return;
    }
    applica(m_store.avanzamentoListe());
}

void ListeModel::applica(QHash<RecordId, Store::AvanzamentoLista> avanzamenti) {
    m_avanzamenti = std::move(avanzamenti);
    for (Voce& voce : m_voci)
        if (!voce.intestazione)
            voce.avanzamento = m_avanzamenti.value(voce.lista.id);
    m_letto = true;
    if (!m_voci.isEmpty())
        Q_EMIT dataChanged(index(0), index(int(m_voci.size()) - 1));
    Q_EMIT avanzamentoLetto();
}

int ListeModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_voci.size());
}

QVariant ListeModel::data(const QModelIndex& indice, int ruolo) const {
    if (!indice.isValid() || indice.row() >= m_voci.size())
        return {};
    const Voce& v = m_voci.at(indice.row());
    switch (ruolo) {
    case Qt::DisplayRole:
        return v.intestazione ? v.titolo : v.lista.name;
    case Qt::ToolTipRole:
        if (v.intestazione)
            return v.legenda ? aiutoLegenda() : QVariant();
        return descrizione(v.stato(), v.avanzamento);
    case IntestazioneRole:
        return v.intestazione;
    case LegendaRole:
        return v.legenda;
    case ListaRole:
        return v.intestazione ? QVariant() : QVariant(v.lista.id);
    default:
        return {};
    }
}

Qt::ItemFlags ListeModel::flags(const QModelIndex& indice) const {
    if (!indice.isValid() || m_voci.at(indice.row()).intestazione)
        return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

int ListeModel::rigaDi(RecordId lista) const {
    for (int i = 0; i < m_voci.size(); ++i)
        if (!m_voci.at(i).intestazione && m_voci.at(i).lista.id == lista)
            return i;
    return -1;
}

QString aiutoLegenda() {
    return ListeModel::tr("Verde: tutti i destinatari contattati · Arancione: invio iniziato ma non concluso · "
                          "Blu: nessun invio ancora fatto");
}

namespace {
// The interface speaks Italian whatever the system's language, and so do its dates.
const QLocale italiano(QLocale::Italian, QLocale::Italy);
} // namespace

QString giornoBreve(const QDateTime& istante) {
    return italiano.toString(istante.toLocalTime().date(), QStringLiteral("d MMM yyyy"));
}

QString giornoEOra(const QDateTime& istante) {
    return italiano.toString(istante.toLocalTime(), QStringLiteral("d MMM yyyy, HH:mm"));
}

QString dataNumerica(const QDateTime& istante) {
    return italiano.toString(istante.toLocalTime(), QLocale::ShortFormat);
}
