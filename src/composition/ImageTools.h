#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

// Turns a picture the user picks into a data URI small enough to stand in a template's HTML.
namespace ImageTools {

// Absent when the file is not a picture that can be read, or no encoding of it can be made. The
// format is chosen by the file's extension alone: a GIF stays as the file is, a PNG stays PNG while
// it fits maxBytes, everything else (and a PNG too large) becomes JPEG.
std::optional<QString> dataURI(const QString& path, double maxWidth, qint64 maxBytes);

// The picture redrawn at the target size in whole pixels, with alpha; absent for an empty size.
std::optional<QImage> ridimensiona(const QImage& source, QSize target);

} // namespace ImageTools
