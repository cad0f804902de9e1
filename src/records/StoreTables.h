#pragma once

// How each record maps onto its table. Used by the store only.

#include "records/Store.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlQuery>
#include <QVariant>

namespace StoreTables {

inline QVariant fromDate(const QDateTime& date) {
    return date.isValid() ? QVariant(date.toMSecsSinceEpoch()) : QVariant(QMetaType(QMetaType::LongLong));
}
inline QVariant fromDate(const std::optional<QDateTime>& date) {
    return date ? fromDate(*date) : QVariant(QMetaType(QMetaType::LongLong));
}
inline QDateTime toDate(const QVariant& value) {
    return QDateTime::fromMSecsSinceEpoch(value.toLongLong(), Qt::UTC);
}
inline std::optional<QDateTime> toOptionalDate(const QVariant& value) {
    if (value.isNull())
        return std::nullopt;
    return toDate(value);
}
// An absent reference is NULL, so that foreign keys accept it.
inline QVariant fromRef(RecordId id) {
    return id > 0 ? QVariant(id) : QVariant(QMetaType(QMetaType::LongLong));
}
QString encodeColumns(const QStringList& columns);
QStringList decodeColumns(const QString& json);
QString encodeValues(const RowValues& values);
RowValues decodeValues(const QString& json);

template <class T> struct Table;

template <> struct Table<ContactList> {
    static constexpr auto name = "ContactList";
    static constexpr Store::Entity entity = Store::ContactLists;
    static QStringList columns() {
        return {"name", "importedAt", "sourceFileName", "columns", "emailColumn", "note", "tag", "isArchived"};
    }
    static QVariantList values(const ContactList& r) {
        return {r.name,
                fromDate(r.importedAt),
                r.sourceFileName,
                encodeColumns(r.columns),
                r.emailColumn,
                r.note,
                r.tag,
                r.isArchived};
    }
    static ContactList read(const QSqlQuery& q) {
        ContactList r;
        r.id = q.value(0).toLongLong();
        r.name = q.value(1).toString();
        r.importedAt = toDate(q.value(2));
        r.sourceFileName = q.value(3).toString();
        r.columns = decodeColumns(q.value(4).toString());
        r.emailColumn = q.value(5).toString();
        r.note = q.value(6).toString();
        r.tag = q.value(7).toString();
        r.isArchived = q.value(8).toBool();
        return r;
    }
};

template <> struct Table<ContactRow> {
    static constexpr auto name = "ContactRow";
    static constexpr Store::Entity entity = Store::ContactRows;
    static QStringList columns() {
        return {"listId",          "\"values\"",     "email",        "isExcluded",  "inviateCount",
                "erroriCount",     "saltateCount",   "primoInvio",   "ultimoInvio", "ultimoEsitoRaw",
                "ultimoDettaglio", "ultimaCampagna", "ultimoOggetto"};
    }
    static QVariantList values(const ContactRow& r) {
        return {fromRef(r.listId),       encodeValues(r.values), r.email,           r.isExcluded,
                r.inviateCount,          r.erroriCount,          r.saltateCount,    fromDate(r.primoInvio),
                fromDate(r.ultimoInvio), r.ultimoEsitoRaw,       r.ultimoDettaglio, r.ultimaCampagna,
                r.ultimoOggetto};
    }
    static ContactRow read(const QSqlQuery& q) {
        ContactRow r;
        r.id = q.value(0).toLongLong();
        r.listId = q.value(1).toLongLong();
        r.values = decodeValues(q.value(2).toString());
        r.email = q.value(3).toString();
        r.isExcluded = q.value(4).toBool();
        r.inviateCount = q.value(5).toInt();
        r.erroriCount = q.value(6).toInt();
        r.saltateCount = q.value(7).toInt();
        r.primoInvio = toOptionalDate(q.value(8));
        r.ultimoInvio = toOptionalDate(q.value(9));
        r.ultimoEsitoRaw = q.value(10).toString();
        r.ultimoDettaglio = q.value(11).toString();
        r.ultimaCampagna = q.value(12).toString();
        r.ultimoOggetto = q.value(13).toString();
        return r;
    }
};

template <> struct Table<MessageTemplate> {
    static constexpr auto name = "MessageTemplate";
    static constexpr Store::Entity entity = Store::MessageTemplates;
    static QStringList columns() { return {"name", "subject", "html", "plainOverride", "updatedAt", "note"}; }
    static QVariantList values(const MessageTemplate& r) {
        return {r.name, r.subject, r.html, r.plainOverride, fromDate(r.updatedAt), r.note};
    }
    static MessageTemplate read(const QSqlQuery& q) {
        MessageTemplate r;
        r.id = q.value(0).toLongLong();
        r.name = q.value(1).toString();
        r.subject = q.value(2).toString();
        r.html = q.value(3).toString();
        r.plainOverride = q.value(4).toString();
        r.updatedAt = toDate(q.value(5));
        r.note = q.value(6).toString();
        return r;
    }
};

template <> struct Table<TemplateAttachment> {
    static constexpr auto name = "TemplateAttachment";
    static constexpr Store::Entity entity = Store::TemplateAttachments;
    static QStringList columns() { return {"templateId", "filename", "mimeType", "data"}; }
    static QVariantList values(const TemplateAttachment& r) {
        return {fromRef(r.templateId), r.filename, r.mimeType, r.data.isNull() ? QByteArray("") : r.data};
    }
    static TemplateAttachment read(const QSqlQuery& q) {
        TemplateAttachment r;
        r.id = q.value(0).toLongLong();
        r.templateId = q.value(1).toLongLong();
        r.filename = q.value(2).toString();
        r.mimeType = q.value(3).toString();
        r.data = q.value(4).toByteArray();
        return r;
    }
};

template <> struct Table<Campaign> {
    static constexpr auto name = "Campaign";
    static constexpr Store::Entity entity = Store::Campaigns;
    static QStringList columns() {
        return {"name",         "createdAt",      "statusRaw",  "fromName", "fromEmail", "replyTo", "snapshotSubject",
                "snapshotHTML", "skipDuplicates", "templateId", "listId"};
    }
    static QVariantList values(const Campaign& r) {
        return {r.name,           fromDate(r.createdAt), r.statusRaw,    r.fromName,       r.fromEmail,
                r.replyTo,        r.snapshotSubject,     r.snapshotHTML, r.skipDuplicates, fromRef(r.templateId),
                fromRef(r.listId)};
    }
    static Campaign read(const QSqlQuery& q) {
        Campaign r;
        r.id = q.value(0).toLongLong();
        r.name = q.value(1).toString();
        r.createdAt = toDate(q.value(2));
        r.statusRaw = q.value(3).toString();
        r.fromName = q.value(4).toString();
        r.fromEmail = q.value(5).toString();
        r.replyTo = q.value(6).toString();
        r.snapshotSubject = q.value(7).toString();
        r.snapshotHTML = q.value(8).toString();
        r.skipDuplicates = q.value(9).toBool();
        r.templateId = q.value(10).toLongLong();
        r.listId = q.value(11).toLongLong();
        return r;
    }
};

template <> struct Table<SendLog> {
    static constexpr auto name = "SendLog";
    static constexpr Store::Entity entity = Store::SendLogs;
    static QStringList columns() {
        return {"email", "subject", "statusRaw", "detail", "date", "servizio", "campaignId"};
    }
    static QVariantList values(const SendLog& r) {
        return {r.email, r.subject, r.statusRaw, r.detail, fromDate(r.date), r.servizio, fromRef(r.campaignId)};
    }
    static SendLog read(const QSqlQuery& q) {
        SendLog r;
        r.id = q.value(0).toLongLong();
        r.email = q.value(1).toString();
        r.subject = q.value(2).toString();
        r.statusRaw = q.value(3).toString();
        r.detail = q.value(4).toString();
        r.date = toDate(q.value(5));
        r.servizio = q.value(6).toString();
        r.campaignId = q.value(7).toLongLong();
        return r;
    }
};

template <> struct Table<Suppression> {
    static constexpr auto name = "Suppression";
    static constexpr Store::Entity entity = Store::Suppressions;
    static QStringList columns() { return {"email", "reason", "createdAt"}; }
    static QVariantList values(const Suppression& r) { return {r.email, r.reason, fromDate(r.createdAt)}; }
    static Suppression read(const QSqlQuery& q) {
        Suppression r;
        r.id = q.value(0).toLongLong();
        r.email = q.value(1).toString();
        r.reason = q.value(2).toString();
        r.createdAt = toDate(q.value(3));
        return r;
    }
};

} // namespace StoreTables
