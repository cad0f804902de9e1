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

QCoro::Task<Esiti> chiedi(QString tipo, int giorni, QString chiave) {
    try {
        QList<Evento> eventi = co_await BrevoAPI::eventi(std::move(tipo), giorni, std::move(chiave));
        co_return Esiti{std::move(eventi), std::nullopt};
    } catch (const Errore& errore) {
        co_return Esiti{{}, errore};
    }
}

QCoro::Task<Esiti> chiediIndirizzi(int giorni, QString chiave) {
    try {
        QList<Evento> eventi = co_await BrevoAPI::indirizziDaEscludere(giorni, std::move(chiave));
        co_return Esiti{std::move(eventi), std::nullopt};
    } catch (const Errore& errore) {
        co_return Esiti{{}, errore};
    }
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

void TestChecks::leggiData_data() {
    QTest::addColumn<QString>("testo");
    QTest::addColumn<QDateTime>("data"); // invalid: none
    const auto utc = [](int h, int m, int s, int ms) {
        return QDateTime(QDate(2026, 3, 1), QTime(h, m, s, ms), Qt::UTC);
    };
    QTest::newRow("fraction and offset") << "2026-03-01T10:00:00.123+01:00" << utc(9, 0, 0, 123);
    QTest::newRow("offset, no fraction") << "2026-03-01T10:00:00+01:00" << utc(9, 0, 0, 0);
    QTest::newRow("zone letter") << "2026-03-01T10:00:00Z" << utc(10, 0, 0, 0);
    QTest::newRow("one digit of fraction") << "2026-03-01T10:00:00.5Z" << utc(10, 0, 0, 500);
    QTest::newRow("negative offset") << "2026-03-01T04:30:00-05:30" << utc(10, 0, 0, 0);
    QTest::newRow("no zone") << "2026-03-01T10:00:00" << QDateTime();
    QTest::newRow("blank for T") << "2026-03-01 10:00:00Z" << QDateTime();
    QTest::newRow("date only") << "2026-03-01" << QDateTime();
    QTest::newRow("no such day") << "2026-02-30T10:00:00Z" << QDateTime();
    QTest::newRow("words") << "ieri sera" << QDateTime();
    QTest::newRow("empty") << "" << QDateTime();
}

void TestChecks::leggiData() {
    QFETCH(QString, testo);
    QFETCH(QDateTime, data);
    const std::optional<QDateTime> letta = BrevoAPI::leggiData(testo);
    QCOMPARE(letta.has_value(), data.isValid());
    if (letta)
        QCOMPARE(letta->toUTC(), data);
}

void TestChecks::leggiEventi_data() {
    QTest::addColumn<QByteArray>("corpo");
    QTest::addColumn<QStringList>("eventi");
    QTest::newRow("one full event")
        << eventiJSON({R"({"email":"mario@ditta.it","date":"2026-03-01T10:00:00.123+01:00","messageId":"<1@x>",)"
                       R"("event":"hardBounces","reason":"550 user unknown","tag":""})"})
        << QStringList{"mario@ditta.it|2026-03-01T09:00:00.123Z|550 user unknown|hardBounces"};
    QTest::newRow("address trimmed and lower-cased")
        << eventiJSON({R"({"email":"  Mario@Ditta.IT \n","event":"blocked"})"})
        << QStringList{"mario@ditta.it|||blocked"};
    QTest::newRow("events without a usable address skipped")
        << eventiJSON({R"({"email":""})", R"({"reason":"x"})", R"({"email":42})", R"({"email":"a@b.it"})"})
        << QStringList{"a@b.it|||richiesto"};
    QTest::newRow("reason and kind that aren't texts")
        << eventiJSON({R"({"email":"a@b.it","reason":5,"event":null,"date":17})"}) << QStringList{"a@b.it|||richiesto"};
    QTest::newRow("bad date gives none") << eventiJSON({R"({"email":"a@b.it","date":"ieri"})"})
                                         << QStringList{"a@b.it|||richiesto"};
    QTest::newRow("order kept") << eventiJSON({R"({"email":"b@b.it"})", R"({"email":"a@b.it"})"})
                                << QStringList{"b@b.it|||richiesto", "a@b.it|||richiesto"};
    QTest::newRow("no events") << QByteArray(R"({"events":[]})") << QStringList{};
    QTest::newRow("not JSON") << QByteArray("<html>errore</html>") << QStringList{};
    QTest::newRow("empty body") << QByteArray() << QStringList{};
    QTest::newRow("top level is an array") << QByteArray(R"([{"email":"a@b.it"}])") << QStringList{};
    QTest::newRow("events missing") << QByteArray(R"({"count":0})") << QStringList{};
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

void TestChecks::erroreTexts_data() {
    QTest::addColumn<int>("caso");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("testo");
    QTest::addColumn<QString>("descrizione");
    QTest::newRow("401") << int(Errore::rispostaNonValida) << 401 << R"({"message":"Key not found"})" << rifiutata;
    QTest::newRow("403") << int(Errore::rispostaNonValida) << 403 << "Forbidden"
                         << "Brevo ha risposto 403: Forbidden";
    QTest::newRow("body holding a placeholder") << int(Errore::rispostaNonValida) << 500 << "%1 %2"
                                                << "Brevo ha risposto 500: %1 %2";
    QTest::newRow("network") << int(Errore::rete) << 0 << "Connection refused"
                             << "Errore di rete: Connection refused";
    QTest::newRow("no key") << int(Errore::chiaveMancante) << 0 << ""
                            << "Manca la chiave API di Brevo.";
}

void TestChecks::erroreTexts() {
    QFETCH(int, caso);
    QFETCH(int, status);
    QFETCH(QString, testo);
    QFETCH(QString, descrizione);
    const Errore errore = caso == Errore::rispostaNonValida ? Errore::rispostaNonValidaDi(status, testo)
                          : caso == Errore::rete            ? Errore::reteDi(testo)
                                                            : Errore::chiaveMancanteDi();
    QCOMPARE(int(errore.caso()), caso);
    QCOMPARE(errore.errorDescription(), descrizione);
    QCOMPARE(QString::fromUtf8(errore.what()), descrizione);
}

void TestChecks::eventiRequest_data() {
    QTest::addColumn<int>("giorni");
    QTest::addColumn<QString>("days");
    QTest::newRow("30") << 30 << "30";
    QTest::newRow("0 asks for 1") << 0 << "1";
    QTest::newRow("negative asks for 1") << -5 << "1";
    QTest::newRow("90") << 90 << "90";
    QTest::newRow("120 asks for 90") << 120 << "90";
}

void TestChecks::eventiRequest() {
    QFETCH(int, giorni);
    QFETCH(QString, days);
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    const Esiti esiti =
        QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), giorni, QStringLiteral("  xkeysib-123\n")));
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

void TestChecks::eventiReadsEvents() {
    m_https->answer(percorso,
                    {200,
                     eventiJSON({R"({"email":"Mario@Ditta.it","date":"2026-03-01T10:00:00.123+01:00",)"
                                 R"("event":"hardBounces","reason":"550 5.1.1 user unknown"})",
                                 R"({"email":"luisa@ditta.it","date":"2026-03-02T08:15:00Z","event":"hardBounces"})",
                                 R"({"email":"","event":"hardBounces"})"}),
                     {}});
    const Esiti esiti = QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), 30, QStringLiteral("chiave")));
    QVERIFY(!esiti.errore);
    QCOMPARE(righe(esiti.eventi),
             (QStringList{"mario@ditta.it|2026-03-01T09:00:00.123Z|550 5.1.1 user unknown|hardBounces",
                          "luisa@ditta.it|2026-03-02T08:15:00.000Z||hardBounces"}));
}

void TestChecks::eventiFailures_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("corpo");
    QTest::addColumn<QString>("descrizione"); // empty: no error
    QTest::addColumn<int>("quanti");
    const QByteArray lungo = QByteArray(150, 'x') + QByteArray(150, 'y');
    // 199 letters, then an "e" with a combining accent: the 200th character is two code points.
    const QByteArray accento = QByteArray(199, 'a') + "e\xcc\x81" + "zzz";
    QTest::newRow("401 has a fixed text") << 401 << QByteArray(R"({"code":"unauthorized"})") << rifiutata << 0;
    QTest::newRow("403 body cut at 200 characters")
        << 403 << lungo << "Brevo ha risposto 403: " + QString(150, u'x') + QString(50, u'y') << 0;
    QTest::newRow("cut keeps a whole character")
        << 403 << accento << "Brevo ha risposto 403: " + QString(199, u'a') + QString::fromUtf8("e\xcc\x81") << 0;
    QTest::newRow("body that isn't UTF-8") << 500 << QByteArray("\xff\xfe error") << "Brevo ha risposto 500: " << 0;
    QTest::newRow("429") << 429 << QByteArray("Too many requests") << "Brevo ha risposto 429: Too many requests" << 0;
    QTest::newRow("204 without a body") << 204 << QByteArray() << "" << 0;
    QTest::newRow("malformed JSON") << 200 << QByteArray(R"({"events":[{"email":)") << "" << 0;
    QTest::newRow("events of the wrong shape") << 200 << QByteArray(R"({"events":"none"})") << "" << 0;
    QTest::newRow("one event") << 200 << eventiJSON({R"({"email":"a@b.it"})"}) << "" << 1;
}

void TestChecks::eventiFailures() {
    QFETCH(int, status);
    QFETCH(QByteArray, corpo);
    QFETCH(QString, descrizione);
    QFETCH(int, quanti);
    m_https->answer(percorso, {status, corpo, {}});
    const Esiti esiti = QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), 30, QStringLiteral("chiave")));
    QCOMPARE(esiti.errore ? esiti.errore->errorDescription() : QString(), descrizione);
    if (esiti.errore) {
        QCOMPARE(esiti.errore->caso(), Errore::rispostaNonValida);
        QCOMPARE(esiti.errore->status(), status);
    }
    QCOMPARE(esiti.eventi.size(), quanti);
}

void TestChecks::blankKeySendsNothing_data() {
    QTest::addColumn<QString>("chiave");
    QTest::newRow("empty") << "";
    QTest::newRow("spaces") << "     ";
    QTest::newRow("tabs and newlines") << "\t\n \r\n";
    QTest::newRow("no-break spaces") << QString::fromUtf16(u"\u00a0\u2003");
}

void TestChecks::blankKeySendsNothing() {
    QFETCH(QString, chiave);
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    const Esiti esiti = QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), 30, chiave));
    QVERIFY(esiti.errore);
    QCOMPARE(esiti.errore->caso(), Errore::chiaveMancante);
    QCOMPARE(esiti.errore->errorDescription(), QStringLiteral("Manca la chiave API di Brevo."));
    const Esiti indirizzi = QCoro::waitFor(chiediIndirizzi(30, chiave));
    QVERIFY(indirizzi.errore);
    QCOMPARE(indirizzi.errore->caso(), Errore::chiaveMancante);
    QCOMPARE(m_https->requests().size(), 0);
}

void TestChecks::untrustedServerIsANetworkError() {
    m_https->answer(percorso, {200, R"({"events":[]})", {}});
    // A certificate from an authority nobody trusts: TLS verification stays on.
    BrevoAPI::setCertificatiAggiuntiviPerTest({});
    Esiti esiti = QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), 30, QStringLiteral("chiave")));
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
    esiti = QCoro::waitFor(chiedi(QStringLiteral("hardBounces"), 30, QStringLiteral("chiave")));
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
        << 200 << ab << 200
        << eventiJSON({R"({"email":"B@x.it","event":"blocked","reason":"blocked"})",
                       R"({"email":"c@x.it","event":"blocked","reason":"blocked"})"})
        << QStringList{"a@x.it||550 user unknown|hardBounces", "b@x.it||mailbox unavailable|hardBounces",
                       "c@x.it||blocked|blocked"}
        << "" << entrambi;
    QTest::newRow("same address twice in one list")
        << 200 << eventiJSON({R"({"email":"a@x.it","reason":"uno"})", R"({"email":"a@x.it","reason":"due"})"}) << 200
        << QByteArray(R"({"events":[]})") << QStringList{"a@x.it||uno|hardBounces"} << "" << entrambi;
    QTest::newRow("hard bounces refused: the error, and no second query")
        << 401 << QByteArray() << 200 << eventiJSON({R"({"email":"c@x.it"})"}) << QStringList{} << rifiutata
        << QStringList{"hardBounces"};
    QTest::newRow("nothing anywhere") << 200 << QByteArray(R"({"events":[]})") << 200 << QByteArray(R"({"events":[]})")
                                      << QStringList{} << "" << entrambi;
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
    const Esiti esiti = QCoro::waitFor(chiediIndirizzi(7, QStringLiteral("chiave")));
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
