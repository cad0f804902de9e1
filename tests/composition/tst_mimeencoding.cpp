#include "composition/MIMEBuilder.h"
#include "TestEnvironment.h"

#include <QRegularExpression>

#include <ctime>

class TestMIMEEncoding : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void quotedPrintable_data();
    void quotedPrintable();
    void encodeHeaderValue_data();
    void encodeHeaderValue();
    void addressHeader_data();
    void addressHeader();
    void base64Lines_data();
    void base64Lines();
    void mimeType_data();
    void mimeType();
    void rfc5322Date_data();
    void rfc5322Date();
    void extractInlineImages_data();
    void extractInlineImages();
    void sameImageTwiceGetsTwoIdentifiers();
};

void TestMIMEEncoding::quotedPrintable_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    const QString a75(75, u'a');
    QTest::newRow("plain ASCII") << "Ciao, mondo!" << QByteArray("Ciao, mondo!");
    QTest::newRow("equals sign") << "a=b" << QByteArray("a=3Db");
    QTest::newRow("blank before a line end") << "riga \nfine" << QByteArray("riga=20\r\nfine");
    QTest::newRow("tab before a line end") << "tab\t\n" << QByteArray("tab=09\r\n");
    QTest::newRow("only one blank is spelled out") << "a  \nb" << QByteArray("a =20\r\nb");
    QTest::newRow("blank at the very end stays") << "fine " << QByteArray("fine ");
    QTest::newRow("UTF-8 bytes") << QString::fromUtf16(u"è€") << QByteArray("=C3=A8=E2=82=AC");
    QTest::newRow("line ends normalised") << "a\r\nb\rc\n\rd" << QByteArray("a\r\nb\r\nc\r\n\r\nd");
    QTest::newRow("control characters and DEL") << QStringLiteral("a\x01\x7f") << QByteArray("a=01=7F");
    QTest::newRow("200 letters broken softly")
        << QString(200, u'a') << QByteArray(75, 'a') + "=\r\n" + QByteArray(75, 'a') + "=\r\n" + QByteArray(50, 'a');
    QTest::newRow("exactly 75 fit one line") << a75 << QByteArray(75, 'a');
    QTest::newRow("escape is not split") << QString(74, u'a') + u'=' << QByteArray(74, 'a') + "=\r\n=3D";
    QTest::newRow("multibyte character is not split inside an escape")
        << QString(73, u'a') + QString::fromUtf16(u"é") << QByteArray(73, 'a') + "=\r\n=C3=A9";
    QTest::newRow("blank after a soft break before a line end")
        << a75 + " \nb" << QByteArray(75, 'a') + "=\r\n=20\r\nb";
    QTest::newRow("hard line end resets the column")
        << QString(70, u'a') + u'\n' + QString(70, u'b') << QByteArray(70, 'a') + "\r\n" + QByteArray(70, 'b');
    QTest::newRow("empty") << "" << QByteArray();
}

void TestMIMEEncoding::quotedPrintable() {
    QFETCH(QString, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(MIMEBuilder::quotedPrintable(text), expected);
}

void TestMIMEEncoding::encodeHeaderValue_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ASCII as it stands") << "Offerta: -20% (solo oggi)"
                                        << "Offerta: -20% (solo oggi)";
    QTest::newRow("line ends become blanks") << "Ciao\r\nBcc: x@y.it\n"
                                             << "Ciao  Bcc: x@y.it ";
    QTest::newRow("one accented letter encodes the whole")
        << QString::fromUtf16(u"Caffè")
        << "=?UTF-8?B?" + QString::fromLatin1(QByteArray("Caff\xc3\xa8").toBase64()) + "?=";
    const QString longText = QString(120, u'x') + QString::fromUtf16(u"à");
    QTest::newRow("long value stays one encoded word")
        << longText << "=?UTF-8?B?" + QString::fromLatin1(longText.toUtf8().toBase64()) + "?=";
    QTest::newRow("line feed blanked before encoding")
        << QString::fromUtf16(u"è\nx")
        << "=?UTF-8?B?" + QString::fromLatin1(QByteArray("\xc3\xa8 x").toBase64()) + "?=";
    QTest::newRow("empty") << ""
                           << "";
}

void TestMIMEEncoding::encodeHeaderValue() {
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QCOMPARE(MIMEBuilder::encodeHeaderValue(value), expected);
}

void TestMIMEEncoding::addressHeader_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const QString niccolo = QString::fromUtf16(u"Niccolò, Srl");
    QTest::newRow("plain name") << "Mario Rossi"
                                << "Mario Rossi <m@x.it>";
    QTest::newRow("no name") << ""
                             << "m@x.it";
    QTest::newRow("blanks only") << " \t "
                                 << "m@x.it";
    QTest::newRow("trimmed") << "\t Mario  "
                             << "Mario <m@x.it>";
    QTest::newRow("comma quoted") << "Rossi, Bianchi & Associati"
                                  << "\"Rossi, Bianchi & Associati\" <m@x.it>";
    QTest::newRow("full stop quoted") << "Dott. Rossi"
                                      << "\"Dott. Rossi\" <m@x.it>";
    QTest::newRow("quotes and backslashes escaped") << "Mario \"Il Capo\" \\ Rossi"
                                                    << "\"Mario \\\"Il Capo\\\" \\\\ Rossi\" <m@x.it>";
    QTest::newRow("every special") << "()<>[]:;@"
                                   << "\"()<>[]:;@\" <m@x.it>";
    QTest::newRow("ampersand needs no quotes") << "Rossi & Figli"
                                               << "Rossi & Figli <m@x.it>";
    QTest::newRow("encoded word is not quoted")
        << niccolo << "=?UTF-8?B?" + QString::fromLatin1(niccolo.toUtf8().toBase64()) + "?= <m@x.it>";
    QTest::newRow("line feed in the name") << "Mario\nRossi"
                                           << "Mario Rossi <m@x.it>";
}

void TestMIMEEncoding::addressHeader() {
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(MIMEBuilder::addressHeader(name, QStringLiteral("m@x.it")), expected);
}

void TestMIMEEncoding::base64Lines_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<QList<int>>("lineLengths");
    QTest::newRow("empty") << 0 << QList<int>{0};
    QTest::newRow("one byte") << 1 << QList<int>{4};
    QTest::newRow("one full line") << 57 << QList<int>{76};
    QTest::newRow("one byte more") << 58 << QList<int>{76, 4};
    QTest::newRow("two full lines, nothing after") << 114 << QList<int>{76, 76};
}

void TestMIMEEncoding::base64Lines() {
    QFETCH(int, size);
    QFETCH(QList<int>, lineLengths);
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = static_cast<char>(i * 37 + 11);
    const QByteArray encoded = MIMEBuilder::base64Lines(data);
    QList<int> lengths;
    for (const QByteArray& line : encoded.split('\n'))
        lengths.append(line.endsWith('\r') ? line.size() - 1 : line.size());
    QCOMPARE(lengths, lineLengths);
    QCOMPARE(encoded.count('\n'), encoded.count("\r\n"));
    QCOMPARE(QByteArray::fromBase64(encoded), data);
}

void TestMIMEEncoding::mimeType_data() {
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("expected");
    QTest::newRow("pdf, upper case") << "PDF"
                                     << "application/pdf";
    QTest::newRow("jpeg") << "jpeg"
                          << "image/jpeg";
    QTest::newRow("Jpg") << "Jpg"
                         << "image/jpeg";
    QTest::newRow("svg") << "svg"
                         << "image/svg+xml";
    QTest::newRow("csv is plain text") << "csv"
                                       << "text/plain";
    QTest::newRow("htm") << "htm"
                         << "text/html";
    QTest::newRow("docx") << "docx"
                          << "application/vnd.openxmlformats-officedocument.wordprocessingml.document";
    QTest::newRow("xlsx") << "XLSX"
                          << "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
    QTest::newRow("pptx") << "pptx"
                          << "application/vnd.openxmlformats-officedocument.presentationml.presentation";
    QTest::newRow("ppt") << "ppt"
                         << "application/vnd.ms-powerpoint";
    QTest::newRow("unknown") << "exe"
                             << "application/octet-stream";
    QTest::newRow("empty") << ""
                           << "application/octet-stream";
    QTest::newRow("with the dot is unknown") << ".pdf"
                                             << "application/octet-stream";
}

void TestMIMEEncoding::mimeType() {
    QFETCH(QString, extension);
    QFETCH(QString, expected);
    QCOMPARE(MIMEBuilder::mimeType(extension), expected);
}

void TestMIMEEncoding::rfc5322Date_data() {
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QDateTime>("moment");
    QTest::addColumn<QString>("expected");
    const QDateTime march(QDate(2026, 3, 3), QTime(8, 5, 7), Qt::UTC);
    QTest::newRow("Rome in winter, day without leading zero")
        << QByteArray("Europe/Rome") << march << "Tue, 3 Mar 2026 09:05:07 +0100";
    QTest::newRow("Rome in summer") << QByteArray("Europe/Rome")
                                    << QDateTime(QDate(2026, 7, 19), QTime(22, 0, 0), Qt::UTC)
                                    << "Mon, 20 Jul 2026 00:00:00 +0200";
    QTest::newRow("west of Greenwich") << QByteArray("America/New_York") << march << "Tue, 3 Mar 2026 03:05:07 -0500";
    QTest::newRow("half-hour offset") << QByteArray("Asia/Kolkata") << march << "Tue, 3 Mar 2026 13:35:07 +0530";
    QTest::newRow("UTC") << QByteArray("UTC") << march << "Tue, 3 Mar 2026 08:05:07 +0000";
}

void TestMIMEEncoding::rfc5322Date() {
    QFETCH(QByteArray, zone);
    QFETCH(QDateTime, moment);
    QFETCH(QString, expected);
    const QByteArray previous = qgetenv("TZ");
    qputenv("TZ", zone);
    tzset();
    const QString date = MIMEBuilder::rfc5322Date(moment);
    qputenv("TZ", previous);
    tzset();
    QCOMPARE(date, expected);
}

void TestMIMEEncoding::extractInlineImages_data() {
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected"); // "cid:#n" stands for the n-th picture's identifier
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QStringList>("filenames");
    QTest::addColumn<QList<QByteArray>>("data");
    QTest::newRow("three pictures, anywhere in the page")
        << "<img src=\"data:image/png;base64,QUJD\"><img alt=x src='data:image/jpeg;base64,REVG'>"
           "<div style=\"background:url(data:image/gif;base64,R0lG)\">"
        << "<img src=\"cid:#1\"><img alt=x src='cid:#2'><div style=\"background:url(cid:#3)\">"
        << QStringList{"image/png", "image/jpeg", "image/gif"}
        << QStringList{"immagine1.png", "immagine2.jpeg", "immagine3.gif"} << QList<QByteArray>{"ABC", "DEF", "GIF"};
    QTest::newRow("bad base64 stays and uses no number")
        << "<img src=\"data:image/png;base64,QUJD\"><img src=\"data:image/png;base64,QUI\">"
           "<img src=\"data:image/png;base64,QQ=A\"><img src=\"data:image/webp;base64,QQ==\">"
        << "<img src=\"cid:#1\"><img src=\"data:image/png;base64,QUI\"><img src=\"data:image/png;base64,QQ=A\">"
           "<img src=\"cid:#2\">"
        << QStringList{"image/png", "image/webp"} << QStringList{"immagine1.png", "immagine2.webp"}
        << QList<QByteArray>{"ABC", "A"};
    QTest::newRow("line ends and blanks inside the base64")
        << "<img src=\"data:image/png;base64,QU\r\n  JD\tRE\nVG\">"
        << "<img src=\"cid:#1\">" << QStringList{"image/png"} << QStringList{"immagine1.png"}
        << QList<QByteArray>{"ABCDEF"};
    QTest::newRow("type with a plus sign")
        << "data:image/svg+xml;base64,PHN2Zy8+"
        << "cid:#1" << QStringList{"image/svg+xml"} << QStringList{"immagine1.svg+xml"} << QList<QByteArray>{"<svg/>"};
    QTest::newRow("prefix is case-sensitive")
        << "<img src=\"DATA:image/png;base64,QUJD\"><img src=\"data:IMAGE/png;base64,QUJD\">"
        << "<img src=\"DATA:image/png;base64,QUJD\"><img src=\"data:IMAGE/png;base64,QUJD\">" << QStringList{}
        << QStringList{} << QList<QByteArray>{};
    QTest::newRow("not an image") << "<a href=\"data:text/plain;base64,QUJD\">x</a>"
                                  << "<a href=\"data:text/plain;base64,QUJD\">x</a>" << QStringList{} << QStringList{}
                                  << QList<QByteArray>{};
    QTest::newRow("characters outside the BMP round it")
        << QString::fromUtf16(u"😀data:image/png;base64,QUJD😀") << QString::fromUtf16(u"😀cid:#1😀")
        << QStringList{"image/png"} << QStringList{"immagine1.png"} << QList<QByteArray>{"ABC"};
    QTest::newRow("no picture") << "<p>Ciao</p>"
                                << "<p>Ciao</p>" << QStringList{} << QStringList{} << QList<QByteArray>{};
}

void TestMIMEEncoding::extractInlineImages() {
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QFETCH(QStringList, types);
    QFETCH(QStringList, filenames);
    QFETCH(QList<QByteArray>, data);
    const MIMEBuilder::ExtractedImages result = MIMEBuilder::extractInlineImages(html);
    QCOMPARE(result.images.size(), types.size());
    for (qsizetype i = 0; i < result.images.size(); ++i) {
        const MIMEBuilder::InlineImage& image = result.images[i];
        const QRegularExpression cidForm(QStringLiteral("^img%1\\.[0-9A-F]{8}@brezzario$").arg(i + 1));
        QVERIFY2(cidForm.match(image.cid).hasMatch(), qPrintable(image.cid));
        QCOMPARE(image.mimeType, types[i]);
        QCOMPARE(image.filename, filenames[i]);
        QCOMPARE(image.data, data[i]);
        expected.replace(QStringLiteral("cid:#%1").arg(i + 1), QStringLiteral("cid:") + image.cid);
    }
    QCOMPARE(result.html, expected);
}

void TestMIMEEncoding::sameImageTwiceGetsTwoIdentifiers() {
    const QString uri = QStringLiteral("<img src=\"data:image/png;base64,QUJD\">");
    const MIMEBuilder::ExtractedImages result = MIMEBuilder::extractInlineImages(uri + uri);
    QCOMPARE(result.images.size(), 2);
    QVERIFY(result.images[0].cid != result.images[1].cid);
    QCOMPARE(result.images[0].data, result.images[1].data);
}

BREZZARIO_TEST_GUILESS_MAIN(TestMIMEEncoding)
#include "tst_mimeencoding.moc"
