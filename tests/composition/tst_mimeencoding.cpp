#include "composition/MIMEBuilder.h"
#include "TestEnvironment.h"

#include <QRegularExpression>
#include <QStringDecoder>

#include <ctime>

using namespace Qt::Literals::StringLiterals;

namespace {
QString encodedWord(const QByteArray& utf8) {
    return "=?UTF-8?B?" + QString::fromLatin1(utf8.toBase64()) + "?=";
}
} // namespace

class TestMIMEEncoding : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void quotedPrintable_data();
    void quotedPrintable();
    void encodeHeaderValue_data();
    void encodeHeaderValue();
    void longEncodedTexts_data();
    void longEncodedTexts();
    void headerLine_data();
    void headerLine();
    void withParameter_data();
    void withParameter();
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
};

void TestMIMEEncoding::quotedPrintable_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("ASCII, equals sign") << u"Ciao, a=b!"_s << "Ciao, a=3Db!"_ba;
    QTest::newRow("one blank before a line end spelled out") << u"a  \nb\t\n"_s << "a =20\r\nb=09\r\n"_ba;
    QTest::newRow("blank at the very end stays") << u"fine "_s << "fine "_ba;
    QTest::newRow("UTF-8 bytes, controls and DEL") << u"è€\x01\x7f"_s << "=C3=A8=E2=82=AC=01=7F"_ba;
    QTest::newRow("line ends normalised") << u"a\r\nb\rc\n\rd"_s << "a\r\nb\r\nc\r\n\r\nd"_ba;
    QTest::newRow("200 letters broken softly")
        << QString(200, u'a') << QByteArray(75, 'a') + "=\r\n" + QByteArray(75, 'a') + "=\r\n" + QByteArray(50, 'a');
    QTest::newRow("exactly 75 fit one line") << QString(75, u'a') << QByteArray(75, 'a');
    QTest::newRow("escape is not split") << QString(73, u'a') + u"é"_s << QByteArray(73, 'a') + "=\r\n=C3=A9";
    QTest::newRow("blank after a soft break before a line end")
        << QString(75, u'a') + u" \nb"_s << QByteArray(75, 'a') + "=\r\n=20\r\nb";
    QTest::newRow("hard line end resets the column")
        << QString(70, u'a') + u'\n' + QString(70, u'b') << QByteArray(70, 'a') + "\r\n" + QByteArray(70, 'b');
    QTest::newRow("empty") << u""_s << QByteArray();
}

void TestMIMEEncoding::quotedPrintable() {
    QFETCH(QString, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(MIMEBuilder::quotedPrintable(text), expected);
}

void TestMIMEEncoding::encodeHeaderValue_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ASCII as it stands") << u"Offerta: -20% (solo oggi)"_s << 9 << u"Offerta: -20% (solo oggi)"_s;
    QTest::newRow("line ends become blanks") << u"Ciao\r\nBcc: x@y.it\n"_s << 9 << u"Ciao  Bcc: x@y.it "_s;
    QTest::newRow("NUL, ESC, BEL, TAB and DEL become blanks")
        << QString::fromUtf16(u"Sconto\u0000\u001b[1m\u0007\toggi\u007f", 18) << 9 << u"Sconto  [1m  oggi "_s;
    QTest::newRow("one accented letter encodes the whole") << u"Caffè"_s << 9 << encodedWord("Caff\xc3\xa8");
    QTest::newRow("line feed blanked before encoding") << u"è\nx"_s << 9 << encodedWord("\xc3\xa8 x");
    QTest::newRow("C1 controls blanked before encoding")
        << QString::fromUtf16(u"è\u0085\u009bx") << 9 << encodedWord("\xc3\xa8  x");
    QTest::newRow("text that reads as an encoded word is encoded")
        << u"=?UTF-8?B?w6g=?="_s << 9 << encodedWord("=?UTF-8?B?w6g=?=");
    QTest::newRow("empty") << u""_s << 9 << u""_s;
}

void TestMIMEEncoding::encodeHeaderValue() {
    QFETCH(QString, value);
    QFETCH(int, column);
    QFETCH(QString, expected);
    QCOMPARE(MIMEBuilder::encodeHeaderValue(value, column), expected);
}

// Long texts: every encoded word within 75 characters, the first within the line it starts on, whole
// characters in each word, and the words together give the text back.
void TestMIMEEncoding::longEncodedTexts_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("encoded");
    QString emoji;
    for (int i = 0; i < 300; ++i)
        emoji += i % 3 ? u"😀"_s : u"e\u0301"_s;
    QString words;
    while (words.size() < 3000)
        words += u"parola lunga quanto basta "_s;
    QTest::newRow("5,000-character subject") << QString(5000, u'à') << 9 << true;
    QTest::newRow("four-byte characters and combining marks") << emoji << 9 << true;
    QTest::newRow("one ASCII word too long for any line") << QString(200, u'x') << 9 << true;
    QTest::newRow("ASCII of short words stays as it is") << words << 9 << false;
    QTest::newRow("no room left on the first line") << u"città "_s.repeated(40) << 72 << true;
    QTest::newRow("room for a four-byte character only") << u"😀"_s.repeated(40) << 58 << true;
}

void TestMIMEEncoding::longEncodedTexts() {
    QFETCH(QString, value);
    QFETCH(int, column);
    QFETCH(bool, encoded);
    const QString result = MIMEBuilder::encodeHeaderValue(value, column);
    if (!encoded) {
        QCOMPARE(result, value);
        return;
    }
    const QStringList words = result.split(u' ');
    QVERIFY(words.size() > 1);
    const bool room = column + 20 <= 76;
    QVERIFY2(!room || column + words.first().size() <= 76, qPrintable(words.first()));
    QByteArray joined;
    for (const QString& word : words) {
        QVERIFY2(word.size() <= 75 && word.size() > 12, qPrintable(word));
        QVERIFY2(word.startsWith(u"=?UTF-8?B?"_s) && word.endsWith(u"?="_s), qPrintable(word));
        const QByteArray bytes = QByteArray::fromBase64(word.mid(10, word.size() - 12).toLatin1());
        QStringDecoder strict(QStringDecoder::Utf8);
        const QString piece = strict.decode(bytes);
        QVERIFY2(!strict.hasError(), qPrintable(word));
        QCOMPARE(piece.toUtf8(), bytes);
        joined += bytes;
    }
    QCOMPARE(QString::fromUtf8(joined), value);
}

void TestMIMEEncoding::headerLine_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("short stays one line") << u"Offerta di marzo"_s << QStringList{u"Subject: Offerta di marzo"_s};
    const QString sixty = QString(60, u'a');
    QTest::newRow("folded before the last blank that fits")
        << u"uno "_s + sixty + u" due tre quattro"_s
        << QStringList{u"Subject: uno "_s + sixty + u" due"_s, u" tre quattro"_s};
    QTest::newRow("runs of blanks kept") << sixty + u"     "_s + sixty
                                         << QStringList{u"Subject: "_s + sixty + u"    "_s, u" "_s + sixty};
    QTest::newRow("trailing blanks never make a line of their own")
        << sixty + u" "_s + QString(20, u'b') + u"   "_s
        << QStringList{u"Subject: "_s + sixty, u" "_s + QString(20, u'b') + u"   "_s};
    QTest::newRow("a word longer than a line stays whole")
        << QString(90, u'c') + u" d"_s << QStringList{u"Subject:"_s, u" "_s + QString(90, u'c'), u" d"_s};
    // Raw text with no blank to fold at (an address no test passed): cut before 998 bytes.
    const QString nineHundredEightyNine = u"a"_s + QString(494, u'é'); // bytes of UTF-8
    QTest::newRow("full line before a fold stays whole")
        << nineHundredEightyNine + u" b"_s << QStringList{u"Subject:"_s, u" "_s + nineHundredEightyNine, u" b"_s};
    QTest::newRow("cut before 998 bytes") << QString(1000, u'é')
                                          << QStringList{u"Subject:"_s, u" "_s + QString(494, u'é'),
                                                         u" "_s + QString(494, u'é'), u" "_s + QString(12, u'é')};
    QTest::newRow("blanks past the cut are dropped")
        << QString(494, u'é') + u"   "_s << QStringList{u"Subject:"_s, u" "_s + QString(494, u'é') + u" "_s};
    QTest::newRow("control characters blanked")
        << QString::fromUtf16(u"a\u0000b\u001bc\r\nBcc: x@y.it", 18) << QStringList{u"Subject: a b c  Bcc: x@y.it"_s};
}

void TestMIMEEncoding::headerLine() {
    QFETCH(QString, value);
    QFETCH(QStringList, lines);
    QCOMPARE(MIMEBuilder::headerLine(u"Subject"_s, value).split(u"\r\n"_s), lines);
}

void TestMIMEEncoding::withParameter_data() {
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("filename");
    QTest::addColumn<QStringList>("lines"); // "=?…?=" stands for the encoded words, checked on their own
    QTest::newRow("plain name") << u"Content-Disposition: attachment"_s << u"listino.pdf"_s
                                << QStringList{u"Content-Disposition: attachment; filename=\"listino.pdf\""_s};
    QTest::newRow("quotes and backslashes escaped")
        << u"Content-Disposition: attachment"_s << u"Offerta \"Estate\" C:\\doc.pdf"_s
        << QStringList{u"Content-Disposition: attachment; filename=\"Offerta \\\"Estate\\\" C:\\\\doc.pdf\""_s};
    QTest::newRow("long media type folds before the parameter")
        << u"Content-Type: application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"_s << u"città.xlsx"_s
        << QStringList{u"Content-Type: application/vnd.openxmlformats-officedocument.spreadsheetml.sheet;"_s,
                       u" name=\"=?…?=\""_s};
    QTest::newRow("long accented name in several words")
        << u"Content-Type: application/pdf"_s << u"Città – elenco clienti "_s.repeated(6)
        << QStringList{u"Content-Type: application/pdf; name=\"=?…?="_s, u" =?…?="_s, u" =?…?="_s, u" =?…?="_s,
                       u" =?…?=\""_s};
}

void TestMIMEEncoding::withParameter() {
    QFETCH(QString, start);
    QFETCH(QString, filename);
    QFETCH(QStringList, lines);
    QStringList result = MIMEBuilder::withParameter(start, u"name"_s, filename).split(u"\r\n"_s);
    if (start.startsWith(u"Content-Disposition"_s))
        result = MIMEBuilder::withParameter(start, u"filename"_s, filename).split(u"\r\n"_s);
    static const QRegularExpression words(u"=\\?UTF-8\\?B\\?[^?]*\\?="_s);
    // Only the start, which has no blank to fold at, may pass 78 columns.
    for (qsizetype i = 0; i < result.size(); ++i) {
        QVERIFY2(result[i].size() <= 78 || (i == 0 && !result[i].endsWith(u'"')), qPrintable(result[i]));
        result[i].replace(words, u"=?…?="_s);
    }
    QCOMPARE(result, lines);
}

void TestMIMEEncoding::addressHeader_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("blanks only") << u" \t "_s << u"m@x.it"_s;
    QTest::newRow("trimmed") << u"\t Mario Rossi  "_s << u"Mario Rossi <m@x.it>"_s;
    QTest::newRow("comma quoted") << u"Rossi, Bianchi & Associati"_s << u"\"Rossi, Bianchi & Associati\" <m@x.it>"_s;
    QTest::newRow("every special") << u"Dott. ()<>[]:;@"_s << u"\"Dott. ()<>[]:;@\" <m@x.it>"_s;
    QTest::newRow("quotes and backslashes escaped")
        << u"Mario \"Il Capo\" \\ Rossi"_s << u"\"Mario \\\"Il Capo\\\" \\\\ Rossi\" <m@x.it>"_s;
    QTest::newRow("ampersand needs no quotes") << u"Rossi & Figli"_s << u"Rossi & Figli <m@x.it>"_s;
    QTest::newRow("encoded word is not quoted")
        << u"Niccolò, Srl"_s << encodedWord("Niccol\xc3\xb2, Srl") + " <m@x.it>";
    QTest::newRow("line feed in the name") << u"Mario\nRossi"_s << u"Mario Rossi <m@x.it>"_s;
    QTest::newRow("NUL and ESC in the name")
        << QString::fromUtf16(u"Mario\u0000\u001b[2JRossi", 15) << u"\"Mario  [2JRossi\" <m@x.it>"_s;
    QTest::newRow("specials with controls still quoted")
        << u"Rossi,\u0007Bianchi"_s << u"\"Rossi, Bianchi\" <m@x.it>"_s;
}

void TestMIMEEncoding::addressHeader() {
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(MIMEBuilder::addressHeader(name, u"m@x.it"_s), expected);
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
    QTest::newRow("upper case") << u"PDF"_s << u"application/pdf"_s;
    QTest::newRow("csv is plain text") << u"Csv"_s << u"text/plain"_s;
    QTest::newRow("unknown") << u"exe"_s << u"application/octet-stream"_s;
    QTest::newRow("with the dot is unknown") << u".pdf"_s << u"application/octet-stream"_s;
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
        << "Europe/Rome"_ba << march << u"Tue, 3 Mar 2026 09:05:07 +0100"_s;
    QTest::newRow("Rome in summer") << "Europe/Rome"_ba << QDateTime(QDate(2026, 7, 19), QTime(22, 0, 0), Qt::UTC)
                                    << u"Mon, 20 Jul 2026 00:00:00 +0200"_s;
    QTest::newRow("west of Greenwich") << "America/New_York"_ba << march << u"Tue, 3 Mar 2026 03:05:07 -0500"_s;
    QTest::newRow("half-hour offset") << "Asia/Kolkata"_ba << march << u"Tue, 3 Mar 2026 13:35:07 +0530"_s;
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
    QTest::addColumn<QList<QByteArray>>("data");
    QTest::newRow("three pictures, anywhere in the page")
        << "<img src=\"data:image/png;base64,QUJD\"><img alt=x src='data:image/jpeg;base64,REVG'>"
           "<div style=\"background:url(data:image/gif;base64,R0lG)\">"
        << "<img src=\"cid:#1\"><img alt=x src='cid:#2'><div style=\"background:url(cid:#3)\">"
        << QStringList{"image/png", "image/jpeg", "image/gif"} << QList<QByteArray>{"ABC", "DEF", "GIF"};
    QTest::newRow("bad base64 stays and uses no number")
        << "<img src=\"data:image/png;base64,QUJD\"><img src=\"data:image/png;base64,QUI\">"
           "<img src=\"data:image/png;base64,QQ=A\"><img src=\"data:image/webp;base64,QQ==\">"
        << "<img src=\"cid:#1\"><img src=\"data:image/png;base64,QUI\"><img src=\"data:image/png;base64,QQ=A\">"
           "<img src=\"cid:#2\">"
        << QStringList{"image/png", "image/webp"} << QList<QByteArray>{"ABC", "A"};
    QTest::newRow("line ends and blanks inside the base64")
        << "<img src=\"data:image/png;base64,QU\r\n  JD\tRE\nVG\">"
        << "<img src=\"cid:#1\">" << QStringList{"image/png"} << QList<QByteArray>{"ABCDEF"};
    QTest::newRow("type with a plus sign") << "data:image/svg+xml;base64,PHN2Zy8+"
                                           << "cid:#1" << QStringList{"image/svg+xml"} << QList<QByteArray>{"<svg/>"};
    const QString untouched = u"<img src=\"DATA:image/png;base64,QUJD\"><img src=\"data:IMAGE/png;base64,QUJD\">"
                              "<a href=\"data:text/plain;base64,QUJD\">x</a>"_s;
    QTest::newRow("prefix is case-sensitive, not an image")
        << untouched << untouched << QStringList{} << QList<QByteArray>{};
    QTest::newRow("same picture twice, two parts")
        << u"<img src=\"data:image/png;base64,QUJD\"><img src=\"data:image/png;base64,QUJD\">"_s
        << u"<img src=\"cid:#1\"><img src=\"cid:#2\">"_s << QStringList{"image/png", "image/png"}
        << QList<QByteArray>{"ABC", "ABC"};
    QTest::newRow("characters outside the BMP round it")
        << u"😀data:image/png;base64,QUJD😀"_s << u"😀cid:#1😀"_s << QStringList{"image/png"} << QList<QByteArray>{"ABC"};
}

void TestMIMEEncoding::extractInlineImages() {
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QFETCH(QStringList, types);
    QFETCH(QList<QByteArray>, data);
    const MIMEBuilder::ExtractedImages result = MIMEBuilder::extractInlineImages(html);
    QCOMPARE(result.images.size(), types.size());
    for (qsizetype i = 0; i < result.images.size(); ++i) {
        const MIMEBuilder::InlineImage& image = result.images[i];
        const QRegularExpression cidForm(QStringLiteral("^img%1\\.[0-9A-F]{8}@brezzario$").arg(i + 1));
        QVERIFY2(cidForm.match(image.cid).hasMatch(), qPrintable(image.cid));
        QCOMPARE(image.mimeType, types[i]);
        QCOMPARE(image.filename, QStringLiteral("immagine%1.%2").arg(i + 1).arg(types[i].section(u'/', 1)));
        QCOMPARE(image.data, data[i]);
        expected.replace(QStringLiteral("cid:#%1").arg(i + 1), QStringLiteral("cid:") + image.cid);
    }
    QCOMPARE(result.html, expected);
}

BREZZARIO_TEST_GUILESS_MAIN(TestMIMEEncoding)
#include "tst_mimeencoding.moc"
