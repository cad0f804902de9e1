#pragma once

#include "records/RecordId.h"
#include "records/Statuses.h"
#include "records/Text.h"

#include <QDateTime>
#include <QString>

// One excluded address. The category is derived from `reason` by deduci() whenever needed.
struct Suppression {
    RecordId id = 0;
    QString email; // normalised, unique in the store
    QString reason;
    QDateTime createdAt = QDateTime::currentDateTimeUtc();

    Suppression() = default;
    Suppression(const QString& email, QString reason)
        : email(Text::normalizedAddress(email)), reason(std::move(reason)) {}

    MotivoEsclusione motivo() const { return deduci(reason); }
};
