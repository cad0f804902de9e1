#include "composition/ImageTools.h"

#include "composition/HeifImage.h"
#include "records/Text.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>

#include <cmath>

namespace ImageTools {

namespace {
std::optional<QImage> loaded(const QString& path) {
    QImageReader reader(path);
    reader.setAutoTransform(true); // a phone's portrait photo should not arrive on its side
    QImage image = reader.read();
    if (!image.isNull())
        return image;
    return HeifImage::load(path);
}

QByteArray encoded(const QImage& image, const char* format, int quality) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format, quality))
        return {};
    return bytes;
}

// JPEG has no alpha: transparent areas are laid on white, the colour of the message's page, rather
// than on the black an encoder would otherwise give them.
QImage onWhite(const QImage& image) {
    if (!image.hasAlphaChannel())
        return image;
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter painter(&flat);
    painter.drawImage(0, 0, image);
    painter.end();
    return flat;
}

QString uri(const char* type, const QByteArray& bytes) {
    return QStringLiteral("data:") + QLatin1String(type) + QStringLiteral(";base64,") +
           QString::fromLatin1(bytes.toBase64());
}
} // namespace

std::optional<QImage> ridimensiona(const QImage& source, QSize target) {
    if (target.isEmpty() || source.isNull())
        return std::nullopt;
    QImage bitmap = source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (bitmap.size() != target)
        bitmap = bitmap.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (bitmap.isNull() || bitmap.size() != target)
        return std::nullopt;
    return bitmap;
}

std::optional<QString> dataURI(const QString& path, double maxWidth, qint64 maxBytes) {
    const std::optional<QImage> image = loaded(path);
    if (!image)
        return std::nullopt;
    const QString extension = Text::lowercased(QFileInfo(path).suffix());

    if (extension == QLatin1String("gif")) {
        // A GIF may be animated, so it goes as the file is: neither scaled nor held to maxBytes.
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            if (file.error() == QFileDevice::NoError)
                return uri("image/gif", bytes);
        }
    }

    const double width = image->width();
    const double height = image->height();
    const double scale = maxWidth < width ? maxWidth / width : 1.0;
    const QSize target(static_cast<int>(std::floor(width * scale)), static_cast<int>(std::floor(height * scale)));
    const std::optional<QImage> bitmap = ridimensiona(*image, target);
    if (!bitmap)
        return std::nullopt;

    if (extension == QLatin1String("png")) {
        const QByteArray png = encoded(*bitmap, "PNG", -1);
        if (!png.isEmpty() && png.size() <= maxBytes)
            return uri("image/png", png);
    }

    const QImage flat = onWhite(*bitmap);
    const int qualities[] = {85, 70, 55, 40};
    for (const int quality : qualities) {
        const QByteArray jpeg = encoded(flat, "JPEG", quality);
        if (jpeg.isEmpty())
            continue;
        if (jpeg.size() <= maxBytes || quality == qualities[3])
            return uri("image/jpeg", jpeg);
    }
    return std::nullopt;
}

} // namespace ImageTools
