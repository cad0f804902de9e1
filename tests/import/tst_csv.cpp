#include "import/CSVParser.h"
#include "import/CSVParserSteps.h"
#include "TestEnvironment.h"

using namespace Qt::Literals::StringLiterals;
using Rows = QList<QStringList>;
using Dictionaries = QList<QHash<QString, QString>>;

namespace {

QByteArray utf16le(const QString& text) {
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

QByteArray utf16be(const QString& text) {
    QByteArray bytes;
    for (QChar c : text) {
        bytes.append(char(c.unicode() >> 8));
        bytes.append(char(c.unicode() & 0xFF));
    }
    return bytes;
}

QString lines(int count, const QString& line) {
    QString text;
    for (int i = 0; i < count; ++i)
        text += line + u'\n';
    return text;
}

Rows repeatedRows(int count, const QStringList& row) {
    return Rows(count, row);
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
    void errorDescriptions_data();
    void errorDescriptions();
    void headerRow_data();
    void headerRow();
    void table_data();
    void table();
    void deduplicate_data();
    void deduplicate();
    void dictionaries_data();
    void dictionaries();
    void emailColumn_data();
    void emailColumn();
};

void TestCSV::decode_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("nothing") << QByteArray() << u""_s << u"UTF-8"_s;
    QTest::newRow("UTF-8 without mark") << "Citt\xc3\xa0"_ba << u"Città"_s << u"UTF-8"_s;
    QTest::newRow("UTF-8 mark is dropped") << "\xef\xbb\xbf"
                                              "Citt\xc3\xa0"_ba
                                           << u"Città"_s << u"UTF-8"_s;
    QTest::newRow("second UTF-8 mark stays") << "\xef\xbb\xbf\xef\xbb\xbf"
                                                "a"_ba
                                             << u"\uFEFFa"_s << u"UTF-8"_s;
    QTest::newRow("UTF-8 mark then invalid UTF-8") << "\xef\xbb\xbfNicol\xf2"_ba << u"ï»¿Nicolò"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-8 mark, invalid, undefined in 1252")
        << "\xef\xbb\xbf\x81\xff"_ba << u"ï»¿\u0081ÿ"_s << u"ISO-8859-1"_s;
    QTest::newRow("UTF-16 LE") << "\xff\xfe"_ba + utf16le(u"Łukasz;Kraków"_s) << u"Łukasz;Kraków"_s << u"UTF-16"_s;
    QTest::newRow("UTF-16 BE") << "\xfe\xff"_ba + utf16be(u"Ελένη\tΑθήνα"_s) << u"Ελένη\tΑθήνα"_s << u"UTF-16"_s;
    QTest::newRow("UTF-16 surrogate pair")
        << "\xff\xfe"_ba + utf16le(u"a\U0001F600b"_s) << u"a\U0001F600b"_s << u"UTF-16"_s;
    QTest::newRow("UTF-16 mark alone") << "\xff\xfe"_ba << u""_s << u"UTF-16"_s;
    QTest::newRow("UTF-16 odd length") << "\xff\xfe"
                                          "a\0b"_ba
                                       << u"ÿþa\0b"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-16 unpaired high surrogate") << "\xff\xfe\x00\xd8"
                                                       "a\0"_ba
                                                    << u"ÿþ\0Øa\0"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-16 unpaired low surrogate") << "\xfe\xff\xdc\x00"_ba << u"þÿÜ\0"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-8 cut off at the end") << "ab\xc3"_ba << u"abÃ"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-8 overlong") << "\xc0\xaf"_ba << u"À¯"_s << u"Windows-1252"_s;
    QTest::newRow("UTF-8 encoded surrogate") << "\xed\xa0\x80"_ba << u"í\u00a0€"_s << u"Windows-1252"_s;
    QTest::newRow("Windows-1252 high range") << "\x80 \x93x\x94 \x92 \x9f"_ba << u"€ “x” ’ Ÿ"_s << u"Windows-1252"_s;
    for (const char* undefined : {"\x81", "\x8d", "\x8f", "\x90", "\x9d"}) {
        const QByteArray bytes = QByteArray("\xe8") + undefined;
        QTest::addRow("undefined 0x%02X falls to ISO-8859-1", uchar(undefined[0]))
            << bytes << QString(u'è') + QChar(uchar(undefined[0])) << u"ISO-8859-1"_s;
    }
    QTest::newRow("CR LF and lone CR become LF") << "a\r\nb\rc\n\r\nd\r"_ba << u"a\nb\nc\n\nd\n"_s << u"UTF-8"_s;
    QTest::newRow("CR CR LF") << "a\r\r\nb"_ba << u"a\n\nb"_s << u"UTF-8"_s;
    QTest::newRow("LF CR is two line ends") << "a\n\rb"_ba << u"a\n\nb"_s << u"UTF-8"_s;
    QTest::newRow("CR in UTF-16") << "\xff\xfe"_ba + utf16le(u"a\r\nb\rc"_s) << u"a\nb\nc"_s << u"UTF-16"_s;
    QTest::newRow("CR in Windows-1252") << "\xe8\r\n\x80\r"_ba << u"è\n€\n"_s << u"Windows-1252"_s;
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

    QTest::newRow("empty sample") << u""_s << QChar(u',');
    QTest::newRow("no candidate at all") << u"nome\ncognome\n"_s << QChar(u',');
    QTest::newRow("one comma, one semicolon: the earlier wins") << u"a;b,c"_s << QChar(u',');
    QTest::newRow("semicolons") << u"a;b;c\n1;2;3\n"_s << QChar(u';');
    QTest::newRow("tabs") << u"a\tb\tc\n1\t2\t3\n"_s << QChar(u'\t');
    QTest::newRow("bars") << u"a|b|c\n1|2|3"_s << QChar(u'|');
    QTest::newRow("commas inside quotes don't count")
        << u"Nome;Indirizzo\n\"Rossi, Mario, jr.\";\"Via Roma, 1, scala B, int. 4\"\n"_s << QChar(u';');
    QTest::newRow("doubled quotes keep the runs in step") << u"\"a \"\"x,y,z\"\" b\";c\n"_s << QChar(u';');
    QTest::newRow("quoted line feed is no line end") << u"a;b\n\"x\ny,z,w,v\";c\n"_s << QChar(u';');
    QTest::newRow("unquoted commas in Italian data") << u"Nome;Indirizzo;Importo\n"
                                                        "Rossi, Mario;Via Garibaldi, 12, int. 4;1.234,56\n"
                                                        "Bianchi, Anna;Piazza Duomo, 3;12,30\n"
                                                        "Verdi, Luca;Corso Italia, 7, scala B, piano 2;1.000,00\n"_s
                                                     << QChar(u';');
    QTest::newRow("consistency beats a larger total") << u"a,b,c,d,e;f\nx;y\nz;w\n"_s << QChar(u';');
    QTest::newRow("equal consistency, larger total wins") << u"a;b;c,d\n"_s << QChar(u';');
    QTest::newRow("lines without the candidate are set aside") << u"Titolo\n\na;b\nc;d\n"_s << QChar(u';');
    QTest::newRow("line 20 still counts") << lines(19, u"x"_s) + u"a;b\n"_s << QChar(u';');
    QTest::newRow("line 21 counts for nothing") << lines(20, u"x"_s) + u"a;b;c;d"_s << QChar(u',');
    QTest::newRow("unclosed quote ends the scan") << u"a,b\n\"c;d;e;f;g;h\n"_s << QChar(u',');
    QTest::newRow("semicolon with combining mark is no delimiter") << u"a;\u0301b;\u0301c\n"_s << QChar(u',');
    QTest::newRow("quote with combining mark opens no run") << u"\"\u0301a;b\"\n"_s << QChar(u';');
    QTest::newRow("65,536th character counts") << QString(65535, u'x') + u';' << QChar(u';');
    QTest::newRow("65,537th character doesn't") << QString(65536, u'x') + u';' << QChar(u',');
    QTest::newRow("sample counted in characters, not code units")
        << QString(u"e\u0301"_s).repeated(40000) + u';' << QChar(u';');
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
    QTest::newRow("last line without LF") << u"a,b\nc,d"_s << QChar(u',') << Rows{{"a", "b"}, {"c", "d"}};
    QTest::newRow("final LF adds no row") << u"a,b\n"_s << QChar(u',') << Rows{{"a", "b"}};
    QTest::newRow("trailing delimiter") << u"a,b,"_s << QChar(u',') << Rows{{"a", "b", ""}};
    QTest::newRow("trailing delimiter and LF") << u"a,b,\n"_s << QChar(u',') << Rows{{"a", "b", ""}};
    QTest::newRow("blank lines are rows of one empty field")
        << u"a\n\nb\n\n"_s << QChar(u',') << Rows{{"a"}, {""}, {"b"}, {""}};
    QTest::newRow("fields untrimmed") << u" a , b \t"_s << QChar(u',') << Rows{{" a ", " b \t"}};
    QTest::newRow("doubled quotes") << u"\"a \"\"b\"\" c\",d"_s << QChar(u',') << Rows{{"a \"b\" c", "d"}};
    QTest::newRow("quote inside a field") << u"ab\"c,d\"e"_s << QChar(u',') << Rows{{"abc,de"}};
    QTest::newRow("quoted delimiter and LF") << u"\"x,\ny\",z\n"_s << QChar(u',') << Rows{{"x,\ny", "z"}};
    QTest::newRow("lone pair of quotes") << u"\"\""_s << QChar(u',') << Rows{};
    QTest::newRow("empty quoted field first") << u"\"\",x"_s << QChar(u',') << Rows{{"", "x"}};
    QTest::newRow("empty quoted field last") << u"a,\"\""_s << QChar(u',') << Rows{{"a", ""}};
    QTest::newRow("quote opened at the end") << u"a,\""_s << QChar(u',') << Rows{{"a", ""}};
    QTest::newRow("open quote runs to the end") << u"\"open,field\nmore"_s << QChar(u',') << Rows{{"open,field\nmore"}};
    QTest::newRow("doubled quote at the end") << u"\"a\"\""_s << QChar(u',') << Rows{{"a\""}};
    QTest::newRow("three quotes") << u"\"\"\""_s << QChar(u',') << Rows{{"\""}};
    QTest::newRow("closed then reopened") << u"\"a\"b\"c\""_s << QChar(u',') << Rows{{"abc"}};
    QTest::newRow("other candidates are text") << u"a,b;c|d"_s << QChar(u';') << Rows{{"a,b", "c|d"}};
    QTest::newRow("tab delimiter") << u"a\tb\n\"c\td\"\te"_s << QChar(u'\t') << Rows{{"a", "b"}, {"c\td", "e"}};
    QTest::newRow("delimiter with combining mark is text")
        << u"a;\u0301b;c"_s << QChar(u';') << Rows{{u"a;\u0301b"_s, "c"}};
    QTest::newRow("quote with combining mark is text")
        << u"\"\u0301a,b"_s << QChar(u',') << Rows{{u"\"\u0301a"_s, "b"}};
    QTest::newRow("quote with combining mark doesn't close")
        << u"\"a\"\u0301,b"_s << QChar(u',') << Rows{{u"a\"\u0301,b"_s}};
}

void TestCSV::parseRows() {
    QFETCH(QString, text);
    QFETCH(QChar, delimiter);
    QFETCH(Rows, rows);
    QCOMPARE(CSVParser::detail::parseRows(text, delimiter), rows);
}

void TestCSV::parseRaw_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("blank rows dropped, others kept whole")
        << "Nome;Email\r\n\r\n ; \r\n Anna ;a@b.it\r\n;\r\n"_ba << Rows{{"Nome", "Email"}, {" Anna ", "a@b.it"}}
        << QChar(u';') << u"UTF-8"_s;
    QTest::newRow("a quoted line break keeps its row")
        << "a\n\"\r\n\""_ba << Rows{{"a"}, {"\n"}} << QChar(u',') << u"UTF-8"_s;
    QTest::newRow("CR LF inside quotes") << "\"x\r\ny\",z\r\n"_ba << Rows{{"x\ny", "z"}} << QChar(u',') << u"UTF-8"_s;
    QTest::newRow("no-break space is whitespace") << "a\n\xc2\xa0\t\n"_ba << Rows{{"a"}} << QChar(u'\t') << u"UTF-8"_s;
    QTest::newRow("Windows-1252 semicolons")
        << "Citt\xe0;Nota\nForl\xec;10 \x80\n"_ba << Rows{{"Città", "Nota"}, {"Forlì", "10 €"}} << QChar(u';')
        << u"Windows-1252"_s;
}

void TestCSV::parseRaw() {
    QFETCH(QByteArray, bytes);
    QFETCH(Rows, rows);
    QFETCH(QChar, delimiter);
    QFETCH(QString, encoding);
    const CSVParser::RawTable raw = CSVParser::parseRaw(bytes);
    QCOMPARE(raw.rows, rows);
    QCOMPARE(raw.delimiter, delimiter);
    QCOMPARE(raw.encodingName, encoding);
}

void TestCSV::errorDescriptions_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("description");

    const QString empty = u"Il file non contiene righe."_s;
    QTest::newRow("zero bytes") << QByteArray() << int(CSVParser::ParseError::empty) << empty;
    QTest::newRow("only blank lines") << "\n\n\r\n"_ba << int(CSVParser::ParseError::empty) << empty;
    QTest::newRow("only spaces and tabs") << "  \t \n \n"_ba << int(CSVParser::ParseError::empty) << empty;
    QTest::newRow("only delimiters") << ";;;\n ; ;\n;"_ba << int(CSVParser::ParseError::empty) << empty;
    QTest::newRow("lone pair of quotes") << "\"\""_ba << int(CSVParser::ParseError::empty) << empty;
    QTest::newRow("UTF-16 mark alone") << "\xff\xfe"_ba << int(CSVParser::ParseError::empty) << empty;
}

void TestCSV::errorDescriptions() {
    QFETCH(QByteArray, bytes);
    QFETCH(int, kind);
    QFETCH(QString, description);
    try {
        CSVParser::parseRaw(bytes);
        QFAIL("no ParseError");
    } catch (const CSVParser::ParseError& error) {
        QCOMPARE(int(error.kind), kind);
        QCOMPARE(error.errorDescription(), description);
    }
    // The other case is never thrown by this decoder, but its text is still shown as it stands.
    QCOMPARE(CSVParser::ParseError(CSVParser::ParseError::unreadable).errorDescription(),
             u"Impossibile leggere il file: codifica non riconosciuta."_s);
}

void TestCSV::headerRow_data() {
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<qsizetype>("index");

    const QStringList five = {"Nome", "Cognome", "Email", "Città", "Telefono"};
    const QStringList data = {"Mario", "Rossi", "m@x.it", "Roma", "06 1"};
    QTest::newRow("no rows") << Rows{} << qsizetype(0);
    QTest::newRow("one row") << Rows{{"Titolo"}} << qsizetype(0);
    QTest::newRow("all rows of one field") << Rows{{"a"}, {"b"}, {"c"}} << qsizetype(0);
    QTest::newRow("title cell above the table") << Rows{{"Elenco clienti 2026"}, five, data, data} << qsizetype(1);
    QTest::newRow("title padded to the width")
        << Rows{{"Elenco clienti 2026", "", "", "", ""}, five, data} << qsizetype(1);
    QTest::newRow("padding of whitespace is empty")
        << Rows{{"Elenco", " ", "\t", "\u00a0", ""}, five, data} << qsizetype(1);
    QTest::newRow("two of five filled is under half")
        << Rows{{"Elenco", "2026", "", "", ""}, five, data} << qsizetype(1);
    QTest::newRow("three of five filled is enough")
        << Rows{{"Elenco", "2026", "x", "", ""}, five, data} << qsizetype(0);
    QTest::newRow("two of four filled is half") << Rows{{"a", "", "b", ""}, {"c", "d", "e", "f"}} << qsizetype(0);
    QTest::newRow("line break is not empty") << Rows{{"\n", "\n", ""}, {"a", "b", "c"}} << qsizetype(0);
    QTest::newRow("no full row: first of the width") << Rows{{"x"}, {"a", "", ""}, {"", "", "b"}} << qsizetype(1);
    QTest::newRow("equal counts: the larger width")
        << Rows{{"a", "b"}, {"a", "b"}, {"a", "b"}, {"1", "2", "3", "4"}, {"1", "2", "3", "4"}, {"1", "2", "3", "4"}}
        << qsizetype(3);
    QTest::newRow("one-field rows aren't counted") << Rows{{"t"}, {"t"}, {"t"}, {"a", "b"}} << qsizetype(3);
    QTest::newRow("width from the first 200 rows only")
        << repeatedRows(200, {"a", "b"}) + repeatedRows(300, {"a", "b", "c"}) << qsizetype(0);
    QTest::newRow("row found past the first 200")
        << repeatedRows(150, {"x"}) + repeatedRows(50, {"", "", "1"}) + Rows{{"a", "b", "c"}} << qsizetype(200);
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

    const Rows raw = {{"Titolo"}, {" Nome ", "\tEmail\u00a0"}, {" a ", "b"}, {"c"}};
    QTest::newRow("first row") << raw << qsizetype(0) << QStringList{"Titolo"} << raw.mid(1);
    QTest::newRow("header trimmed, data not") << raw << qsizetype(1) << QStringList{"Nome", "Email"} << raw.mid(2);
    QTest::newRow("negative index") << raw << qsizetype(-3) << QStringList{"Titolo"} << raw.mid(1);
    QTest::newRow("index past the end") << raw << qsizetype(9) << QStringList{"c"} << Rows{};
    QTest::newRow("no rows") << Rows{} << qsizetype(0) << QStringList{} << Rows{};
    QTest::newRow("line break in a name stays")
        << Rows{{"Nome\n", " "}} << qsizetype(0) << QStringList{"Nome\n", "colonna2"} << Rows{};
}

void TestCSV::table() {
    QFETCH(Rows, raw);
    QFETCH(qsizetype, header);
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    const CSVParser::RawTable rawTable{raw, QChar(u'\t'), u"UTF-16"_s};
    const CSVParser::Table result = CSVParser::table(rawTable, header);
    QCOMPARE(result.columns, columns);
    QCOMPARE(result.rows, rows);
    QCOMPARE(result.delimiter, QChar(u'\t'));
    QCOMPARE(result.encodingName, u"UTF-16"_s);
}

void TestCSV::deduplicate_data() {
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("unique");

    QTest::newRow("already unique") << QStringList{"Nome", "Email"} << QStringList{"Nome", "Email"};
    QTest::newRow("case kept, count per lower case")
        << QStringList{"Nome", "nome", "NOME"} << QStringList{"Nome", "nome_2", "NOME_3"};
    QTest::newRow("made names don't enter the map") << QStringList{"a", "a", "a_2"} << QStringList{"a", "a_2", "a_2"};
    QTest::newRow("empty names by position") << QStringList{"", "x", ""} << QStringList{"colonna1", "x", "colonna3"};
    QTest::newRow("made name meets a real one") << QStringList{"Colonna2", ""} << QStringList{"Colonna2", "colonna2_2"};
    QTest::newRow("Unicode lower case") << QStringList{"CITTÀ", "città", "Città"}
                                        << QStringList{"CITTÀ", "città_2", "Città_3"};
    QTest::newRow("ten and more") << QStringList(11, u"x"_s) << QStringList{"x",   "x_2", "x_3", "x_4",  "x_5", "x_6",
                                                                            "x_7", "x_8", "x_9", "x_10", "x_11"};
}

void TestCSV::deduplicate() {
    QFETCH(QStringList, names);
    QFETCH(QStringList, unique);
    QCOMPARE(CSVParser::detail::deduplicate(names), unique);
}

void TestCSV::dictionaries_data() {
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<Dictionaries>("expected");

    using Map = QHash<QString, QString>;
    QTest::newRow("values untrimmed") << QStringList{"Nome", "Email"} << Rows{{" Anna ", "a@b.it\n"}}
                                      << Dictionaries{Map{{"Nome", " Anna "}, {"Email", "a@b.it\n"}}};
    QTest::newRow("short row gives empty values")
        << QStringList{"a", "b", "c"} << Rows{{"1"}} << Dictionaries{Map{{"a", "1"}, {"b", ""}, {"c", ""}}};
    QTest::newRow("extra fields dropped") << QStringList{"a"} << Rows{{"1", "2", "3"}} << Dictionaries{Map{{"a", "1"}}};
    QTest::newRow("later equal name wins")
        << QStringList{"a", "a_2", "a_2"} << Rows{{"1", "2", "3"}} << Dictionaries{Map{{"a", "1"}, {"a_2", "3"}}};
    QTest::newRow("empty name skipped") << QStringList{"a", ""} << Rows{{"1", "2"}} << Dictionaries{Map{{"a", "1"}}};
    QTest::newRow("one map per row, in order")
        << QStringList{"a"} << Rows{{"1"}, {"2"}} << Dictionaries{Map{{"a", "1"}}, Map{{"a", "2"}}};
    QTest::newRow("no rows") << QStringList{"a"} << Rows{} << Dictionaries{};
}

void TestCSV::dictionaries() {
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    QFETCH(Dictionaries, expected);
    CSVParser::Table table;
    table.columns = columns;
    table.rows = rows;
    QCOMPARE(table.dictionaries(), expected);
}

void TestCSV::emailColumn_data() {
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("column");

    const Rows addresses = {{"Mario", "mario@example.it"}, {"Anna", "anna@example.it"}};
    QTest::newRow("name holding mail beats content")
        << QStringList{"Gmail account", "Contatto"} << addresses << true << u"Gmail account"_s;
    QTest::newRow("E-Mail") << QStringList{"Nome", "E-Mail"} << Rows{} << true << u"E-Mail"_s;
    QTest::newRow("first telling name wins") << QStringList{"Mailing", "Email"} << Rows{} << true << u"Mailing"_s;
    QTest::newRow("posta alone") << QStringList{"Nome", "POSTA"} << Rows{} << true << u"POSTA"_s;
    QTest::newRow("posta in a longer name is no name match")
        << QStringList{"Posta elettronica", "Indirizzo"} << Rows{{"x", "a@b.it"}} << true << u"Indirizzo"_s;
    QTest::newRow("upper case") << QStringList{"INDIRIZZO EMAIL"} << Rows{} << true << u"INDIRIZZO EMAIL"_s;
    QTest::newRow("content: most valid addresses")
        << QStringList{"a", "b", "c"}
        << Rows{{"x@y.it", "p@q.it", "no"}, {"no", "r@s.it", "t@u.it"}, {"", " v@w.it ", ""}} << true << u"b"_s;
    QTest::newRow("content: tie goes left")
        << QStringList{"a", "b"} << Rows{{"x", "p@q.it"}, {"x@y.it", "no"}} << true << u"a"_s;
    QTest::newRow("content: short rows") << QStringList{"a", "b"} << Rows{{"x"}, {"y", "p@q.it"}} << true << u"b"_s;
    QTest::newRow("content: none valid") << QStringList{"a", "b"} << Rows{{"x", "@"}} << false << QString();
    QTest::newRow("no columns") << QStringList{} << Rows{{"a@b.it"}} << false << QString();
    QTest::newRow("content: first 200 rows only")
        << QStringList{"a", "b"}
        << repeatedRows(100, {"a@b.it", "no"}) + repeatedRows(100, {"no", "c@d.it"}) +
               repeatedRows(300, {"no", "c@d.it"})
        << true << u"a"_s;
}

void TestCSV::emailColumn() {
    QFETCH(QStringList, columns);
    QFETCH(Rows, rows);
    QFETCH(bool, found);
    QFETCH(QString, column);
    CSVParser::Table table;
    table.columns = columns;
    table.rows = rows;
    const std::optional<QString> guess = CSVParser::guessEmailColumn(table);
    QCOMPARE(guess.has_value(), found);
    if (found)
        QCOMPARE(*guess, column);
}

BREZZARIO_TEST_GUILESS_MAIN(TestCSV)
#include "tst_csv.moc"
