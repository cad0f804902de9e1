#include "tst_checks.h"

#include "checks/BrevoAPI.h"

#include <QtTest>
#include <QUrlQuery>

using BrevoAPI::Errore;
using BrevoAPI::Evento;

namespace {

struct Esiti {
    QList<Evento> eventi;
    std::optional<Errore> errore;
};

QCoro::Task<Esiti> raccogli(QCoro::Task<QList<Evento>> richiesta) {
    try {
        QList<Evento> eventi = co_await std::move(richiesta);
        co_return Esiti{std::move(eventi), std::nullopt};
    } catch (const Errore& errore) {
        co_return Esiti{{}, errore};
    }
}

Esiti chiedi(const QString& chiave, int giorni = 30) {
    return QCoro::waitFor(raccogli(BrevoAPI::eventi(QStringLiteral("hardBounces"), giorni, chiave)));
}

Esiti chiediIndirizzi(const QString& chiave) {
    return QCoro::waitFor(raccogli(BrevoAPI::indirizziDaEscludere(7, chiave)));
}

// One event as "email|date in UTC with milliseconds|reason|kind".
QString riga(const Evento& evento) {
    const QString data = evento.data ? evento.data->toUTC().toString(Qt::ISODateWithMs) : QString();
    return QStringList{evento.email, data, evento.motivo, evento.tipo}.join(u'|');
}

QStringList righe(const QList<Evento>& eventi) {
    QStringList result;
    for (const Evento& evento : eventi)
        result.append(riga(evento));
    return result;
}

const QString rifiutata =
    QStringLiteral("Chiave API rifiutata da Brevo (401). Verifica di aver usato la chiave API e non la chiave SMTP.");
const QString percorso = QStringLiteral("/v3/smtp/statistics/events");

QByteArray eventiJSON(const QList<QByteArray>& oggetti) {
    return R"({"events":[)" + oggetti.join(',') + "]}";
}

} // namespace

void TestChecks::leggiEventi_data() {
    QTest::addColumn<QByteArray>("corpo");
    QTest::addColumn<QStringList>("eventi");
    QTest::newRow("one full event")
        << eventiJSON({R"({"email":"mario@ditta.it","date":"2026-03-01T10:00:00.123+01:00","messageId":"<1@x>",)"
                       R"("event":"hardBounces","reason":"550 user unknown","tag":""})"})
        << QStringList{"mario@ditta.it|2026-03-01T09:00:00.123Z|550 user unknown|hardBounces"};
    QTest::newRow("address trimmed and lower-cased, order kept")
        << eventiJSON({R"({"email":"  Mario@Ditta.IT \n","event":"blocked"})", R"({"email":"a@b.it"})"})
        << QStringList{"mario@ditta.it|||blocked", "a@b.it|||richiesto"};
    QTest::newRow("events without a usable address skipped")
        << eventiJSON({R"({"email":""})", R"({"reason":"x"})", R"({"email":42})", R"({"email":"a@b.it"})"})
        << QStringList{"a@b.it|||richiesto"};
    QTest::newRow("dates: fraction of one digit, negative offset; no zone, blank for T, no such day")
        << eventiJSON({R"({"email":"a@b.it","date":"2026-03-01T10:00:00.5Z"})",
                       R"({"email":"b@b.it","date":"2026-03-01T04:30:00-05:30"})",
                       R"({"email":"c@b.it","date":"2026-03-01T10:00:00"})",
                       R"({"email":"d@b.it","date":"2026-03-01 10:00:00Z"})",
                       R"({"email":"e@b.it","date":"2026-02-30T10:00:00Z"})"})
        << QStringList{"a@b.it|2026-03-01T10:00:00.500Z||richiesto", "b@b.it|2026-03-01T10:00:00.000Z||richiesto",
                       "c@b.it|||richiesto", "d@b.it|||richiesto", "e@b.it|||richiesto"};
    QTest::newRow("fields that aren't texts, or a bad date")
        << eventiJSON(
               {R"({"email":"a@b.it","reason":5,"event":null,"date":17})", R"({"email":"c@b.it","date":"ieri"})"})
        << QStringList{"a@b.it|||richiesto", "c@b.it|||richiesto"};
    QTest::newRow("top level is an array") << QByteArray(R"([{"email":"a@b.it"}])") << QStringList{};
    QTest::newRow("events not an array") << QByteArray(R"({"events":{"email":"a@b.it"}})") << QStringList{};
    QTest::newRow("one event not an object") << eventiJSON({R"({"email":"a@b.it"})", "3"}) << QStringList{};
}

void TestChecks::leggiEventi() {
    QFETCH(QByteArray, corpo);
    QFETCH(QStringList, eventi);
    const QList<Evento> letti = BrevoAPI::leggiEventi(corpo, QStringLiteral("richiesto"));
    QCOMPARE(righe(letti), eventi);
    QSet<QUuid> identita;
    for (const Evento& evento : letti)
        identita.insert(evento.id);
    QCOMPARE(identita.size(), letti.size());
    QVERIFY(!identita.contains(QUuid()));
}

void TestChecks::eventiRequest_data() {
    QTest::addColumn<int>("giorni");
    QTest::addColumn<QString>("days");
    QTest::newRow("0 asks for 1") << 0 << "1";
    QTest::newRow("90") << 90 << "90";
    QTest::newRow("120 asks for 90") << 120 << "90";
}

void TestChecks::eventiRequest() {
    QFETCH(int, giorni);
    QFETCH(QString, days);
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    const Esiti esiti = chiedi(QStringLiteral("  xkeysib-123\n"), giorni);
    QVERIFY(!esiti.errore);
    const QList<HttpsServer::Request> richieste = m_https->requests();
    QCOMPARE(richieste.size(), 1);
    QCOMPARE(richieste.first().method, QByteArray("GET"));
    QCOMPARE(richieste.first().url.path(), percorso);
    QCOMPARE(richieste.first().url.query(),
             QStringLiteral("limit=2500&offset=0&days=%1&event=hardBounces&sort=desc").arg(days));
    QCOMPARE(richieste.first().header("api-key"), QByteArray("xkeysib-123"));
    QCOMPARE(richieste.first().header("accept"), QByteArray("application/json"));
}

void TestChecks::eventiAnswers_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("corpo");
    QTest::addColumn<QString>("descrizione"); // empty: no error
    QTest::addColumn<QStringList>("eventi");
    const QByteArray lungo = QByteArray(150, 'x') + QByteArray(150, 'y');
    // 199 letters, then an "e" with a combining accent: the 200th character is two code points.
    const QByteArray accento = QByteArray(199, 'a') + "e\xcc\x81" + "zzz";
    const QString risposto = QStringLiteral("Brevo ha risposto %1: ");
    QTest::newRow("events, dates with and without a fraction")
        << 200
        << eventiJSON({R"({"email":"Mario@Ditta.it","date":"2026-03-01T10:00:00.123+01:00",)"
                       R"("event":"hardBounces","reason":"550 5.1.1 user unknown"})",
                       R"({"email":"luisa@ditta.it","date":"2026-03-02T08:15:00Z","event":"hardBounces"})",
                       R"({"email":"","event":"hardBounces"})"})
        << QString()
        << QStringList{"mario@ditta.it|2026-03-01T09:00:00.123Z|550 5.1.1 user unknown|hardBounces",
                       "luisa@ditta.it|2026-03-02T08:15:00.000Z||hardBounces"};
    QTest::newRow("401 has a fixed text")
        << 401 << QByteArray(R"({"code":"unauthorized"})") << rifiutata << QStringList{};
    QTest::newRow("403 body cut at 200 characters")
        << 403 << lungo << risposto.arg(403) + QString(150, u'x') + QString(50, u'y') << QStringList{};
    QTest::newRow("cut keeps a whole character")
        << 403 << accento << risposto.arg(403) + QString(199, u'a') + QString::fromUtf8("e\xcc\x81") << QStringList{};
    QTest::newRow("body that isn't UTF-8") << 500 << QByteArray("\xff\xfe error") << risposto.arg(500) << QStringList{};
    QTest::newRow("body holding a placeholder")
        << 429 << QByteArray("%1 %2") << risposto.arg(429) + "%1 %2" << QStringList{};
    QTest::newRow("204 without a body") << 204 << QByteArray() << QString() << QStringList{};
    QTest::newRow("malformed JSON") << 200 << QByteArray(R"({"events":[{"email":)") << QString() << QStringList{};
}

void TestChecks::eventiAnswers() {
    QFETCH(int, status);
    QFETCH(QByteArray, corpo);
    QFETCH(QString, descrizione);
    QFETCH(QStringList, eventi);
    m_https->answer(percorso, {status, corpo, {}});
    const Esiti esiti = chiedi(QStringLiteral("chiave"));
    QCOMPARE(esiti.errore ? esiti.errore->errorDescription() : QString(), descrizione);
    if (esiti.errore) {
        QCOMPARE(esiti.errore->caso(), Errore::rispostaNonValida);
        QCOMPARE(esiti.errore->status(), status);
        QCOMPARE(QString::fromUtf8(esiti.errore->what()), descrizione);
    }
    QCOMPARE(righe(esiti.eventi), eventi);
}

void TestChecks::blankKeySendsNothing() {
    const QString chiave = QString::fromUtf16(u"  \t\n\u00a0\u2003\r\n ");
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    const Esiti esiti = chiedi(chiave);
    QVERIFY(esiti.errore);
    QCOMPARE(esiti.errore->caso(), Errore::chiaveMancante);
    QCOMPARE(esiti.errore->errorDescription(), QStringLiteral("Manca la chiave API di Brevo."));
    const Esiti indirizzi = chiediIndirizzi(chiave);
    QVERIFY(indirizzi.errore);
    QCOMPARE(indirizzi.errore->caso(), Errore::chiaveMancante);
    QCOMPARE(m_https->requests().size(), 0);
}

void TestChecks::networkFailures() {
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    // A certificate from an authority nobody trusts: TLS verification stays on.
    BrevoAPI::setCertificatiAggiuntiviPerTest({});
    Esiti esiti = chiedi(QStringLiteral("chiave"));
    QVERIFY(esiti.errore);
    QCOMPARE(esiti.errore->caso(), Errore::rete);
    QVERIFY2(esiti.errore->errorDescription().startsWith(QStringLiteral("Errore di rete: ")),
             qPrintable(esiti.errore->errorDescription()));
    QVERIFY(!esiti.errore->testo().isEmpty());
    QCOMPARE(m_https->requests().size(), 0);

    // Nobody listening.
    BrevoAPI::setCertificatiAggiuntiviPerTest(m_ca->certificates());
    QUrl chiuso = m_https->baseUrl();
    chiuso.setPort(1);
    BrevoAPI::setBaseUrlPerTest(chiuso);
    esiti = chiedi(QStringLiteral("chiave"));
    BrevoAPI::setBaseUrlPerTest(m_https->baseUrl());
    QVERIFY(esiti.errore);
    QCOMPARE(esiti.errore->caso(), Errore::rete);
}

void TestChecks::indirizziDaEscludere_data() {
    QTest::addColumn<int>("statusDefinitivi");
    QTest::addColumn<QByteArray>("definitivi");
    QTest::addColumn<int>("statusBloccati");
    QTest::addColumn<QByteArray>("bloccati");
    QTest::addColumn<QStringList>("eventi");
    QTest::addColumn<QString>("descrizione");
    QTest::addColumn<QStringList>("richieste"); // the kinds asked, in order
    const QByteArray ab = eventiJSON({R"({"email":"a@x.it","event":"hardBounces","reason":"550 user unknown"})",
                                      R"({"email":"b@x.it","event":"hardBounces","reason":"mailbox unavailable"})"});
    const QStringList entrambi{"hardBounces", "blocked"};
    QTest::newRow("blocked answering 500 is ignored")
        << 200 << ab << 500 << QByteArray("errore interno")
        << QStringList{"a@x.it||550 user unknown|hardBounces", "b@x.it||mailbox unavailable|hardBounces"} << ""
        << entrambi;
    QTest::newRow("hard bounce first, one event per address")
        << 200
        << eventiJSON({R"({"email":"a@x.it","event":"hardBounces","reason":"550 user unknown"})",
                       R"({"email":"A@x.it","event":"hardBounces","reason":"due"})"})
        << 200
        << eventiJSON({R"({"email":"a@x.it","event":"blocked","reason":"blocked"})",
                       R"({"email":"c@x.it","event":"blocked","reason":"blocked"})"})
        << QStringList{"a@x.it||550 user unknown|hardBounces", "c@x.it||blocked|blocked"} << "" << entrambi;
    QTest::newRow("hard bounces refused: the error, and no second query")
        << 401 << QByteArray() << 200 << eventiJSON({R"({"email":"c@x.it"})"}) << QStringList{} << rifiutata
        << QStringList{"hardBounces"};
}

void TestChecks::indirizziDaEscludere() {
    QFETCH(int, statusDefinitivi);
    QFETCH(QByteArray, definitivi);
    QFETCH(int, statusBloccati);
    QFETCH(QByteArray, bloccati);
    QFETCH(QStringList, eventi);
    QFETCH(QString, descrizione);
    QFETCH(QStringList, richieste);
    m_https->answer(percorso, {statusDefinitivi, definitivi, {}}, {{"event", "hardBounces"}});
    m_https->answer(percorso, {statusBloccati, bloccati, {}}, {{"event", "blocked"}});
    const Esiti esiti = chiediIndirizzi(QStringLiteral("chiave"));
    QCOMPARE(esiti.errore ? esiti.errore->errorDescription() : QString(), descrizione);
    QCOMPARE(righe(esiti.eventi), eventi);
    QStringList chiesti;
    for (const HttpsServer::Request& richiesta : m_https->requests()) {
        const QUrlQuery query(richiesta.url);
        QCOMPARE(query.queryItemValue(QStringLiteral("days")), QStringLiteral("7"));
        chiesti.append(query.queryItemValue(QStringLiteral("event")));
    }
    QCOMPARE(chiesti, richieste);
}
