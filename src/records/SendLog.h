#pragma once

#include "records/RecordId.h"
#include "records/Statuses.h"

#include <QDateTime>
#include <QString>

// One line of history.
struct SendLog {
    RecordId id = 0;
    QString email;
    QString subject;
    QString statusRaw;
    QString detail;
    QDateTime date = QDateTime::currentDateTimeUtc();
    QString servizio;        // the send profile in use; the daily quota counts per servizio
    RecordId campaignId = 0; // absent for a test message

    SendLog() = default;
    SendLog(QString email, QString subject, SendStatus status, QString detail, QString servizio)
        : email(std::move(email)), subject(std::move(subject)), statusRaw(rawValue(status)), detail(std::move(detail)),
          servizio(std::move(servizio)) {}

    // Lenient on purpose: an unknown raw value reads as sent.
    SendStatus status() const { return logStatusFromRaw(statusRaw); }
};
