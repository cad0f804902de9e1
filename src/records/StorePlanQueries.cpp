#include "records/Store.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlQuery>

QList<Store::RigaDaPianificare> Store::righeDaPianificare(RecordId listId, RecordId dopoId, int limite) const {
    QSqlQuery& query = prepared(
        QStringLiteral("SELECT id, email, isExcluded FROM ContactRow WHERE listId = ? AND id > ? ORDER BY id LIMIT ?"));
    query.bindValue(0, listId);
    query.bindValue(1, dopoId);
    query.bindValue(2, limite);
    QList<RigaDaPianificare> result;
    if (!query.exec())
        return result;
    while (query.next())
        result.append({query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toBool()});
    query.finish();
    return result;
}

QList<QPair<RecordId, QString>> Store::indirizziRighe(RecordId dopoId, int limite) const {
    QSqlQuery& query =
        prepared(QStringLiteral("SELECT id, email FROM ContactRow WHERE id > ? AND email <> '' ORDER BY id LIMIT ?"));
    query.bindValue(0, dopoId);
    query.bindValue(1, limite);
    QList<QPair<RecordId, QString>> result;
    if (!query.exec())
        return result;
    while (query.next())
        result.append({query.value(0).toLongLong(), query.value(1).toString()});
    query.finish();
    return result;
}

QList<QByteArray> Store::valoriCodificati(RecordId listId, const QList<RecordId>& ids) const {
    QList<QByteArray> result(ids.size());
    if (ids.isEmpty())
        return result;
    // One ordered walk over the list beside the wanted identities, rather than a query per row.
    QSqlQuery& query =
        prepared(QStringLiteral("SELECT id, \"values\" FROM ContactRow WHERE listId = ? AND id >= ? ORDER BY id"));
    query.bindValue(0, listId);
    query.bindValue(1, ids.first());
    if (!query.exec())
        return result;
    qsizetype next = 0;
    while (next < ids.size() && query.next()) {
        const RecordId id = query.value(0).toLongLong();
        while (next < ids.size() && ids.at(next) < id)
            ++next; // that row is gone
        if (next < ids.size() && ids.at(next) == id)
            result[next++] = query.value(1).toString().toUtf8();
    }
    query.finish();
    return result;
}

RowValues Store::decodeRowValues(const QByteArray& encoded) {
    RowValues result;
    const QJsonObject object = QJsonDocument::fromJson(encoded).object();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        result.insert(it.key(), it.value().toString());
    return result;
}
