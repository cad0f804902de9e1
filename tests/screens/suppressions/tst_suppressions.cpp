#include "screens/suppressions/ImportaEsclusi.h"
#include "screens/suppressions/RiquadroMotivo.h"
#include "screens/suppressions/SuppressionModel.h"
#include "screens/suppressions/SuppressionView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Dialoghi.h"
#include "ui/PresentazioneMotivo.h"
#include "ui/Symbols.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>

namespace {

const QDateTime inizio = QDateTime(QDate(2025, 3, 4), QTime(9, 5, 7), Qt::UTC);

using Voci = QList<QPair<QString, QString>>; // address, reason

struct Banco {
    TempStore archivio;
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *archivio.store};
    Store& store = *archivio.store;
    std::unique_ptr<SuppressionView> vista;

    explicit Banco(const Voci& voci = {}) {
        // Older entries first, so that the list shows them newest first in reverse.
        for (qsizetype i = 0; i < voci.size(); ++i) {
            Suppression esclusa(voci.at(i).first, voci.at(i).second);
            esclusa.createdAt = inizio.addSecs(i * 60);
            store.insert(esclusa);
        }
        store.save();
    }
    SuppressionView& apri() {
        vista = std::make_unique<SuppressionView>(ambiente);
        vista->resize(1280, 640);
        vista->show();
        // The store tells of the changes made before the screen was there; let that pass first.
        QCoreApplication::processEvents();
        vista->rinfrescaOra();
        return *vista;
    }
    template <class T> T* pezzo(const char* nome) const { return vista->findChild<T*>(QLatin1String(nome)); }
    SuppressionModel& modello() const { return *vista->modello(); }
    QMap<QString, QString> inArchivio() const {
        QMap<QString, QString> voci;
        for (const Suppression& esclusa : archivio.store->all<Suppression>())
            voci.insert(esclusa.email, esclusa.reason);
        return voci;
    }
    // The visible tiles, in their order, as "label quanti".
    QStringList riquadri() const {
        QList<RiquadroMotivo*> visibili;
        for (RiquadroMotivo* riquadro : vista->findChildren<RiquadroMotivo*>())
            if (riquadro->isVisible())
                visibili.append(riquadro);
        std::sort(visibili.begin(), visibili.end(), [](RiquadroMotivo* a, RiquadroMotivo* b) {
            return a->y() != b->y() ? a->y() < b->y() : a->x() < b->x();
        });
        QStringList testi;
        for (RiquadroMotivo* riquadro : visibili)
            testi.append(QStringLiteral("%1 %2").arg(riquadro->dati().titolo).arg(riquadro->dati().quanti));
        return testi;
    }
    QStringList indirizziMostrati() const {
        QStringList indirizzi;
        for (int riga = 0; riga < modello().rowCount(); ++riga)
            indirizzi.append(modello().index(riga, SuppressionModel::indirizzo).data().toString());
        return indirizzi;
    }
    void importa(const QString& percorso) {
        Dialoghi::rispondiApertura([percorso] { return percorso; });
        QSignalSpy finito(vista->importatore(), &ImportaEsclusi::finito);
        QTest::mouseClick(pezzo<QPushButton>("importaEsclusi"), Qt::LeftButton);
        Dialoghi::rispondiApertura({});
        QVERIFY(finito.wait(10000));
    }
    QString scrivi(const QString& nome, const QByteArray& contenuto) const {
        const QString percorso = archivio.dir.filePath(nome);
        QFile file(percorso);
        if (!file.open(QIODevice::WriteOnly) || file.write(contenuto) != contenuto.size())
            qFatal("test file not written");
        return percorso;
    }
    void clicca(const QString& nomeRiquadro) {
        QTest::mouseClick(vista->findChild<RiquadroMotivo*>(nomeRiquadro), Qt::LeftButton);
    }
};

} // namespace

class TestSuppressions : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
        Symbols::preparaTemaIcone();
    }

    void add_data() {
        QTest::addColumn<QString>("indirizzo");
        QTest::addColumn<QString>("motivo");
        QTest::addColumn<bool>("abilitato");
        QTest::addColumn<QString>("emailAttesa"); // empty: nothing added
        QTest::addColumn<QString>("motivoAtteso");
        QTest::addColumn<QString>("riquadro");

        QTest::newRow("no reason") << "  Nuovo@Example.ORG "
                                   << "" << true << "nuovo@example.org"
                                   << "aggiunto a mano"
                                   << "riquadro-aggiuntoAMano";
        QTest::newRow("unsubscribe typed by hand") << "nuovo@example.org"
                                                   << "unsubscribe" << true << "nuovo@example.org"
                                                   << "unsubscribe"
                                                   << "riquadro-disiscritto";
        QTest::newRow("server words, untrimmed") << "nuovo@example.org"
                                                 << " no such user " << true << "nuovo@example.org"
                                                 << " no such user "
                                                 << "riquadro-casellaInesistente";
        QTest::newRow("a free remark") << "nuovo@example.org"
                                       << "cliente chiuso" << true << "nuovo@example.org"
                                       << "cliente chiuso"
                                       << "riquadro-aggiuntoAMano";
        QTest::newRow("same address, other case") << "ROSSI@Example.org"
                                                  << "unsubscribe" << true << ""
                                                  << ""
                                                  << "";
        QTest::newRow("not an address") << "rossi@example"
                                        << "" << false << ""
                                        << ""
                                        << "";
    }
    void add() {
        QFETCH(QString, indirizzo);
        QFETCH(QString, motivo);
        QFETCH(bool, abilitato);
        QFETCH(QString, emailAttesa);
        QFETCH(QString, motivoAtteso);
        QFETCH(QString, riquadro);
        Banco banco(Voci{{"rossi@example.org", "452 mailbox full"}});
        banco.apri();
        QTest::keyClicks(banco.pezzo<QLineEdit>("nuovoIndirizzo"), indirizzo);
        QTest::keyClicks(banco.pezzo<QLineEdit>("motivoEsclusione"), motivo);
        QCOMPARE(banco.pezzo<QPushButton>("aggiungiEscluso")->isEnabled(), abilitato);
        QTest::mouseClick(banco.pezzo<QPushButton>("aggiungiEscluso"), Qt::LeftButton);

        QMap<QString, QString> attese{{"rossi@example.org", "452 mailbox full"}};
        if (!emailAttesa.isEmpty())
            attese.insert(emailAttesa, motivoAtteso);
        QCOMPARE(banco.inArchivio(), attese);
        // The fields empty only when something was added.
        QCOMPARE(banco.pezzo<QLineEdit>("nuovoIndirizzo")->text().isEmpty(), !emailAttesa.isEmpty());
        QCOMPARE(banco.pezzo<QLineEdit>("motivoEsclusione")->text().isEmpty(),
                 !emailAttesa.isEmpty() || motivo.isEmpty());
        QCOMPARE(banco.pezzo<QLabel>("contatoreEsclusi")->text(), QStringLiteral("%1 di %1").arg(attese.size()));
        if (!riquadro.isEmpty()) {
            auto* tessera = banco.vista->findChild<RiquadroMotivo*>(riquadro);
            QVERIFY(tessera->isVisible());
            QVERIFY(tessera->dati().quanti >= 1);
        }
        QVERIFY(TestSupport::salvaSchermata(banco.vista.get(),
                                            QStringLiteral("suppressions-add-") + QTest::currentDataTag()));
    }

    // Any cell that looks like an address, the first line too; what is already there keeps its reason.
    void import_data() {
        QTest::addColumn<QByteArray>("contenuto");
        QTest::addColumn<QStringList>("nuovi");

        QTest::newRow("one address in the first line")
            << QByteArray("solo@example.org\n") << QStringList{"solo@example.org"};
        QTest::newRow("blanks and capitals")
            << QByteArray("nome,email\nAnna,  Anna.Neri@Example.ORG \n") << QStringList{"anna.neri@example.org"};
        QTest::newRow("every column, header too")
            << QByteArray(
                   "capo@example.org;note\nbianchi@example.org;scrivere a verdi@example.org\nx;verdi@example.org\n")
            << QStringList{"bianchi@example.org", "capo@example.org", "verdi@example.org"};
        QTest::newRow("already excluded keeps its reason")
            << QByteArray("Rossi@Example.org\nnuovo@example.org\n") << QStringList{"nuovo@example.org"};
        QTest::newRow("same address twice in the file")
            << QByteArray("a@example.org,A@example.org\n") << QStringList{"a@example.org"};
        QTest::newRow("no addresses") << QByteArray("nome,città\nAnna,Milano\n") << QStringList{};
        QTest::newRow("empty file") << QByteArray() << QStringList{};
        QTest::newRow("bytes that are no text") << QByteArray("\xff\xfe\x00\xd8", 4) << QStringList{};
    }
    void import() {
        QFETCH(QByteArray, contenuto);
        QFETCH(QStringList, nuovi);
        Banco banco(Voci{{"rossi@example.org", "452 mailbox full"}});
        banco.apri();
        banco.importa(banco.scrivi(QStringLiteral("da non contattare.csv"), contenuto));
        QMap<QString, QString> attese{{"rossi@example.org", "452 mailbox full"}};
        for (const QString& email : nuovi)
            attese.insert(email, QStringLiteral("importato da da non contattare.csv"));
        QCOMPARE(banco.modello().tutti(), attese.size());
        QTRY_COMPARE(QApplication::overrideCursor(), nullptr);
        banco.vista.reset();
        banco.archivio.reopen(); // saved, not only pending
        QCOMPARE(banco.inArchivio(), attese);
    }

    void importTwiceAndMissingFile() {
        Banco banco;
        banco.apri();
        const QString percorso = banco.scrivi(QStringLiteral("elenco.txt"), "a@example.org\nb@example.org\n");
        banco.importa(percorso);
        QCOMPARE(banco.modello().tutti(), 2);
        QSignalSpy salvataggi(&banco.store, &Store::changed);
        banco.importa(percorso);
        QCOMPARE(banco.modello().tutti(), 2);
        QCOMPARE(banco.inArchivio().size(), 2);
        banco.importa(banco.archivio.dir.filePath(QStringLiteral("non-esiste.csv")));
        QCOMPARE(banco.inArchivio().size(), 2);
        QCOMPARE(banco.pezzo<QLabel>("contatoreEsclusi")->text(), QStringLiteral("2 di 2"));
    }

    // "importato da" comes before most words of the category rules, whatever the file is called, but not
    // before the three domain phrases.
    void importedFileNames_data() {
        QTest::addColumn<QString>("nome");
        QTest::addColumn<QString>("riquadro");
        QTest::newRow("plain") << "clienti.csv"
                               << "riquadro-importato";
        QTest::newRow("a code") << "rimbalzi 550.csv"
                                << "riquadro-importato";
        QTest::newRow("unsubscribe words") << "cancellami unsubscribe.csv"
                                           << "riquadro-importato";
        QTest::newRow("mailbox full") << "mailbox full.txt"
                                      << "riquadro-importato";
        QTest::newRow("dominio inesistente") << "dominio inesistente.csv"
                                             << "riquadro-dominioInesistente";
        QTest::newRow("dominio non esiste") << "Il DOMINIO NON ESISTE.csv"
                                            << "riquadro-dominioInesistente";
        QTest::newRow("dominio senza server di posta") << "dominio senza server di posta.txt"
                                                       << "riquadro-dominioSenzaPosta";
    }
    void importedFileNames() {
        QFETCH(QString, nome);
        QFETCH(QString, riquadro);
        Banco banco;
        banco.apri();
        banco.importa(banco.scrivi(nome, "uno@example.org\n"));
        QCOMPARE(banco.riquadri().size(), 2);
        auto* tessera = banco.vista->findChild<RiquadroMotivo*>(riquadro);
        QVERIFY(tessera->isVisible());
        QCOMPARE(tessera->dati().quanti, 1);
    }

    // Tiles count every entry, most first; filter and search narrow the table and the export only.
    void tilesFilterAndSearch() {
        Banco banco({{"a@example.org", "550 5.1.1 user unknown"},
                     {"b@example.org", "Recipient address rejected"},
                     {"c@example.org", "452 quota exceeded"},
                     {"d@example.org", "unsubscribe"},
                     {"e@example.org", "aggiunto a mano"},
                     {"f@example.org", "554 blocked"},
                     {"g@example.org", "dominio inesistente"}});
        SuppressionView& vista = banco.apri();
        QCOMPARE(banco.riquadri().first(), QStringLiteral("Tutti gli esclusi 7"));
        QCOMPARE(banco.riquadri().at(1), QStringLiteral("Casella inesistente 2"));
        QCOMPARE(banco.riquadri().size(), 7);
        QCOMPARE(banco.indirizziMostrati(),
                 (QStringList{"g@example.org", "f@example.org", "e@example.org", "d@example.org", "c@example.org",
                              "b@example.org", "a@example.org"}));

        banco.clicca(QStringLiteral("riquadro-casellaInesistente"));
        QCOMPARE(banco.indirizziMostrati(), (QStringList{"b@example.org", "a@example.org"}));
        QCOMPARE(banco.pezzo<QLabel>("contatoreEsclusi")->text(), QStringLiteral("2 di 7"));
        QVERIFY(vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-casellaInesistente"))->dati().attivo);
        QVERIFY(!vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-tutti"))->dati().attivo);
        // The search looks in the reason as well as the address, in any case.
        QTest::keyClicks(banco.pezzo<QLineEdit>("ricercaEsclusi"), QStringLiteral("REJECTED"));
        QCOMPARE(banco.indirizziMostrati(), QStringList{"b@example.org"});
        QCOMPARE(banco.riquadri().size(), 7);

        const QString percorso = banco.archivio.dir.filePath(QStringLiteral("uscita.csv"));
        QString proposto;
        Dialoghi::rispondiSalvataggio([&](const QString& nome) {
            proposto = nome;
            return percorso;
        });
        QTest::mouseClick(banco.pezzo<QPushButton>("esportaEsclusi"), Qt::LeftButton);
        Dialoghi::rispondiSalvataggio({});
        QCOMPARE(proposto, QStringLiteral("esclusi.csv"));
        QFile file(percorso);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()),
                 QStringLiteral("indirizzo,motivo,spiegazione,dettaglio_tecnico,data\n"
                                "b@example.org,Casella inesistente,%1,Recipient address rejected,"
                                "2025-03-04T09:06:07Z\n")
                     .arg(PresentazioneMotivo::spiegazione(MotivoEsclusione::casellaInesistente)));

        // A click on the active tile goes back to all.
        banco.pezzo<QLineEdit>("ricercaEsclusi")->clear();
        banco.clicca(QStringLiteral("riquadro-casellaInesistente"));
        QCOMPARE(banco.modello().filtrati(), 7);
        QVERIFY(vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-tutti"))->dati().attivo);
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("suppressions-with-data")));
    }

    void detail_data() {
        QTest::addColumn<QString>("motivo");
        QTest::addColumn<QString>("etichetta");
        QTest::addColumn<bool>("avviso");
        QTest::newRow("mailbox gone") << "550 user unknown"
                                      << "Casella inesistente" << true;
        QTest::newRow("mailbox full") << "452 mailbox full"
                                      << "Casella piena" << false;
        QTest::newRow("refused") << "554 blocked"
                                 << "Rifiutato dal server" << true;
        QTest::newRow("unsubscribed") << "Cancellami"
                                      << "Ha chiesto di non essere contattato" << true;
        QTest::newRow("no mail server") << "dominio senza server di posta"
                                        << "Dominio senza posta" << false;
        QTest::newRow("empty reason") << ""
                                      << "Escluso a mano" << false;
    }
    void detail() {
        QFETCH(QString, motivo);
        QFETCH(QString, etichetta);
        QFETCH(bool, avviso);
        Banco banco({{"altro@example.org", "x"}, {"scelto@example.org", motivo}});
        SuppressionView& vista = banco.apri();
        QVERIFY(!banco.pezzo<QWidget>("pannelloDettaglio")->isVisible());
        vista.findChild<QTableView*>()->selectRow(0);
        QVERIFY(banco.pezzo<QWidget>("pannelloDettaglio")->isVisible());
        QCOMPARE(banco.pezzo<QLabel>("emailDettaglio")->text(), QStringLiteral("scelto@example.org"));
        QCOMPARE(banco.pezzo<QLabel>("motivoDettaglio")->text(), etichetta);
        QCOMPARE(banco.pezzo<QLabel>("rispostaDettaglio")->isVisible(), !motivo.isEmpty());
        QCOMPARE(banco.pezzo<QLabel>("rispostaDettaglio")->text(), motivo);
        QCOMPARE(banco.pezzo<QLabel>("avvisoDettaglio")->isVisible(), avviso);
        // A store change from elsewhere keeps the choice.
        Suppression altra(QStringLiteral("nuova@example.org"), QStringLiteral("550"));
        altra.createdAt = inizio.addSecs(3600);
        banco.store.insert(altra);
        banco.store.save();
        QTRY_COMPARE(banco.modello().tutti(), 3);
        QCOMPARE(vista.selezione(), banco.store.esclusoPerEmail(QStringLiteral("scelto@example.org"))->id);
        QCOMPARE(vista.findChild<QTableView*>()->selectionModel()->selectedRows().first().row(), 1);
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("suppressions-detail-") + QTest::currentDataTag()));
    }

    // Taking back the last entry of the chosen category: the tile goes, the table empties, the filter stays.
    void takeBackLastOfCategory() {
        Banco banco({{"a@example.org", "550 user unknown"}, {"b@example.org", "452 mailbox full"}});
        SuppressionView& vista = banco.apri();
        banco.clicca(QStringLiteral("riquadro-casellaPiena"));
        QCOMPARE(banco.indirizziMostrati(), QStringList{"b@example.org"});
        vista.findChild<QTableView*>()->selectRow(0);
        QTest::mouseClick(banco.pezzo<QPushButton>("togliEscluso"), Qt::LeftButton);
        QCOMPARE(banco.inArchivio().keys(), QStringList{"a@example.org"});
        QVERIFY(!vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-casellaPiena"))->isVisible());
        QCOMPARE(banco.modello().rowCount(), 0);
        QCOMPARE(banco.modello().filtro(), std::optional(MotivoEsclusione::casellaPiena));
        QVERIFY(!banco.pezzo<QWidget>("pannelloDettaglio")->isVisible());
        QCOMPARE(banco.pezzo<QLabel>("contatoreEsclusi")->text(), QStringLiteral("0 di 1"));
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("suppressions-filter-after-take-back")));
        banco.clicca(QStringLiteral("riquadro-tutti"));
        QCOMPARE(banco.indirizziMostrati(), QStringList{"a@example.org"});
    }

    void emptyList() {
        Banco banco;
        SuppressionView& vista = banco.apri();
        QVERIFY(!banco.pezzo<QPushButton>("esportaEsclusi")->isEnabled());
        QCOMPARE(banco.riquadri(), QStringList{"Tutti gli esclusi 0"});
        QCOMPARE(banco.pezzo<QLabel>("contatoreEsclusi")->text(), QStringLiteral("0 di 0"));
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("suppressions-empty")));
    }
};

BREZZARIO_TEST_MAIN(TestSuppressions)
#include "tst_suppressions.moc"
