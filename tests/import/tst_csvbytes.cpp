#include "import/CSVParser.h"
#include "import/CSVParserSteps.h"
#include "ReferenceCSV.h"
#include "TestEnvironment.h"

#include <QRandomGenerator>
#include <QStringEncoder>

using namespace Qt::Literals::StringLiterals;
using Rows = QList<QStringList>;

// The reader works on the file's bytes and turns only the cells that are read into text. These cases hold it
// to what the same rules give on the decoded text.
namespace {

// Pieces of a file, as bytes: structure, blanks, marks that join a delimiter or quote to its neighbour, and
// bytes that decide the encoding.
const QList<QByteArray> structure = {"a",  "Bb", "7",    ",",  ",",  ";",  ";",    "\t", "|",
                                     "\"", "\"", "\"\"", "\n", "\n", "\r", "\r\n", " "};
const QList<QByteArray> utf8Pieces = {"\xc3\xa9",         // é
                                      "\xcc\x81",         // combining acute: joins what precedes it
                                      "\xe2\x80\x8d",     // zero width joiner
                                      "\xd8\x80",         // Arabic number sign: joins what follows it
                                      "\xe0\xa4\xbe",     // Devanagari vowel sign: a spacing mark
                                      "\xf0\x9f\x87\xae", // regional indicator
                                      "\xc2\xa0",         // no-break space
                                      "\xe2\x80\x83",     // em space
                                      "\xc2\x85",         // next line: a newline, not whitespace
                                      "\xe2\x82\xac",     // euro sign
                                      "\xef\xbb\xbf"};    // a byte order mark inside the text: U+FEFF
const QList<QByteArray> singleBytePieces = {"\xe9", "\x80", "\x92", "\x93", "\xa0", "\x85", "\xcc", "\xff"};
const QList<QByteArray> undefinedIn1252 = {"\x81", "\x8d", "\x8f", "\x90", "\x9d"};

enum class Family { utf8, utf8WithMark, windows1252, latin1, utf16LE, utf16BE, anything };

QByteArray randomFile(QRandomGenerator& random, Family family) {
    QList<QByteArray> pieces = structure;
    if (family == Family::windows1252 || family == Family::latin1 || family == Family::anything)
        pieces += singleBytePieces;
    if (family == Family::latin1 || family == Family::anything)
        pieces += undefinedIn1252;
    if (family != Family::windows1252 && family != Family::latin1)
        pieces += utf8Pieces;
    QByteArray bytes;
    const int count = random.bounded(40);
    for (int i = 0; i < count; ++i)
        bytes += pieces[random.bounded(pieces.size())];
    switch (family) {
    case Family::utf8WithMark:
        return "\xef\xbb\xbf" + bytes;
    case Family::utf16LE:
        return QStringEncoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom)
            .encode(QString::fromUtf8(bytes));
    case Family::utf16BE:
        return QStringEncoder(QStringConverter::Utf16BE, QStringConverter::Flag::WriteBom)
            .encode(QString::fromUtf8(bytes));
    case Family::anything:
        if (random.bounded(4) == 0)
            return QList<QByteArray>{"\xef\xbb\xbf", "\xff\xfe", "\xfe\xff"}[random.bounded(3)] + bytes;
        return bytes;
    default:
        return bytes;
    }
}

QString shown(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex(' '));
}

} // namespace

class TestCSVBytes : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void agreesWithTheText_data();
    void agreesWithTheText();
    void cells_data();
    void cells();
    void sample_data();
    void sample();
    void rows_data();
    void rows();
};

void TestCSVBytes::agreesWithTheText_data() {
    QTest::addColumn<Family>("family");
    QTest::addColumn<quint32>("seed");

    QTest::newRow("UTF-8") << Family::utf8 << 1u;
    QTest::newRow("UTF-8 with mark") << Family::utf8WithMark << 2u;
    QTest::newRow("Windows-1252") << Family::windows1252 << 3u;
    QTest::newRow("undefined in Windows-1252") << Family::latin1 << 4u;
    QTest::newRow("UTF-16 LE") << Family::utf16LE << 5u;
    QTest::newRow("UTF-16 BE") << Family::utf16BE << 6u;
    QTest::newRow("any bytes, any mark") << Family::anything << 7u;
}

void TestCSVBytes::agreesWithTheText() {
    QFETCH(Family, family);
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    for (int n = 0; n < 600; ++n) {
        const QByteArray bytes = randomFile(random, family);
        const ReferenceCSV::Result expected = ReferenceCSV::parse(bytes);
        try {
            const CSVParser::RawTable raw = CSVParser::parseRaw(bytes);
            QVERIFY2(raw.rows == expected.rows,
                     qPrintable(shown(bytes) + u" gives "_s + QDebug::toString(raw.rows.toList()) + u" for "_s +
                                QDebug::toString(expected.rows)));
            QVERIFY2(raw.delimiter == expected.delimiter, qPrintable(shown(bytes)));
            QVERIFY2(raw.encodingName == expected.encodingName, qPrintable(shown(bytes)));
            // Files past 2 GiB take 64-bit offsets; on a small file they must give the same cells.
            const CSVParser::Rows wide(CSVParser::detail::splitRows(CSVParser::detail::source(bytes),
                                                                    char(raw.delimiter.unicode()), true, true));
            QVERIFY2(wide == raw.rows, qPrintable(shown(bytes)));
        } catch (const CSVParser::ParseError& error) {
            QVERIFY2(expected.rows.isEmpty(), qPrintable(shown(bytes)));
            QCOMPARE(error.kind, CSVParser::ParseError::empty);
        }
    }
}

void TestCSVBytes::cells_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("Windows-1252 signs next to delimiters and quotes")
        << "\x80;\"\x93x\x94\";\x92\x85\r\n"_ba << Rows{{u"€"_s, u"“x”"_s, u"’…"_s}} << u"Windows-1252"_s;
    QTest::newRow("an undefined byte makes every byte ISO-8859-1")
        << "\x80;\x81\n\x9d;\xe8\n"_ba << Rows{{u"\u0080"_s, u"\u0081"_s}, {u"\u009d"_s, u"è"_s}} << u"ISO-8859-1"_s;
    QTest::newRow("no-break space alone is blank in Windows-1252")
        << "a;b\r\n\xa0;\t\r\n \xa0;c\r\n"_ba << Rows{{"a", "b"}, {u" \u00a0"_s, "c"}} << u"Windows-1252"_s;
    QTest::newRow("no-break space alone is blank in ISO-8859-1")
        << "a;\x81\n\xa0; \n"_ba << Rows{{"a", u"\u0081"_s}} << u"ISO-8859-1"_s;
    QTest::newRow("ellipsis is text, not blank")
        << "a;b\n\x85;\n"_ba << Rows{{"a", "b"}, {u"…"_s, ""}} << u"Windows-1252"_s;
    QTest::newRow("CR LF, lone CR and LF inside quotes")
        << "\"a\r\nb\";\"c\rd\";\"e\nf\"\r\n"_ba << Rows{{"a\nb", "c\nd", "e\nf"}} << u"UTF-8"_s;
    QTest::newRow("CR right before and after a quote") << "\"\r\"\r\"\r\""_ba << Rows{{"\n"}, {"\n"}} << u"UTF-8"_s;
    QTest::newRow("quoted cell then text after the quote")
        << "\"a;b\"c;\"\"\"\";d\"\"e"_ba << Rows{{"a;bc", "\"", "de"}} << u"UTF-8"_s;
    QTest::newRow("mark taken off, cells begin after it")
        << "\xef\xbb\xbf;x\n\"y\";z"_ba << Rows{{"", "x"}, {"y", "z"}} << u"UTF-8"_s;
    QTest::newRow("combining mark after a delimiter in UTF-16")
        << QByteArray(
               QStringEncoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom).encode(u"a;\u0301b;c\r\n"_s))
        << Rows{{u"a;\u0301b"_s, "c"}} << u"UTF-16"_s;
    QTest::newRow("prepended mark before a quote")
        << "x;\xd8\x80\"a;b\"\n"_ba << Rows{{"x", u"\u0600\"a"_s, "b\n"}} << u"UTF-8"_s;
    QTest::newRow("accented letters next to delimiters stay plain")
        << "Citt\xc3\xa0;\xc3\xa8;\"\xc3\xb9\"\n"_ba << Rows{{u"Città"_s, u"è"_s, u"ù"_s}} << u"UTF-8"_s;
}

void TestCSVBytes::cells() {
    QFETCH(QByteArray, bytes);
    QFETCH(Rows, rows);
    QFETCH(QString, encoding);
    const CSVParser::RawTable raw = CSVParser::parseRaw(bytes);
    QCOMPARE(raw.rows, rows);
    QCOMPARE(raw.encodingName, encoding);
}

void TestCSVBytes::sample_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QChar>("delimiter");

    // Only the first 65,536 characters count, whatever number of bytes they take.
    QTest::newRow("UTF-8: the 65,536th character counts") << "\xc3\xa9"_ba.repeated(65535) + ";" << QChar(u';');
    QTest::newRow("UTF-8: the 65,537th doesn't") << "\xc3\xa9"_ba.repeated(65536) + ";" << QChar(u',');
    QTest::newRow("Windows-1252: the 65,536th counts") << "\xe9"_ba.repeated(65535) + ";" << QChar(u';');
    QTest::newRow("Windows-1252: the 65,537th doesn't") << "\xe9"_ba.repeated(65536) + ";" << QChar(u',');
    QTest::newRow("CR LF is one character") << "x"_ba.repeated(65534) + "\r\n;" << QChar(u';');
    QTest::newRow("lone CR is one character") << "x"_ba.repeated(65535) + "\r;" << QChar(u',');
    // Eleven bytes a character: the sample needs more than the first slice of the file.
    QTest::newRow("clusters of many marks: the 65,536th counts")
        << "e\xcc\x81\xcc\x82\xcc\x83\xcc\x84\xcc\x85"_ba.repeated(65535) + ";" << QChar(u';');
    QTest::newRow("clusters of many marks: the 65,537th doesn't")
        << "e\xcc\x81\xcc\x82\xcc\x83\xcc\x84\xcc\x85"_ba.repeated(65536) + ";" << QChar(u',');
}

void TestCSVBytes::sample() {
    QFETCH(QByteArray, bytes);
    QFETCH(QChar, delimiter);
    QCOMPARE(CSVParser::parseRaw(bytes).delimiter, delimiter);
}

void TestCSVBytes::rows_data() {
    QTest::addColumn<qsizetype>("from");
    QTest::addColumn<qsizetype>("count");
    QTest::addColumn<Rows>("slice");

    const Rows all = {{"a", ""}, {u"è€"_s}, {}, {"x", "y", "z"}};
    QTest::newRow("all") << qsizetype(0) << qsizetype(4) << all;
    QTest::newRow("middle") << qsizetype(1) << qsizetype(2) << all.mid(1, 2);
    QTest::newRow("count past the end") << qsizetype(3) << qsizetype(9) << all.mid(3);
    QTest::newRow("start past the end") << qsizetype(7) << qsizetype(1) << Rows{};
    QTest::newRow("negative start") << qsizetype(-2) << qsizetype(1) << all.first(1);
}

void TestCSVBytes::rows() {
    QFETCH(qsizetype, from);
    QFETCH(qsizetype, count);
    QFETCH(Rows, slice);
    const CSVParser::Rows rows = Rows{{"a", ""}, {u"è€"_s}, {}, {"x", "y", "z"}};
    const CSVParser::Rows sliced = rows.sliced(from, count);
    QCOMPARE(sliced.toList(), slice);
    // Cells past a row's end read as empty text, as a short row's missing columns do.
    for (qsizetype r = 0; r < sliced.size(); ++r)
        QCOMPARE(sliced.at(r).value(sliced.at(r).size()), QString());
}

BREZZARIO_TEST_GUILESS_MAIN(TestCSVBytes)
#include "tst_csvbytes.moc"
