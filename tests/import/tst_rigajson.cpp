#include "import/ListImport.h"
#include "records/Store.h"
#include "records/StoreTables.h"
#include "records/Text.h"
#include "TestEnvironment.h"

#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;

// An import writes each row's values straight from the file's bytes. They must be the object the store
// would have written for the map of strings the same row gives: the same keys and texts, the same escapes.
namespace {

ImportSheetState stato(const QByteArray& bytes, qsizetype header = 0) {
    PendingImport pending;
    pending.url = u"/tmp/clienti.csv"_s;
    pending.raw = CSVParser::parseRaw(bytes);
    ImportSheetState risultato(std::move(pending));
    risultato.setRigaIntestazione(header);
    risultato.scartaSenzaEmail = false;
    risultato.rimuoviDuplicati = false;
    return risultato;
}

// Cells with every kind of byte an encoding may bring: controls, quotes, backslashes, letters of each range.
QByteArray celle(QRandomGenerator& caso, bool singleByte) {
    static const QList<QByteArray> utf8 = {"a",
                                           "\\",
                                           "\\u",
                                           " ",
                                           "\t",
                                           "\x01",
                                           "\x1f",
                                           "\x7f",
                                           "\"\"",
                                           "\xc3\xa8",
                                           "\xe2\x82\xac",
                                           "\xef\xbb\xbf",
                                           "\xc2\x85",
                                           "\xe2\x80\xa8",
                                           "/",
                                           "\xf0\x9f\x98\x80"};
    static const QList<QByteArray> single = {"a",    "\\",   " ",    "\t",   "\x01", "\x1f", "\x7f", "\"\"",
                                             "\x80", "\x92", "\x9f", "\xa0", "\xe8", "\xff", "\x81"};
    const QList<QByteArray>& pezzi = singleByte ? single : utf8;
    QByteArray riga;
    for (int colonna = 0; colonna < 4; ++colonna) {
        if (colonna > 0)
            riga += ';';
        riga += '"';
        for (int n = caso.bounded(5); n > 0; --n)
            riga += pezzi[caso.bounded(pezzi.size())];
        riga += '"';
    }
    return riga + "\r\n";
}

// What the store writes for the map of strings a data row gives: each named column in turn, so of two equal
// names the later column wins, and the empty text past a short row's end.
QByteArray oggettoDellaMappa(const CSVParser::Table& tabella, qsizetype n) {
    RowValues valori;
    for (qsizetype i = 0; i < tabella.columns.size(); ++i)
        if (!tabella.columns.at(i).isEmpty())
            valori.insert(tabella.columns.at(i), tabella.rows.at(n).value(i));
    return StoreTables::encodeValues(valori).toUtf8();
}

} // namespace

class TestRigaJson : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void comeLaMappa_data();
    void comeLaMappa();
    void stessiByte_data();
    void stessiByte();
};

void TestRigaJson::comeLaMappa_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("equal names: the later column, short rows, a column without a name")
        << "Nome;nome;Email;;a;a;a_2\r\nAnna;x;a@b.it;y;1;2;3\r\nBruno\r\n;;;;;;;;;;extra\r\n"_ba << u"UTF-8"_s;
    QTest::newRow("keys to escape") << "\"Nome \"\"breve\"\"\";Via\\Piazza;Note\tinterne;Città\nx;y;z;w\n"_ba
                                    << u"UTF-8"_s;
    QByteArray utf8 = "A;B;C;D\n", finestre = "A;B;C;D\r\n";
    QRandomGenerator caso(18);
    for (int n = 0; n < 300; ++n) {
        utf8 += celle(caso, false);
        finestre += celle(caso, true);
    }
    QTest::newRow("UTF-8 cells of every kind") << utf8 << u"UTF-8"_s;
    QTest::newRow("single-byte cells of every kind") << finestre << u"ISO-8859-1"_s;
    QTest::newRow("Windows-1252 cells of every kind") << finestre.replace("\x81", "\x80") << u"Windows-1252"_s;
}

void TestRigaJson::comeLaMappa() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, encoding);
    const ImportSheetState foglio = stato(bytes);
    QCOMPARE(foglio.tabellaCorrente().encodingName, encoding);
    const CSVParser::Table& tabella = foglio.tabellaCorrente();
    QSet<QString> visti;
    QByteArray valori;
    const QList<Store::RigaCodificata> righe = foglio.righeCodificate(0, 1'000'000, visti, valori);
    // Nothing is dropped (stato() keeps every row), so row i is the table's data row i.
    QCOMPARE(righe.size(), tabella.rows.size());
    // Of two columns with the address column's name, the map holds the later one's cell.
    const qsizetype colonnaEmail =
        foglio.colonnaEmail.isEmpty() ? -1 : tabella.columns.lastIndexOf(foglio.colonnaEmail);
    for (qsizetype i = 0; i < righe.size(); ++i) {
        QCOMPARE(righe[i].email, Text::normalizedAddress(tabella.rows.at(i).value(colonnaEmail)));
        // Read back as the store reads it (which, for one, drops a U+FEFF the object holds either way).
        QCOMPARE(Store::decodeRowValues(righe[i].valori.toByteArray()),
                 Store::decodeRowValues(oggettoDellaMappa(tabella, i)));
    }
}

// With one named column there is one key, so the object can be compared byte for byte with the store's own.
void TestRigaJson::stessiByte_data() {
    QTest::addColumn<QByteArray>("bytes");
    QByteArray utf8 = "A\n", finestre = "A\r\n";
    QRandomGenerator caso(1252);
    for (int n = 0; n < 300; ++n) {
        utf8 += celle(caso, false).split(';').first() + "\n";
        finestre += celle(caso, true).split(';').first() + "\r\n";
    }
    QTest::newRow("UTF-8") << utf8;
    QTest::newRow("ISO-8859-1") << finestre;
    QTest::newRow("Windows-1252") << finestre.replace("\x81", "\x80");
}

void TestRigaJson::stessiByte() {
    QFETCH(QByteArray, bytes);
    const ImportSheetState foglio = stato(bytes);
    QSet<QString> visti;
    QByteArray valori;
    const QList<Store::RigaCodificata> righe = foglio.righeCodificate(0, 1'000'000, visti, valori);
    QCOMPARE(righe.size(), foglio.tabellaCorrente().rows.size());
    for (qsizetype i = 0; i < righe.size(); ++i)
        QCOMPARE(righe[i].valori.toByteArray(), oggettoDellaMappa(foglio.tabellaCorrente(), i));
}

BREZZARIO_TEST_GUILESS_MAIN(TestRigaJson)
#include "tst_rigajson.moc"
