#pragma once

#include <QImage>
#include <QString>

#include <optional>

// HEIC/HEIF pictures, which Qt cannot read on this platform. Absent when the file isn't one, can't be
// decoded, or the program was built without libheif.
namespace HeifImage {

std::optional<QImage> load(const QString& path);

} // namespace HeifImage
