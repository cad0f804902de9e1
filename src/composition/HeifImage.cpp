#include "composition/HeifImage.h"

#include <QFile>

#ifdef BREZZARIO_HAVE_HEIF
#include <libheif/heif.h>

#include <memory>
#endif

namespace HeifImage {

#ifdef BREZZARIO_HAVE_HEIF
namespace {
struct ContextFree {
    void operator()(heif_context* c) const { heif_context_free(c); }
};
struct HandleFree {
    void operator()(heif_image_handle* h) const { heif_image_handle_release(h); }
};
struct ImageFree {
    void operator()(heif_image* i) const { heif_image_release(i); }
};
} // namespace

std::optional<QImage> load(const QString& path) {
    std::unique_ptr<heif_context, ContextFree> context(heif_context_alloc());
    if (!context)
        return std::nullopt;
    const QByteArray file = QFile::encodeName(path);
    if (heif_context_read_from_file(context.get(), file.constData(), nullptr).code != heif_error_Ok)
        return std::nullopt;
    heif_image_handle* rawHandle = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &rawHandle).code != heif_error_Ok)
        return std::nullopt;
    std::unique_ptr<heif_image_handle, HandleFree> handle(rawHandle);
    heif_image* rawImage = nullptr;
    // The decoder applies the picture's rotation and mirroring, as a photo viewer shows it.
    if (heif_decode_image(handle.get(), &rawImage, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, nullptr).code !=
        heif_error_Ok)
        return std::nullopt;
    std::unique_ptr<heif_image, ImageFree> image(rawImage);
    const int width = heif_image_get_width(image.get(), heif_channel_interleaved);
    const int height = heif_image_get_height(image.get(), heif_channel_interleaved);
    int stride = 0;
    const uint8_t* pixels = heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
    if (!pixels || width <= 0 || height <= 0)
        return std::nullopt;
    // Copy, since the pixels belong to the libheif image that is released here.
    QImage result = QImage(pixels, width, height, stride, QImage::Format_RGBA8888).copy();
    if (result.isNull())
        return std::nullopt;
    return result;
}
#else
std::optional<QImage> load(const QString&) {
    return std::nullopt;
}
#endif

} // namespace HeifImage
