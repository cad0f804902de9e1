#pragma once

#include "records/RecordId.h"

#include <QByteArray>
#include <QString>

struct TemplateAttachment {
    RecordId id = 0;
    RecordId templateId = 0; // owner
    QString filename;
    QString mimeType = QStringLiteral("application/octet-stream");
    QByteArray data;

    TemplateAttachment() = default;
    TemplateAttachment(QString filename, QString mimeType, QByteArray data)
        : filename(std::move(filename)), mimeType(std::move(mimeType)), data(std::move(data)) {}

    // The size in decimal units, as a file manager counts them.
    QString sizeDescription() const;
};

QString fileSizeDescription(qint64 bytes);
