#include "tst_checks.h"

#include "checks/Rimbalzi.h"
#include "records/Store.h"
#include "TempStore.h"

#include <QtTest>

namespace {

struct Scena {
    RecordId mario1 = 0; // list "Clienti"
    RecordId luisa = 0;  // list "Clienti", written with blanks and capitals
    RecordId mario2 = 0; // list "Fornitori"
    RecordId altro = 0;  // list "Fornitori", no bounce
};

const QDateTime primoInvio(QDate(2026, 1, 10), QTime(9, 0), Qt::UTC);

ContactRow rigaInviata(const QString& email) {
    ContactRow riga({{QStringLiteral("email"), email}}, email);
    riga.inviateCount = 3;
    riga.primoInvio = primoInvio;
    riga.ultimoInvio = primoInvio.addDays(5);
    riga.ultimoEsitoRaw = QStringLiteral("sent");
    riga.ultimaCampagna = QStringLiteral("Primavera");
    riga.ultimoOggetto = QStringLiteral("Le offerte di marzo");
    return riga;
}

Scena popola(Store& store) {
    Scena scena;
    const QStringList colonne{QStringLiteral("email")};
    ContactList clienti(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), colonne, QStringLiteral("email"));
    ContactList fornitori(QStringLiteral("Fornitori"), QStringLiteral("fornitori.csv"), colonne,
                          QStringLiteral("email"));
    store.insert(clienti);
    store.insert(fornitori);
    QList<ContactRow> righeClienti{rigaInviata(QStringLiteral("mario@ditta.it")),
                                   rigaInviata(QStringLiteral("  Luisa@Ditta.it "))};
    QList<ContactRow> righeFornitori{rigaInviata(QStringLiteral("MARIO@ditta.it")),
                                     rigaInviata(QStringLiteral("altro@ditta.it"))};
    store.insertRows(clienti.id, righeClienti);
    store.insertRows(fornitori.id, righeFornitori);
    scena.mario1 = righeClienti.at(0).id;
    scena.luisa = righeClienti.at(1).id;
    scena.mario2 = righeFornitori.at(0).id;
    scena.altro = righeFornitori.at(1).id;
    Suppression giaEsclusa(QStringLiteral("luisa@ditta.it"), QStringLiteral("aggiunta a mano"));
    store.insert(giaEsclusa);
    store.save();
    return scena;
}

BrevoAPI::Evento evento(const QString& email, const QString& motivo, std::optional<QDateTime> data) {
    BrevoAPI::Evento e;
    e.email = email;
    e.motivo = motivo;
    e.data = std::move(data);
    e.tipo = QStringLiteral("hardBounces");
    return e;
}

QHash<QString, Suppression> esclusioni(const Store& store) {
    QHash<QString, Suppression> result;
    for (const Suppression& s : store.all<Suppression>())
        result.insert(s.email, s);
    return result;
}

} // namespace

void TestChecks::applica_data() {
    QTest::addColumn<int>("corse");
    QTest::addColumn<int>("aggiunti");
    QTest::addColumn<int>("giaPresenti");
    QTest::addColumn<int>("errori");
    QTest::newRow("first download") << 1 << 2 << 1 << 1;
    // Downloading the same period again counts the failure again; every address is now present.
    QTest::newRow("same period again") << 2 << 0 << 3 << 2;
}

void TestChecks::applica() {
    QFETCH(int, corse);
    QFETCH(int, aggiunti);
    QFETCH(int, giaPresenti);
    QFETCH(int, errori);
    TempStore temp;
    const Scena scena = popola(*temp.store);
    const QDateTime rimbalzo(QDate(2026, 3, 1), QTime(9, 0, 0, 123), Qt::UTC);
    const QDateTime adesso(QDate(2026, 3, 5), QTime(12, 0), Qt::UTC);
    const QList<BrevoAPI::Evento> eventi{
        evento(QStringLiteral("mario@ditta.it"), QStringLiteral("550 user unknown"), rimbalzo),
        evento(QStringLiteral("luisa@ditta.it"), QString(), std::nullopt),
        evento(QStringLiteral("nuovo@nessuna-lista.it"), QStringLiteral("blocked"), rimbalzo)};

    Rimbalzi::Conteggio conteggio;
    for (int i = 0; i < corse; ++i)
        conteggio = Rimbalzi::applica(*temp.store, eventi, adesso);
    QCOMPARE(conteggio.aggiunti, aggiunti);
    QCOMPARE(conteggio.giaPresenti, giaPresenti);

    // Everything was saved: a restart reads it back.
    temp.reopen();
    const Store& store = *temp.store;
    for (RecordId id : {scena.mario1, scena.mario2}) {
        const ContactRow riga = *store.find<ContactRow>(id);
        QCOMPARE(riga.erroriCount, errori);
        QCOMPARE(riga.ultimoInvio, std::optional<QDateTime>(rimbalzo));
        QCOMPARE(riga.ultimoEsitoRaw, QStringLiteral("failed"));
        QCOMPARE(riga.ultimoDettaglio, QStringLiteral("rimbalzo definitivo: 550 user unknown"));
        QCOMPARE(riga.ultimaCampagna, QStringLiteral("Primavera"));
        QCOMPARE(riga.ultimoOggetto, QStringLiteral("Le offerte di marzo"));
        QCOMPARE(riga.inviateCount, 3);
        QCOMPARE(riga.primoInvio, std::optional<QDateTime>(primoInvio));
    }
    const ContactRow luisa = *store.find<ContactRow>(scena.luisa);
    QCOMPARE(luisa.erroriCount, errori);
    QCOMPARE(luisa.ultimoInvio, std::optional<QDateTime>(adesso));
    QCOMPARE(luisa.ultimoDettaglio, QStringLiteral("rimbalzo definitivo segnalato da Brevo"));
    const ContactRow altro = *store.find<ContactRow>(scena.altro);
    QCOMPARE(altro.erroriCount, 0);
    QCOMPARE(altro.ultimoEsitoRaw, QStringLiteral("sent"));

    const QHash<QString, Suppression> esclusi = esclusioni(store);
    QCOMPARE(esclusi.size(), 3);
    QCOMPARE(esclusi.value(QStringLiteral("mario@ditta.it")).reason,
             QStringLiteral("rimbalzo definitivo: 550 user unknown"));
    QCOMPARE(esclusi.value(QStringLiteral("mario@ditta.it")).motivo(), MotivoEsclusione::casellaInesistente);
    QCOMPARE(esclusi.value(QStringLiteral("luisa@ditta.it")).reason, QStringLiteral("aggiunta a mano"));
    QCOMPARE(esclusi.value(QStringLiteral("nuovo@nessuna-lista.it")).reason,
             QStringLiteral("rimbalzo definitivo: blocked"));
    QCOMPARE(esclusi.value(QStringLiteral("nuovo@nessuna-lista.it")).motivo(), MotivoEsclusione::rifiutatoDalServer);
}

void TestChecks::applicaSameAddressTwice() {
    TempStore temp;
    const Scena scena = popola(*temp.store);
    const QDateTime adesso(QDate(2026, 3, 5), QTime(12, 0), Qt::UTC);
    const QList<BrevoAPI::Evento> eventi{evento(QStringLiteral("altro@ditta.it"), QStringLiteral("uno"), std::nullopt),
                                         evento(QStringLiteral("altro@ditta.it"), QStringLiteral("due"), std::nullopt)};
    const Rimbalzi::Conteggio conteggio = Rimbalzi::applica(*temp.store, eventi, adesso);
    QCOMPARE(conteggio.aggiunti, 1);
    QCOMPARE(conteggio.giaPresenti, 1);
    temp.reopen();
    const ContactRow altro = *temp.store->find<ContactRow>(scena.altro);
    QCOMPARE(altro.erroriCount, 2);
    QCOMPARE(altro.ultimoDettaglio, QStringLiteral("rimbalzo definitivo: due"));
    QCOMPARE(esclusioni(*temp.store).value(QStringLiteral("altro@ditta.it")).reason,
             QStringLiteral("rimbalzo definitivo: uno"));
}
