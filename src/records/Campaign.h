#pragma once

#include "records/RecordId.h"
#include "records/Statuses.h"

#include <QDateTime>
#include <QString>

// A campaign joins a list and a template. The references are plain identities with no foreign key:
// deleting the list or the template leaves them stale, and the engine looks both up again before a run.
struct Campaign {
    RecordId id = 0;
    QString name;
    QDateTime createdAt = QDateTime::currentDateTimeUtc();
    QString statusRaw = QStringLiteral("draft");
    // Kept for reference only: a run sends with the sender of the active send profile.
    QString fromName;
    QString fromEmail;
    QString replyTo;
    QString snapshotSubject; // frozen at the first run
    QString snapshotHTML;    // frozen at the first run
    bool skipDuplicates = true;
    RecordId templateId = 0;
    RecordId listId = 0;

    Campaign() = default;
    explicit Campaign(QString name) : name(std::move(name)) {}

    CampaignStatus status() const { return campaignStatusFromRaw(statusRaw); }
    void setStatus(CampaignStatus status) { statusRaw = rawValue(status); }
};
