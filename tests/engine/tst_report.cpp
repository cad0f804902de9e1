#include "engine/SendReport.h"
#include "records/CSVText.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

namespace {
const QDateTime nove = QDateTime(QDate(2025, 3, 4), QTime(9, 5, 7), Qt::UTC);
const QString intestazione = QStringLiteral("ora,esito,destinatario,dettaglio\n");
} // namespace

class TestReport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void testo_data();
    void testo();
    void nomeProposto();
    void scrittura();
};

void TestReport::testo_data() {
    QTest::addColumn<QDateTime>("data");
    QTest::addColumn<int>("esito");
    QTest::addColumn<QString>("dettaglio");
    QTest::addColumn<QString>("riga"); // after the date
    QTest::newRow("plain") << nove << int(SendStatus::sent) << ""
                           << ",sent,a@x.org,\n";
    QTest::newRow("comma quoted") << nove << int(SendStatus::failed) << "550 no, really"
                                  << ",failed,a@x.org,\"550 no, really\"\n";
    QTest::newRow("quotes doubled") << nove << int(SendStatus::failed) << "550 \"x\""
                                    << ",failed,a@x.org,\"550 \"\"x\"\"\"\n";
    QTest::newRow("line feed quoted") << nove << int(SendStatus::skipped) << "uno\ndue"
                                      << ",skipped,a@x.org,\"uno\ndue\"\n";
    QTest::newRow("carriage return alone is not") << nove << int(SendStatus::test) << "uno\rdue"
                                                  << ",test,a@x.org,uno\rdue\n";
    QTest::newRow("local time to UTC, no milliseconds")
        << QDateTime(QDate(2025, 3, 4), QTime(11, 5, 7, 987), QTimeZone(7200)) << int(SendStatus::sent) << ""
        << ",sent,a@x.org,\n";
}

void TestReport::testo() {
    QFETCH(QDateTime, data);
    QFETCH(int, esito);
    QFETCH(QString, dettaglio);
    QFETCH(QString, riga);
    const SendEngine::EventoInvio primo{QUuid::createUuid(), data, "a@x.org", SendStatus(esito), dettaglio};
    const SendEngine::EventoInvio secondo{QUuid::createUuid(), nove.addSecs(1), "z@x.org", SendStatus::sent, ""};
    QCOMPARE(SendReport::testo({}), intestazione);
    QCOMPARE(SendReport::testo({primo, secondo}),
             intestazione + "2025-03-04T09:05:07Z" + riga + "2025-03-04T09:05:08Z,sent,z@x.org,\n");
}

void TestReport::nomeProposto() {
    QCOMPARE(SendReport::nomeProposto("Saldi di marzo"), "rapporto-Saldi di marzo.csv");
    QCOMPARE(SendReport::nomeProposto(""), "rapporto-campagna.csv");
}

// UTF-8 with no mark, a shorter text replaces a longer one whole with no temporary left, and a write
// that can't happen returns false and leaves no file.
void TestReport::scrittura() {
    QTemporaryDir cartella;
    const QString percorso = cartella.filePath("r.csv");
    QVERIFY(CSVText::scrivi(percorso, QString(10000, u'x')));
    QVERIFY(CSVText::scrivi(percorso, QStringLiteral("perché,€\n")));
    QFile file(percorso);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("perch\xc3\xa9,\xe2\x82\xac\n"));
    QCOMPARE(QDir(cartella.path()).entryList(QDir::Files), QStringList{"r.csv"});
    QVERIFY(!CSVText::scrivi(cartella.filePath("manca/r.csv"), QStringLiteral("a\n")));
    QVERIFY(!QFile::exists(cartella.filePath("manca/r.csv")));
}

BREZZARIO_TEST_GUILESS_MAIN(TestReport)
#include "tst_report.moc"
