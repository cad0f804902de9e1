#include "records/Store.h"
#include "records/StoreTables.h"
#include "records/Text.h"

#include <QSet>
#include <QSqlDriver>
#include <QSqlQuery>

#include <sqlite3.h>

using namespace StoreTables;

namespace {

bool soloAscii(const unsigned char* testo, int lunghezza) {
    for (int i = 0; i < lunghezza; ++i)
        if (testo[i] >= 0x80)
            return false;
    return true;
}

unsigned char minuscola(unsigned char c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

bool contieneAscii(const unsigned char* testo, int lunghezza, const unsigned char* ago, int lunghezzaAgo) {
    for (int inizio = 0; inizio + lunghezzaAgo <= lunghezza; ++inizio) {
        int i = 0;
        while (i < lunghezzaAgo && minuscola(testo[inizio + i]) == minuscola(ago[i]))
            ++i;
        if (i == lunghezzaAgo)
            return true;
    }
    return false;
}

// contiene(testo, ago): whether the text holds the needle without regard to case, by Unicode case rules
// rather than SQLite's ASCII-only ones. Addresses are nearly always ASCII: when both sides are, the bytes
// are compared as they are stored, with no conversion per row.
void contiene(sqlite3_context* contesto, int, sqlite3_value** argomenti) {
    const auto* testo = sqlite3_value_text(argomenti[0]);
    const int lunghezza = sqlite3_value_bytes(argomenti[0]);
    const auto* ago = sqlite3_value_text(argomenti[1]);
    const int lunghezzaAgo = sqlite3_value_bytes(argomenti[1]);
    if (!testo || !ago) {
        sqlite3_result_int(contesto, 0);
        return;
    }
    bool trovato;
    if (soloAscii(testo, lunghezza) && soloAscii(ago, lunghezzaAgo)) {
        trovato = contieneAscii(testo, lunghezza, ago, lunghezzaAgo);
    } else {
        const QString dove = QString::fromUtf8(reinterpret_cast<const char*>(testo), lunghezza);
        trovato =
            dove.contains(QString::fromUtf8(reinterpret_cast<const char*>(ago), lunghezzaAgo), Qt::CaseInsensitive);
    }
    sqlite3_result_int(contesto, trovato ? 1 : 0);
}

// Once per connection: defining a function again would make SQLite prepare every cached statement anew.
// Connection names are never reused, so they tell the connections apart.
void registraContiene(const QSqlDatabase& db) {
    static QSet<QString> registrate;
    if (registrate.contains(db.connectionName()))
        return;
    const QVariant handle = db.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return;
    auto* connessione = *static_cast<sqlite3* const*>(handle.data());
    if (connessione && sqlite3_create_function_v2(connessione, "brezzario_contiene", 2,
                                                  SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                                  contiene, nullptr, nullptr, nullptr) == SQLITE_OK)
        registrate.insert(db.connectionName());
}

// The WHERE clause of a filter, over the log table named `l`. The status values are the fixed raw values,
// never user text; the search text is bound twice.
QString condizione(const FiltroRegistri& filtro) {
    QStringList parti;
    if (filtro.stato) {
        if (*filtro.stato == SendStatus::sent)
            parti.append(QStringLiteral("l.statusRaw NOT IN ('failed', 'skipped', 'test')"));
        else
            parti.append(QStringLiteral("l.statusRaw = '%1'").arg(rawValue(*filtro.stato)));
    }
    if (!filtro.ricerca.isEmpty())
        parti.append(QStringLiteral("(brezzario_contiene(l.email, ?) OR brezzario_contiene(l.subject, ?))"));
    return parti.isEmpty() ? QStringLiteral("1") : parti.join(QStringLiteral(" AND "));
}

// Binds the search text, if any, from position `da`; gives the next free position.
int legaRicerca(QSqlQuery& query, const FiltroRegistri& filtro, int da) {
    if (filtro.ricerca.isEmpty())
        return da;
    query.bindValue(da, filtro.ricerca);
    query.bindValue(da + 1, filtro.ricerca);
    return da + 2;
}

const QString selectStorico = QStringLiteral(
    "SELECT l.id, l.email, l.subject, l.statusRaw, l.detail, l.date, l.servizio, l.campaignId, c.name "
    "FROM SendLog l LEFT JOIN Campaign c ON c.id = l.campaignId WHERE %1 ORDER BY l.date DESC, l.id DESC");

RigaStorico leggiRiga(const QSqlQuery& query) {
    RigaStorico riga;
    riga.log = Table<SendLog>::read(query);
    riga.haCampagna = !query.value(8).isNull();
    riga.campagna = query.value(8).toString();
    return riga;
}

qint64 primoIntero(QSqlQuery& query) {
    const qint64 valore = query.exec() && query.next() ? query.value(0).toLongLong() : 0;
    query.finish();
    return valore;
}

} // namespace

qint64 Store::contaRegistri(const FiltroRegistri& filtro) const {
    registraContiene(m_db);
    QSqlQuery& query = prepared(QStringLiteral("SELECT count(*) FROM SendLog l WHERE ") + condizione(filtro));
    legaRicerca(query, filtro, 0);
    return primoIntero(query);
}

QList<RigaStorico> Store::paginaRegistri(const FiltroRegistri& filtro, qint64 dal, int quanti) const {
    registraContiene(m_db);
    QSqlQuery& query = prepared(selectStorico.arg(condizione(filtro)) + QStringLiteral(" LIMIT ? OFFSET ?"));
    const int posizione = legaRicerca(query, filtro, 0);
    query.bindValue(posizione, quanti);
    query.bindValue(posizione + 1, dal);
    QList<RigaStorico> righe;
    if (query.exec()) {
        righe.reserve(quanti);
        while (query.next())
            righe.append(leggiRiga(query));
    }
    query.finish();
    return righe;
}

QList<RigaStorico> Store::pochiRegistri(const FiltroRegistri& filtro, int quanti) const {
    registraContiene(m_db);
    QString sql = selectStorico.arg(condizione(filtro)) + QStringLiteral(" LIMIT ?");
    sql.replace(QStringLiteral("FROM SendLog l "), QStringLiteral("FROM SendLog l NOT INDEXED "));
    QSqlQuery& query = prepared(sql);
    query.bindValue(legaRicerca(query, filtro, 0), quanti);
    QList<RigaStorico> righe;
    if (query.exec())
        while (query.next())
            righe.append(leggiRiga(query));
    query.finish();
    return righe;
}

void Store::perOgniRegistro(const FiltroRegistri& filtro,
                            const std::function<bool(const RigaStorico&)>& prossima) const {
    registraContiene(m_db);
    // A query of its own, not a shared prepared one: the caller may read other records meanwhile.
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(selectStorico.arg(condizione(filtro)));
    legaRicerca(query, filtro, 0);
    if (query.exec())
        while (query.next())
            if (!prossima(leggiRiga(query)))
                break;
}

NovitaRegistri Store::registriDopo(const FiltroRegistri& filtro, RecordId dopoId) const {
    registraContiene(m_db);
    QSqlQuery& query = prepared(
        QStringLiteral("SELECT count(*), min(l.date), max(l.id), max(l.date) FROM SendLog l WHERE l.id > ? AND ") +
        condizione(filtro));
    query.bindValue(0, dopoId);
    legaRicerca(query, filtro, 1);
    NovitaRegistri novita;
    if (query.exec() && query.next()) {
        novita.quanti = query.value(0).toLongLong();
        if (novita.quanti > 0) {
            novita.primaData = toDate(query.value(1));
            novita.ultimoId = query.value(2).toLongLong();
            novita.ultimaData = toDate(query.value(3));
        }
    }
    query.finish();
    return novita;
}

RecordId Store::ultimoIdRegistri() const {
    return primoIntero(prepared(QStringLiteral("SELECT coalesce(max(id), 0) FROM SendLog")));
}

qint64 Store::contaTuttiRegistri() const {
    return primoIntero(prepared(QStringLiteral("SELECT count(*) FROM SendLog")));
}

QList<Suppression> Store::esclusiDopo(RecordId dopoId) const {
    static const QString sql =
        QStringLiteral("SELECT id, %1 FROM Suppression WHERE id > ? ORDER BY createdAt DESC, id DESC")
            .arg(Table<Suppression>::columns().join(u", "));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, dopoId);
    QList<Suppression> esclusi;
    if (query.exec())
        while (query.next())
            esclusi.append(Table<Suppression>::read(query));
    query.finish();
    return esclusi;
}

qint64 Store::contaEsclusi() const {
    return primoIntero(prepared(QStringLiteral("SELECT count(*) FROM Suppression")));
}

std::optional<Suppression> Store::esclusoPerEmail(const QString& email) const {
    static const QString sql =
        QStringLiteral("SELECT id, %1 FROM Suppression WHERE email = ?").arg(Table<Suppression>::columns().join(u", "));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, email);
    std::optional<Suppression> trovato;
    if (query.exec() && query.next())
        trovato = Table<Suppression>::read(query);
    query.finish();
    return trovato;
}
