#pragma once

#include "settings/SMTPConfig.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

// A named send profile. Its name is the `servizio` of the logs it leaves, and the daily quota counts per name.
struct ProfiloInvio {
    QUuid id = QUuid::createUuid();
    QString nome;
    SMTPConfig config;

    bool operator==(const ProfiloInvio&) const = default;

    QJsonObject toJson() const;
    // Strict: id, nome and config must all be there.
    static std::optional<ProfiloInvio> fromJson(const QJsonValue& value);

    static QByteArray encodeList(const QList<ProfiloInvio>& profili);
    // Absent when the bytes aren't a JSON array of valid profiles.
    static std::optional<QList<ProfiloInvio>> decodeList(const QByteArray& bytes);
};
