#include "records/Store.h"
#include "TempStore.h"
#include "TestEnvironment.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>

namespace {

QByteArray fileDigest(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// A SQLite file made outside the program, as another program would leave it.
void makeForeignDatabase(const QString& path, const QStringList& statements) {
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("foreign"));
        db.setDatabaseName(path);
        QVERIFY(db.open());
        QSqlQuery query(db);
        for (const QString& statement : statements)
            QVERIFY2(query.exec(statement), qPrintable(statement));
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("foreign"));
}

SendLog logAt(const QString& servizio, SendStatus status, const QDateTime& date) {
    SendLog log(QStringLiteral("a@b.it"), QStringLiteral("Oggetto"), status, QString(), servizio);
    log.date = date;
    return log;
}

} // namespace

class TestStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void recordsRoundTrip();
    void unsavedChangesAreNotDurable();
    void opensInFolderWithUnusualName();
    void cascadesAndStaleReferences_data();
    void cascadesAndStaleReferences();
    void identitiesAreNeverReused();
    void suppressionEmailIsUnique();
    void refusedFilesStayUntouched_data();
    void refusedFilesStayUntouched();
    void defaultStoreFallsBackToMemory();
    void changeSignalNamesWhatMoved();
    void rollingQuota_data();
    void rollingQuota();
    void campaignCounts();
    void righePerEmailAndSuppressedEmails();
    void validRowCountInStore();
};

void TestStore::recordsRoundTrip() {
    TempStore temp;
    Store& store = *temp.store;
    ContactList list(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), {"Nome", "E-mail"},
                     QStringLiteral("E-mail"));
    list.tag = QStringLiteral("2026");
    QVERIFY(store.insert(list));
    QVERIFY(list.id > 0);
    ContactRow row({{"Nome", "Anna \"Nina\""}, {"E-mail", "anna@b.it"}}, QStringLiteral("anna@b.it"));
    row.registraEsito(SendStatus::sent, "C", "S", "", QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC));
    QList<ContactRow> rows{row};
    QVERIFY(store.insertRows(list.id, rows));
    MessageTemplate model(QStringLiteral("Saldi"), QStringLiteral("Ciao {{Nome}}"), QStringLiteral("<p>x</p>"));
    QVERIFY(store.insert(model));
    TemplateAttachment attachment(QStringLiteral("listino è.pdf"), QStringLiteral("application/pdf"),
                                  QByteArray("\x00\x01\xff", 3));
    attachment.templateId = model.id;
    QVERIFY(store.insert(attachment));
    QVERIFY(store.save());
    temp.reopen();

    const auto lists = temp.store->all<ContactList>();
    QCOMPARE(lists.size(), 1);
    QCOMPARE(lists.first().columns, QStringList({"Nome", "E-mail"}));
    QCOMPARE(lists.first().tag, QStringLiteral("2026"));
    QCOMPARE(lists.first().importedAt.toSecsSinceEpoch(), list.importedAt.toSecsSinceEpoch());
    const auto storedRows = temp.store->rows(list.id);
    QCOMPARE(storedRows.size(), 1);
    QCOMPARE(storedRows.first().values, row.values);
    QCOMPARE(storedRows.first().primoInvio, row.primoInvio);
    QCOMPARE(storedRows.first().ultimoEsitoRaw, QStringLiteral("sent"));
    const auto attachments = temp.store->attachments(model.id);
    QCOMPARE(attachments.size(), 1);
    QCOMPARE(attachments.first().data, attachment.data);
    QCOMPARE(attachments.first().filename, attachment.filename);
}

void TestStore::unsavedChangesAreNotDurable() {
    TempStore temp;
    Campaign saved(QStringLiteral("salvata"));
    QVERIFY(temp.store->insert(saved));
    QVERIFY(temp.store->save());
    Campaign unsaved(QStringLiteral("non salvata"));
    QVERIFY(temp.store->insert(unsaved));
    QVERIFY(temp.store->hasPendingChanges());
    temp.reopen();
    const auto campaigns = temp.store->all<Campaign>();
    QCOMPARE(campaigns.size(), 1);
    QCOMPARE(campaigns.first().name, QStringLiteral("salvata"));
}

void TestStore::opensInFolderWithUnusualName() {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("archivio con spazi #1 %20 ?/brezzario.sqlite"));
    {
        auto store = Store::open(path);
        QVERIFY(store);
        Suppression s(QStringLiteral("a@b.it"), QString());
        QVERIFY(store->insert(s));
        QVERIFY(store->save());
    }
    QString error;
    auto again = Store::open(path, &error);
    QVERIFY2(again, qPrintable(error));
    QCOMPARE(again->all<Suppression>().size(), 1);
}

void TestStore::cascadesAndStaleReferences_data() {
    QTest::addColumn<QString>("deleted");
    QTest::newRow("list") << "list";
    QTest::newRow("template") << "template";
    QTest::newRow("campaign") << "campaign";
}

void TestStore::cascadesAndStaleReferences() {
    QFETCH(QString, deleted);
    TempStore temp;
    Store& store = *temp.store;
    ContactList list(QStringLiteral("L"), QString(), {"email"}, QStringLiteral("email"));
    store.insert(list);
    QList<ContactRow> rows{ContactRow({{"email", "a@b.it"}}, "a@b.it"), ContactRow({{"email", "c@d.it"}}, "c@d.it")};
    store.insertRows(list.id, rows);
    MessageTemplate model(QStringLiteral("T"), QString(), QString());
    store.insert(model);
    TemplateAttachment attachment(QStringLiteral("a.txt"), QStringLiteral("text/plain"), "x");
    attachment.templateId = model.id;
    store.insert(attachment);
    Campaign campaign(QStringLiteral("C"));
    campaign.listId = list.id;
    campaign.templateId = model.id;
    store.insert(campaign);
    SendLog log(QStringLiteral("a@b.it"), QStringLiteral("S"), SendStatus::sent, QString(), QStringLiteral("Brevo"));
    log.campaignId = campaign.id;
    store.insert(log);
    SendLog testLog(QStringLiteral("a@b.it"), QStringLiteral("S"), SendStatus::test, QString(), QString());
    store.insert(testLog);
    QVERIFY(store.save());

    if (deleted == "list")
        QVERIFY(store.remove<ContactList>(list.id));
    else if (deleted == "template")
        QVERIFY(store.remove<MessageTemplate>(model.id));
    else
        QVERIFY(store.remove<Campaign>(campaign.id));
    QVERIFY(store.save());
    temp.reopen();
    Store& after = *temp.store;

    QCOMPARE(after.rows(list.id).size(), deleted == "list" ? 0 : 2);
    QCOMPARE(after.all<ContactRow>().size(), deleted == "list" ? 0 : 2);
    QCOMPARE(after.attachments(model.id).size(), deleted == "template" ? 0 : 1);
    QCOMPARE(after.all<SendLog>().size(), deleted == "campaign" ? 1 : 2); // a test log has no campaign and stays
    const auto stored = after.find<Campaign>(campaign.id);
    QCOMPARE(stored.has_value(), deleted != "campaign");
    if (stored) {
        // The campaign keeps its references even when they now point at nothing.
        QCOMPARE(stored->listId, list.id);
        QCOMPARE(stored->templateId, model.id);
        QCOMPARE(after.find<ContactList>(stored->listId).has_value(), deleted != "list");
        QCOMPARE(after.find<MessageTemplate>(stored->templateId).has_value(), deleted != "template");
    }
}

void TestStore::identitiesAreNeverReused() {
    TempStore temp;
    ContactList first(QStringLiteral("prima"), QString(), {}, QString());
    temp.store->insert(first);
    temp.store->remove<ContactList>(first.id);
    temp.store->save();
    temp.reopen();
    ContactList second(QStringLiteral("seconda"), QString(), {}, QString());
    temp.store->insert(second);
    QVERIFY(second.id > first.id);
}

void TestStore::suppressionEmailIsUnique() {
    TempStore temp;
    Suppression first(QStringLiteral("Anna@B.it"), QStringLiteral("550"));
    QVERIFY(temp.store->insert(first));
    Suppression second(QStringLiteral(" anna@b.it "), QStringLiteral("a mano"));
    QVERIFY(!temp.store->insert(second));
    QVERIFY(temp.store->save());
    QCOMPARE(temp.store->all<Suppression>().size(), 1);
}

void TestStore::refusedFilesStayUntouched_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("text file") << "text";
    QTest::newRow("random bytes") << "random";
    QTest::newRow("damaged database") << "damaged";
    QTest::newRow("another program's database") << "foreign";
    QTest::newRow("unknown schema version") << "version";
}

void TestStore::refusedFilesStayUntouched() {
    QFETCH(QString, kind);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("brezzario.sqlite"));
    if (kind == "text") {
        writeFile(path, "Nome;Email\nAnna;anna@b.it\n");
    } else if (kind == "random") {
        QByteArray bytes;
        for (int i = 0; i < 8192; ++i)
            bytes.append(char((i * 7919 + 13) % 251));
        writeFile(path, bytes);
    } else if (kind == "damaged") {
        {
            auto store = Store::open(path);
            QVERIFY(store);
            for (int i = 0; i < 400; ++i) {
                Suppression s(QStringLiteral("utente%1@example.it").arg(i), QString(200, u'x'));
                store->insert(s);
            }
            QVERIFY(store->save());
        }
        // Overwrite the middle of the file, past the header, so that SQLite still recognises it.
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const qint64 size = file.size();
        QVERIFY(size > 16384);
        file.seek(size / 2);
        file.write(QByteArray(4096, '\xA5'));
        file.close();
    } else if (kind == "foreign") {
        makeForeignDatabase(path, {"CREATE TABLE clienti (nome TEXT)", "INSERT INTO clienti VALUES ('Anna')"});
    } else {
        makeForeignDatabase(path, {"CREATE TABLE BrezzarioMeta (key TEXT PRIMARY KEY, value TEXT NOT NULL)",
                                   "INSERT INTO BrezzarioMeta VALUES ('schemaVersion', '2.0.0')"});
    }
    const QByteArray before = fileDigest(path);
    const QStringList filesBefore = QDir(dir.path()).entryList(QDir::Files);

    QString error;
    auto store = Store::open(path, &error);
    QVERIFY(!store);
    QVERIFY(!error.isEmpty());

    QCOMPARE(fileDigest(path), before);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), filesBefore); // no journal, no WAL beside it
}

void TestStore::defaultStoreFallsBackToMemory() {
    const QString path = Store::defaultPath();
    QVERIFY(path.startsWith(TestSupport::IsolatedEnvironment::home()));
    QDir().mkpath(QFileInfo(path).absolutePath());
    writeFile(path, "questo non è un archivio");
    const QByteArray before = fileDigest(path);

    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("^Brezzario: archivio non apribile \\(.+\\), avvio in memoria\\.$"));
    auto store = Store::openDefault();
    QVERIFY(store);
    QVERIFY(store->isInMemory());
    QVERIFY(store->all<ContactList>().isEmpty());
    // The session works normally in memory.
    ContactList list(QStringLiteral("in memoria"), QString(), {}, QString());
    QVERIFY(store->insert(list));
    QVERIFY(store->save());
    QCOMPARE(store->all<ContactList>().size(), 1);
    store.reset();
    QCOMPARE(fileDigest(path), before);
    QFile::remove(path);
}

void TestStore::changeSignalNamesWhatMoved() {
    TempStore temp;
    QSignalSpy spy(temp.store.get(), &Store::changed);
    ContactList list(QStringLiteral("L"), QString(), {}, QString());
    temp.store->insert(list);
    Campaign campaign(QStringLiteral("C"));
    temp.store->insert(campaign);
    QCOMPARE(spy.count(), 0); // told once the current work is done, not in the middle of it
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<Store::Entities>(), Store::ContactLists | Store::Campaigns);
    temp.store->remove<ContactList>(list.id);
    QTRY_COMPARE(spy.count(), 2);
    QCOMPARE(spy.at(1).at(0).value<Store::Entities>(), Store::ContactLists | Store::ContactRows);
}

void TestStore::rollingQuota_data() {
    QTest::addColumn<QString>("servizio");
    QTest::addColumn<QString>("status");
    QTest::addColumn<qint64>("secondsAgo");
    QTest::addColumn<int>("counted");
    QTest::newRow("24 hours ago to the second") << "Brevo"
                                                << "sent" << qint64(86400) << 1;
    QTest::newRow("a second older") << "Brevo"
                                    << "sent" << qint64(86401) << 0;
    QTest::newRow("just now") << "Brevo"
                              << "sent" << qint64(0) << 1;
    QTest::newRow("another profile") << "Aruba"
                                     << "sent" << qint64(10) << 0;
    QTest::newRow("failed doesn't count") << "Brevo"
                                          << "failed" << qint64(10) << 0;
    QTest::newRow("skipped doesn't count") << "Brevo"
                                           << "skipped" << qint64(10) << 0;
    QTest::newRow("test doesn't count") << "Brevo"
                                        << "test" << qint64(10) << 0;
}

void TestStore::rollingQuota() {
    QFETCH(QString, servizio);
    QFETCH(QString, status);
    QFETCH(qint64, secondsAgo);
    QFETCH(int, counted);
    TempStore temp;
    const QDateTime now = QDateTime(QDate(2026, 5, 10), QTime(12, 0), Qt::UTC);
    SendLog log = logAt(servizio, *sendStatusFromRaw(status), now.addSecs(-secondsAgo));
    temp.store->insert(log);
    QCOMPARE(temp.store->inviateUltime24Ore(QStringLiteral("Brevo"), now), counted);
}

void TestStore::campaignCounts() {
    TempStore temp;
    Campaign campaign(QStringLiteral("C"));
    temp.store->insert(campaign);
    const QStringList statuses{"sent", "sent", "failed", "skipped", "test", "bounced"};
    for (const QString& raw : statuses) {
        SendLog log;
        log.statusRaw = raw;
        log.campaignId = campaign.id;
        temp.store->insert(log);
    }
    QCOMPARE(temp.store->sentCount(campaign.id), 3); // the unknown "bounced" reads as sent
    QCOMPARE(temp.store->failedCount(campaign.id), 1);
    QCOMPARE(temp.store->logs(campaign.id).size(), 6);
}

void TestStore::righePerEmailAndSuppressedEmails() {
    TempStore temp;
    ContactList first(QStringLiteral("A"), QString(), {}, QString());
    ContactList second(QStringLiteral("B"), QString(), {}, QString());
    temp.store->insert(first);
    temp.store->insert(second);
    QList<ContactRow> rowsA{ContactRow({}, " Anna@B.it"), ContactRow({}, ""), ContactRow({}, "  \n")};
    QList<ContactRow> rowsB{ContactRow({}, "anna@b.it"), ContactRow({}, "carlo@d.it")};
    temp.store->insertRows(first.id, rowsA);
    temp.store->insertRows(second.id, rowsB);
    const auto map = temp.store->righePerEmail();
    QCOMPARE(map.size(), 2);
    QCOMPARE(map.value(QStringLiteral("anna@b.it")).size(), 2);
    QCOMPARE(map.value(QStringLiteral("carlo@d.it")).size(), 1);
    QVERIFY(!map.contains(QString()));

    Suppression s(QStringLiteral("X@Y.it"), QString());
    temp.store->insert(s);
    QCOMPARE(temp.store->suppressedEmails(), QSet<QString>({"x@y.it"}));
}

void TestStore::validRowCountInStore() {
    TempStore temp;
    ContactList list(QStringLiteral("A"), QString(), {}, QString());
    temp.store->insert(list);
    ContactRow excluded({}, "ok@b.it");
    excluded.isExcluded = true;
    QList<ContactRow> rows{ContactRow({}, "ok@b.it"), excluded, ContactRow({}, "no"), ContactRow({}, " X@Y.IT ")};
    temp.store->insertRows(list.id, rows);
    QCOMPARE(temp.store->validRowCount(list.id), 2);
    QCOMPARE(temp.store->rowCount(list.id), 4);
    QCOMPARE(validRowCount(temp.store->rows(list.id)), 2);
}

BREZZARIO_TEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
