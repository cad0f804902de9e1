#include "settings/ProfiloInvio.h"

#include <QJsonArray>
#include <QJsonDocument>

QJsonObject ProfiloInvio::toJson() const {
    // Upper-case UUIDs, as the former product wrote them.
    return {{"id", id.toString(QUuid::WithoutBraces).toUpper()}, {"nome", nome}, {"config", config.toJson()}};
}

std::optional<ProfiloInvio> ProfiloInvio::fromJson(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const QJsonValue id = object.value(QLatin1String("id"));
    const QJsonValue nome = object.value(QLatin1String("nome"));
    const QJsonValue config = object.value(QLatin1String("config"));
    if (!id.isString() || !nome.isString() || !config.isObject())
        return std::nullopt;
    const QUuid uuid = QUuid::fromString(id.toString());
    if (uuid.isNull())
        return std::nullopt;
    const auto decoded = SMTPConfig::fromJson(config.toObject());
    if (!decoded)
        return std::nullopt;
    return ProfiloInvio{uuid, nome.toString(), *decoded};
}

QByteArray ProfiloInvio::encodeList(const QList<ProfiloInvio>& profili) {
    QJsonArray array;
    for (const ProfiloInvio& profilo : profili)
        array.append(profilo.toJson());
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<ProfiloInvio>> ProfiloInvio::decodeList(const QByteArray& bytes) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    QList<ProfiloInvio> result;
    for (const QJsonValue& value : document.array()) {
        auto profilo = fromJson(value);
        if (!profilo)
            return std::nullopt;
        result.append(*profilo);
    }
    return result;
}
