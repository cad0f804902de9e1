// Inserting the rows of a list: an import writes hundreds of thousands of them in one transaction, so the
// statement is bound through SQLite's own interface, text by text, rather than one variant per field.
#include "records/Store.h"
#include "records/StoreTables.h"

#include <QSqlDriver>

#include <sqlite3.h>

using namespace StoreTables;

namespace {

sqlite3* connessione(const QSqlDatabase& db) {
    const QVariant handle = db.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3* const*>(handle.data());
}

// Text as SQLite stores it, in UTF-8; the statement copies it before the buffer goes.
void testo(sqlite3_stmt* istruzione, int posizione, const QString& valore) {
    const QByteArray utf8 = valore.toUtf8();
    sqlite3_bind_text(istruzione, posizione, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

void data(sqlite3_stmt* istruzione, int posizione, const std::optional<QDateTime>& valore) {
    if (valore && valore->isValid())
        sqlite3_bind_int64(istruzione, posizione, valore->toMSecsSinceEpoch());
    else
        sqlite3_bind_null(istruzione, posizione);
}

} // namespace

bool Store::insertRows(RecordId listId, QList<ContactRow>& rows) {
    beginChange(ContactRows);
    sqlite3* db = connessione(m_db);
    sqlite3_stmt* istruzione = nullptr;
    static const QByteArray sql = "INSERT INTO ContactRow (" + Table<ContactRow>::columns().join(u", ").toUtf8() +
                                  ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
    if (!db || sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &istruzione, nullptr) != SQLITE_OK)
        return false;
    bool ok = true;
    for (ContactRow& riga : rows) {
        riga.listId = listId;
        if (listId > 0)
            sqlite3_bind_int64(istruzione, 1, listId);
        else
            sqlite3_bind_null(istruzione, 1);
        testo(istruzione, 2, encodeValues(riga.values));
        testo(istruzione, 3, riga.email);
        sqlite3_bind_int(istruzione, 4, riga.isExcluded ? 1 : 0);
        sqlite3_bind_int(istruzione, 5, riga.inviateCount);
        sqlite3_bind_int(istruzione, 6, riga.erroriCount);
        sqlite3_bind_int(istruzione, 7, riga.saltateCount);
        data(istruzione, 8, riga.primoInvio);
        data(istruzione, 9, riga.ultimoInvio);
        testo(istruzione, 10, riga.ultimoEsitoRaw);
        testo(istruzione, 11, riga.ultimoDettaglio);
        testo(istruzione, 12, riga.ultimaCampagna);
        testo(istruzione, 13, riga.ultimoOggetto);
        if (sqlite3_step(istruzione) == SQLITE_DONE)
            riga.id = sqlite3_last_insert_rowid(db);
        else
            ok = false;
        sqlite3_reset(istruzione);
    }
    sqlite3_finalize(istruzione);
    return ok;
}

bool Store::insertRows(RecordId listId, const QList<RigaCodificata>& rows) {
    beginChange(ContactRows);
    sqlite3* db = connessione(m_db);
    sqlite3_stmt* istruzione = nullptr;
    // A new row has no statistics: the other columns keep the defaults a fresh ContactRow writes.
    static const QByteArray sql = "INSERT INTO ContactRow (" + Table<ContactRow>::columns().join(u", ").toUtf8() +
                                  ") VALUES (?, ?, ?, 0, 0, 0, 0, NULL, NULL, '', '', '', '')";
    if (!db || sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &istruzione, nullptr) != SQLITE_OK)
        return false;
    bool ok = true;
    for (const RigaCodificata& riga : rows) {
        if (listId > 0)
            sqlite3_bind_int64(istruzione, 1, listId);
        else
            sqlite3_bind_null(istruzione, 1);
        sqlite3_bind_text(istruzione, 2, riga.valori.data(), int(riga.valori.size()), SQLITE_STATIC);
        testo(istruzione, 3, riga.email);
        ok = sqlite3_step(istruzione) == SQLITE_DONE && ok;
        sqlite3_reset(istruzione);
    }
    sqlite3_finalize(istruzione);
    return ok;
}
