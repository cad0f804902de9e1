#include "import/CSVParser.h"
#include "records/Text.h"
#include "TestEnvironment.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;
using Rows = QList<QStringList>;

namespace {

QByteArray fixture(const QString& name) {
    QFile file(QStringLiteral(CSV_FIXTURES_DIR "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    return file.readAll();
}

QByteArray randomBytes(qsizetype size, quint32 seed) {
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    generator.fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

// Noisy pixels, so the file has every kind of byte in it.
QByteArray pngPicture() {
    QImage image(320, 200, QImage::Format_ARGB32);
    const QByteArray pixels = randomBytes(image.sizeInBytes(), 7);
    std::copy(pixels.cbegin(), pixels.cend(), image.bits());
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

constexpr qsizetype fiveMegabytes = 5 * 1024 * 1024;

} // namespace

class TestCSVFiles : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void spreadsheetFiles_data();
    void spreadsheetFiles();
    void notCSV_data();
    void notCSV();
};

void TestCSVFiles::spreadsheetFiles_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<qsizetype>("header");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("emailColumn");

    QTest::newRow("Excel, UTF-8 with mark, semicolons")
        << u"excel-utf8-bom-semicolon.csv"_s << u"UTF-8"_s << QChar(u';') << qsizetype(0)
        << QStringList{"Nome", "Cognome", "E-mail", "Città", "Importo"}
        << Rows{{"Mario", "Rossi", "mario.rossi@example.it", "Milano", "25,50"},
                {"Niccolò", "Bianchi", "niccolo.bianchi@example.it", "Forlì; Cesena", "1.200,00"},
                {"Zoë", "D'Angelo", "zoe.dangelo@example.it", "Sant'Agata", "0,99"}}
        << u"E-mail"_s;
    QTest::newRow("Excel, Windows-1252 accents") << u"excel-windows1252.csv"_s << u"Windows-1252"_s << QChar(u';')
                                                 << qsizetype(0) << QStringList{"Cognome", "Nome", "Email", "Note"}
                                                 << Rows{{"Perù", "Josè", "jose.peru@example.it", "Caffè “speciale”"},
                                                         {"Lunà", "Nicolò", "nicolo.luna@example.it", "Prezzo 10 €"},
                                                         {"Dell’Orto", "Agnès", "agnes@example.it", "Già pagato"}}
                                                 << u"Email"_s;
    QTest::newRow("Excel, Unicode text (UTF-16 LE, tabs)")
        << u"excel-unicode-text.txt"_s << u"UTF-16"_s << QChar(u'\t') << qsizetype(0)
        << QStringList{"Nome", "Email", "Città"}
        << Rows{{"Łukasz", "lukasz@example.pl", "Kraków"},
                {"Ελένη", "eleni@example.gr", "Αθήνα"},
                {"Chiara", "chiara@example.it", "Reggio nell'Emilia"}}
        << u"Email"_s;
    QTest::newRow("title row padded to the table")
        << u"title-row.csv"_s << u"UTF-8"_s << QChar(u';') << qsizetype(1)
        << QStringList{"Ragione sociale", "Referente", "Email", "Telefono", "Provincia"}
        << Rows{{"Rossi, Bianchi & Associati", "Anna Rossi", "anna@rossibianchi.it", "02 1234567", "MI"},
                {"Trattoria Da Gino", "Gino", "info@dagino.it", "", "FI"}}
        << u"Email"_s;
    QTest::newRow("CR-only line ends") << u"mac-cr-only.csv"_s << u"UTF-8"_s << QChar(u',') << qsizetype(0)
                                       << QStringList{"Name", "Email", "Company"}
                                       << Rows{{"John Smith", "john@example.com", "Acme"},
                                               {"Anna Verdi", "anna@example.it", "Verdi, Srl"}}
                                       << u"Email"_s;
    QTest::newRow("quoted line breaks and doubled quotes")
        << u"quoted-linebreaks.csv"_s << u"UTF-8"_s << QChar(u',') << qsizetype(0)
        << QStringList{"Nome", "Email", "Indirizzo", "Nota"}
        << Rows{{"Mario Rossi", "mario@example.it", "Via Roma, 1\n20100 Milano", "Ha detto \"sì\" al preventivo"},
                {"Anna Neri", "anna@example.it", "Corso Italia 7\nScala B\n00100 Roma", ""},
                {"Luca \"il Grande\" Bianchi", "luca@example.it", "Piazza Duomo", "Riga uno\n\nRiga tre"}}
        << u"Email"_s;
}

void TestCSVFiles::spreadsheetFiles() {
    QFETCH(QString, file);
    QFETCH(QString, encoding);
    QFETCH(QChar, delimiter);
    QFETCH(qsizetype, header);
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    QFETCH(QString, emailColumn);

    const CSVParser::RawTable raw = CSVParser::parseRaw(fixture(file));
    QCOMPARE(raw.encodingName, encoding);
    QCOMPARE(raw.delimiter, delimiter);
    QCOMPARE(CSVParser::detectHeaderRow(raw.rows), header);
    const CSVParser::Table table = CSVParser::table(raw, header);
    QCOMPARE(table.columns, columns);
    QCOMPARE(table.rows, rows);
    QCOMPARE(CSVParser::guessEmailColumn(table), std::optional<QString>(emailColumn));
}

void TestCSVFiles::notCSV_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("encoding"); // empty: any
    QTest::addColumn<qsizetype>("width");  // of the only row; -1: any number of rows; 0: ParseError::empty

    QTest::newRow("PNG picture") << pngPicture() << QString() << qsizetype(-1);
    // A megabyte of noise surely holds a byte that Windows-1252 leaves undefined.
    QTest::newRow("random bytes") << randomBytes(1024 * 1024, 4) << u"ISO-8859-1"_s << qsizetype(-1);
    QTest::newRow("NUL bytes") << QByteArray(65536, '\0') << u"UTF-8"_s << qsizetype(1);
    QTest::newRow("one line of 5 MB") << QByteArray("campo;").repeated(fiveMegabytes / 6) + "fine" << u"UTF-8"_s
                                      << qsizetype(fiveMegabytes / 6 + 1);
    QTest::newRow("5 MB inside an open quote") << "\"" + QByteArray(fiveMegabytes, 'x') << u"UTF-8"_s << qsizetype(1);
    QTest::newRow("5 MB of delimiters") << QByteArray(fiveMegabytes, ';') << QString() << qsizetype(0);
    QTest::newRow("5 MB of delimiters with combining marks")
        << QByteArray(";\xcc\x81").repeated(fiveMegabytes / 3) << u"UTF-8"_s << qsizetype(1);
}

void TestCSVFiles::notCSV() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, encoding);
    QFETCH(qsizetype, width);

    CSVParser::RawTable raw;
    try {
        raw = CSVParser::parseRaw(bytes);
    } catch (const CSVParser::ParseError& error) {
        QVERIFY2(width == 0, error.what());
        QCOMPARE(error.kind, CSVParser::ParseError::empty);
        return;
    }
    QVERIFY(width != 0);
    if (!encoding.isEmpty())
        QCOMPARE(raw.encodingName, encoding);
    if (width > 0) {
        QCOMPARE(raw.rows.size(), 1);
        QCOMPARE(raw.rows.first().size(), width);
    }
    QVERIFY(!raw.rows.isEmpty());
    for (const CSVParser::Row row : raw.rows)
        QVERIFY(std::any_of(row.cbegin(), row.cend(), [](const QString& field) { return !Text::isBlank(field); }));

    // The steps after reading must take whatever reading gave.
    const qsizetype header = CSVParser::detectHeaderRow(raw.rows);
    QVERIFY(header >= 0 && header < raw.rows.size());
    const CSVParser::Table table = CSVParser::table(raw, header);
    QCOMPARE(table.rows.size(), raw.rows.size() - header - 1);
    QCOMPARE(table.dictionaries().size(), table.rows.size());
    const std::optional<QString> email = CSVParser::guessEmailColumn(table);
    QVERIFY(!email || table.columns.contains(*email));
}

BREZZARIO_TEST_GUILESS_MAIN(TestCSVFiles)
#include "tst_csvfiles.moc"
