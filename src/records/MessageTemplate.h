#pragma once

#include "records/RecordId.h"

#include <QDateTime>
#include <QString>

// A message template. Its attachments are reached through the store.
struct MessageTemplate {
    RecordId id = 0;
    QString name;
    QString subject;       // may hold placeholders
    QString html;          // may hold placeholders
    QString plainOverride; // hand-written plain text; when empty it is derived from the HTML
    QDateTime updatedAt = QDateTime::currentDateTimeUtc();
    QString note;

    MessageTemplate() = default;
    MessageTemplate(QString name, QString subject, QString html)
        : name(std::move(name)), subject(std::move(subject)), html(std::move(html)) {}
};
