#include "engine/SendReport.h"
#include "records/CSVText.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

namespace {
SendEngine::EventoInvio evento(const QDateTime& data, SendStatus esito, const QString& email,
                               const QString& dettaglio) {
    return {QUuid::createUuid(), data, email, esito, dettaglio};
}
const QDateTime nove = QDateTime(QDate(2025, 3, 4), QTime(9, 5, 7), Qt::UTC);
} // namespace

class TestReport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void line_data();
    void line();
    void headerAndOrder();
    void proposedName_data();
    void proposedName();
    void writeIsUtf8WithoutMark();
    void writeReplacesAWholeFile();
    void failingWriteLeavesNothing();
};

void TestReport::line_data() {
    QTest::addColumn<QDateTime>("data");
    QTest::addColumn<int>("esito");
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("dettaglio");
    QTest::addColumn<QString>("riga");
    const int sent = int(SendStatus::sent), failed = int(SendStatus::failed), skipped = int(SendStatus::skipped),
              test = int(SendStatus::test);
    QTest::newRow("plain delivery") << nove << sent << "a@example.org"
                                    << ""
                                    << "2025-03-04T09:05:07Z,sent,a@example.org,\n";
    QTest::newRow("comma is quoted") << nove << failed << "b@example.org"
                                     << "550 no, really"
                                     << "2025-03-04T09:05:07Z,failed,b@example.org,\"550 no, really\"\n";
    QTest::newRow("quotes are doubled") << nove << failed << "c@example.org"
                                        << "550 \"unknown\" user"
                                        << "2025-03-04T09:05:07Z,failed,c@example.org,\"550 \"\"unknown\"\" user\"\n";
    QTest::newRow("line feed is quoted") << nove << skipped << "d@example.org"
                                         << "riga uno\nriga due"
                                         << "2025-03-04T09:05:07Z,skipped,d@example.org,\"riga uno\nriga due\"\n";
    QTest::newRow("carriage return alone is not") << nove << failed << "e@example.org"
                                                  << "uno\rdue"
                                                  << "2025-03-04T09:05:07Z,failed,e@example.org,uno\rdue\n";
    QTest::newRow("address with a comma") << nove << test << "\"rossi, m\"@example.org"
                                          << ""
                                          << "2025-03-04T09:05:07Z,test,\"\"\"rossi, m\"\"@example.org\",\n";
    QTest::newRow("local time becomes UTC, milliseconds dropped")
        << QDateTime(QDate(2025, 7, 1), QTime(11, 30, 0, 987), QTimeZone(7200)) << sent << "f@example.org"
        << ""
        << "2025-07-01T09:30:00Z,sent,f@example.org,\n";
    QTest::newRow("accents stay as they are")
        << nove << skipped << "g@example.org"
        << "già inviata in questa campagna"
        << "2025-03-04T09:05:07Z,skipped,g@example.org,già inviata in questa campagna\n";
}

void TestReport::line() {
    QFETCH(QDateTime, data);
    QFETCH(int, esito);
    QFETCH(QString, email);
    QFETCH(QString, dettaglio);
    QFETCH(QString, riga);
    const QString testo = SendReport::testo({evento(data, SendStatus(esito), email, dettaglio)});
    QCOMPARE(testo, QStringLiteral("ora,esito,destinatario,dettaglio\n") + riga);
}

void TestReport::headerAndOrder() {
    QCOMPARE(SendReport::testo({}), QStringLiteral("ora,esito,destinatario,dettaglio\n"));
    const QString testo = SendReport::testo({evento(nove, SendStatus::sent, "z@example.org", ""),
                                             evento(nove.addSecs(1), SendStatus::failed, "a@example.org", "x")});
    QCOMPARE(testo, QStringLiteral("ora,esito,destinatario,dettaglio\n"
                                   "2025-03-04T09:05:07Z,sent,z@example.org,\n"
                                   "2025-03-04T09:05:08Z,failed,a@example.org,x\n"));
}

void TestReport::proposedName_data() {
    QTest::addColumn<QString>("campagna");
    QTest::addColumn<QString>("nome");
    QTest::newRow("named") << "Saldi di marzo"
                           << "rapporto-Saldi di marzo.csv";
    QTest::newRow("unnamed") << ""
                             << "rapporto-campagna.csv";
    QTest::newRow("slash left to the panel") << "Marzo/Aprile"
                                             << "rapporto-Marzo/Aprile.csv";
}

void TestReport::proposedName() {
    QFETCH(QString, campagna);
    QFETCH(QString, nome);
    QCOMPARE(SendReport::nomeProposto(campagna), nome);
}

void TestReport::writeIsUtf8WithoutMark() {
    QTemporaryDir cartella;
    const QString percorso = cartella.filePath("r.csv");
    QVERIFY(CSVText::scrivi(percorso, QStringLiteral("perché,€\n")));
    QFile file(percorso);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("perch\xc3\xa9,\xe2\x82\xac\n"));
}

void TestReport::writeReplacesAWholeFile() {
    QTemporaryDir cartella;
    const QString percorso = cartella.filePath("r.csv");
    QVERIFY(CSVText::scrivi(percorso, QString(10000, u'x')));
    QVERIFY(CSVText::scrivi(percorso, QStringLiteral("corto\n")));
    QFile file(percorso);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("corto\n"));
    QCOMPARE(QDir(cartella.path()).entryList(QDir::Files), QStringList{"r.csv"}); // no temporary left behind
}

void TestReport::failingWriteLeavesNothing() {
    QTemporaryDir cartella;
    const QString percorso = cartella.filePath("manca/r.csv");
    QVERIFY(!CSVText::scrivi(percorso, QStringLiteral("a\n")));
    QVERIFY(!QFile::exists(percorso));
}

BREZZARIO_TEST_GUILESS_MAIN(TestReport)
#include "tst_report.moc"
