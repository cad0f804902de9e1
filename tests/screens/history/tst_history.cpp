#include "records/ContactRow.h"
#include "screens/history/HistoryModel.h"
#include "screens/history/HistoryView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Dialoghi.h"
#include "ui/Symbols.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace {

const QDateTime inizio = QDateTime(QDate(2025, 3, 4), QTime(9, 5, 7), Qt::UTC);

// A log as a run or a test message leaves it, at a moment the test chooses.
SendLog registro(Store& store, const QString& email, const QString& oggetto, const QString& stato,
                 const QString& dettaglio, qint64 secondi, RecordId campagna = 0, const QString& servizio = "Brevo") {
    SendLog log;
    log.email = email;
    log.subject = oggetto;
    log.statusRaw = stato;
    log.detail = dettaglio;
    log.servizio = servizio;
    log.campaignId = campagna;
    log.date = inizio.addSecs(secondi);
    store.insert(log);
    return log;
}

QString letto(const QString& percorso) {
    QFile file(percorso);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QStringLiteral("<assente>");
}

QStringList colonna(const QAbstractItemModel* modello, int quale) {
    QStringList valori;
    for (int riga = 0; riga < modello->rowCount(); ++riga)
        valori.append(modello->index(riga, quale).data().toString());
    return valori;
}

struct Banco {
    TempStore archivio;
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *archivio.store};
    Store& store = *archivio.store;
    std::unique_ptr<HistoryView> vista;

    HistoryView& apri() {
        vista = std::make_unique<HistoryView>(ambiente);
        vista->resize(1200, 520);
        vista->show();
        // The store tells of the changes made before the screen was there; let that pass first.
        QCoreApplication::processEvents();
        vista->rinfrescaOra();
        return *vista;
    }
    QString contatore() const { return vista->findChild<QLabel*>(QStringLiteral("contatoreRighe"))->text(); }
    QString esporta(const QString& nome) {
        const QString percorso = archivio.dir.filePath(nome);
        QString proposto;
        Dialoghi::rispondiSalvataggio([&](const QString& nomeProposto) {
            proposto = nomeProposto;
            return percorso;
        });
        QTest::mouseClick(vista->findChild<QPushButton*>(QStringLiteral("esportaStorico")), Qt::LeftButton);
        Dialoghi::rispondiSalvataggio({});
        return proposto == QLatin1String("storico-invii.csv") ? letto(percorso) : QStringLiteral("<nome ") + proposto;
    }
};

const QString testata = QStringLiteral("data,stato,destinatario,campagna,servizio,oggetto,dettaglio\n");

} // namespace

class TestHistory : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
        Symbols::preparaTemaIcone();
    }

    void emptyStore() {
        Banco banco;
        HistoryView& vista = banco.apri();
        QCOMPARE(banco.contatore(), QStringLiteral("0 righe"));
        QCOMPARE(vista.findChild<QTableView*>()->model()->rowCount(), 0);
        QVERIFY(vista.findChild<QPushButton*>(QStringLiteral("esportaStorico"))->isEnabled());
        QVERIFY(vista.findChild<QPushButton*>(QStringLiteral("svuotaStorico"))->isEnabled());
        QCOMPARE(banco.esporta(QStringLiteral("vuoto.csv")), testata);
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("history-empty")));
    }

    // One log per row: what the table shows under "Campagna", "Servizio" and "Stato", and its exported line.
    void oneLog_data() {
        QTest::addColumn<QString>("oggetto");
        QTest::addColumn<QString>("stato");
        QTest::addColumn<QString>("dettaglio");
        QTest::addColumn<QString>("servizio");
        QTest::addColumn<bool>("conCampagna");
        QTest::addColumn<QStringList>("mostrato"); // Stato, Campagna, Servizio
        QTest::addColumn<QString>("riga");

        QTest::newRow("test message") << "Prova"
                                      << "test"
                                      << ""
                                      << "" << false << QStringList{"Prova", "—", "—"}
                                      << "2025-03-04T09:05:07Z,test,a@example.org,,,Prova,\n";
        QTest::newRow("comma in subject") << "Saldi, sconti"
                                          << "sent"
                                          << ""
                                          << "Brevo" << true << QStringList{"Inviata", "Saldi di marzo", "Brevo"}
                                          << "2025-03-04T09:05:07Z,sent,a@example.org,Saldi di marzo,Brevo,"
                                             "\"Saldi, sconti\",\n";
        QTest::newRow("quote in detail") << "Ciao"
                                         << "failed"
                                         << "550 \"no such user\""
                                         << "Brevo" << true << QStringList{"Errore", "Saldi di marzo", "Brevo"}
                                         << "2025-03-04T09:05:07Z,failed,a@example.org,Saldi di marzo,Brevo,Ciao,"
                                            "\"550 \"\"no such user\"\"\"\n";
        QTest::newRow("line feed in detail") << "Ciao"
                                             << "skipped"
                                             << "riga uno\nriga due"
                                             << "Brevo" << true << QStringList{"Saltata", "Saldi di marzo", "Brevo"}
                                             << "2025-03-04T09:05:07Z,skipped,a@example.org,Saldi di marzo,Brevo,"
                                                "Ciao,\"riga uno\nriga due\"\n";
        QTest::newRow("unknown status reads as sent") << "Ciao"
                                                      << "delivered"
                                                      << ""
                                                      << "Brevo" << false << QStringList{"Inviata", "—", "Brevo"}
                                                      << "2025-03-04T09:05:07Z,sent,a@example.org,,Brevo,Ciao,\n";
    }
    void oneLog() {
        QFETCH(QString, oggetto);
        QFETCH(QString, stato);
        QFETCH(QString, dettaglio);
        QFETCH(QString, servizio);
        QFETCH(bool, conCampagna);
        QFETCH(QStringList, mostrato);
        QFETCH(QString, riga);
        Banco banco;
        RecordId campagna = 0;
        if (conCampagna) {
            Campaign saldi(QStringLiteral("Saldi di marzo"));
            banco.store.insert(saldi);
            campagna = saldi.id;
        }
        registro(banco.store, "a@example.org", oggetto, stato, dettaglio, 0, campagna, servizio);
        banco.store.save();
        HistoryView& vista = banco.apri();
        const QAbstractItemModel* modello = vista.findChild<QTableView*>()->model();
        QCOMPARE(modello->rowCount(), 1);
        QCOMPARE(banco.contatore(), QStringLiteral("1 righe"));
        QCOMPARE((QStringList{modello->index(0, HistoryModel::stato).data().toString(),
                              modello->index(0, HistoryModel::campagna).data().toString(),
                              modello->index(0, HistoryModel::servizio).data().toString()}),
                 mostrato);
        QCOMPARE(banco.esporta(QStringLiteral("uno.csv")), testata + riga);
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("history-one-") + QTest::currentDataTag()));
    }

    // The status picker and the search together; the table and the file hold the same rows, newest first.
    void filters_data() {
        QTest::addColumn<int>("voceStato");
        QTest::addColumn<QString>("ricerca");
        QTest::addColumn<QStringList>("attesi");

        QTest::newRow("all, newest first")
            << 0 << "" << QStringList{"f@x.it", "e@x.it", "d@x.it", "c@x.it", "b@x.it", "a@x.it", "g@x.it"};
        QTest::newRow("Inviate counts an unknown status") << 1 << "" << QStringList{"f@x.it", "a@x.it", "g@x.it"};
        QTest::newRow("Errori") << 2 << "" << QStringList{"c@x.it", "b@x.it"};
        QTest::newRow("Saltate with a search") << 3 << "rossi" << QStringList{"d@x.it"};
        QTest::newRow("Prove") << 4 << "" << QStringList{"e@x.it"};
        QTest::newRow("search in the subject, any case") << 0 << "NEWSLETTER" << QStringList{"e@x.it", "b@x.it"};
        QTest::newRow("case beyond ASCII") << 0 << "ÀNGOLO" << QStringList{"c@x.it"};
        QTest::newRow("never the detail") << 0 << "mailbox" << QStringList{};
        QTest::newRow("blanks count") << 0 << " marzo" << QStringList{"f@x.it"};
        QTest::newRow("address") << 0 << "A@X" << QStringList{"a@x.it"};
    }
    void filters() {
        QFETCH(int, voceStato);
        QFETCH(QString, ricerca);
        QFETCH(QStringList, attesi);
        Banco banco;
        registro(banco.store, "a@x.it", "Offerte", "sent", "", 0);
        registro(banco.store, "b@x.it", "Newsletter", "failed", "550 mailbox unavailable", 10);
        registro(banco.store, "c@x.it", "L'àngolo del mese", "failed", "452 mailbox full", 20);
        registro(banco.store, "d@x.it", "Per rossi", "skipped", "in lista esclusi", 30);
        registro(banco.store, "e@x.it", "newsletter di prova", "test", "", 40, 0, "");
        registro(banco.store, "f@x.it", "Saldi di marzo", "queued", "", 50);
        registro(banco.store, "g@x.it", "Per rossi", "sent", "", -10); // a search hit that "Saltate" leaves out
        banco.store.save();
        HistoryView& vista = banco.apri();
        vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(voceStato);
        QTest::keyClicks(vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico")), ricerca);
        const QAbstractItemModel* modello = vista.findChild<QTableView*>()->model();
        QCOMPARE(colonna(modello, HistoryModel::destinatario), attesi);
        QCOMPARE(banco.contatore(), QStringLiteral("%1 righe").arg(attesi.size()));
        const QStringList righe = banco.esporta(QStringLiteral("filtro.csv")).split(u'\n', Qt::SkipEmptyParts);
        QStringList esportati;
        for (qsizetype i = 1; i < righe.size(); ++i)
            esportati.append(righe.at(i).section(u',', 2, 2));
        QCOMPARE(esportati, attesi);
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("history-filter-") + QTest::currentDataTag()));
    }

    // Rows are read a page at a time: the order must hold across page borders, and new logs go on top
    // without the rows below moving out of step.
    void pagesAndNewLogs_data() {
        QTest::addColumn<int>("voceStato");
        QTest::addColumn<QString>("ricerca");
        QTest::addColumn<int>("quanti");
        // Few rows pass a filter: read whole. Many: read a page at a time, as without a filter.
        QTest::newRow("no filter") << 0 << "" << 1000;
        QTest::newRow("Errori, few") << 2 << "" << 1000;
        QTest::newRow("search, few") << 0 << "@pari" << 1000;
        QTest::newRow("Inviate, many") << 1 << "" << 3100;
        QTest::newRow("search, many") << 0 << "@dispari" << 4100;
    }
    void pagesAndNewLogs() {
        QFETCH(int, voceStato);
        QFETCH(QString, ricerca);
        QFETCH(int, quanti);
        Banco banco;
        for (int i = 0; i < quanti; ++i)
            registro(banco.store, QStringLiteral("n%1@%2.it").arg(i).arg(i % 2 ? "dispari" : "pari"), "Oggetto",
                     i % 3 ? "sent" : "failed", "", i);
        banco.store.save();
        HistoryView& vista = banco.apri();
        vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(voceStato);
        vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico"))->setText(ricerca);
        auto passa = [&](int i) {
            const bool stato = voceStato == 0 || (voceStato == 1 ? i % 3 != 0 : i % 3 == 0);
            return stato && (ricerca.isEmpty() || (ricerca.contains(QLatin1String("dispari")) ? i % 2 : i % 2 == 0));
        };
        auto attesi = [&](int fino) {
            QStringList elenco;
            for (int i = fino - 1; i >= 0; --i)
                if (passa(i))
                    elenco.append(QStringLiteral("n%1@%2.it").arg(i).arg(i % 2 ? "dispari" : "pari"));
            return elenco;
        };
        const QAbstractItemModel* modello = vista.findChild<QTableView*>()->model();
        // The first page read, then the rest.
        QCOMPARE(modello->index(0, HistoryModel::destinatario).data().toString(), attesi(quanti).first());
        QCOMPARE(colonna(modello, HistoryModel::destinatario), attesi(quanti));

        // A run adds logs, one save each, while the table has rows read.
        for (int i = quanti; i < quanti + 10; ++i) {
            registro(banco.store, QStringLiteral("n%1@%2.it").arg(i).arg(i % 2 ? "dispari" : "pari"), "Oggetto",
                     i % 3 ? "sent" : "failed", "", i);
            banco.store.save();
        }
        QTRY_COMPARE(modello->rowCount(), int(attesi(quanti + 10).size()));
        QCOMPARE(colonna(modello, HistoryModel::destinatario), attesi(quanti + 10));
        QCOMPARE(banco.contatore(), QLocale().toString(attesi(quanti + 10).size()) + QStringLiteral(" righe"));
    }

    // Logs taken away elsewhere (a campaign deleted) or a log older than the table's newest: read again. With
    // more rows than one read brings, so that rows already read below would be out of step.
    void changesThatReorder() {
        Banco banco;
        Campaign vecchia(QStringLiteral("Vecchia"));
        banco.store.insert(vecchia);
        QStringList attesi;
        for (int i = 0; i < 200; ++i) {
            registro(banco.store, QStringLiteral("n%1@x.it").arg(i), "Uno", "sent", "", i * 10,
                     i < 50 ? vecchia.id : 0);
            attesi.prepend(QStringLiteral("n%1@x.it").arg(i));
        }
        banco.store.save();
        HistoryView& vista = banco.apri();
        const QAbstractItemModel* modello = vista.findChild<QTableView*>()->model();
        QCOMPARE(colonna(modello, HistoryModel::destinatario), attesi);
        QCOMPARE(modello->index(199, HistoryModel::campagna).data().toString(), QStringLiteral("Vecchia"));

        // Between n9 and n10, far below the top.
        const SendLog vecchio = registro(banco.store, "vecchio@x.it", "Tre", "sent", "", 95);
        banco.store.save();
        attesi.insert(attesi.indexOf("n9@x.it"), "vecchio@x.it");
        QTRY_COMPARE(modello->rowCount(), 201);
        QCOMPARE(colonna(modello, HistoryModel::destinatario), attesi);

        Campaign rinominata = vecchia;
        rinominata.name = QStringLiteral("Rinominata");
        banco.store.update(rinominata);
        banco.store.save();
        QTRY_COMPARE(modello->index(200, HistoryModel::campagna).data().toString(), QStringLiteral("Rinominata"));

        banco.store.remove<Campaign>(vecchia.id);
        banco.store.save();
        for (int i = 0; i < 50; ++i)
            attesi.removeOne(QStringLiteral("n%1@x.it").arg(i));
        QTRY_COMPARE(colonna(modello, HistoryModel::destinatario), attesi);
        QCOMPARE(banco.contatore(), QStringLiteral("%1 righe").arg(attesi.size()));

        // One log taken away alone, with no campaign touched.
        banco.store.remove<SendLog>(vecchio.id);
        banco.store.save();
        attesi.removeOne(QStringLiteral("vecchio@x.it"));
        QTRY_COMPARE(colonna(modello, HistoryModel::destinatario), attesi);
    }

    void emptyHistory() {
        Banco banco;
        Campaign saldi(QStringLiteral("Saldi"));
        banco.store.insert(saldi);
        ContactList lista(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), {QStringLiteral("email")},
                          QStringLiteral("email"));
        banco.store.insert(lista);
        ContactRow riga({{QStringLiteral("email"), QStringLiteral("a@x.it")}}, QStringLiteral("a@x.it"));
        riga.registraEsito(SendStatus::sent, "Saldi", "Oggetto", "", inizio);
        riga.registraEsito(SendStatus::failed, "Saldi", "Oggetto", "550", inizio.addSecs(5));
        QList<ContactRow> righe{riga};
        banco.store.insertRows(lista.id, righe);
        Suppression esclusa(QStringLiteral("b@x.it"), QStringLiteral("550 user unknown"));
        banco.store.insert(esclusa);
        registro(banco.store, "a@x.it", "Oggetto", "sent", "", 0, saldi.id);
        registro(banco.store, "a@x.it", "Oggetto", "failed", "550", 5, saldi.id);
        registro(banco.store, "c@x.it", "Prova", "test", "", 9);
        banco.store.save();
        HistoryView& vista = banco.apri();
        // Only the errors are shown: emptying still takes every log.
        vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(2);
        QCOMPARE(banco.contatore(), QStringLiteral("1 righe"));
        QCOMPARE(banco.store.sentCount(saldi.id), 1);

        QTest::mouseClick(vista.findChild<QPushButton*>(QStringLiteral("svuotaStorico")), Qt::LeftButton);
        QCOMPARE(banco.contatore(), QStringLiteral("0 righe"));
        QCOMPARE(vista.findChild<QTableView*>()->model()->rowCount(), 0);
        vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(0);
        QCOMPARE(banco.contatore(), QStringLiteral("0 righe"));
        banco.vista.reset();
        banco.archivio.reopen(); // durable: saved, not only pending
        Store& store = *banco.archivio.store;
        QCOMPARE(store.all<SendLog>().size(), 0);
        QCOMPARE(store.sentCount(saldi.id), 0);
        QCOMPARE(store.failedCount(saldi.id), 0);
        const QList<ContactRow> dopo = store.rows(lista.id);
        QCOMPARE(dopo.size(), 1);
        QCOMPARE(dopo.first().inviateCount, 1);
        QCOMPARE(dopo.first().erroriCount, 1);
        QCOMPARE(dopo.first().ultimoEsitoRaw, QStringLiteral("failed"));
        QCOMPARE(store.suppressedEmails(), QSet<QString>{QStringLiteral("b@x.it")});
    }

    void screenshotWithData() {
        Banco banco;
        Campaign saldi(QStringLiteral("Saldi di primavera"));
        banco.store.insert(saldi);
        const char* stati[] = {"sent", "sent", "failed", "skipped", "sent", "test"};
        const char* dettagli[] = {"", "", "Risposta inattesa a RCPT TO: 550 5.1.1 user unknown", "in lista esclusi",
                                  "", ""};
        for (int i = 0; i < 40; ++i)
            registro(banco.store, QStringLiteral("cliente%1@azienda-%2.it").arg(i).arg(i % 7), "Le novità di marzo",
                     stati[i % 6], dettagli[i % 6], i * 60, i % 6 == 5 ? 0 : saldi.id, i % 6 == 5 ? "" : "Brevo");
        banco.store.save();
        HistoryView& vista = banco.apri();
        QCOMPARE(banco.contatore(), QStringLiteral("40 righe"));
        QVERIFY(TestSupport::salvaSchermata(&vista, QStringLiteral("history-with-data")));
    }
};

BREZZARIO_TEST_MAIN(TestHistory)
#include "tst_history.moc"
