// The work a user feels on the Lists screen.
//   bench_lists import FILE DIR   a file from bytes to a committed list in a new store under DIR
//   bench_lists screen DIR        a 100,000-row list's detail and search, and the master list with 20 such lists
// Prints "name value unit" lines; wall-clock times, median of a few runs where a run is cheap to repeat.
#include "import/ListImport.h"
#include "records/Store.h"
#include "screens/lists/ListDetailModel.h"
#include "screens/lists/ListeModel.h"
#include "screens/lists/ListRowView.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QListView>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

double peakMegabytes() {
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    return double(uso.ru_maxrss) / 1024.0;
}

void riga(const char* nome, double valore, const char* unita) {
    std::printf("%s %.3f %s\n", nome, valore, unita);
    std::fflush(stdout);
}

template <class F> double mediana(int volte, F&& lavoro) {
    std::vector<double> tempi;
    for (int i = 0; i < volte; ++i) {
        QElapsedTimer t;
        t.start();
        lavoro();
        tempi.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(tempi.begin(), tempi.end());
    return tempi[tempi.size() / 2];
}

int importa(const QString& file, const QString& cartella) {
    auto store = Store::open(cartella + QStringLiteral("/import.sqlite"));
    QElapsedTimer totale;
    totale.start();
    const double cpu = cpuSeconds();
    QElapsedTimer fase;
    fase.start();
    LetturaFile lettura = leggiFile(file);
    if (!lettura.pending) {
        std::fprintf(stderr, "%s\n", qPrintable(lettura.errore));
        return 1;
    }
    riga("import_read_parse", double(fase.restart()) / 1000.0, "s");
    ImportSheetState stato(std::move(*lettura.pending));
    const qsizetype valide = stato.conteggioValide();
    riga("import_sheet_open", double(fase.restart()) / 1000.0, "s");
    const ContactList lista = stato.importa(*store);
    riga("import_insert_commit", double(fase.restart()) / 1000.0, "s");
    riga("import_total", double(totale.elapsed()) / 1000.0, "s");
    riga("import_total_cpu", cpuSeconds() - cpu, "s");
    riga("import_rows", double(store->rowCount(lista.id)), "rows");
    riga("import_valid", double(valide), "rows");
    riga("import_peak_rss", peakMegabytes(), "MB");
    return 0;
}

// Fills a store with `liste` lists of `righe` rows each, straight in SQL: a benchmark's setup need not take
// the import's road, and 2 million rows that way would take minutes.
void riempi(const QString& percorso, int liste, int righe) {
    Store::open(percorso).reset(); // makes the schema
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("riempi"));
        db.setDatabaseName(percorso);
        db.open();
        QSqlQuery q(db);
        q.exec(QStringLiteral("PRAGMA journal_mode = WAL"));
        db.transaction();
        for (int l = 0; l < liste; ++l) {
            q.exec(QStringLiteral("INSERT INTO ContactList (name, importedAt, sourceFileName, columns, emailColumn, "
                                  "note, tag, isArchived) VALUES ('Clienti %1', %2, 'clienti%1.csv', "
                                  "'[\"Nome\",\"Cognome\",\"Email\",\"Città\",\"Note\"]', 'Email', '', "
                                  "'clienti 2026', %3)")
                       .arg(l)
                       .arg(1'700'000'000'000LL + l * 86'400'000LL)
                       .arg(l >= liste - 3 ? 1 : 0));
            const qint64 id = q.lastInsertId().toLongLong();
            // Every seventh address is broken; a third of the rows were contacted in the first lists.
            q.exec(QStringLiteral(
                       "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                       "INSERT INTO ContactRow (listId, \"values\", email, isExcluded, inviateCount, erroriCount, "
                       "saltateCount, primoInvio, ultimoInvio, ultimoEsitoRaw, ultimoDettaglio, ultimaCampagna, "
                       "ultimoOggetto) SELECT %2, json_object('Nome', 'Mario' || i, 'Cognome', "
                       "CASE i % 3 WHEN 0 THEN 'Rossi' WHEN 1 THEN 'Bianchi' ELSE 'Verdi' END, 'Email', "
                       "'persona' || i || CASE WHEN i % 7 = 0 THEN '' ELSE '@example.it' END, 'Città', 'Forlì', "
                       "'Note', 'Cliente dal 2019; preferisce essere contattato di mattina'), "
                       "'persona' || i || CASE WHEN i % 7 = 0 THEN '' ELSE '@example.it' END, 0, "
                       "CASE WHEN %3 AND i % 3 = 0 THEN 1 ELSE 0 END, 0, 0, NULL, NULL, "
                       "CASE WHEN %3 AND i % 3 = 0 THEN 'sent' ELSE '' END, '', '', '' FROM n")
                       .arg(righe - 1)
                       .arg(id)
                       .arg(l < 5 ? 1 : 0));
        }
        db.commit();
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("riempi"));
}

int schermo(const QString& cartella) {
    const QString percorso = cartella + QStringLiteral("/schermo.sqlite");
    QElapsedTimer t;
    t.start();
    riempi(percorso, 20, 100'000);
    std::fprintf(stderr, "setup %.1f s\n", double(t.elapsed()) / 1000.0);
    auto store = Store::open(percorso);
    const RecordId prima = store->all<ContactList>().first().id;

    // Opening the detail: what blocks the interface, then the rows read, counted and made searchable beside it.
    riga("detail_open_blocking_100k", mediana(5, [&] { ListDetailModel m(*store, prima); }), "ms");
    riga("detail_rows_ready_100k",
         mediana(3,
                 [&] {
                     ListDetailModel m(*store, prima);
                     if (!QTest::qWaitFor([&] { return m.caricato(); }, 60000))
                         std::abort();
                 }),
         "ms");
    ListDetailModel modello(*store, prima);
    if (!QTest::qWaitFor([&] { return modello.caricato(); }, 60000))
        return 1;
    // Typing "rossi" one key at a time, as a user does.
    const QString parola = QStringLiteral("rossi");
    std::vector<double> tasti;
    for (int giro = 0; giro < 3; ++giro) {
        for (int i = 1; i <= parola.size(); ++i) {
            QElapsedTimer tasto;
            tasto.start();
            modello.setRicerca(parola.left(i));
            tasti.push_back(double(tasto.nsecsElapsed()) / 1e6);
        }
        modello.setRicerca(QString());
    }
    std::sort(tasti.begin(), tasti.end());
    riga("search_keystroke_median_100k", tasti[tasti.size() / 2], "ms");
    riga("search_keystroke_worst_100k", tasti.back(), "ms");
    // The same reading on the interface's thread, as with a store in memory.
    riga("detail_rows_on_ui_thread_100k", mediana(3, [&] { store->righeDettaglio(prima); }), "ms");

    // The master list with 20 lists of 100,000 rows: what blocks the interface, then every list's progress read
    // beside it, then a drawing.
    riga("master_blocking_20x100k", mediana(3, [&] { ListeModel m(*store); }), "ms");
    riga("master_progress_ready_20x100k",
         mediana(3,
                 [&] {
                     ListeModel m(*store);
                     if (!QTest::qWaitFor([&] { return m.avanzamentoPronto(); }, 60000))
                         std::abort();
                 }),
         "ms");
    riga("master_progress_on_ui_thread_20x100k", mediana(3, [&] { store->avanzamentoListe(); }), "ms");
    ListeModel liste(*store);
    if (!QTest::qWaitFor([&] { return liste.avanzamentoPronto(); }, 60000))
        return 1;
    QListView vista;
    vista.setModel(&liste);
    vista.setItemDelegate(new ListRowView(&vista));
    vista.resize(270, 900);
    vista.show();
    if (!QTest::qWaitForWindowExposed(&vista))
        return 1;
    riga("master_paint_20_rows", mediana(5, [&] { vista.grab(); }), "ms");
    riga("screen_peak_rss", peakMegabytes(), "MB");
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    Symbols::preparaTemaIcone();
    if (argc >= 4 && QByteArray(argv[1]) == "import")
        return importa(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    if (argc >= 3 && QByteArray(argv[1]) == "screen")
        return schermo(QString::fromLocal8Bit(argv[2]));
    std::fprintf(stderr, "usage: bench_lists import FILE DIR | bench_lists screen DIR\n");
    return 2;
}
