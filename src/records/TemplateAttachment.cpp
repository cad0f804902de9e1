#include "records/TemplateAttachment.h"

#include <QLocale>

QString TemplateAttachment::sizeDescription() const {
    return fileSizeDescription(data.size());
}

QString fileSizeDescription(qint64 bytes) {
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}
