#include "composition/ImageTools.h"
#include "GifWriter.h"
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
QImage noise(int width, int height, bool transparentCorner = false) {
    QImage image(width, height, QImage::Format_ARGB32);
    QRandomGenerator generator(7);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = (transparentCorner && x < 16 && y < 16) ? qRgba(0, 0, 0, 0) : (generator.generate() | 0xFF000000);
    }
    return image;
}

QByteArray encoded(const QImage& image, const char* format, int quality = -1) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return bytes;
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
    void missingFile();

private:
    QTemporaryDir m_dir;
};

void TestImageTools::dataURI_data() {
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<qint64>("maxBytes");
    QTest::addColumn<QByteArray>("format"); // of the result; empty when there is none
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("transparentCorner");
    const qint64 limit = 400000;
    const QByteArray bigGif = gifBytes(2100, 2000);
    QVERIFY(bigGif.size() > 4'500'000);

    QTest::newRow("wide photograph scaled to 1200 wide") << "foto.jpg" << encoded(photo(3000, 2000), "JPEG", 95)
                                                         << limit << QByteArray("jpeg") << QSize(1200, 800) << false;
    QTest::newRow("small PNG keeps size and transparency")
        << "logo.png" << encoded(photo(800, 600, true), "PNG") << limit << QByteArray("png") << QSize(800, 600) << true;
    QTest::newRow("1201 wide: scale just under one, height floored")
        << "largo.png" << encoded(photo(1201, 1001), "PNG") << limit << QByteArray("png") << QSize(1200, 1000) << false;
    QTest::newRow("PNG too large turns into JPEG and loses transparency")
        << "rumore.png" << encoded(noise(1000, 700, true), "PNG") << limit << QByteArray("jpeg") << QSize(1000, 700)
        << false;
    QTest::newRow("JPEG too large even at the lowest quality is taken")
        << "rumore.jpg" << encoded(noise(1200, 800), "JPEG", 95) << qint64(100000) << QByteArray("jpeg")
        << QSize(1200, 800) << false;
    QTest::newRow("large GIF comes back whole")
        << "animata.gif" << bigGif << limit << QByteArray("gif") << QSize(2100, 2000) << false;
    QTest::newRow("extension compared in lower case")
        << "MAIUSCOLA.GIF" << gifBytes(40, 30) << qint64(10) << QByteArray("gif") << QSize(40, 30) << false;
    QTest::newRow("PNG named .jpg goes the JPEG way") << "travestita.jpg" << encoded(photo(300, 200, true), "PNG")
                                                      << limit << QByteArray("jpeg") << QSize(300, 200) << false;
    QTest::newRow("JPEG named .png goes the PNG way") << "fotografia.png" << encoded(photo(300, 200), "JPEG") << limit
                                                      << QByteArray("png") << QSize(300, 200) << false;
    QTest::newRow("GIF named .png is redrawn as PNG")
        << "animata.png" << gifBytes(1500, 100) << limit << QByteArray("png") << QSize(1200, 80) << false;
    QTest::newRow("TIFF becomes JPEG") << "scansione.tiff" << encoded(photo(1600, 400), "TIFF") << limit
                                       << QByteArray("jpeg") << QSize(1200, 300) << false;
    QTest::newRow("too thin to keep a row of pixels")
        << "riga.png" << encoded(photo(6000, 4), "PNG") << limit << QByteArray() << QSize() << false;
    QTest::newRow("not a picture") << "testo.png" << QByteArray("non sono un'immagine") << limit << QByteArray()
                                   << QSize() << false;
    QTest::newRow("empty file") << "vuoto.jpg" << QByteArray() << limit << QByteArray() << QSize() << false;
    QTest::newRow("truncated GIF") << "rotta.gif" << gifBytes(40, 30).left(20) << limit << QByteArray() << QSize()
                                   << false;
    QTest::newRow("not a HEIC picture") << "finta.heic"
                                        << QByteArray("\0\0\0\x18"
                                                      "ftypheic",
                                                      12)
                                        << limit << QByteArray() << QSize() << false;
#ifdef BREZZARIO_TEST_HEIF
    QTest::newRow("HEIC photograph read through libheif")
        << "iphone.HEIC" << heic(1600, 1000) << limit << QByteArray("jpeg") << QSize(1200, 750) << false;
#endif
}

void TestImageTools::dataURI() {
    QFETCH(QString, fileName);
    QFETCH(QByteArray, file);
    QFETCH(qint64, maxBytes);
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    QFETCH(bool, transparentCorner);
    const QString path = m_dir.filePath(fileName);
    QFile out(path);
    QVERIFY(out.open(QIODevice::WriteOnly));
    QCOMPARE(out.write(file), file.size());
    out.close();

    const std::optional<QString> uri = ImageTools::dataURI(path, 1200, maxBytes);
    if (format.isEmpty()) {
        QCOMPARE(uri, std::nullopt);
        return;
    }
    QVERIFY(uri.has_value());
    const QString prefix = QStringLiteral("data:image/") + QLatin1String(format) + QStringLiteral(";base64,");
    QVERIFY2(uri->startsWith(prefix), qPrintable(uri->left(40)));
    const QByteArray bytes = QByteArray::fromBase64(uri->mid(prefix.size()).toLatin1());
    QCOMPARE(uri->mid(prefix.size()), QString::fromLatin1(bytes.toBase64())); // one line, nothing else

    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    QCOMPARE(reader.format(), format);
    const QImage image = reader.read();
    QCOMPARE(image.size(), size);
    if (format == "gif") {
        QCOMPARE(bytes, file);
        return;
    }
    if (format == "png")
        QVERIFY(bytes.size() <= maxBytes);
    // JPEG takes the first quality that fits, and the lowest one when none does.
    if (format == "jpeg" && fileName.startsWith(QLatin1String("rumore.jpg")))
        QVERIFY(bytes.size() > maxBytes);
    else if (format == "jpeg")
        QVERIFY(bytes.size() <= maxBytes);
    const QRgb corner = image.pixel(0, 0);
    if (transparentCorner)
        QCOMPARE(qAlpha(corner), 0);
    else
        QCOMPARE(qAlpha(corner), 255);
    if (fileName == QLatin1String("rumore.png") || fileName == QLatin1String("travestita.jpg"))
        QVERIFY2(qRed(corner) > 240 && qGreen(corner) > 240 && qBlue(corner) > 240, "transparency laid on white");
}

void TestImageTools::missingFile() {
    QCOMPARE(ImageTools::dataURI(m_dir.filePath(QStringLiteral("non-esiste.png")), 1200, 400000), std::nullopt);
}

BREZZARIO_TEST_GUILESS_MAIN(TestImageTools)
#include "tst_imagetools.moc"
