#pragma once

#include "records/RecordId.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

// One imported recipient list. Its rows are reached through the store.
struct ContactList {
    RecordId id = 0;
    QString name;
    QDateTime importedAt = QDateTime::currentDateTimeUtc();
    QString sourceFileName;
    QStringList columns; // column names in file order
    QString emailColumn; // which of the columns holds the address
    QString note;
    QString tag;
    bool isArchived = false;

    ContactList() = default;
    ContactList(QString name, QString sourceFileName, QStringList columns, QString emailColumn)
        : name(std::move(name)), sourceFileName(std::move(sourceFileName)), columns(std::move(columns)),
          emailColumn(std::move(emailColumn)) {}
};
