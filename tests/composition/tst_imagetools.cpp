#include "composition/ImageTools.h"
#include "TestEnvironment.h"

#include <QBuffer>
#include <QImageReader>
#include <QRandomGenerator>
#include <QTemporaryDir>

#ifdef BREZZARIO_TEST_HEIF
#include <libheif/heif.h>

#ifdef __SANITIZE_ADDRESS__
// x265, which libheif uses to write the test's HEIC picture, keeps one block from its encoder's
// start to the end of the process. The reading side under test uses no x265.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libx265.so\n";
}
#endif
#endif

using namespace Qt::Literals::StringLiterals;

namespace {
// A smooth picture, as photographs are; the top-left quarter is transparent when asked.
QImage photo(int width, int height, bool transparentCorner = false) {
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const bool clear = transparentCorner && x < width / 4 && y < height / 4;
            line[x] = clear ? qRgba(0, 0, 0, 0) : qRgb(x * 255 / width, y * 255 / height, 128);
        }
    }
    return image;
}

// Random pixels, which no encoder can make small.
QImage noise(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(image.bits()), image.sizeInBytes() / 4);
    return image;
}

QByteArray encoded(const QImage& image, const char* format, int quality = -1) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return bytes;
}

// Qt reads GIFs but doesn't write them. Nine-bit codes with a clear code every 250 pixels keep the LZW
// code size from growing, so the file is about one byte per pixel.
QByteArray gif(int width, int height) {
    QByteArray out("GIF89a");
    const auto put16 = [&out](int value) { out.append(char(value & 0xFF)).append(char(value >> 8)); };
    put16(width);
    put16(height);
    out.append("\xF7\0\0", 3); // a global colour table of 256 entries
    for (int i = 0; i < 256; ++i)
        out.append(char(i)).append(char(255 - i)).append(char(i * 7));
    out.append(',');
    for (int value : {0, 0, width, height})
        put16(value);
    out.append("\0\x08", 2);
    QByteArray data;
    quint32 bits = 0;
    int count = 0;
    const auto code = [&](int c) {
        bits |= quint32(c) << count;
        for (count += 9; count >= 8; count -= 8, bits >>= 8)
            data.append(char(bits & 0xFF));
    };
    for (int i = 0; i < width * height; ++i) {
        if (i % 250 == 0)
            code(256);
        code((i % width / 8 + i / width / 8) % 256);
    }
    code(257);
    if (count > 0)
        data.append(char(bits & 0xFF));
    for (qsizetype at = 0; at < data.size(); at += 255)
        out.append(char(qMin<qsizetype>(255, data.size() - at))).append(data.mid(at, 255));
    return out.append('\0').append(';');
}
#ifdef BREZZARIO_TEST_HEIF
QByteArray heic(int width, int height) {
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder);
    heif_encoder_set_lossy_quality(encoder, 60);
    heif_image* image = nullptr;
    heif_image_create(width, height, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
    heif_image_add_plane(image, heif_channel_interleaved, width, height, 8);
    int stride = 0;
    uint8_t* pixels = heif_image_get_plane(image, heif_channel_interleaved, &stride);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint8_t* p = pixels + y * stride + x * 3;
            p[0] = static_cast<uint8_t>(x * 255 / width);
            p[1] = static_cast<uint8_t>(y * 255 / height);
            p[2] = 128;
        }
    heif_context_encode_image(context, image, encoder, nullptr, nullptr);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("x.heic"));
    heif_context_write_to_file(context, QFile::encodeName(path).constData());
    heif_image_release(image);
    heif_encoder_release(encoder);
    heif_context_free(context);
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}
#endif
} // namespace

class TestImageTools : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void dataURI_data();
    void dataURI();

private:
    QTemporaryDir m_dir;
};

void TestImageTools::dataURI_data() {
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("file"); // null: no file at all
    QTest::addColumn<qint64>("maxBytes");
    QTest::addColumn<QByteArray>("format"); // of the result; empty when there is none
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("corner"); // the top-left pixel: "clear", "opaque" or "white"
    QTest::addColumn<bool>("fits");      // whether the result keeps to maxBytes
    const qint64 limit = 400000;

    QTest::newRow("wide photograph scaled to 1200 wide") << "foto.jpg" << encoded(photo(3000, 2000), "JPEG", 95)
                                                         << limit << "jpeg"_ba << QSize(1200, 800) << "opaque" << true;
    QTest::newRow("small PNG keeps size and transparency") << "logo.png" << encoded(photo(800, 600, true), "PNG")
                                                           << limit << "png"_ba << QSize(800, 600) << "clear" << true;
    QTest::newRow("height floored") << "largo.png" << encoded(photo(1800, 1003), "PNG") << limit << "png"_ba
                                    << QSize(1200, 668) << "opaque" << true;
    QTest::newRow("PNG too large turns into JPEG") << "rumore.png" << encoded(noise(1000, 700), "PNG") << limit
                                                   << "jpeg"_ba << QSize(1000, 700) << "opaque" << true;
    QTest::newRow("JPEG too large even at the lowest quality is taken")
        << "rumore.jpg" << encoded(noise(1200, 800), "JPEG", 95) << qint64(100000) << "jpeg"_ba << QSize(1200, 800)
        << "opaque" << false;
    QTest::newRow("GIF comes back whole, extension in any case")
        << "ANIMATA.GIF" << gif(1500, 100) << qint64(10) << "gif"_ba << QSize(1500, 100) << "opaque" << false;
    QTest::newRow("PNG named .jpg goes the JPEG way") << "travestita.jpg" << encoded(photo(300, 200, true), "PNG")
                                                      << limit << "jpeg"_ba << QSize(300, 200) << "white" << true;
    QTest::newRow("JPEG named .png goes the PNG way") << "fotografia.png" << encoded(photo(300, 200), "JPEG") << limit
                                                      << "png"_ba << QSize(300, 200) << "opaque" << true;
    QTest::newRow("too thin to keep a row of pixels")
        << "riga.png" << encoded(photo(6000, 4), "PNG") << limit << QByteArray() << QSize() << QString() << false;
    QTest::newRow("not a picture") << "testo.png"
                                   << "non sono un'immagine"_ba << limit << QByteArray() << QSize() << QString()
                                   << false;
    QTest::newRow("not a HEIC picture") << "finta.heic"
                                        << QByteArray("\0\0\0\x18"
                                                      "ftypheic",
                                                      12)
                                        << limit << QByteArray() << QSize() << QString() << false;
    QTest::newRow("missing file") << "non-esiste.png" << QByteArray() << limit << QByteArray() << QSize() << QString()
                                  << false;
#ifdef BREZZARIO_TEST_HEIF
    QTest::newRow("HEIC photograph read through libheif")
        << "iphone.HEIC" << heic(1600, 1000) << limit << "jpeg"_ba << QSize(1200, 750) << "opaque" << true;
#endif
}

void TestImageTools::dataURI() {
    QFETCH(QString, fileName);
    QFETCH(QByteArray, file);
    QFETCH(qint64, maxBytes);
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    QFETCH(QString, corner);
    QFETCH(bool, fits);
    const QString path = m_dir.filePath(fileName);
    if (!file.isNull()) {
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(file), file.size());
    }

    const std::optional<QString> uri = ImageTools::dataURI(path, 1200, maxBytes);
    if (format.isEmpty()) {
        QCOMPARE(uri, std::nullopt);
        return;
    }
    QVERIFY(uri.has_value());
    const QString prefix = "data:image/" + QLatin1String(format) + ";base64,";
    QVERIFY2(uri->startsWith(prefix), qPrintable(uri->left(40)));
    const QByteArray bytes = QByteArray::fromBase64(uri->mid(prefix.size()).toLatin1());
    QCOMPARE(uri->mid(prefix.size()), QString::fromLatin1(bytes.toBase64())); // one line, nothing else
    QCOMPARE(bytes.size() <= maxBytes, fits);

    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    QCOMPARE(reader.format(), format);
    const QImage image = reader.read();
    QCOMPARE(image.size(), size);
    if (format == "gif")
        QCOMPARE(bytes, file);
    const QRgb pixel = image.pixel(0, 0);
    QCOMPARE(qAlpha(pixel), corner == "clear" ? 0 : 255);
    if (corner == "white")
        QVERIFY2(qRed(pixel) > 240 && qGreen(pixel) > 240 && qBlue(pixel) > 240, "transparency laid on white");
}

BREZZARIO_TEST_GUILESS_MAIN(TestImageTools)
#include "tst_imagetools.moc"
