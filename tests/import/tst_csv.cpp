#include "import/CSVParser.h"
#include "import/CSVParserSteps.h"
#include "TestEnvironment.h"

#include <QStringEncoder>

using namespace Qt::Literals::StringLiterals;
using Rows = QList<QStringList>;
using Dictionaries = QList<QHash<QString, QString>>;

namespace {

QByteArray encoded(QStringConverter::Encoding encoding, const QString& text) {
    return QStringEncoder(encoding, QStringConverter::Flag::WriteBom).encode(text);
}

CSVParser::Table tableOf(const QStringList& columns, const Rows& rows) {
    CSVParser::Table table;
    table.columns = columns;
    table.rows = rows;
    return table;
}

} // namespace

class TestCSV : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void decode_data();
    void decode();
    void delimiter_data();
    void delimiter();
    void parseRows_data();
    void parseRows();
    void parseRaw_data();
    void parseRaw();
    void headerRow_data();
    void headerRow();
    void table_data();
    void table();
    void dictionaries_data();
    void dictionaries();
    void emailColumn_data();
    void emailColumn();
};

void TestCSV::decode_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("UTF-8 mark is dropped") << "\xef\xbb\xbf"
                                              "Citt\xc3\xa0"_ba
                                           << u"Città"_s << u"UTF-8"_s;
    QTest::newRow("UTF-8 mark then invalid UTF-8") << "\xef\xbb\xbfNicol\xf2"_ba << u"ï»¿Nicolò"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-16 LE") << encoded(QStringConverter::Utf16LE, u"Łukasz;a\U0001F600"_s) << u"Łukasz;a\U0001F600"_s
                               << u"UTF-16"_s;
    QTest::newRow("UTF-16 BE") << encoded(QStringConverter::Utf16BE, u"Ελένη\tΑθήνα"_s) << u"Ελένη\tΑθήνα"_s
                               << u"UTF-16"_s;
    QTest::newRow("UTF-16 odd length") << "\xff\xfe"
                                          "a\0b"_ba
                                       << u"ÿþa\0b"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-16 unpaired high surrogate") << "\xff\xfe\x00\xd8"
                                                       "a\0"_ba
                                                    << u"ÿþ\0Øa\0"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-16 unpaired low surrogate") << "\xfe\xff\xdc\x00"_ba << u"þÿÜ\0"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-8 cut off at the end") << "ab\xc3"_ba << u"abÃ"_s << u"Windows-1252"_s;
    QTest::newRow("Windows-1252 high range") << "\x80 \x93x\x94 \x9f"_ba << u"€ “x” Ÿ"_s << u"Windows-1252"_s;
    QTest::newRow("undefined in 1252 falls to ISO-8859-1")
        << "\x81\xe8\x9d"_ba << u"\u0081è\u009d"_s << u"ISO-8859-1"_s;
    QTest::newRow("CR LF and lone CR become LF") << "a\r\nb\rc\n\r\nd\r\r\n"_ba << u"a\nb\nc\n\nd\n\n"_s << u"UTF-8"_s;
    QTest::newRow("CR in UTF-16") << encoded(QStringConverter::Utf16LE, u"a\r\nb\rc"_s) << u"a\nb\nc"_s << u"UTF-16"_s;
}

void TestCSV::decode() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QFETCH(QString, encoding);
    const CSVParser::detail::Decoded decoded = CSVParser::detail::decode(bytes);
    QCOMPARE(decoded.text, text);
    QCOMPARE(decoded.encodingName, encoding);
}

void TestCSV::delimiter_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QChar>("delimiter");

    QTest::newRow("no candidate at all") << u"nome\ncognome\n"_s << QChar(u',');
    QTest::newRow("one comma, one semicolon: the earlier wins") << u"a;b,c"_s << QChar(u',');
    QTest::newRow("tabs") << u"a\tb\tc\n1\t2\t3\n"_s << QChar(u'\t');
    QTest::newRow("quoted commas and line feeds don't count")
        << u"Nome;Indirizzo\n\"Rossi, Mario, \"\"jr\"\"\";\"Via Roma, 1,\nscala B, int. 4\"\n"_s << QChar(u';');
    QTest::newRow("consistency beats a larger total") << u"a,b,c,d,e;f\nx;y\nz;w\n"_s << QChar(u';');
    QTest::newRow("equal consistency, larger total wins") << u"a;b;c,d\n"_s << QChar(u';');
    QTest::newRow("lines without the candidate are set aside") << u"Titolo\n\na;b\nc;d\n"_s << QChar(u';');
    QTest::newRow("line 20 still counts") << u"x\n"_s.repeated(19) + u"a;b\n"_s << QChar(u';');
    QTest::newRow("line 21 counts for nothing") << u"x\n"_s.repeated(20) + u"a;b;c;d"_s << QChar(u',');
    QTest::newRow("unclosed quote ends the scan") << u"a,b\n\"c;d;e;f;g;h\n"_s << QChar(u',');
    QTest::newRow("semicolon with combining mark is no delimiter") << u"a;\u0301b;\u0301c\n"_s << QChar(u',');
    QTest::newRow("quote with combining mark opens no run") << u"\"\u0301a;b\"\n"_s << QChar(u';');
    QTest::newRow("65,536th character counts") << QString(65535, u'x') + u';' << QChar(u';');
    QTest::newRow("65,537th character doesn't") << QString(65536, u'x') + u';' << QChar(u',');
    QTest::newRow("sample counted in characters, not code units") << u"e\u0301"_s.repeated(40000) + u';' << QChar(u';');
}

void TestCSV::delimiter() {
    QFETCH(QString, text);
    QFETCH(QChar, delimiter);
    QCOMPARE(CSVParser::detail::detectDelimiter(text), delimiter);
}

void TestCSV::parseRows_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<Rows>("rows");

    QTest::newRow("nothing") << u""_s << QChar(u',') << Rows{};
    QTest::newRow("final LF adds no row, trailing delimiter does")
        << u"a,b\nc,d,\n"_s << QChar(u',') << Rows{{"a", "b"}, {"c", "d", ""}};
    QTest::newRow("blank lines are rows of one empty field")
        << u"a\n\nb\n\n"_s << QChar(u',') << Rows{{"a"}, {""}, {"b"}, {""}};
    QTest::newRow("doubled quotes") << u"\"a \"\"b\"\" c\",d"_s << QChar(u',') << Rows{{"a \"b\" c", "d"}};
    QTest::newRow("quote inside a field") << u"ab\"c,d\"e"_s << QChar(u',') << Rows{{"abc,de"}};
    QTest::newRow("quoted delimiter and LF") << u"\"x,\ny\",z\n"_s << QChar(u',') << Rows{{"x,\ny", "z"}};
    QTest::newRow("lone pair of quotes") << u"\"\""_s << QChar(u',') << Rows{};
    QTest::newRow("empty quoted fields") << u"\"\",x,\"\""_s << QChar(u',') << Rows{{"", "x", ""}};
    QTest::newRow("quote opened at the end") << u"a,\""_s << QChar(u',') << Rows{{"a", ""}};
    QTest::newRow("open quote runs to the end") << u"\"open,field\nmore"_s << QChar(u',') << Rows{{"open,field\nmore"}};
    QTest::newRow("doubled quote at the end") << u"\"a\"\""_s << QChar(u',') << Rows{{"a\""}};
    QTest::newRow("delimiter with combining mark is text")
        << u"a;\u0301b;c"_s << QChar(u';') << Rows{{u"a;\u0301b"_s, "c"}};
    QTest::newRow("quote with combining mark neither opens nor closes")
        << u"\"\u0301a,\"b\"\u0301,c"_s << QChar(u',') << Rows{{u"\"\u0301a"_s, u"b\"\u0301,c"_s}};
}

void TestCSV::parseRows() {
    QFETCH(QString, text);
    QFETCH(QChar, delimiter);
    QFETCH(Rows, rows);
    QCOMPARE(CSVParser::detail::parseRows(text, delimiter), rows);
}

void TestCSV::parseRaw_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Rows>("rows"); // none: ParseError::empty
    QTest::addColumn<QChar>("delimiter");

    QTest::newRow("blank rows dropped, others kept whole")
        << "Nome;Email\r\n\r\n ; \r\n Anna ;a@b.it\r\n;\r\n"_ba << Rows{{"Nome", "Email"}, {" Anna ", "a@b.it"}}
        << QChar(u';');
    QTest::newRow("a quoted line break keeps its row") << "a\n\"\r\n\""_ba << Rows{{"a"}, {"\n"}} << QChar(u',');
    QTest::newRow("no-break space is whitespace") << "a\n\xc2\xa0\t\n"_ba << Rows{{"a"}} << QChar(u'\t');
    QTest::newRow("zero bytes") << QByteArray() << Rows{} << QChar();
    QTest::newRow("only blanks and delimiters") << " \t\n\r\n;;;\n ; ;\n;"_ba << Rows{} << QChar();
    QTest::newRow("lone pair of quotes") << "\"\""_ba << Rows{} << QChar();
}

void TestCSV::parseRaw() {
    QFETCH(QByteArray, bytes);
    QFETCH(Rows, rows);
    QFETCH(QChar, delimiter);
    try {
        const CSVParser::RawTable raw = CSVParser::parseRaw(bytes);
        QVERIFY2(!rows.isEmpty(), "no ParseError");
        QCOMPARE(raw.rows, rows);
        QCOMPARE(raw.delimiter, delimiter);
    } catch (const CSVParser::ParseError& error) {
        QVERIFY2(rows.isEmpty(), error.what());
        QCOMPARE(error.kind, CSVParser::ParseError::empty);
        QCOMPARE(error.errorDescription(), u"Il file non contiene righe."_s);
    }
}

void TestCSV::headerRow_data() {
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<qsizetype>("index");

    const QStringList five = {"Nome", "Cognome", "Email", "Città", "Telefono"};
    const QStringList data = {"Mario", "Rossi", "m@x.it", "Roma", "06 1"};
    QTest::newRow("no rows") << Rows{} << qsizetype(0);
    QTest::newRow("title cell above the table") << Rows{{"Elenco clienti 2026"}, five, data, data} << qsizetype(1);
    QTest::newRow("title padded with whitespace")
        << Rows{{"Elenco", " ", "\t", "\u00a0", ""}, five, data} << qsizetype(1);
    QTest::newRow("two of five filled is under half")
        << Rows{{"Elenco", "2026", "", "", ""}, five, data} << qsizetype(1);
    QTest::newRow("two of four filled is half") << Rows{{"a", "", "b", ""}, {"c", "d", "e", "f"}} << qsizetype(0);
    QTest::newRow("line break is not empty") << Rows{{"\n", "\n", ""}, {"a", "b", "c"}} << qsizetype(0);
    QTest::newRow("no full row: first of the width") << Rows{{"x"}, {"a", "", ""}, {"", "", "b"}} << qsizetype(1);
    QTest::newRow("equal counts: the larger width")
        << Rows(3, {"a", "b"}) + Rows(3, {"1", "2", "3", "4"}) << qsizetype(3);
    QTest::newRow("width from the first 200 rows only")
        << Rows(200, {"a", "b"}) + Rows(300, {"a", "b", "c"}) << qsizetype(0);
    QTest::newRow("row found past the first 200")
        << Rows(150, {"x"}) + Rows(50, {"", "", "1"}) + Rows{{"a", "b", "c"}} << qsizetype(200);
}

void TestCSV::headerRow() {
    QFETCH(Rows, rows);
    QFETCH(qsizetype, index);
    QCOMPARE(CSVParser::detectHeaderRow(rows), index);
}

void TestCSV::table_data() {
    QTest::addColumn<Rows>("raw");
    QTest::addColumn<qsizetype>("header");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");

    const Rows raw = {{"Titolo"}, {" Nome ", "\tEmail\u00a0", " ", "Nota\n"}, {" a ", "b"}, {"c"}};
    QTest::newRow("header trimmed of blanks and named, data not")
        << raw << qsizetype(1) << QStringList{"Nome", "Email", "colonna3", "Nota\n"} << raw.mid(2);
    QTest::newRow("negative index") << raw << qsizetype(-3) << QStringList{"Titolo"} << raw.mid(1);
    QTest::newRow("index past the end") << raw << qsizetype(9) << QStringList{"c"} << Rows{};
    QTest::newRow("no rows") << Rows{} << qsizetype(0) << QStringList{} << Rows{};
    QTest::newRow("equal names counted per lower case, made names don't count")
        << Rows{{"CITTÀ", "città", "Città", "a", "a", "a_2"}} << qsizetype(0)
        << QStringList{"CITTÀ", "città_2", "Città_3", "a", "a_2", "a_2"} << Rows{};
    QTest::newRow("made name meets a real one")
        << Rows{{"Colonna2", ""}} << qsizetype(0) << QStringList{"Colonna2", "colonna2_2"} << Rows{};
}

void TestCSV::table() {
    QFETCH(Rows, raw);
    QFETCH(qsizetype, header);
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    const CSVParser::Table result = CSVParser::table({raw, QChar(u'\t'), u"UTF-16"_s}, header);
    QCOMPARE(result.columns, columns);
    QCOMPARE(result.rows, rows);
    QCOMPARE(result.delimiter, QChar(u'\t'));
    QCOMPARE(result.encodingName, u"UTF-16"_s);
}

void TestCSV::dictionaries_data() {
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<Dictionaries>("expected");

    using Map = QHash<QString, QString>;
    QTest::newRow("values untrimmed, one map per row")
        << QStringList{"Nome", "Email"} << Rows{{" Anna ", "a@b.it\n"}, {"Luca", "l@b.it"}}
        << Dictionaries{Map{{"Nome", " Anna "}, {"Email", "a@b.it\n"}}, Map{{"Nome", "Luca"}, {"Email", "l@b.it"}}};
    QTest::newRow("short row gives empty values")
        << QStringList{"a", "b", "c"} << Rows{{"1"}} << Dictionaries{Map{{"a", "1"}, {"b", ""}, {"c", ""}}};
    QTest::newRow("extra fields dropped") << QStringList{"a"} << Rows{{"1", "2", "3"}} << Dictionaries{Map{{"a", "1"}}};
    QTest::newRow("later equal name wins, empty name skipped")
        << QStringList{"a", "a", ""} << Rows{{"1", "2", "3"}} << Dictionaries{Map{{"a", "2"}}};
}

void TestCSV::dictionaries() {
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    QFETCH(Dictionaries, expected);
    QCOMPARE(tableOf(columns, rows).dictionaries(), expected);
}

void TestCSV::emailColumn_data() {
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("column"); // null: none found

    const Rows addresses = {{"Mario", "mario@example.it"}, {"Anna", "anna@example.it"}};
    QTest::newRow("name holding mail beats content")
        << QStringList{"Gmail account", "Contatto"} << addresses << u"Gmail account"_s;
    QTest::newRow("first telling name wins") << QStringList{"Mailing", "E-Mail"} << Rows{} << u"Mailing"_s;
    QTest::newRow("posta alone, any case") << QStringList{"Nome", "POSTA"} << Rows{} << u"POSTA"_s;
    QTest::newRow("posta in a longer name is no name match")
        << QStringList{"Posta elettronica", "Indirizzo"} << Rows{{"x", "a@b.it"}} << u"Indirizzo"_s;
    QTest::newRow("content: most valid addresses, short rows")
        << QStringList{"a", "b", "c"} << Rows{{"x@y.it", "p@q.it", "no"}, {"no", "r@s.it"}, {"", " v@w.it "}} << u"b"_s;
    QTest::newRow("content: tie goes left")
        << QStringList{"a", "b"} << Rows{{"x", "p@q.it"}, {"x@y.it", "no"}} << u"a"_s;
    QTest::newRow("content: none valid") << QStringList{"a", "b"} << Rows{{"x", "@"}} << QString();
    QTest::newRow("no columns") << QStringList{} << Rows{{"a@b.it"}} << QString();
    QTest::newRow("content: first 200 rows only")
        << QStringList{"a", "b"} << Rows(100, {"a@b.it", "no"}) + Rows(400, {"no", "c@d.it"}) << u"a"_s;
}

void TestCSV::emailColumn() {
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    QFETCH(QString, column);
    const std::optional<QString> guess = CSVParser::guessEmailColumn(tableOf(columns, rows));
    QCOMPARE(guess, column.isNull() ? std::nullopt : std::optional<QString>(column));
}

BREZZARIO_TEST_GUILESS_MAIN(TestCSV)
#include "tst_csv.moc"
