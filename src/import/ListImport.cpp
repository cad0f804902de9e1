#include "import/ListImport.h"

#include "import/RigaJson.h"
#include "records/EmailSyntax.h"
#include "records/Store.h"
#include "records/Text.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace {

constexpr qsizetype righeInAnteprima = 8;
// From this many raw rows on, the header row is looked for among the first 31 only: a header further down
// is not a header any spreadsheet writes.
constexpr qsizetype righePerLimite = 32;
constexpr qsizetype limiteRigaIntestazione = 30;

QString tr(const char* testo) {
    return QCoreApplication::translate("ListImport", testo);
}

} // namespace

LetturaFile leggiFile(const QString& percorso) {
    LetturaFile lettura;
    QFile file(percorso);
    if (!file.open(QIODevice::ReadOnly)) {
        lettura.errore = tr("Impossibile aprire il file: %1").arg(file.errorString());
        return lettura;
    }
    const QByteArray byte = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        lettura.errore = tr("Impossibile aprire il file: %1").arg(file.errorString());
        return lettura;
    }
    // Text holds no NUL byte except in UTF-16, which comes with its mark. Anything else with one is a picture,
    // a spreadsheet's own format or an archive: read as ISO-8859-1, which takes any byte, it would be noise.
    const bool conMarcaUtf16 = byte.startsWith("\xFF\xFE") || byte.startsWith("\xFE\xFF");
    if (!conMarcaUtf16 && byte.contains('\0')) {
        lettura.errore = CSVParser::ParseError(CSVParser::ParseError::unreadable).errorDescription();
        return lettura;
    }
    try {
        PendingImport pending;
        pending.url = percorso;
        pending.raw = CSVParser::parseRaw(byte);
        lettura.pending = std::move(pending);
    } catch (const CSVParser::ParseError& errore) {
        lettura.errore = errore.errorDescription();
    }
    return lettura;
}

QString nomePredefinito(const QString& percorso) {
    const QString nome = QFileInfo(percorso).fileName();
    const qsizetype punto = nome.lastIndexOf(u'.');
    return punto > 0 ? nome.left(punto) : nome;
}

QString descrizioneDelimitatore(QChar delimitatore) {
    switch (delimitatore.unicode()) {
    case u'\t':
        return tr("tabulazione");
    case u';':
        return tr("punto e virgola");
    case u'|':
        return tr("barra verticale");
    default:
        return tr("virgola");
    }
}

ImportSheetState::ImportSheetState(PendingImport pending) : m_pending(std::move(pending)) {
    nome = nomePredefinito(m_pending.url);
    m_rigaIntestazione = CSVParser::detectHeaderRow(m_pending.raw.rows);
    aggiornaColonnaEmail();
}

void ImportSheetState::setRigaIntestazione(qsizetype riga) {
    riga = qBound(qsizetype(0), riga, massimaRigaIntestazione());
    if (riga == m_rigaIntestazione)
        return;
    m_rigaIntestazione = riga;
    m_tabella.reset();
    aggiornaColonnaEmail();
}

qsizetype ImportSheetState::massimaRigaIntestazione() const {
    const qsizetype righe = m_pending.raw.rows.size();
    if (righe >= righePerLimite)
        return limiteRigaIntestazione;
    return qMax(qsizetype(0), righe - 1);
}

const CSVParser::Table& ImportSheetState::tabellaCorrente() const {
    // The table depends on the header row alone, so it is made again only when that moves.
    if (!m_tabella)
        m_tabella = CSVParser::table(m_pending.raw, m_rigaIntestazione);
    return *m_tabella;
}

QList<QStringList> ImportSheetState::righeAnteprima() const {
    return tabellaCorrente().rows.first(righeInAnteprima).toList();
}

qsizetype ImportSheetState::conteggioValide() const {
    const CSVParser::Table& tabella = tabellaCorrente();
    const qsizetype indice = tabella.columns.indexOf(colonnaEmail);
    if (indice < 0 || colonnaEmail.isEmpty())
        return 0;
    QSet<QString> visti;
    qsizetype conteggio = 0;
    for (const CSVParser::Row riga : tabella.rows) {
        if (indice >= riga.size())
            continue;
        const QString indirizzo = Text::normalizedAddress(riga.at(indice));
        if (!isValidEmailSyntax(indirizzo))
            continue;
        if (rimuoviDuplicati) {
            if (visti.contains(indirizzo))
                continue;
            visti.insert(indirizzo);
        }
        ++conteggio;
    }
    return conteggio;
}

QString ImportSheetState::descrizioneDelimitatore() const {
    return ::descrizioneDelimitatore(m_pending.raw.delimiter);
}

void ImportSheetState::aggiornaColonnaEmail() {
    const CSVParser::Table& tabella = tabellaCorrente();
    if (const std::optional<QString> indovinata = CSVParser::guessEmailColumn(tabella))
        colonnaEmail = *indovinata;
    else
        colonnaEmail = tabella.columns.isEmpty() ? QString() : tabella.columns.first();
}

bool ImportSheetState::importabile() const {
    return !Text::isBlank(nome) && !colonnaEmail.isEmpty();
}

qsizetype ImportSheetState::indiceColonnaEmail() const {
    // The column whose cell the map of a row holds under the address column's name: of equal names the last.
    const QStringList& colonne = tabellaCorrente().columns;
    for (qsizetype i = colonne.size() - 1; i >= 0; --i)
        if (!colonne.at(i).isEmpty() && colonne.at(i) == colonnaEmail)
            return i;
    return -1;
}

bool ImportSheetState::prendi(const CSVParser::Row& riga, qsizetype colonna, QSet<QString>& visti,
                              QString* indirizzo) const {
    *indirizzo = Text::normalizedAddress(riga.value(colonna));
    if (scartaSenzaEmail && !isValidEmailSyntax(*indirizzo))
        return false;
    // Empty addresses are never duplicates of each other; the first occurrence of an address stays.
    if (rimuoviDuplicati && !indirizzo->isEmpty()) {
        if (visti.contains(*indirizzo))
            return false;
        visti.insert(*indirizzo);
    }
    return true;
}

QList<Store::RigaCodificata> ImportSheetState::righeCodificate(qsizetype inizio, qsizetype fine, QSet<QString>& visti,
                                                               QByteArray& valori) const {
    const CSVParser::Table& tabella = tabellaCorrente();
    const RigaJson json(tabella.columns);
    const qsizetype colonna = indiceColonnaEmail();
    fine = qMin(fine, tabella.rows.size());
    QList<Store::RigaCodificata> risultato;
    risultato.reserve(qMax(qsizetype(0), fine - inizio));
    QList<qsizetype> confini{valori.size()}; // where each row's object ends in valori; views come once it stops growing
    for (qsizetype n = inizio; n < fine; ++n) {
        const CSVParser::Row riga = tabella.rows.at(n);
        QString indirizzo;
        if (!prendi(riga, colonna, visti, &indirizzo))
            continue;
        json.append(riga, valori);
        confini.append(valori.size());
        risultato.append({QByteArrayView(), std::move(indirizzo)});
    }
    for (qsizetype i = 0; i < risultato.size(); ++i)
        risultato[i].valori = QByteArrayView(valori).sliced(confini[i], confini[i + 1] - confini[i]);
    return risultato;
}

ContactList ImportSheetState::listaDaImportare() const {
    ContactList lista(Text::trimmedWhitespace(nome), QFileInfo(m_pending.url).fileName(), tabellaCorrente().columns,
                      colonnaEmail);
    lista.tag = tag;
    lista.note = note;
    return lista;
}

ContactList ImportSheetState::importa(Store& store) const {
    Importazione importazione(*this, store);
    while (!importazione.prossimaFetta()) {
    }
    return importazione.lista();
}

Importazione::Importazione(const ImportSheetState& stato, Store& store)
    : m_stato(stato), m_store(store), m_lista(stato.listaDaImportare()) {
    m_store.insert(m_lista);
}

qsizetype Importazione::totale() const {
    return m_stato.tabellaCorrente().rows.size();
}

bool Importazione::prossimaFetta() {
    // Slices also keep a large file's rows from standing in memory twice over.
    constexpr qsizetype perFetta = 8192;
    if (m_finita)
        return true;
    if (m_inizio < totale()) {
        QByteArray valori;
        const QList<Store::RigaCodificata> righe =
            m_stato.righeCodificate(m_inizio, m_inizio + perFetta, m_visti, valori);
        m_store.insertRows(m_lista.id, righe);
        m_inizio = qMin(m_inizio + perFetta, totale());
    }
    if (m_inizio < totale())
        return false;
    m_store.save();
    m_finita = true;
    return true;
}
