#include "AiosmtpdServer.h"
#include "Loopback.h"
#include "records/Store.h"
#include "TestCA.h"
#include "TestEnvironment.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

// A run killed with SIGKILL at a random moment must leave a log for every message the server accepted,
// except at most the one whose acceptance had not yet come back to the program; and running the campaign
// again must write to nobody but, at worst, that one person.
class TestDurability : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void uccisoACaso();

private:
    // A store file with a campaign whose addresses carry the trial's tag.
    QString preparaStore(const QString& etichetta, RecordId* campagna);
    QProcess* avviaRunner(const QString& store, RecordId campagna);
    static bool attendiConnessione(QProcess& runner);
    QStringList ricevutiCon(const QString& etichetta) const;

    QTemporaryDir m_base;
    TestCA m_ca;
    std::unique_ptr<AiosmtpdServer> m_server;
};

namespace {
constexpr int destinatari = 150;
constexpr int prove = 24;

QString indirizzo(const QString& etichetta, int i) {
    return QStringLiteral("%1-%2@ditta.it").arg(etichetta).arg(i, 3, 10, QLatin1Char('0'));
}
} // namespace

void TestDurability::initTestCase() {
    QVERIFY(m_ca.isValid());
    m_server = std::make_unique<AiosmtpdServer>(AiosmtpdServer::withTls(m_ca, Loopback::durability));
    QVERIFY2(m_server->start(), qPrintable(m_server->errorString()));
}

QString TestDurability::preparaStore(const QString& etichetta, RecordId* campagna) {
    if (!QDir().mkpath(m_base.filePath(etichetta)))
        return {};
    const QString percorso = m_base.filePath(etichetta + QStringLiteral("/brezzario.sqlite"));
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return {};
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email"}, QStringLiteral("email"));
    store->insert(lista);
    QList<ContactRow> righe;
    for (int i = 0; i < destinatari; ++i)
        righe.append(ContactRow({{"email", indirizzo(etichetta, i)}}, indirizzo(etichetta, i)));
    store->insertRows(lista.id, righe);
    MessageTemplate modello(QStringLiteral("M"), QStringLiteral("Novità"), QStringLiteral("<p>Ciao</p>"));
    store->insert(modello);
    Campaign c(QStringLiteral("Durata"));
    c.listId = lista.id;
    c.templateId = modello.id;
    store->insert(c);
    store->save();
    *campagna = c.id;
    return percorso;
}

QProcess* TestDurability::avviaRunner(const QString& store, RecordId campagna) {
    auto* processo = new QProcess(this);
    processo->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const AiosmtpdServer::Options& o = m_server->options();
    processo->start(QStringLiteral(DURABILITY_RUNNER),
                    {store, QString::number(campagna), o.address, QString::number(o.port), o.username, o.password,
                     m_ca.certificatePath()});
    return processo;
}

bool TestDurability::attendiConnessione(QProcess& runner) {
    while (!runner.canReadLine())
        if (!runner.waitForReadyRead(20'000))
            return false;
    return runner.readLine() == "connesso\n";
}

QStringList TestDurability::ricevutiCon(const QString& etichetta) const {
    QStringList result;
    for (const AiosmtpdServer::Message& message : m_server->messages())
        for (const QString& to : message.rcptTos)
            if (to.startsWith(etichetta + u'-'))
                result << to;
    return result;
}

void TestDurability::uccisoACaso() {
    // A whole run first, to learn how long one takes on this machine.
    RecordId campagna = 0;
    QString store = preparaStore("misura", &campagna);
    QVERIFY(!store.isEmpty());
    QElapsedTimer cronometro;
    QProcess* misura = avviaRunner(store, campagna);
    QVERIFY(attendiConnessione(*misura));
    cronometro.start();
    QVERIFY(misura->waitForFinished(60'000));
    QCOMPARE(misura->exitCode(), 0);
    const qint64 durata = cronometro.elapsed();
    QCOMPARE(ricevutiCon("misura").size(), destinatari);

    // BREZZARIO_SEED replays the kill moments of an earlier run.
    const quint32 seme = qEnvironmentVariableIsSet("BREZZARIO_SEED")
                             ? quint32(qEnvironmentVariable("BREZZARIO_SEED").toULong())
                             : QRandomGenerator::global()->generate();
    qInfo("seed %u, the deliveries of a whole run take %lld ms", seme, durata);
    QRandomGenerator caso(seme);
    int aMeta = 0, nonConfermati = 0;
    for (int prova = 0; prova < prove; ++prova) {
        const QString etichetta = QStringLiteral("p%1").arg(prova, 2, 10, QLatin1Char('0'));
        store = preparaStore(etichetta, &campagna);
        QVERIFY(!store.isEmpty());

        // The kill comes once the server holds a random number of this trial's messages, plus up to two
        // milliseconds, so that it lands in every phase of a message's exchange whatever the machine's speed.
        const int giaSalvati = m_server->messageCount();
        const int soglia = int(caso.bounded(quint32(destinatari * 9 / 10)));
        const int ritardo = int(caso.bounded(3u));
        QProcess* runner = avviaRunner(store, campagna);
        QVERIFY(attendiConnessione(*runner));
        while (m_server->messageCount() - giaSalvati < soglia && !runner->waitForFinished(1)) {
        }
        if (!runner->waitForFinished(ritardo)) {
            runner->kill(); // SIGKILL
            QVERIFY(runner->waitForFinished(10'000));
        }
        // The server may still be writing the message that had fully arrived.
        QTest::qWait(300);

        const QStringList salvati = ricevutiCon(etichetta);
        QCOMPARE(QSet<QString>(salvati.cbegin(), salvati.cend()).size(), salvati.size());
        QSet<QString> registrati;
        {
            QString errore;
            const std::unique_ptr<Store> riaperto = Store::open(store, &errore);
            QVERIFY2(riaperto, qPrintable(etichetta + ": " + errore));
            for (const SendLog& log : riaperto->logs(campagna))
                if (log.status() == SendStatus::sent)
                    registrati.insert(log.email);
        }
        // No log for a message the server doesn't have; and the only saved message that may lack its
        // log is the last one the server accepted, whose 250 the program may not have read or recorded.
        for (const QString& email : std::as_const(registrati))
            QVERIFY2(salvati.contains(email), qPrintable(etichetta + ": log without message " + email));
        QStringList senzaLog;
        for (const QString& email : salvati)
            if (!registrati.contains(email))
                senzaLog << email;
        QVERIFY2(senzaLog.size() <= 1, qPrintable(etichetta + ": " + senzaLog.join(", ")));
        if (!senzaLog.isEmpty()) {
            QCOMPARE(senzaLog.first(), salvati.last());
            ++nonConfermati;
        }
        if (!salvati.isEmpty() && salvati.size() < destinatari)
            ++aMeta;

        // Running again resends exactly the recipients without a log: all those never sent, and at most
        // the one unacknowledged message.
        QProcess* ripresa = avviaRunner(store, campagna);
        QVERIFY(ripresa->waitForFinished(60'000));
        QCOMPARE(ripresa->exitCode(), 0);
        QStringList attesi;
        for (int i = 0; i < destinatari; ++i)
            if (!registrati.contains(indirizzo(etichetta, i)))
                attesi << indirizzo(etichetta, i);
        QCOMPARE(ricevutiCon(etichetta).mid(salvati.size()), attesi);
        delete runner;
        delete ripresa;
    }
    qInfo("%d of %d trials killed mid-run, %d with the one unacknowledged message", aMeta, prove, nonConfermati);
    QVERIFY2(aMeta >= prove / 2, "too few kills landed while messages were going out");
}

BREZZARIO_TEST_GUILESS_MAIN(TestDurability)

#include "tst_durability.moc"
