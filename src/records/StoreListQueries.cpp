#include "records/Store.h"

#include "records/EmailSyntax.h"
#include "records/StoreTables.h"
#include "records/Text.h"

#include <QSqlQuery>

#include <algorithm>
#include <atomic>

using namespace StoreTables;

namespace {
void conta(Store::AvanzamentoLista& voce, const QSqlQuery& query) {
    ++voce.righe;
    if (query.value(2).toBool() || !isValidEmailSyntax(query.value(0).toString()))
        return;
    ++voce.validi;
    if (query.value(1).toInt() >= 1)
        ++voce.contattati;
}
} // namespace

Store::AvanzamentoLista Store::avanzamento(RecordId listId) const {
    QSqlQuery& query =
        prepared(QStringLiteral("SELECT email, inviateCount, isExcluded FROM ContactRow WHERE listId = ?"));
    query.bindValue(0, listId);
    AvanzamentoLista risultato;
    if (query.exec())
        while (query.next())
            conta(risultato, query);
    query.finish();
    return risultato;
}

namespace {

const QString sqlAvanzamento = QStringLiteral("SELECT email, inviateCount, isExcluded, listId FROM ContactRow");
const QString sqlDettaglio = QStringLiteral(
    "SELECT id, email, isExcluded, inviateCount, ultimoInvio, ultimoEsitoRaw, ultimoDettaglio, ultimaCampagna, "
    "\"values\" FROM ContactRow WHERE listId = ? ORDER BY email, id");

QHash<RecordId, Store::AvanzamentoLista> leggiAvanzamento(QSqlQuery& query) {
    // Store order, not list order: rows of one import lie together, and a walk in table order needs no index.
    QHash<RecordId, Store::AvanzamentoLista> risultato;
    if (!query.exec())
        return risultato;
    RecordId corrente = -1;
    Store::AvanzamentoLista* voce = nullptr;
    while (query.next()) {
        const RecordId lista = query.value(3).toLongLong();
        if (lista != corrente || !voce) {
            corrente = lista;
            voce = &risultato[lista];
        }
        conta(*voce, query);
    }
    query.finish();
    return risultato;
}

QList<Store::RigaDettaglio> leggiDettaglio(QSqlQuery& query, RecordId listId) {
    query.bindValue(0, listId);
    QList<Store::RigaDettaglio> risultato;
    if (!query.exec())
        return risultato;
    while (query.next()) {
        Store::RigaDettaglio riga;
        riga.id = query.value(0).toLongLong();
        riga.email = query.value(1).toString();
        riga.isExcluded = query.value(2).toBool();
        riga.inviateCount = query.value(3).toInt();
        riga.ultimoInvio = toOptionalDate(query.value(4));
        riga.ultimoEsitoRaw = query.value(5).toString();
        riga.ultimoDettaglio = query.value(6).toString();
        riga.ultimaCampagna = query.value(7).toString();
        riga.valori = query.value(8).toString();
        risultato.append(std::move(riga));
    }
    query.finish();
    return risultato;
}

// One count for every reading beside the interface, whatever it reads: connection names must never meet.
std::atomic<int> lettureAParte{0};

// A read-only connection of the calling thread's own, closed when the work is done.
template <class F> auto conConnessioneDiLettura(const QString& percorso, F&& lavoro) {
    const QString nome = QStringLiteral("brezzario-lettura-%1").arg(++lettureAParte);
    decltype(lavoro(std::declval<QSqlQuery&>())) risultato{};
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), nome);
        db.setDatabaseName(percorso);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            query.setForwardOnly(true);
            risultato = lavoro(query);
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(nome);
    return risultato;
}

} // namespace

QHash<RecordId, Store::AvanzamentoLista> Store::avanzamentoListe() const {
    return leggiAvanzamento(prepared(sqlAvanzamento));
}

QHash<RecordId, Store::AvanzamentoLista> Store::avanzamentoListe(const QString& percorso) {
    return conConnessioneDiLettura(percorso, [](QSqlQuery& query) {
        query.prepare(sqlAvanzamento);
        return leggiAvanzamento(query);
    });
}

QList<Store::RigaDettaglio> Store::righeDettaglio(RecordId listId) const {
    return leggiDettaglio(prepared(sqlDettaglio), listId);
}

QList<Store::RigaDettaglio> Store::righeDettaglio(const QString& percorso, RecordId listId) {
    return conConnessioneDiLettura(percorso, [listId](QSqlQuery& query) {
        query.prepare(sqlDettaglio);
        return leggiDettaglio(query, listId);
    });
}

QList<ContactRow> Store::righeOrdinatePerEmail(RecordId listId) const {
    QList<ContactRow> righe = rows(listId);
    // Stable, so equal addresses keep the store's order, as the detail shows them.
    std::stable_sort(righe.begin(), righe.end(),
                     [](const ContactRow& a, const ContactRow& b) { return a.email < b.email; });
    return righe;
}

bool Store::impostaEsclusione(const QList<RecordId>& ids, bool esclusa) {
    if (ids.isEmpty())
        return true;
    beginChange(ContactRows);
    QSqlQuery& query = prepared(QStringLiteral("UPDATE ContactRow SET isExcluded = ? WHERE id = ?"));
    bool ok = true;
    for (RecordId id : ids) {
        query.bindValue(0, esclusa ? 1 : 0);
        query.bindValue(1, id);
        ok = query.exec() && ok;
    }
    query.finish();
    return ok;
}

bool Store::ricalcolaEmail(RecordId listId, const QString& colonna) {
    QSqlQuery& lettura = prepared(QStringLiteral("SELECT id, \"values\" FROM ContactRow WHERE listId = ?"));
    lettura.bindValue(0, listId);
    if (!lettura.exec())
        return false;
    QList<std::pair<RecordId, QString>> nuovi;
    while (lettura.next())
        nuovi.append({lettura.value(0).toLongLong(),
                      Text::normalizedAddress(decodeRowValues(lettura.value(1).toString().toUtf8()).value(colonna))});
    lettura.finish();
    beginChange(ContactRows);
    QSqlQuery& scrittura = prepared(QStringLiteral("UPDATE ContactRow SET email = ? WHERE id = ?"));
    bool ok = true;
    for (const auto& [id, email] : nuovi) {
        scrittura.bindValue(0, email.isNull() ? QStringLiteral("") : email);
        scrittura.bindValue(1, id);
        ok = scrittura.exec() && ok;
    }
    scrittura.finish();
    return ok;
}

std::optional<Suppression> Store::esclusionePer(const QString& email) const {
    static const QString sql =
        QStringLiteral("SELECT id, %1 FROM Suppression WHERE email = ?").arg(Table<Suppression>::columns().join(u", "));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, email);
    std::optional<Suppression> risultato;
    if (query.exec() && query.next())
        risultato = Table<Suppression>::read(query);
    query.finish();
    return risultato;
}
