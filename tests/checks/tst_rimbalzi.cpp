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
    QList<ContactRow> righe[2];
    const QStringList indirizzi[2] = {{"mario@ditta.it", "  Luisa@Ditta.it "}, {"MARIO@ditta.it", "altro@ditta.it"}};
    const QString nomi[2] = {QStringLiteral("Clienti"), QStringLiteral("Fornitori")};
    for (int l = 0; l < 2; ++l) {
        ContactList lista(nomi[l], nomi[l] + ".csv", {QStringLiteral("email")}, QStringLiteral("email"));
        store.insert(lista);
        for (const QString& email : indirizzi[l])
            righe[l].append(rigaInviata(email));
        store.insertRows(lista.id, righe[l]);
    }
    Suppression giaEsclusa(QStringLiteral("luisa@ditta.it"), QStringLiteral("aggiunta a mano"));
    store.insert(giaEsclusa);
    store.save();
    return {righe[0].at(0).id, righe[0].at(1).id, righe[1].at(0).id, righe[1].at(1).id};
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
    QTest::newRow("first download") << 1 << 2 << 3;
    // Downloading the same period again counts every failure again; every address is now present.
    QTest::newRow("same period again") << 2 << 0 << 5;
}

void TestChecks::applica() {
    QFETCH(int, corse);
    QFETCH(int, aggiunti);
    QFETCH(int, giaPresenti);
    TempStore temp;
    const Scena scena = popola(*temp.store);
    const QDateTime rimbalzo(QDate(2026, 3, 1), QTime(9, 0, 0, 123), Qt::UTC);
    const QDateTime adesso(QDate(2026, 3, 5), QTime(12, 0), Qt::UTC);
    const QList<BrevoAPI::Evento> eventi{
        evento(QStringLiteral("mario@ditta.it"), QStringLiteral("550 user unknown"), rimbalzo),
        evento(QStringLiteral("luisa@ditta.it"), QStringLiteral("casella piena"), std::nullopt),
        evento(QStringLiteral("luisa@ditta.it"), QString(), std::nullopt),
        evento(QStringLiteral("nuovo@nessuna-lista.it"), QStringLiteral("blocked"), rimbalzo),
        evento(QStringLiteral("nuovo@nessuna-lista.it"), QStringLiteral("secondo"), rimbalzo)};

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
        QCOMPARE(riga.erroriCount, corse);
        QCOMPARE(riga.ultimoInvio, std::optional<QDateTime>(rimbalzo));
        QCOMPARE(riga.ultimoEsitoRaw, QStringLiteral("failed"));
        QCOMPARE(riga.ultimoDettaglio, QStringLiteral("rimbalzo definitivo: 550 user unknown"));
        QCOMPARE(riga.ultimaCampagna, QStringLiteral("Primavera"));
        QCOMPARE(riga.ultimoOggetto, QStringLiteral("Le offerte di marzo"));
        QCOMPARE(riga.inviateCount, 3);
        QCOMPARE(riga.primoInvio, std::optional<QDateTime>(primoInvio));
    }
    // Two events for one address: both count, the last one shows on the row.
    const ContactRow luisa = *store.find<ContactRow>(scena.luisa);
    QCOMPARE(luisa.erroriCount, 2 * corse);
    QCOMPARE(luisa.ultimoInvio, std::optional<QDateTime>(adesso));
    QCOMPARE(luisa.ultimoDettaglio, QStringLiteral("rimbalzo definitivo segnalato da Brevo"));
    const ContactRow altro = *store.find<ContactRow>(scena.altro);
    QCOMPARE(altro.erroriCount, 0);
    QCOMPARE(altro.ultimoEsitoRaw, QStringLiteral("sent"));

    // The first event for an address gives the new suppression its reason.
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
