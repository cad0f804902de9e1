#include "screens/history/HistoryModel.h"

#include "records/CSVText.h"
#include "ui/Formati.h"
#include "ui/PresentazioneEsito.h"

namespace {
// One read from the store brings this many rows; the cache keeps a few screens' worth.
constexpr int pagina = 64;
constexpr int massimoInCache = 60 * pagina;
// Up to this many rows a filter's result is read whole; the cache holds them all.
constexpr qint64 pochi = 2000;
static_assert(pochi < massimoInCache);
} // namespace

HistoryModel::HistoryModel(Store& store, QObject* genitore) : QAbstractTableModel(genitore), m_store(store) {
    ricarica();
}

int HistoryModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_totale);
}

int HistoryModel::columnCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : colonne;
}

void HistoryModel::setFiltroStato(std::optional<SendStatus> stato) {
    if (m_filtro.stato == stato)
        return;
    m_filtro.stato = stato;
    ricarica();
}

void HistoryModel::setRicerca(const QString& ricerca) {
    if (m_filtro.ricerca == ricerca)
        return;
    m_filtro.ricerca = ricerca;
    ricarica();
}

void HistoryModel::ricarica() {
    beginResetModel();
    m_letti.clear();
    m_ultimoId = m_store.ultimoIdRegistri();
    m_tuttiFinoAUltimo = m_store.contaTuttiRegistri();
    const bool filtrato = m_filtro.stato || !m_filtro.ricerca.isEmpty();
    m_totale = filtrato ? m_store.contaRegistri(m_filtro) : m_tuttiFinoAUltimo;
    // Few logs pass: read them all at once in the table's order, since a page in date order would walk
    // every log to find its rows. Many pass: pages in date order find theirs quickly.
    if (filtrato && m_totale <= pochi) {
        const QList<RigaStorico> tutte = m_store.pochiRegistri(m_filtro, int(m_totale));
        m_totale = tutte.size();
        for (qsizetype i = 0; i < tutte.size(); ++i)
            m_letti.insert(m_totale - 1 - i, tutte.at(i));
    }
    const RigaStorico* prima = riga(0);
    m_piuRecente = prima ? prima->log.date : QDateTime();
    endResetModel();
    Q_EMIT righeCambiate(m_totale);
}

void HistoryModel::segui(Store::Entities cosa) {
    if (cosa & Store::Campaigns) {
        // A renamed or deleted campaign changes names in rows already read.
        m_letti.clear();
        if (m_totale > 0)
            Q_EMIT dataChanged(index(0, 0), index(int(m_totale) - 1, colonne - 1));
    }
    if (!(cosa & Store::SendLogs))
        return;
    const NovitaRegistri tutti = m_store.registriDopo({}, m_ultimoId);
    // A change of logs that brought none is a deletion (or an edit): read again. Deleting a campaign takes
    // its logs too, and may coincide with a run's new ones: then the count tells. A run's saves, which
    // only add, are spared the count.
    if (tutti.quanti == 0 ||
        ((cosa & Store::Campaigns) && m_store.contaTuttiRegistri() != m_tuttiFinoAUltimo + tutti.quanti)) {
        ricarica();
        return;
    }
    const NovitaRegistri filtrati =
        m_filtro.stato || !m_filtro.ricerca.isEmpty() ? m_store.registriDopo(m_filtro, m_ultimoId) : tutti;
    // New logs belong on top only if none is older than what is shown; otherwise the order is redone.
    if (filtrati.quanti > 0 && m_piuRecente.isValid() && filtrati.primaData < m_piuRecente) {
        ricarica();
        return;
    }
    m_ultimoId = tutti.ultimoId;
    m_tuttiFinoAUltimo += tutti.quanti;
    if (filtrati.quanti == 0)
        return;
    beginInsertRows({}, 0, int(filtrati.quanti) - 1);
    m_totale += filtrati.quanti;
    m_piuRecente = filtrati.ultimaData;
    endInsertRows();
    Q_EMIT righeCambiate(m_totale);
}

const RigaStorico* HistoryModel::riga(int numero) const {
    if (numero < 0 || numero >= m_totale)
        return nullptr;
    const qint64 chiave = m_totale - 1 - numero;
    auto trovata = m_letti.constFind(chiave);
    if (trovata != m_letti.constEnd())
        return &*trovata;
    if (m_letti.size() > massimoInCache)
        m_letti.clear();
    const qint64 inizio = numero - numero % pagina;
    const QList<RigaStorico> lette = m_store.paginaRegistri(m_filtro, inizio, pagina);
    for (qsizetype i = 0; i < lette.size(); ++i)
        m_letti.insert(m_totale - 1 - (inizio + i), lette.at(i));
    trovata = m_letti.constFind(chiave);
    return trovata != m_letti.constEnd() ? &*trovata : nullptr;
}

QVariant HistoryModel::data(const QModelIndex& indice, int ruolo) const {
    if (!indice.isValid())
        return {};
    const RigaStorico* voce = riga(indice.row());
    if (!voce)
        return {};
    const SendLog& log = voce->log;
    switch (ruolo) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        switch (indice.column()) {
        case quando:
            return dataOraBreve(log.date);
        case stato:
            return label(log.status());
        case destinatario:
            return log.email;
        case campagna:
            return voce->haCampagna ? voce->campagna : QStringLiteral("—");
        case servizio:
            return log.servizio.isEmpty() ? QStringLiteral("—") : log.servizio;
        case oggetto:
            return log.subject;
        case dettaglio:
            return log.detail;
        }
        return {};
    case Qt::DecorationRole:
        return indice.column() == stato ? QVariant(PresentazioneEsito::icona(log.status())) : QVariant();
    case Qt::ForegroundRole:
        switch (indice.column()) {
        case stato:
            return Palette::colore(PresentazioneEsito::colore(log.status()));
        case campagna:
        case servizio:
        case dettaglio:
            return Palette::colore(Colore::secondary);
        }
        return {};
    }
    return {};
}

QVariant HistoryModel::headerData(int sezione, Qt::Orientation orientamento, int ruolo) const {
    if (orientamento != Qt::Horizontal || ruolo != Qt::DisplayRole)
        return {};
    switch (sezione) {
    case quando:
        return tr("Data");
    case stato:
        return tr("Stato");
    case destinatario:
        return tr("Destinatario");
    case campagna:
        return tr("Campagna");
    case servizio:
        return tr("Servizio");
    case oggetto:
        return tr("Oggetto");
    case dettaglio:
        return tr("Dettaglio");
    }
    return {};
}

QString HistoryModel::testoCSV() const {
    QString testo = CSVText::riga({QStringLiteral("data"), QStringLiteral("stato"), QStringLiteral("destinatario"),
                                   QStringLiteral("campagna"), QStringLiteral("servizio"), QStringLiteral("oggetto"),
                                   QStringLiteral("dettaglio")});
    m_store.perOgniRegistro(m_filtro, [&testo](const RigaStorico& voce) {
        const SendLog& log = voce.log;
        testo += CSVText::riga({CSVText::data(log.date), rawValue(log.status()), log.email, voce.campagna, log.servizio,
                                log.subject, log.detail});
        return true;
    });
    return testo;
}

void HistoryModel::svuota() {
    m_store.removeAllLogs();
    m_store.save();
    ricarica();
}
