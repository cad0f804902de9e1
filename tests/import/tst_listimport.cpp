#include "import/ListImport.h"
#include "records/Store.h"
#include "TempStore.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

PendingImport parcheggiato(const QString& testo, const QString& percorso = u"/tmp/clienti.csv"_s) {
    PendingImport pending;
    pending.url = percorso;
    pending.raw = CSVParser::parseRaw(testo.toUtf8());
    return pending;
}

QStringList indirizzi(const QList<ContactRow>& righe) {
    QStringList risultato;
    for (const ContactRow& riga : righe)
        risultato.append(riga.email);
    return risultato;
}

// n lines of three fields, the first holding the line number.
QString righeNumerate(int n) {
    QString testo;
    for (int i = 0; i < n; ++i)
        testo += u"r%1,b,c\n"_s.arg(i);
    return testo;
}

} // namespace

class TestListImport : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nomePredefinito_data() {
        QTest::addColumn<QString>("percorso");
        QTest::addColumn<QString>("nome");
        QTest::newRow("extension") << u"/dati/Elenco.csv"_s << u"Elenco"_s;
        QTest::newRow("only the last extension") << u"/dati/clienti.2026.csv"_s << u"clienti.2026"_s;
        QTest::newRow("no extension") << u"/dati/Elenco"_s << u"Elenco"_s;
        QTest::newRow("dot in the folder") << u"/dati.2026/Elenco"_s << u"Elenco"_s;
    }
    void nomePredefinito() {
        QFETCH(QString, percorso);
        QFETCH(QString, nome);
        QCOMPARE(ImportSheetState(parcheggiato(u"Email\na@b.it\n"_s, percorso)).nome, nome);
    }

    void importa_data() {
        QTest::addColumn<QString>("testo");
        QTest::addColumn<bool>("scarta");
        QTest::addColumn<bool>("rimuovi");
        QTest::addColumn<QString>("colonna");
        QTest::addColumn<qsizetype>("valide");
        QTest::addColumn<QStringList>("importati");

        const QString casi = u"Nome,Email\nA,Mario@Example.it \nB,mario@example.it\nC,\nD,anna@example.it\n"_s;
        QTest::newRow("case and trailing blank are one address")
            << casi << true << true << u"Email"_s << qsizetype(2)
            << QStringList{u"mario@example.it"_s, u"anna@example.it"_s};
        QTest::newRow("both options off keep every row")
            << casi << false << false << u"Email"_s << qsizetype(3)
            << QStringList{u"mario@example.it"_s, u"mario@example.it"_s, QString(), u"anna@example.it"_s};
        QTest::newRow("duplicates kept, invalid dropped")
            << casi << true << false << u"Email"_s << qsizetype(3)
            << QStringList{u"mario@example.it"_s, u"mario@example.it"_s, u"anna@example.it"_s};

        QTest::newRow("empty addresses are never duplicates, invalid ones are")
            << u"Nome,Email\nA,\nB,\nC,\nD,\nE,\nF,nonvalido\nG,NONVALIDO\n"_s << false << true << u"Email"_s
            << qsizetype(0) << QStringList{QString(), QString(), QString(), QString(), QString(), u"nonvalido"_s};

        QTest::newRow("short row: skipped by the count, empty address on import")
            << u"Nome,Città,Email\nA,Roma,a@example.it\nB\nC,Bari,c@example.it\n"_s << false << true << u"Email"_s
            << qsizetype(2) << QStringList{u"a@example.it"_s, QString(), u"c@example.it"_s};

        QTest::newRow("header on the last row gives an empty list")
            << u"Elenco 2026,,\n,,\nNome,Città,Email\n"_s << true << true << u"Email"_s << qsizetype(0)
            << QStringList{};

        // "a, a, a_2" makes two columns called a_2: the count reads the first, the import the later one.
        QTest::newRow("equal column names") << u"a,a,a_2\nx,primo@example.it,secondo@example.it\n"_s << true << true
                                            << u"a_2"_s << qsizetype(1) << QStringList{u"secondo@example.it"_s};

        QTest::newRow("no valid address still imports with the filter off")
            << u"Nome,Telefono\nA,0212345\nB,0698765\n"_s << false << true << u"Telefono"_s << qsizetype(0)
            << QStringList{u"0212345"_s, u"0698765"_s};
        QTest::newRow("no valid address and the filter on gives no rows")
            << u"Nome,Telefono\nA,0212345\nB,0698765\n"_s << true << true << u"Telefono"_s << qsizetype(0)
            << QStringList{};
    }
    void importa() {
        QFETCH(QString, testo);
        QFETCH(bool, scarta);
        QFETCH(bool, rimuovi);
        QFETCH(QString, colonna);
        QFETCH(qsizetype, valide);
        QFETCH(QStringList, importati);

        ImportSheetState stato(parcheggiato(testo));
        stato.scartaSenzaEmail = scarta;
        stato.rimuoviDuplicati = rimuovi;
        stato.colonnaEmail = colonna;
        QCOMPARE(stato.conteggioValide(), valide);

        TempStore archivio;
        const ContactList fatta = stato.importa(*archivio.store);
        archivio.reopen();
        const QList<ContactList> liste = archivio.store->all<ContactList>();
        QCOMPARE(liste.size(), 1);
        QCOMPARE(liste.first().id, fatta.id);
        QCOMPARE(liste.first().emailColumn, colonna);
        QCOMPARE(liste.first().columns, stato.tabellaCorrente().columns);
        QCOMPARE(indirizzi(archivio.store->rows(fatta.id)), importati);
    }

    // The row keeps every value as it stood in the file; only its e-mail is normalised.
    void importaTieneIValori() {
        ImportSheetState stato(parcheggiato(u"Nome;Email;Città;Nota\n\"Rossi, Mario\"; Mario@Example.IT ;Forlì;"
                                            u"\"Disse \"\"sì\"\"\n\tC:\\dati\x01\"\n"_s,
                                            u"/home/u/Documenti/clienti.2026.csv"_s));
        stato.nome = u"  Clienti  "_s;
        stato.tag = u" clienti 2026 "_s;
        stato.note = u"nota\nsu due righe"_s;
        TempStore archivio;
        const ContactList fatta = stato.importa(*archivio.store);
        archivio.reopen();
        const ContactList lista = *archivio.store->find<ContactList>(fatta.id);
        QCOMPARE(lista.name, u"Clienti"_s);
        QCOMPARE(lista.tag, u" clienti 2026 "_s);
        QCOMPARE(lista.note, u"nota\nsu due righe"_s);
        QCOMPARE(lista.sourceFileName, u"clienti.2026.csv"_s);
        QCOMPARE(lista.columns, (QStringList{u"Nome"_s, u"Email"_s, u"Città"_s, u"Nota"_s}));
        const QList<ContactRow> righe = archivio.store->rows(fatta.id);
        QCOMPARE(righe.size(), 1);
        QCOMPARE(righe.first().email, u"mario@example.it"_s);
        QCOMPARE(righe.first().values.value(u"Email"_s), u" Mario@Example.IT "_s);
        QCOMPARE(righe.first().values.value(u"Nome"_s), u"Rossi, Mario"_s);
        QCOMPARE(righe.first().values.value(u"Città"_s), u"Forlì"_s);
        // Quotes, line breaks, tabs, backslashes and control characters come back from the store as they went.
        QCOMPARE(righe.first().values.value(u"Nota"_s), u"Disse \"sì\"\n\tC:\\dati\x01"_s);
    }

    // A large file goes in by slices: an address repeated in a later slice is still a duplicate, and every row
    // ends up in the one save.
    void importaAFette() {
        QString testo = u"Email,Nome\n"_s;
        for (int i = 0; i < 20000; ++i)
            testo += u"p%1@example.it,Persona %2\n"_s.arg(i % 15000).arg(i);
        ImportSheetState stato(parcheggiato(testo));
        QCOMPARE(stato.conteggioValide(), qsizetype(15000));
        TempStore archivio;
        Importazione importazione(stato, *archivio.store);
        int fette = 1;
        while (!importazione.prossimaFetta()) {
            QVERIFY(importazione.fatte() < importazione.totale());
            ++fette;
        }
        QVERIFY(fette > 2);
        QCOMPARE(importazione.fatte(), qsizetype(20000));
        archivio.reopen();
        const QList<ContactRow> righe = archivio.store->rows(importazione.lista().id);
        QCOMPARE(righe.size(), 15000);
        QCOMPARE(righe.last().values.value(u"Nome"_s), u"Persona 14999"_s);
    }

    void rigaIntestazione_data() {
        QTest::addColumn<QString>("testo");
        QTest::addColumn<qsizetype>("rilevata");
        QTest::addColumn<QString>("colonnaRilevata");
        QTest::addColumn<qsizetype>("nuovaRiga");
        QTest::addColumn<QString>("colonnaDopo");

        const QString titolo = u"Elenco clienti;;\nNome;Posta;Telefono\nA;a@example.it;02\nB;b@example.it;06\n"_s;
        QTest::newRow("title row detected, then moved onto it")
            << titolo << qsizetype(1) << u"Posta"_s << qsizetype(0) << u"colonna2"_s;
        QTest::newRow("moved onto a data row: guessed by content")
            << u"Nome,Contatto\nA,a@example.it\nB,b@example.it\nC,c@example.it\n"_s << qsizetype(0) << u"Contatto"_s
            << qsizetype(1) << u"a@example.it"_s;
        QTest::newRow("out of range is clamped to the last row")
            << u"Nome,Email\nA,a@example.it\n"_s << qsizetype(0) << u"Email"_s << qsizetype(99) << u"A"_s;
    }
    void rigaIntestazione() {
        QFETCH(QString, testo);
        QFETCH(qsizetype, rilevata);
        QFETCH(QString, colonnaRilevata);
        QFETCH(qsizetype, nuovaRiga);
        QFETCH(QString, colonnaDopo);

        ImportSheetState stato(parcheggiato(testo));
        QCOMPARE(stato.rigaIntestazione(), rilevata);
        QCOMPARE(stato.colonnaEmail, colonnaRilevata);
        // A column picked by hand is forgotten when the header row moves, and kept when the options change.
        stato.colonnaEmail = stato.tabellaCorrente().columns.last();
        stato.rimuoviDuplicati = false;
        stato.scartaSenzaEmail = false;
        QCOMPARE(stato.colonnaEmail, stato.tabellaCorrente().columns.last());
        stato.setRigaIntestazione(nuovaRiga);
        QCOMPARE(stato.rigaIntestazione(), qMin(nuovaRiga, stato.massimaRigaIntestazione()));
        QCOMPARE(stato.colonnaEmail, colonnaDopo);
        QCOMPARE(stato.tabellaCorrente().rows.size(), stato.pending().raw.rows.size() - stato.rigaIntestazione() - 1);
    }

    void limiti_data() {
        QTest::addColumn<int>("righe");
        QTest::addColumn<qsizetype>("massima");
        QTest::addColumn<qsizetype>("anteprima");
        QTest::newRow("1 row") << 1 << qsizetype(0) << qsizetype(0);
        QTest::newRow("9 rows: 8 data rows all shown") << 9 << qsizetype(8) << qsizetype(8);
        QTest::newRow("10 rows") << 10 << qsizetype(9) << qsizetype(8);
        QTest::newRow("31 rows") << 31 << qsizetype(30) << qsizetype(8);
        QTest::newRow("32 rows") << 32 << qsizetype(30) << qsizetype(8);
        QTest::newRow("40 rows") << 40 << qsizetype(30) << qsizetype(8);
    }
    void limiti() {
        QFETCH(int, righe);
        QFETCH(qsizetype, massima);
        QFETCH(qsizetype, anteprima);
        ImportSheetState stato(parcheggiato(righeNumerate(righe)));
        QCOMPARE(stato.massimaRigaIntestazione(), massima);
        QCOMPARE(stato.righeAnteprima().size(), anteprima);
        if (anteprima > 0)
            QCOMPARE(stato.righeAnteprima().first().first(), u"r1"_s);
    }

    void importabile_data() {
        QTest::addColumn<QString>("nome");
        QTest::addColumn<QString>("colonna");
        QTest::addColumn<bool>("atteso");
        QTest::newRow("name and column") << u"Clienti"_s << u"Email"_s << true;
        QTest::newRow("name of blanks") << u"   \t"_s << u"Email"_s << false;
        QTest::newRow("empty name") << QString() << u"Email"_s << false;
        QTest::newRow("no column") << u"Clienti"_s << QString() << false;
    }
    void importabile() {
        QFETCH(QString, nome);
        QFETCH(QString, colonna);
        QFETCH(bool, atteso);
        ImportSheetState stato(parcheggiato(u"Email\nnonvalido\n"_s));
        stato.nome = nome;
        stato.colonnaEmail = colonna;
        QCOMPARE(stato.importabile(), atteso);
    }

    void leggiFile_data() {
        QTest::addColumn<QByteArray>("contenuto");
        QTest::addColumn<bool>("crea");
        QTest::addColumn<QString>("errore");
        QTest::addColumn<QString>("delimitatore");
        QTest::newRow("semicolons") << "Nome;Email\nA;a@example.it\n"_ba << true << QString() << u"punto e virgola"_s;
        QTest::newRow("tabs") << "Nome\tEmail\nA\ta@example.it\n"_ba << true << QString() << u"tabulazione"_s;
        QTest::newRow("bars") << "Nome|Email\nA|a@example.it\n"_ba << true << QString() << u"barra verticale"_s;
        QTest::newRow("binary") << "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"_ba << true
                                << u"Impossibile leggere il file: codifica non riconosciuta."_s << QString();
        QTest::newRow("UTF-16 with its NUL bytes")
            << QByteArray("\xFF\xFEN\0o\0m\0e\0;\0E\0m\0a\0i\0l\0\n\0A\0;\0a\0@\0b\0.\0i\0t\0\n\0", 38) << true
            << QString() << u"punto e virgola"_s;
        QTest::newRow("empty file") << QByteArray() << true << u"Il file non contiene righe."_s << QString();
        QTest::newRow("missing file") << QByteArray() << false << u"Impossibile aprire il file"_s << QString();
    }
    void leggiFile() {
        QFETCH(QByteArray, contenuto);
        QFETCH(bool, crea);
        QFETCH(QString, errore);
        QFETCH(QString, delimitatore);
        QTemporaryDir cartella;
        const QString percorso = cartella.filePath(u"lista.csv"_s);
        if (crea) {
            QFile file(percorso);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(contenuto);
        }
        const LetturaFile lettura = ::leggiFile(percorso);
        QVERIFY2(lettura.errore.startsWith(errore), qPrintable(lettura.errore));
        QCOMPARE(lettura.pending.has_value(), errore.isEmpty());
        if (lettura.pending) {
            QCOMPARE(lettura.pending->url, percorso);
            QCOMPARE(ImportSheetState(*lettura.pending).descrizioneDelimitatore(), delimitatore);
        }
    }
};

BREZZARIO_TEST_GUILESS_MAIN(TestListImport)
#include "tst_listimport.moc"
