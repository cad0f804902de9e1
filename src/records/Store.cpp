#include "records/Store.h"

#include "records/EmailSyntax.h"
#include "records/StoreSchema.h"
#include "records/StoreTables.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <algorithm>

using namespace StoreTables;

namespace {

QString nextConnectionName() {
    static int counter = 0;
    return QStringLiteral("brezzario-store-%1").arg(++counter);
}

Store::Entities cascadeOf(Store::Entity entity) {
    switch (entity) {
    case Store::ContactLists:
        return Store::ContactLists | Store::ContactRows;
    case Store::MessageTemplates:
        return Store::MessageTemplates | Store::TemplateAttachments;
    case Store::Campaigns:
        return Store::Campaigns | Store::SendLogs;
    default:
        return entity;
    }
}

template <class T> QString selectSql(const QString& tail) {
    return QStringLiteral("SELECT id, %1 FROM %2 %3")
        .arg(Table<T>::columns().join(u", "), QLatin1String(Table<T>::name), tail);
}

// Decides, without writing anything, whether an existing file can be used as the store. The connection
// is read-only, so a refused file gets no journal and no switch to WAL.
QString inspectExistingFile(const QString& path) {
    const QString name = nextConnectionName();
    QString problem;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        // immutable: no locks, no -wal or -shm files made beside it. But a write-ahead log left by a process
        // that was killed holds committed changes, and a checkpoint cut short leaves the main file
        // inconsistent without it: then the file is read through its log, still read-only.
        const bool conLog = QFileInfo(path + QStringLiteral("-wal")).size() > 0;
        db.setDatabaseName(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded) +
                           (conLog ? QStringLiteral("?mode=ro") : QStringLiteral("?immutable=1")));
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI"));
        if (!db.open()) {
            problem = db.lastError().text();
        } else {
            QSqlQuery query(db);
            if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next()) {
                problem = query.lastError().text();
            } else if (query.value(0).toString() != QLatin1String("ok")) {
                problem = QStringLiteral("controllo di integrità non superato");
            } else if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"))) {
                problem = query.lastError().text();
            } else {
                bool hasMeta = false;
                bool hasOtherTables = false;
                while (query.next()) {
                    const QString table = query.value(0).toString();
                    if (table == QLatin1String("BrezzarioMeta"))
                        hasMeta = true;
                    else if (!table.startsWith(QLatin1String("sqlite_")))
                        hasOtherTables = true;
                }
                if (!hasMeta && hasOtherTables) {
                    problem = QStringLiteral("il file non è un archivio di Brezzario");
                } else if (hasMeta) {
                    query.exec(QStringLiteral("SELECT value FROM BrezzarioMeta WHERE key = 'schemaVersion'"));
                    const QString version = query.next() ? query.value(0).toString() : QString();
                    if (version != Store::schemaVersion)
                        problem = QStringLiteral("versione dello schema non riconosciuta: «%1»").arg(version);
                }
            }
            query.finish();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return problem;
}

} // namespace

Store::Store(QSqlDatabase db, QString path) : m_db(std::move(db)), m_path(std::move(path)) {}

Store::~Store() {
    m_queries.clear();
    const QString name = m_db.connectionName();
    if (m_inTransaction)
        m_db.rollback(); // never saved, so never durable
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString Store::defaultPath() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/brezzario.sqlite");
}

std::unique_ptr<Store> Store::open(const QString& path, QString* error) {
    const QFileInfo info(path);
    if (info.exists() && info.size() > 0) {
        const QString problem = inspectExistingFile(path);
        if (!problem.isEmpty()) {
            if (error)
                *error = problem;
            return nullptr;
        }
    }
    QDir().mkpath(info.absolutePath());
    return openConnection(path, path, error);
}

std::unique_ptr<Store> Store::inMemory() {
    return openConnection(QStringLiteral(":memory:"), QString(), nullptr);
}

std::unique_ptr<Store> Store::openDefault() {
    QString error;
    auto store = open(defaultPath(), &error);
    if (store)
        return store;
    qWarning("Brezzario: archivio non apribile (%s), avvio in memoria.", qUtf8Printable(error));
    store = inMemory();
    if (!store)
        qFatal("Brezzario: archivio in memoria non apribile.");
    return store;
}

std::unique_ptr<Store> Store::openConnection(const QString& location, QString path, QString* error) {
    const QString name = nextConnectionName();
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(location);
    if (!db.open()) {
        if (error)
            *error = db.lastError().text();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
        return nullptr;
    }
    {
        QSqlQuery pragma(db);
        pragma.exec(QStringLiteral("PRAGMA foreign_keys = ON"));
        // WAL with synchronous=NORMAL: a commit survives the process being killed.
        pragma.exec(QStringLiteral("PRAGMA journal_mode = WAL"));
        pragma.exec(QStringLiteral("PRAGMA synchronous = NORMAL"));
        // A large import changes more pages in one transaction than the default cache of 2 MB holds; spilled
        // pages are written to the log again and again. 32 MB keeps a 200,000-row import in memory until commit.
        pragma.exec(QStringLiteral("PRAGMA cache_size = -32768"));
    }
    std::unique_ptr<Store> store(new Store(db, std::move(path)));
    db = QSqlDatabase();
    if (!store->createSchemaIfNeeded(error))
        return nullptr;
    return store;
}

bool Store::createSchemaIfNeeded(QString* error) {
    QSqlQuery query(m_db);
    query.exec(QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'BrezzarioMeta'"));
    if (query.next())
        return true;
    m_db.transaction();
    for (const QString& statement : StoreSchema::statements()) {
        if (!query.exec(statement)) {
            if (error)
                *error = query.lastError().text();
            m_db.rollback();
            return false;
        }
    }
    query.prepare(QStringLiteral("INSERT INTO BrezzarioMeta (key, value) VALUES ('schemaVersion', ?)"));
    query.addBindValue(schemaVersion);
    query.exec();
    if (!m_db.commit()) {
        if (error)
            *error = m_db.lastError().text();
        return false;
    }
    return true;
}

QSqlQuery& Store::prepared(const QString& sql) const {
    auto it = m_queries.find(sql);
    if (it == m_queries.end()) {
        auto query = std::make_unique<QSqlQuery>(m_db);
        query->setForwardOnly(true);
        query->prepare(sql);
        it = m_queries.emplace(sql, std::move(query)).first;
    }
    return *it->second;
}

bool Store::beginChange(Entities what) {
    if (!m_inTransaction)
        m_inTransaction = m_db.transaction();
    m_pending |= what;
    if (!m_flushScheduled) {
        m_flushScheduled = true;
        QTimer::singleShot(0, this, &Store::flushChanged);
    }
    return true;
}

void Store::flushChanged() {
    m_flushScheduled = false;
    const Entities what = m_pending;
    m_pending = {};
    if (what)
        Q_EMIT changed(what);
}

bool Store::save() {
    if (!m_inTransaction)
        return true;
    if (!m_db.commit())
        return false;
    m_inTransaction = false;
    return true;
}

void Store::liberaCache() {
    QSqlQuery query(m_db);
    query.exec(QStringLiteral("PRAGMA shrink_memory"));
}

namespace {
bool execWith(QSqlQuery& query, const QVariantList& values) {
    for (int i = 0; i < values.size(); ++i) {
        const QVariant& value = values.at(i);
        // A null QString would bind as SQL NULL; a record's texts are never absent, only empty.
        if (value.typeId() == QMetaType::QString && value.toString().isNull())
            query.bindValue(i, QStringLiteral(""));
        else
            query.bindValue(i, value);
    }
    return query.exec();
}
} // namespace

template <class T> bool Store::insert(T& record) {
    using Tb = Table<T>;
    static const QString sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                                   .arg(QLatin1String(Tb::name), Tb::columns().join(u", "),
                                        QStringList(Tb::columns().size(), QStringLiteral("?")).join(u", "));
    beginChange(Tb::entity);
    QSqlQuery& query = prepared(sql);
    if (!execWith(query, Tb::values(record)))
        return false;
    record.id = query.lastInsertId().toLongLong();
    query.finish();
    return true;
}

template <class T> bool Store::update(const T& record) {
    using Tb = Table<T>;
    static const QString sql =
        QStringLiteral("UPDATE %1 SET %2 = ? WHERE id = ?").arg(QLatin1String(Tb::name), Tb::columns().join(u" = ?, "));
    if (record.id <= 0)
        return false;
    beginChange(Tb::entity);
    QVariantList values = Tb::values(record);
    values.append(record.id);
    QSqlQuery& query = prepared(sql);
    const bool ok = execWith(query, values);
    query.finish();
    return ok;
}

template <class T> bool Store::remove(RecordId id) {
    using Tb = Table<T>;
    static const QString sql = QStringLiteral("DELETE FROM %1 WHERE id = ?").arg(QLatin1String(Tb::name));
    beginChange(cascadeOf(Tb::entity));
    QSqlQuery& query = prepared(sql);
    const bool ok = execWith(query, {id});
    query.finish();
    return ok;
}

template <class T> std::optional<T> Store::find(RecordId id) const {
    static const QString sql = selectSql<T>(QStringLiteral("WHERE id = ?"));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, id);
    std::optional<T> result;
    if (query.exec() && query.next())
        result = Table<T>::read(query);
    query.finish();
    return result;
}

namespace {
template <class T> QList<T> readAll(QSqlQuery& query) {
    QList<T> result;
    while (query.next())
        result.append(Table<T>::read(query));
    query.finish();
    return result;
}
} // namespace

template <class T> QList<T> Store::all() const {
    static const QString sql = selectSql<T>(QStringLiteral("ORDER BY id"));
    QSqlQuery& query = prepared(sql);
    if (!query.exec())
        return {};
    return readAll<T>(query);
}

#define BREZZARIO_STORE_RECORD(T)                                                                                      \
    template bool Store::insert<T>(T&);                                                                                \
    template bool Store::update<T>(const T&);                                                                          \
    template bool Store::remove<T>(RecordId);                                                                          \
    template std::optional<T> Store::find<T>(RecordId) const;                                                          \
    template QList<T> Store::all<T>() const;
BREZZARIO_STORE_RECORD(ContactList)
BREZZARIO_STORE_RECORD(ContactRow)
BREZZARIO_STORE_RECORD(MessageTemplate)
BREZZARIO_STORE_RECORD(TemplateAttachment)
BREZZARIO_STORE_RECORD(Campaign)
BREZZARIO_STORE_RECORD(SendLog)
BREZZARIO_STORE_RECORD(Suppression)
#undef BREZZARIO_STORE_RECORD

QList<ContactRow> Store::rows(RecordId listId) const {
    static const QString sql = selectSql<ContactRow>(QStringLiteral("WHERE listId = ? ORDER BY id"));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, listId);
    if (!query.exec())
        return {};
    return readAll<ContactRow>(query);
}

namespace {
// A log counts as a delivery unless its status says otherwise: an unknown status reads as sent.
const QString deliveredLog = QStringLiteral("statusRaw NOT IN ('failed', 'skipped', 'test')");

QSet<QString> normalizedAddresses(QSqlQuery& query) {
    QSet<QString> result;
    if (query.exec())
        while (query.next())
            result.insert(Text::normalizedAddress(query.value(0).toString()));
    query.finish();
    return result;
}

int countOf(QSqlQuery& query) {
    const int count = query.exec() && query.next() ? query.value(0).toInt() : 0;
    query.finish();
    return count;
}
} // namespace

int Store::rowCount(RecordId listId) const {
    QSqlQuery& query = prepared(QStringLiteral("SELECT count(*) FROM ContactRow WHERE listId = ?"));
    query.bindValue(0, listId);
    return countOf(query);
}

int Store::validRowCount(RecordId listId) const {
    QSqlQuery& query = prepared(QStringLiteral("SELECT email FROM ContactRow WHERE listId = ? AND isExcluded = 0"));
    query.bindValue(0, listId);
    int count = 0;
    if (query.exec())
        while (query.next())
            if (isValidEmailSyntax(query.value(0).toString()))
                ++count;
    query.finish();
    return count;
}

bool Store::updateRowOutcome(const ContactRow& row) {
    static const QString sql = QStringLiteral(
        "UPDATE ContactRow SET inviateCount = ?, erroriCount = ?, saltateCount = ?, primoInvio = ?, ultimoInvio = ?, "
        "ultimoEsitoRaw = ?, ultimoDettaglio = ?, ultimaCampagna = ?, ultimoOggetto = ? WHERE id = ?");
    beginChange(ContactRows);
    QSqlQuery& query = prepared(sql);
    const bool ok = execWith(query, {row.inviateCount, row.erroriCount, row.saltateCount, fromDate(row.primoInvio),
                                     fromDate(row.ultimoInvio), row.ultimoEsitoRaw, row.ultimoDettaglio,
                                     row.ultimaCampagna, row.ultimoOggetto, row.id});
    query.finish();
    return ok;
}

bool Store::updateRowExcluded(RecordId rowId, bool isExcluded) {
    beginChange(ContactRows);
    QSqlQuery& query = prepared(QStringLiteral("UPDATE ContactRow SET isExcluded = ? WHERE id = ?"));
    const bool ok = execWith(query, {isExcluded, rowId});
    query.finish();
    return ok;
}

QList<TemplateAttachment> Store::attachments(RecordId templateId) const {
    static const QString sql = selectSql<TemplateAttachment>(QStringLiteral("WHERE templateId = ? ORDER BY id"));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, templateId);
    if (!query.exec())
        return {};
    return readAll<TemplateAttachment>(query);
}

QList<SendLog> Store::logs(RecordId campaignId) const {
    static const QString sql = selectSql<SendLog>(QStringLiteral("WHERE campaignId = ? ORDER BY id"));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, campaignId);
    if (!query.exec())
        return {};
    return readAll<SendLog>(query);
}

int Store::sentCount(RecordId campaignId) const {
    // An unknown status reads as sent.
    QSqlQuery& query =
        prepared(QStringLiteral("SELECT count(*) FROM SendLog WHERE campaignId = ? AND ") + deliveredLog);
    query.bindValue(0, campaignId);
    return countOf(query);
}

QSet<QString> Store::sentEmails(RecordId campaignId) const {
    QSqlQuery& query = prepared(QStringLiteral("SELECT email FROM SendLog WHERE campaignId = ? AND ") + deliveredLog);
    query.bindValue(0, campaignId);
    return normalizedAddresses(query);
}

int Store::failedCount(RecordId campaignId) const {
    QSqlQuery& query =
        prepared(QStringLiteral("SELECT count(*) FROM SendLog WHERE campaignId = ? AND statusRaw = 'failed'"));
    query.bindValue(0, campaignId);
    return countOf(query);
}

int Store::inviateUltime24Ore(const QString& servizio, const QDateTime& now) const {
    QSqlQuery& query = prepared(
        QStringLiteral("SELECT count(*) FROM SendLog WHERE servizio = ? AND statusRaw = 'sent' AND date >= ?"));
    query.bindValue(0, servizio);
    query.bindValue(1, now.toMSecsSinceEpoch() - 86'400'000);
    return countOf(query);
}

bool Store::removeAllLogs() {
    beginChange(SendLogs);
    QSqlQuery& query = prepared(QStringLiteral("DELETE FROM SendLog"));
    const bool ok = query.exec();
    query.finish();
    return ok;
}

QSet<QString> Store::suppressedEmails() const {
    return normalizedAddresses(prepared(QStringLiteral("SELECT email FROM Suppression")));
}

namespace {
// Rows read for their statistics only: decoding the values is most of the cost of reading a row.
QString selectRowsWithoutValues(const QString& tail) {
    return selectSql<ContactRow>(tail).replace(QStringLiteral("\"values\""), QStringLiteral("''"));
}
} // namespace

std::optional<ContactRow> Store::rigaPerEsito(RecordId id) const {
    static const QString sql = selectRowsWithoutValues(QStringLiteral("WHERE id = ?"));
    QSqlQuery& query = prepared(sql);
    query.bindValue(0, id);
    std::optional<ContactRow> result;
    if (query.exec() && query.next())
        result = Table<ContactRow>::read(query);
    query.finish();
    return result;
}

QHash<QString, QList<ContactRow>> Store::righePerEmail() const {
    static const QString sql = selectRowsWithoutValues(QStringLiteral("WHERE email <> '' ORDER BY id"));
    QSqlQuery& query = prepared(sql);
    QHash<QString, QList<ContactRow>> result;
    if (!query.exec())
        return result;
    while (query.next()) {
        ContactRow row = Table<ContactRow>::read(query);
        QString key = Text::normalizedAddress(row.email);
        if (!key.isEmpty())
            result[key].append(std::move(row));
    }
    query.finish();
    return result;
}

namespace StoreTables {

QString encodeColumns(const QStringList& columns) {
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(columns)).toJson(QJsonDocument::Compact));
}

QStringList decodeColumns(const QString& json) {
    QStringList result;
    for (const QJsonValue& value : QJsonDocument::fromJson(json.toUtf8()).array())
        result.append(value.toString());
    return result;
}

QString encodeValues(const RowValues& values) {
    // Written by hand rather than through QJsonObject: an import encodes hundreds of thousands of rows, and
    // the object's sorted copy of every key and value was most of an insert's cost. Same JSON either way.
    QString json;
    qsizetype length = 2;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        length += it.key().size() + it.value().size() + 6;
    json.reserve(length);
    json += u'{';
    const auto appendText = [&json](const QString& text) {
        json += u'"';
        const bool plain = std::none_of(text.cbegin(), text.cend(), [](QChar c) {
            return c.unicode() < 0x20 || c.unicode() == u'"' || c.unicode() == u'\\';
        });
        if (plain) {
            json += text;
            json += u'"';
            return;
        }
        for (const QChar c : text) {
            const char16_t u = c.unicode();
            if (u == u'"' || u == u'\\') {
                json += u'\\';
                json += c;
            } else if (u < 0x20) {
                switch (u) {
                case u'\n':
                    json += QLatin1String("\\n");
                    break;
                case u'\r':
                    json += QLatin1String("\\r");
                    break;
                case u'\t':
                    json += QLatin1String("\\t");
                    break;
                default:
                    json += QStringLiteral("\\u%1").arg(int(u), 4, 16, QLatin1Char('0'));
                }
            } else {
                json += c;
            }
        }
        json += u'"';
    };
    bool first = true;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (!first)
            json += u',';
        first = false;
        appendText(it.key());
        json += u':';
        appendText(it.value());
    }
    json += u'}';
    return json;
}

RowValues decodeValues(const QString& json) {
    return Store::decodeRowValues(json.toUtf8());
}

} // namespace StoreTables
