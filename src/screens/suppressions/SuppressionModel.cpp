#include "screens/suppressions/SuppressionModel.h"

#include "records/CSVText.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "ui/Formati.h"
#include "ui/PresentazioneMotivo.h"
#include "ui/Symbols.h"

#include <algorithm>

SuppressionModel::SuppressionModel(Store& store, QObject* genitore) : QAbstractTableModel(genitore), m_store(store) {
    ricarica();
}

int SuppressionModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_filtrati.size());
}

int SuppressionModel::columnCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : colonne;
}

const SuppressionModel::Voce* SuppressionModel::voce(int riga) const {
    return riga >= 0 && riga < m_filtrati.size() ? &m_esclusi.at(m_filtrati.at(riga)) : nullptr;
}

int SuppressionModel::rigaDi(RecordId id) const {
    for (int riga = 0; riga < m_filtrati.size(); ++riga)
        if (m_esclusi.at(m_filtrati.at(riga)).esclusione.id == id)
            return riga;
    return -1;
}

const SuppressionModel::Voce* SuppressionModel::trova(RecordId id) const {
    for (const Voce& voce : m_esclusi)
        if (voce.esclusione.id == id)
            return &voce;
    return nullptr;
}

QVariant SuppressionModel::data(const QModelIndex& indice, int ruolo) const {
    const Voce* scelta = indice.isValid() ? voce(indice.row()) : nullptr;
    if (!scelta)
        return {};
    switch (ruolo) {
    case Qt::DisplayRole:
        switch (indice.column()) {
        case indirizzo:
            return scelta->esclusione.email;
        case perche:
            return PresentazioneMotivo::etichetta(scelta->motivo);
        case significato:
            return PresentazioneMotivo::spiegazione(scelta->motivo);
        case dal:
            return dataOraBreve(scelta->esclusione.createdAt);
        }
        return {};
    case Qt::ToolTipRole:
        return indice.column() == significato ? PresentazioneMotivo::spiegazione(scelta->motivo) : QVariant();
    case Qt::DecorationRole:
        return indice.column() == perche ? QVariant(iconaMotivo(scelta->motivo)) : QVariant();
    case Qt::ForegroundRole:
        if (indice.column() == perche)
            return Palette::colore(PresentazioneMotivo::colore(scelta->motivo));
        if (indice.column() == significato || indice.column() == dal)
            return Palette::colore(Colore::secondary);
        return {};
    }
    return {};
}

QVariant SuppressionModel::headerData(int sezione, Qt::Orientation orientamento, int ruolo) const {
    if (orientamento != Qt::Horizontal || ruolo != Qt::DisplayRole)
        return {};
    switch (sezione) {
    case indirizzo:
        return tr("Indirizzo");
    case perche:
        return tr("Perché è escluso");
    case significato:
        return tr("Che cosa significa");
    case dal:
        return tr("Dal");
    }
    return {};
}

void SuppressionModel::setFiltro(std::optional<MotivoEsclusione> filtro) {
    if (m_filtro == filtro)
        return;
    m_filtro = filtro;
    rifiltra();
}

void SuppressionModel::setRicerca(const QString& ricerca) {
    if (m_ricerca == ricerca)
        return;
    m_ricerca = ricerca;
    rifiltra();
}

bool SuppressionModel::passa(const Voce& voce) const {
    if (m_filtro && voce.motivo != *m_filtro)
        return false;
    return m_ricerca.isEmpty() || voce.esclusione.email.contains(m_ricerca, Qt::CaseInsensitive) ||
           voce.esclusione.reason.contains(m_ricerca, Qt::CaseInsensitive);
}

void SuppressionModel::rifiltra() {
    beginResetModel();
    m_filtrati.clear();
    for (int i = 0; i < m_esclusi.size(); ++i)
        if (passa(m_esclusi.at(i)))
            m_filtrati.append(i);
    endResetModel();
    Q_EMIT cambiato();
}

QList<SuppressionModel::Conteggio> SuppressionModel::conteggi() const {
    int perMotivo[8] = {};
    for (const Voce& voce : m_esclusi)
        ++perMotivo[int(voce.motivo)];
    QList<Conteggio> risultato;
    for (MotivoEsclusione motivo : tuttiIMotivi())
        if (perMotivo[int(motivo)] > 0)
            risultato.append({motivo, perMotivo[int(motivo)]});
    std::stable_sort(risultato.begin(), risultato.end(),
                     [](const Conteggio& a, const Conteggio& b) { return a.quanti > b.quanti; });
    return risultato;
}

void SuppressionModel::ricarica() {
    m_esclusi.clear();
    m_ultimoId = 0;
    mettiInCima(m_store.esclusiDopo(0));
    if (m_esclusi.isEmpty())
        rifiltra();
}

void SuppressionModel::segui() {
    if (m_sospeso)
        return;
    // Fewer entries than those known plus those new: some were taken back, so read everything again.
    const QList<Suppression> nuovi = m_store.esclusiDopo(m_ultimoId);
    if (m_store.contaEsclusi() != m_esclusi.size() + nuovi.size()) {
        ricarica();
        return;
    }
    if (nuovi.isEmpty())
        return;
    mettiInCima(nuovi);
}

void SuppressionModel::accogli(QList<Suppression> nuove) {
    std::reverse(nuove.begin(), nuove.end());
    mettiInCima(nuove);
}

void SuppressionModel::mettiInCima(const QList<Suppression>& nuove) {
    if (nuove.isEmpty())
        return;
    // A run or an import adds entries newer than any known, which go on top; anything else reads again, to
    // keep the order.
    if (!m_esclusi.isEmpty() && nuove.last().createdAt < m_esclusi.first().esclusione.createdAt) {
        ricarica();
        return;
    }
    QList<Voce> davanti;
    davanti.reserve(nuove.size() + m_esclusi.size());
    // The same reasons come back again and again (a server's words, one file's name): each distinct text is
    // deduced once per reading.
    QHash<QString, MotivoEsclusione> dedotti;
    for (const Suppression& esclusione : nuove) {
        auto dedotto = dedotti.constFind(esclusione.reason);
        if (dedotto == dedotti.constEnd())
            dedotto = dedotti.insert(esclusione.reason, deduci(esclusione.reason));
        davanti.append({esclusione, *dedotto});
        m_ultimoId = qMax(m_ultimoId, esclusione.id);
    }
    davanti.append(m_esclusi);
    m_esclusi = std::move(davanti);
    rifiltra();
}

bool SuppressionModel::aggiungi(const QString& indirizzo, const QString& motivo) {
    const QString email = Text::normalizedAddress(indirizzo);
    if (!isValidEmailSyntax(email))
        return false;
    if (m_store.esclusoPerEmail(email))
        return false;
    Suppression nuova(email, motivo.isEmpty() ? QStringLiteral("aggiunto a mano") : motivo);
    if (!m_store.insert(nuova))
        return false;
    m_store.save();
    segui();
    return true;
}

QSet<QString> SuppressionModel::indirizzi() const {
    QSet<QString> presenti;
    presenti.reserve(m_esclusi.size());
    for (const Voce& voce : m_esclusi)
        presenti.insert(voce.esclusione.email);
    return presenti;
}

void SuppressionModel::togli(RecordId id) {
    m_store.remove<Suppression>(id);
    m_store.save();
    segui();
}

QString SuppressionModel::testoCSV() const {
    QString testo = CSVText::riga({QStringLiteral("indirizzo"), QStringLiteral("motivo"), QStringLiteral("spiegazione"),
                                   QStringLiteral("dettaglio_tecnico"), QStringLiteral("data")});
    for (int indice : m_filtrati) {
        const Voce& scelta = m_esclusi.at(indice);
        testo += CSVText::riga({scelta.esclusione.email, PresentazioneMotivo::etichetta(scelta.motivo),
                                PresentazioneMotivo::spiegazione(scelta.motivo), scelta.esclusione.reason,
                                CSVText::data(scelta.esclusione.createdAt)});
    }
    return testo;
}

void SuppressionModel::sospendi(bool sospeso) {
    m_sospeso = sospeso;
    if (!sospeso)
        segui();
}

QIcon SuppressionModel::iconaMotivo(MotivoEsclusione motivo) const {
    auto trovata = m_icone.constFind(motivo);
    if (trovata != m_icone.constEnd())
        return *trovata;
    const QIcon icona = Symbols::iconaColorata(PresentazioneMotivo::simbolo(motivo),
                                               Palette::colore(PresentazioneMotivo::colore(motivo)));
    m_icone.insert(motivo, icona);
    return icona;
}
