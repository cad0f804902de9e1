#pragma once

#include "records/Campaign.h"
#include "records/ContactList.h"
#include "records/ContactRow.h"
#include "records/FiltroRegistri.h"
#include "records/MessageTemplate.h"
#include "records/SendLog.h"
#include "records/Suppression.h"
#include "records/TemplateAttachment.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QSqlDatabase>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class QSqlQuery;

// The one context of the persistent store. Records are plain values with a store identity; every change
// goes through here. A transaction opens lazily at the first change and save() commits it, so changes
// become durable only when saved. After changes, `changed` tells the screens which kinds of record moved,
// once per turn of the event loop, and they read again.
class Store : public QObject {
    Q_OBJECT
public:
    enum Entity : unsigned {
        ContactLists = 1u << 0,
        ContactRows = 1u << 1,
        MessageTemplates = 1u << 2,
        TemplateAttachments = 1u << 3,
        Campaigns = 1u << 4,
        SendLogs = 1u << 5,
        Suppressions = 1u << 6,
    };
    Q_DECLARE_FLAGS(Entities, Entity)
    Q_FLAG(Entities)

    static inline const QString schemaVersion = QStringLiteral("1.0.0");

    // Opens or creates the store file. A file that can't be opened, isn't a SQLite database, fails its
    // integrity check or records a schema this build doesn't know gives nothing, with the reason in
    // `error`, and is left untouched.
    static std::unique_ptr<Store> open(const QString& path, QString* error = nullptr);
    static std::unique_ptr<Store> inMemory();
    // The file in the user's data folder, or a store in memory when it can't be opened; that case leaves
    // the one log line of the program.
    static std::unique_ptr<Store> openDefault();
    static QString defaultPath();

    ~Store() override;

    bool isInMemory() const { return m_path.isEmpty(); }
    QString path() const { return m_path; }

    // Generic record operations for the seven record types. insert() sets the new identity.
    template <class T> bool insert(T& record);
    template <class T> bool update(const T& record);
    // Deleting a list, template or campaign deletes its rows, attachments or logs.
    template <class T> bool remove(RecordId id);
    template <class T> std::optional<T> find(RecordId id) const;
    template <class T> QList<T> all() const;

    // Rows of a list, in the order the store gives them (insertion order).
    QList<ContactRow> rows(RecordId listId) const;
    int rowCount(RecordId listId) const;
    int validRowCount(RecordId listId) const;
    // Inserts many rows of one list at once, setting their identities and owner.
    bool insertRows(RecordId listId, QList<ContactRow>& rows);
    // A new row whose values are already in the form the store keeps them: a JSON object of texts, UTF-8.
    // An import writes hundreds of thousands of them straight from a file's cells, without a map of strings
    // each; the bytes are the caller's and need only outlive the call.
    struct RigaCodificata {
        QByteArrayView valori;
        QString email;
    };
    // Inserts new rows of one list as ContactRow(values, email) would be, with no statistics.
    bool insertRows(RecordId listId, const QList<RigaCodificata>& rows);
    // Writes only the statistics fields of a row, which is what an outcome changes.
    bool updateRowOutcome(const ContactRow& row);
    // Writes only the exclusion mark of a row, for callers that hold rows without their values.
    bool updateRowExcluded(RecordId rowId, bool isExcluded);

    // What planning reads of a list: each row's identity, address and exclusion, in store order, without the
    // values (decoding them is most of the cost of reading a row, and only the recipients of a run need them).
    struct RigaDaPianificare {
        RecordId id = 0;
        QString email;
        bool isExcluded = false;
    };
    // Pages of at most `limite` rows after the row `dopoId` (a negative limit reads to the end), so that a
    // caller can let the event loop turn between pages.
    QList<RigaDaPianificare> righeDaPianificare(RecordId listId, RecordId dopoId = 0, int limite = -1) const;
    // Identity and address of the rows of every list that have an address, a page at a time as above.
    QList<QPair<RecordId, QString>> indirizziRighe(RecordId dopoId, int limite) const;
    // One row's statistics, without its values: what recording an outcome reads and writes back.
    std::optional<ContactRow> rigaPerEsito(RecordId id) const;
    // The stored values of the given rows of one list (identities ascending), still encoded, in the same order;
    // a row that is gone gives an empty entry. `decodeRowValues` turns one into the row's values.
    QList<QByteArray> valoriCodificati(RecordId listId, const QList<RecordId>& ids) const;
    static RowValues decodeRowValues(const QByteArray& encoded);

    // What the Lists screen reads and writes.
    // A list's sending progress: rows not excluded whose address is valid, and those among them contacted;
    // with the number of all its rows, which the master list shows beside it.
    struct AvanzamentoLista {
        int validi = 0;
        int contattati = 0;
        int righe = 0;
    };
    AvanzamentoLista avanzamento(RecordId listId) const;
    // Every list's progress in one walk over the rows; a list without rows is absent.
    QHash<RecordId, AvanzamentoLista> avanzamentoListe() const;
    // A row as the detail of a list shows it; the values stay encoded until the row is drawn or searched.
    struct RigaDettaglio {
        RecordId id = 0;
        QString email;
        bool isExcluded = false;
        int inviateCount = 0;
        std::optional<QDateTime> ultimoInvio;
        QString ultimoEsitoRaw;
        QString ultimoDettaglio;
        QString ultimaCampagna;
        QString valori; // still encoded: `decodeRowValues` of its UTF-8 gives the values
    };
    // The rows of a list by address ascending (then by identity).
    QList<RigaDettaglio> righeDettaglio(RecordId listId) const;
    // The same two readings through a connection of their own on the store's file, for a thread beside the
    // interface. They see what was saved, so they stand in only while `leggibileAParte`.
    static QHash<RecordId, AvanzamentoLista> avanzamentoListe(const QString& percorso);
    static QList<RigaDettaglio> righeDettaglio(const QString& percorso, RecordId listId);
    bool leggibileAParte() const { return !isInMemory() && !m_inTransaction; }
    // Every row of a list, values included, by address ascending (then by identity), as an export writes them.
    QList<ContactRow> righeOrdinatePerEmail(RecordId listId) const;
    bool impostaEsclusione(const QList<RecordId>& ids, bool esclusa);
    // Each row's address becomes its value under the column, normalised; "" where the row has none.
    bool ricalcolaEmail(RecordId listId, const QString& colonna);
    // The suppression with exactly this address, if any.
    std::optional<Suppression> esclusionePer(const QString& email) const;

    QList<TemplateAttachment> attachments(RecordId templateId) const;

    QList<SendLog> logs(RecordId campaignId) const;
    int sentCount(RecordId campaignId) const; // counts unknown statuses as sent
    int failedCount(RecordId campaignId) const;
    // The normalised addresses this campaign has delivered to (an unknown status counts as delivered).
    QSet<QString> sentEmails(RecordId campaignId) const;
    // Delivered logs of the rolling last 24 hours for one send profile.
    int inviateUltime24Ore(const QString& servizio, const QDateTime& now = QDateTime::currentDateTimeUtc()) const;
    bool removeAllLogs();

    // For the History screen: the logs newest first (by date, then by identity), filtered, read a page at a
    // time so that a history of a million logs is never loaded whole. Defined in StoreHistoryQueries.cpp.
    qint64 contaRegistri(const FiltroRegistri& filtro) const;
    // `quanti` logs from position `dal` of the filtered order.
    QList<RigaStorico> paginaRegistri(const FiltroRegistri& filtro, qint64 dal, int quanti) const;
    // The first `quanti` filtered logs, found by reading the table in its stored order and sorting what
    // passes: for a filter that few logs pass, where walking the date order would visit every log per page.
    QList<RigaStorico> pochiRegistri(const FiltroRegistri& filtro, int quanti) const;
    // Every filtered log in order, one at a time; stops early when `prossima` gives false.
    void perOgniRegistro(const FiltroRegistri& filtro, const std::function<bool(const RigaStorico&)>& prossima) const;
    // What arrived after `dopoId`: a run only adds logs, so the screen adds them instead of reading again.
    NovitaRegistri registriDopo(const FiltroRegistri& filtro, RecordId dopoId) const;
    RecordId ultimoIdRegistri() const;
    // Every log, filtered or not: with what arrived since, it tells whether some were deleted. Cheap: it
    // counts the smallest index.
    qint64 contaTuttiRegistri() const;
    // For the Suppression screen: the entries newest first, all of them or only those after an identity.
    QList<Suppression> esclusiDopo(RecordId dopoId) const;
    qint64 contaEsclusi() const;
    // The entry with exactly this address, if any.
    std::optional<Suppression> esclusoPerEmail(const QString& email) const;

    // The normalised addresses of every suppression.
    QSet<QString> suppressedEmails() const;
    // Every row with a non-empty address, over all lists, by normalised address. The rows come with their
    // statistics and without their values, which is what recording an outcome needs.
    QHash<QString, QList<ContactRow>> righePerEmail() const;

    bool save();
    // Hands back to the system the page cache a long read filled; the next reads fill it again as needed.
    void liberaCache();
    bool hasPendingChanges() const { return m_inTransaction; }

Q_SIGNALS:
    void changed(Store::Entities what);

private:
    Store(QSqlDatabase db, QString path);
    static std::unique_ptr<Store> openConnection(const QString& location, QString path, QString* error);
    bool createSchemaIfNeeded(QString* error);

    bool beginChange(Entities what);
    QSqlQuery& prepared(const QString& sql) const;
    void flushChanged();

    QSqlDatabase m_db;
    QString m_path;
    bool m_inTransaction = false;
    Entities m_pending;
    bool m_flushScheduled = false;
    mutable std::map<QString, std::unique_ptr<QSqlQuery>> m_queries;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Store::Entities)
