#include "app/BrezzarioApp.h"
#include "records/CSVText.h"
#include "screens/lists/ImportSheet.h"
#include "screens/lists/ListDetailModel.h"
#include "screens/lists/ListDetailView.h"
#include "screens/lists/ListeModel.h"
#include "screens/lists/ListsView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Dialoghi.h"

#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

QString fixture(const QString& nome) {
    return QStringLiteral(CSV_FIXTURES_DIR) + u'/' + nome;
}

// A real store file and the real screen on it, shown at a desktop size.
struct Banco {
    TempStore archivio;
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *archivio.store};
    ListsView vista{ambiente};
    Banco() {
        vista.resize(1200, 760);
        vista.show();
        QVERIFY(QTest::qWaitForWindowExposed(&vista));
    }
    Store& store() { return *archivio.store; }

    // A stored list whose rows are given as (address, times contacted, a value of a second column).
    RecordId lista(const QString& nome, const QList<std::tuple<QString, int, QString>>& righe,
                   const QDateTime& data = QDateTime::currentDateTimeUtc()) {
        ContactList lista(nome, nome + u".csv"_s, {u"Email"_s, u"Nome"_s}, u"Email"_s);
        lista.importedAt = data;
        store().insert(lista);
        QList<ContactRow> fatte;
        for (const auto& [email, contattata, nomeRiga] : righe) {
            ContactRow riga({{u"Email"_s, email}, {u"Nome"_s, nomeRiga}}, email);
            riga.inviateCount = contattata;
            if (contattata > 0)
                riga.ultimoEsitoRaw = u"sent"_s;
            fatte.append(riga);
        }
        store().insertRows(lista.id, fatte);
        store().save();
        // The master list reads the store again by itself, a moment after the change.
        [&] { QTRY_VERIFY(vista.modello().rigaDi(lista.id) >= 0); }();
        return lista.id;
    }

    ImportSheet* apri(const QString& percorso) {
        Dialoghi::rispondiApertura([percorso] { return percorso; });
        QTest::mouseClick(vista.findChild<QPushButton*>(u"importaCSV"_s), Qt::LeftButton);
        Dialoghi::rispondiApertura({});
        if (!QTest::qWaitFor([this] { return vista.foglio() != nullptr && vista.foglio()->isVisible(); }))
            return nullptr;
        return vista.foglio();
    }

    // The detail of a list, once its rows have arrived.
    ListDetailView* dettaglio(RecordId lista) {
        vista.seleziona(lista);
        ListDetailView* mostrato = vista.dettaglio();
        if (!mostrato || !QTest::qWaitFor([mostrato] { return mostrato->modello().caricato(); }))
            return nullptr;
        return mostrato;
    }
};

QStringList statiDi(const ListeModel& modello) {
    QStringList stati;
    for (int i = 0; i < modello.rowCount(); ++i) {
        const ListeModel::Voce& voce = modello.voce(i);
        stati.append(voce.intestazione ? voce.titolo : voce.lista.name + u'=' + simbolo(voce.stato()));
    }
    return stati;
}

void scegliRighe(QTableView* tabella, const QList<int>& righe) {
    tabella->clearSelection();
    for (int riga : righe)
        tabella->selectionModel()->select(tabella->model()->index(riga, 1),
                                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

int rigaCon(const ListDetailModel& modello, int colonna, const QString& valore) {
    for (int r = 0; r < modello.rowCount(); ++r)
        if (modello.index(r, colonna).data().toString() == valore)
            return r;
    return -1;
}

} // namespace

class TestLists : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { BrezzarioApp::preparaApplicazione(); }
    void cleanup() {
        Dialoghi::rispondiApertura({});
        Dialoghi::rispondiSalvataggio({});
        Dialoghi::osservaAvvisi({});
    }

    void importaFile_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("nome");
        QTest::addColumn<QString>("colonnaEmail");
        QTest::addColumn<int>("righe");
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("colonna");
        QTest::addColumn<QString>("valore");
        QTest::addColumn<QString>("fatti");
        QTest::newRow("title row") << u"title-row.csv"_s << u"title-row"_s << u"Email"_s << 2
                                   << u"anna@rossibianchi.it"_s << u"Ragione sociale"_s
                                   << u"Rossi, Bianchi & Associati"_s
                                   << u"2 righe · 5 colonne · separatore punto e virgola · UTF-8"_s;
        QTest::newRow("Windows-1252") << u"excel-windows1252.csv"_s << u"excel-windows1252"_s << u"Email"_s << 3
                                      << u"jose.peru@example.it"_s << u"Note"_s << u"Caffè “speciale”"_s
                                      << u"3 righe · 4 colonne · separatore punto e virgola · Windows-1252"_s;
        QTest::newRow("UTF-16 tabs") << u"excel-unicode-text.txt"_s << u"excel-unicode-text"_s << u"Email"_s << 3
                                     << u"eleni@example.gr"_s << u"Città"_s << u"Αθήνα"_s
                                     << u"3 righe · 3 colonne · separatore tabulazione · UTF-16"_s;
        QTest::newRow("BOM and semicolons")
            << u"excel-utf8-bom-semicolon.csv"_s << u"excel-utf8-bom-semicolon"_s << u"E-mail"_s << 3
            << u"niccolo.bianchi@example.it"_s << u"Città"_s << u"Forlì; Cesena"_s
            << u"3 righe · 5 colonne · separatore punto e virgola · UTF-8"_s;
        QTest::newRow("line breaks in quotes")
            << u"quoted-linebreaks.csv"_s << u"quoted-linebreaks"_s << u"Email"_s << 3 << u"mario@example.it"_s
            << u"Indirizzo"_s << u"Via Roma, 1\n20100 Milano"_s
            << u"3 righe · 4 colonne · separatore virgola · UTF-8"_s;
        QTest::newRow("CR only") << u"mac-cr-only.csv"_s << u"mac-cr-only"_s << u"Email"_s << 2 << u"anna@example.it"_s
                                 << u"Company"_s << u"Verdi, Srl"_s
                                 << u"2 righe · 3 colonne · separatore virgola · UTF-8"_s;
    }
    void importaFile() {
        QFETCH(QString, file);
        QFETCH(QString, nome);
        QFETCH(QString, colonnaEmail);
        QFETCH(int, righe);
        QFETCH(QString, email);
        QFETCH(QString, colonna);
        QFETCH(QString, valore);
        QFETCH(QString, fatti);
        Banco banco;
        ImportSheet* foglio = banco.apri(fixture(file));
        QVERIFY(foglio);
        QCOMPARE(foglio->size(), QSize(760, 800));
        QCOMPARE(foglio->findChild<QLineEdit*>(u"nomeLista"_s)->text(), nome);
        QCOMPARE(foglio->findChild<QComboBox*>(u"colonnaEmail"_s)->currentText(), colonnaEmail);
        QCOMPARE(foglio->findChild<QLabel*>(u"fattiFile"_s)->text(), fatti);
        QCOMPARE(foglio->findChild<QLabel*>(u"piede"_s)->text(),
                 u"Verranno importati %1 destinatari validi."_s.arg(righe));
        TestSupport::salvaSchermata(foglio, u"lists-sheet-"_s + QFileInfo(file).completeBaseName());

        QTest::mouseClick(foglio->findChild<QPushButton*>(u"importa"_s), Qt::LeftButton);
        QTRY_VERIFY(!banco.vista.foglio());
        banco.archivio.reopen();
        const QList<ContactList> liste = banco.store().all<ContactList>();
        QCOMPARE(liste.size(), 1);
        QCOMPARE(liste.first().name, nome);
        QCOMPARE(liste.first().sourceFileName, file);
        QCOMPARE(liste.first().emailColumn, colonnaEmail);
        const QList<ContactRow> salvate = banco.store().rows(liste.first().id);
        QCOMPARE(salvate.size(), righe);
        const auto trovata =
            std::find_if(salvate.cbegin(), salvate.cend(), [&](const ContactRow& riga) { return riga.email == email; });
        QVERIFY(trovata != salvate.cend());
        QCOMPARE(trovata->values.value(colonna), valore);
    }

    // After an import the new list is selected and shown.
    void importaSelezionaLaLista() {
        Banco banco;
        ImportSheet* foglio = banco.apri(fixture(u"title-row.csv"_s));
        QVERIFY(foglio);
        foglio->findChild<QLineEdit*>(u"nomeLista"_s)->setText(u"   "_s);
        QVERIFY(!foglio->findChild<QPushButton*>(u"importa"_s)->isEnabled());
        foglio->findChild<QLineEdit*>(u"nomeLista"_s)->setText(u"Clienti 2026"_s);
        foglio->findChild<QLineEdit*>(u"contrassegno"_s)->setText(u"clienti 2026"_s);
        QTest::mouseClick(foglio->findChild<QPushButton*>(u"importa"_s), Qt::LeftButton);
        QTRY_VERIFY(banco.vista.dettaglio());
        QCOMPARE(banco.vista.dettaglio()->findChild<QLineEdit*>(u"nomeLista"_s)->text(), u"Clienti 2026"_s);
        // The rows are read beside the interface: until they arrive, the count says so rather than 0.
        if (!banco.vista.dettaglio()->modello().caricato())
            QCOMPARE(banco.vista.dettaglio()->findChild<QLabel*>(u"conteggio"_s)->text(),
                     u"Lettura dei destinatari…"_s);
        QTRY_COMPARE(banco.vista.dettaglio()->findChild<QLabel*>(u"conteggio"_s)->text(),
                     u"2 destinatari validi su 2"_s);
        TestSupport::salvaSchermata(&banco.vista, u"lists-after-import"_s);
    }

    void fileNonLeggibile_data() {
        QTest::addColumn<QByteArray>("contenuto");
        QTest::addColumn<QString>("messaggio");
        QImage immagine(64, 64, QImage::Format_RGB32);
        immagine.fill(Qt::red);
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        immagine.save(&buffer, "PNG");
        QTest::newRow("picture") << png << u"Impossibile leggere il file: codifica non riconosciuta."_s;
        QTest::newRow("empty") << QByteArray() << u"Il file non contiene righe."_s;
    }
    void fileNonLeggibile() {
        QFETCH(QByteArray, contenuto);
        QFETCH(QString, messaggio);
        QTemporaryDir cartella;
        const QString percorso = cartella.filePath(u"clienti.csv"_s);
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contenuto);
        file.close();
        QStringList avvisi;
        Dialoghi::osservaAvvisi([&](const QString& titolo, const QString& testo) { avvisi << titolo << testo; });
        Banco banco;
        QVERIFY(!banco.apri(percorso));
        QTRY_COMPARE(avvisi, (QStringList{u"Importazione non riuscita"_s, messaggio}));
        QVERIFY(!banco.vista.foglio());
        QVERIFY(banco.store().all<ContactList>().isEmpty());
        QVERIFY(banco.vista.findChild<QPushButton*>(u"importaCSV"_s)->isEnabled());
    }

    void rigaIntestazione_data() {
        QTest::addColumn<int>("righe");
        QTest::addColumn<int>("massimo");
        QTest::addColumn<QString>("testo");
        QTest::addColumn<QString>("colonna");
        // With data rows below, the address column is found by content; with none, the first column stays.
        QTest::newRow("40 rows") << 40 << 31 << u"riga 31"_s << u"p30@example.it"_s;
        QTest::newRow("10 rows") << 10 << 10 << u"riga 10"_s << u"Persona 9"_s;
    }
    void rigaIntestazione() {
        QFETCH(int, righe);
        QFETCH(int, massimo);
        QFETCH(QString, testo);
        QFETCH(QString, colonna);
        QTemporaryDir cartella;
        const QString percorso = cartella.filePath(u"lunga.csv"_s);
        QString contenuto = u"Nome,Email,Città\n"_s;
        for (int i = 1; i < righe; ++i)
            contenuto += u"Persona %1,p%1@example.it,Roma\n"_s.arg(i);
        QVERIFY(CSVText::scrivi(percorso, contenuto));
        Banco banco;
        ImportSheet* foglio = banco.apri(percorso);
        QVERIFY(foglio);
        auto* stepper = foglio->findChild<QSpinBox*>(u"rigaIntestazione"_s);
        QCOMPARE(stepper->text(), u"riga 1"_s);
        QCOMPARE(stepper->maximum(), massimo);
        stepper->setValue(stepper->maximum() + 5);
        QCOMPARE(stepper->text(), testo);
        // A data row as header: the column is chosen again and the preview follows.
        QCOMPARE(foglio->stato().rigaIntestazione(), qsizetype(massimo - 1));
        QCOMPARE(foglio->findChild<QComboBox*>(u"colonnaEmail"_s)->currentText(), colonna);
        QCOMPARE(foglio->findChild<QLabel*>(u"colonneTrovate"_s)->text(),
                 u"Persona %1 · p%1@example.it · Roma"_s.arg(massimo - 1));
        TestSupport::salvaSchermata(foglio, u"lists-sheet-header-row-"_s + QString::number(righe));
        QTest::mouseClick(foglio->findChild<QPushButton*>(u"annulla"_s), Qt::LeftButton);
        QTRY_VERIFY(!banco.vista.foglio());
        QVERIFY(banco.store().all<ContactList>().isEmpty());
    }

    void statiDelleListe_data() {
        QTest::addColumn<QList<int>>("escluse");
        QTest::addColumn<QString>("stato");
        // Rows: a (contacted), b (contacted), c, d (not a valid address, contacted).
        QTest::newRow("nothing excluded") << QList<int>{} << u"checkmark.circle"_s;
        QTest::newRow("the uncontacted excluded") << QList<int>{2} << u"checkmark.circle.fill"_s;
        QTest::newRow("every valid row excluded") << QList<int>{0, 1, 2} << u"exclamationmark.circle"_s;
        QTest::newRow("the contacted excluded") << QList<int>{0, 1} << u"circle"_s;
    }
    void statiDelleListe() {
        QFETCH(QList<int>, escluse);
        QFETCH(QString, stato);
        Banco banco;
        const QDateTime ieri = QDateTime::currentDateTimeUtc().addDays(-1);
        const RecordId inCorso = banco.lista(u"Clienti"_s, {{u"a@example.it"_s, 2, u"Anna"_s},
                                                            {u"b@example.it"_s, 1, u"Bruno"_s},
                                                            {u"c@example.it"_s, 0, u"Carla"_s},
                                                            {u"non valido"_s, 3, u"Dario"_s}});
        banco.lista(u"Fornitori"_s, {{u"f@example.it"_s, 0, u"Franco"_s}}, ieri);
        banco.lista(u"Vecchia"_s, {{u"v@example.it"_s, 1, u"Vera"_s}}, ieri.addDays(-1));
        banco.lista(u"Senza indirizzi"_s, {{QString(), 1, u"Zeno"_s}}, ieri.addDays(-2));
        banco.vista.seleziona(banco.store().all<ContactList>().at(2).id);
        std::unique_ptr<QMenu> menu(banco.vista.creaMenu());
        QVERIFY(menu);
        QCOMPARE(menu->actions().first()->text(), u"Archivia"_s);
        menu->actions().first()->trigger();
        QTRY_COMPARE(statiDi(banco.vista.modello()),
                     (QStringList{u"Attive"_s, u"Clienti=checkmark.circle"_s, u"Fornitori=circle"_s,
                                  u"Senza indirizzi=exclamationmark.circle"_s, u"Archiviate"_s,
                                  u"Vecchia=checkmark.circle.fill"_s}));

        ListDetailView* dettaglio = banco.dettaglio(inCorso);
        QVERIFY(dettaglio);
        auto* tabella = dettaglio->findChild<QTableView*>(u"destinatari"_s);
        scegliRighe(tabella, escluse);
        if (!escluse.isEmpty())
            QTest::mouseClick(dettaglio->findChild<QPushButton*>(u"escludi"_s), Qt::LeftButton);
        QTRY_COMPARE(statiDi(banco.vista.modello()).at(1), u"Clienti="_s + stato);
        QCOMPARE(banco.vista.selezione(), inCorso);
        TestSupport::salvaSchermata(&banco.vista, u"lists-master-"_s +
                                                      QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-'));
    }

    void eliminaLaSelezionata() {
        Banco banco;
        const RecordId prima = banco.lista(u"Prima"_s, {{u"a@example.it"_s, 0, u"Anna"_s}});
        const RecordId seconda = banco.lista(u"Seconda"_s, {{u"b@example.it"_s, 0, u"Bruno"_s}});
        banco.vista.seleziona(seconda);
        std::unique_ptr<QMenu> menu(banco.vista.creaMenu());
        menu->findChild<QAction*>(u"elimina"_s)->trigger();
        QCOMPARE(banco.vista.selezione(), RecordId(0));
        QTRY_COMPARE(banco.vista.modello().rowCount(), 2);
        QCOMPARE(banco.store().rows(seconda).size(), 0);
        QCOMPARE(banco.store().all<ContactList>().first().id, prima);
        QVERIFY(banco.vista.findChild<QWidget*>(u"nessunaLista"_s)->isVisible());
        banco.vista.seleziona(0);
        QVERIFY(!std::unique_ptr<QMenu>(banco.vista.creaMenu()));
    }

    void ricercaConSelezioneNascosta() {
        Banco banco;
        const RecordId id = banco.lista(u"Clienti"_s, {{u"anna@example.it"_s, 0, u"Anna Rossi"_s},
                                                       {u"bruno@example.it"_s, 0, u"Bruno Verdi"_s},
                                                       {u"carla@example.it"_s, 0, u"Carla Rossini"_s},
                                                       {u"dario@example.it"_s, 0, u"Dario Neri"_s}});
        ListDetailView* dettaglio = banco.dettaglio(id);
        auto* tabella = dettaglio->findChild<QTableView*>(u"destinatari"_s);
        const ListDetailModel& modello = dettaglio->modello();
        scegliRighe(tabella, {rigaCon(modello, 1, u"bruno@example.it"_s)});
        // The search reads every column: "ROSS" is only in the names, and hides Bruno's selected row.
        QTest::keyClicks(dettaglio->findChild<QLineEdit*>(u"ricerca"_s), u"ROSS"_s);
        QTRY_COMPARE(modello.rowCount(), 2);
        QCOMPARE(modello.index(0, 2).data().toString(), u"Anna Rossi"_s);
        QCOMPARE(modello.index(1, 2).data().toString(), u"Carla Rossini"_s);
        // Ctrl-click adds a shown row to the selection without dropping the hidden one.
        const QRect cella = tabella->visualRect(modello.index(1, 2));
        QTest::mouseClick(tabella->viewport(), Qt::LeftButton, Qt::ControlModifier, cella.center());
        // The hidden row is counted: the commands act on it too.
        QCOMPARE(dettaglio->findChild<QLabel*>(u"selezionate"_s)->text(), u"2 selezionate"_s);
        TestSupport::salvaSchermata(dettaglio, u"lists-detail-search"_s);
        QTest::mouseClick(dettaglio->findChild<QPushButton*>(u"escludi"_s), Qt::LeftButton);
        QStringList escluse;
        for (const ContactRow& riga : banco.store().rows(id))
            if (riga.isExcluded)
                escluse.append(riga.email);
        QCOMPARE(escluse, (QStringList{u"bruno@example.it"_s, u"carla@example.it"_s}));
        QTRY_COMPARE(dettaglio->findChild<QLabel*>(u"conteggio"_s)->text(), u"2 destinatari validi su 4"_s);
        QCOMPARE(modello.index(rigaCon(modello, 1, u"carla@example.it"_s), 0).data(Qt::ToolTipRole).toString(),
                 u"Esclusa manualmente"_s);
        // Clearing the search brings the hidden row back, still selected.
        dettaglio->findChild<QLineEdit*>(u"ricerca"_s)->clear();
        QTRY_COMPARE(modello.rowCount(), 4);
        QVERIFY(tabella->selectionModel()->isRowSelected(rigaCon(modello, 1, u"bruno@example.it"_s)));
        QCOMPARE(tabella->selectionModel()->selectedRows().size(), 2);
    }

    void esclusiGlobali() {
        Banco banco;
        const RecordId id =
            banco.lista(u"Clienti"_s, {{u"Anna@Example.it"_s, 0, u"Anna"_s}, {u"senza chiocciola"_s, 0, u"Bruno"_s}});
        ListDetailView* dettaglio = banco.dettaglio(id);
        auto* tabella = dettaglio->findChild<QTableView*>(u"destinatari"_s);
        auto* globali = dettaglio->findChild<QPushButton*>(u"esclusiGlobali"_s);
        QVERIFY(!globali->isEnabled());
        scegliRighe(tabella, {0, 1});
        QVERIFY(globali->isEnabled());
        QTest::mouseClick(globali, Qt::LeftButton);
        // Renamed in between: the second time finds the address already there and leaves its reason.
        auto* nome = dettaglio->findChild<QLineEdit*>(u"nomeLista"_s);
        nome->selectAll();
        QTest::keyClicks(nome, u"Altro nome"_s);
        QTest::mouseClick(globali, Qt::LeftButton);
        const QList<Suppression> esclusi = banco.store().all<Suppression>();
        QCOMPARE(esclusi.size(), 1);
        QCOMPARE(esclusi.first().email, u"anna@example.it"_s);
        QCOMPARE(esclusi.first().reason, u"aggiunta dalla lista Clienti"_s);
        banco.archivio.reopen();
        QCOMPARE(banco.archivio.store->find<ContactList>(id)->name, u"Altro nome"_s);
    }

    void colonnaEmail() {
        Banco banco;
        const RecordId id =
            banco.lista(u"Clienti"_s, {{u"a@example.it"_s, 0, u"Anna"_s}, {u"b@example.it"_s, 0, u"Bruno"_s}});
        ListDetailView* dettaglio = banco.dettaglio(id);
        auto* colonna = dettaglio->findChild<QComboBox*>(u"colonnaEmail"_s);
        auto* conteggio = dettaglio->findChild<QLabel*>(u"conteggio"_s);
        QCOMPARE(conteggio->text(), u"2 destinatari validi su 2"_s);
        colonna->activated(colonna->findText(u"Nome"_s));
        QTRY_COMPARE(conteggio->text(), u"0 destinatari validi su 2"_s);
        QCOMPARE(banco.store().rows(id).first().email, u"anna"_s);
        colonna->activated(colonna->findText(u"Email"_s));
        QTRY_COMPARE(conteggio->text(), u"2 destinatari validi su 2"_s);
        QCOMPARE(banco.store().find<ContactList>(id)->emailColumn, u"Email"_s);
    }

    void esporta() {
        Banco banco;
        const RecordId id = banco.lista(
            u"Clienti"_s, {{u"b@example.it"_s, 1, u"Rossi, Mario"_s}, {u"a@example.it"_s, 0, u"Anna \"Nina\" Neri"_s}});
        QTemporaryDir cartella;
        const QString percorso = cartella.filePath(u"uscita.csv"_s);
        QString proposto;
        Dialoghi::rispondiSalvataggio([&](const QString& nome) {
            proposto = nome;
            return percorso;
        });
        ListDetailView* dettaglio = banco.dettaglio(id);
        QTest::keyClicks(dettaglio->findChild<QLineEdit*>(u"ricerca"_s), u"Rossi"_s);
        QTRY_COMPARE(dettaglio->modello().rowCount(), 1);
        QTest::mouseClick(dettaglio->findChild<QPushButton*>(u"esporta"_s), Qt::LeftButton);
        QCOMPARE(proposto, u"Clienti.csv"_s);
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray letto = file.readAll();
        QVERIFY(!letto.startsWith("\xEF\xBB\xBF"));
        const QList<QByteArray> righe = letto.split('\n');
        QCOMPARE(righe.size(), 4); // head, two rows, and the empty text after the last line feed
        QCOMPARE(righe.at(0), "Email,Nome,lumacco_inviate,lumacco_errori,lumacco_saltate,lumacco_primo_invio,"
                              "lumacco_ultimo_invio,lumacco_ultimo_esito,lumacco_ultima_campagna,"
                              "lumacco_ultimo_oggetto,lumacco_ultimo_dettaglio");
        QCOMPARE(righe.at(1), "a@example.it,\"Anna \"\"Nina\"\" Neri\",0,0,0,,,,,,");
        QCOMPARE(righe.at(2), "b@example.it,\"Rossi, Mario\",1,0,0,,,Inviata,,,");
        QVERIFY(righe.at(3).isEmpty());
    }

    void trascinaFile() {
        Banco banco;
        QMimeData dati;
        dati.setUrls({QUrl::fromLocalFile(fixture(u"excel-windows1252.csv"_s))});
        QDragEnterEvent entra(QPoint(300, 300), Qt::CopyAction, &dati, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&banco.vista, &entra);
        QVERIFY(entra.isAccepted());
        QDropEvent lascia(QPointF(300, 300), Qt::CopyAction, &dati, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&banco.vista, &lascia);
        QTRY_VERIFY(banco.vista.foglio() && banco.vista.foglio()->isVisible());
        QCOMPARE(banco.vista.foglio()->findChild<QLineEdit*>(u"nomeLista"_s)->text(), u"excel-windows1252"_s);
        TestSupport::salvaSchermata(banco.vista.foglio(), u"lists-sheet-dropped"_s);

        // Two files at once are not one list: the drag is refused.
        QMimeData due;
        due.setUrls(
            {QUrl::fromLocalFile(fixture(u"title-row.csv"_s)), QUrl::fromLocalFile(fixture(u"mac-cr-only.csv"_s))});
        QDragEnterEvent ancora(QPoint(300, 300), Qt::CopyAction, &due, Qt::LeftButton, Qt::NoModifier);
        ancora.ignore();
        QCoreApplication::sendEvent(&banco.vista, &ancora);
        QVERIFY(!ancora.isAccepted());
    }
};

BREZZARIO_TEST_MAIN(TestLists)
#include "tst_lists.moc"
