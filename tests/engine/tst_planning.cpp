#include "engine/RunPlanning.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "TempStore.h"
#include "TestEnvironment.h"

using namespace Qt::Literals::StringLiterals;

namespace {

struct Fixture {
    TempStore temp;
    ContactList list{QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email"}, QStringLiteral("email")};
    Campaign campaign{QStringLiteral("Saldi")};

    // Rows are given as addresses; a leading "!" marks a row the user excluded. Logs are sent logs of this
    // campaign, or, with a leading "failed:" or "other:", a failed one or a sent one of another campaign.
    Fixture(const QStringList& addresses, bool skipDuplicates, const QStringList& logs) {
        temp.store->insert(list);
        QList<ContactRow> rows;
        for (QString address : addresses) {
            const bool excluded = address.startsWith(u'!');
            if (excluded)
                address.remove(0, 1);
            ContactRow row({{"email", address}, {"nome", "N"}}, address);
            row.isExcluded = excluded;
            rows.append(row);
        }
        temp.store->insertRows(list.id, rows);
        campaign.listId = list.id;
        campaign.skipDuplicates = skipDuplicates;
        temp.store->insert(campaign);
        Campaign other(QStringLiteral("Altra"));
        temp.store->insert(other);
        for (const QString& entry : logs) {
            const QString kind = entry.section(u':', 0, -2);
            SendLog log(entry.section(u':', -1), QStringLiteral("S"),
                        kind == "failed" ? SendStatus::failed : SendStatus::sent, QString(), QStringLiteral("Brevo"));
            log.campaignId = kind == "other" ? other.id : campaign.id;
            temp.store->insert(log);
        }
    }
};

using Skips = QList<QPair<QString, QString>>; // address, reason text

} // namespace

class TestPlanning : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void plan_data();
    void plan();
    void sendingAddresses_data();
    void sendingAddresses();
    void staleReferencesReadAsAbsent();
};

void TestPlanning::plan_data() {
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("skipDuplicates");
    QTest::addColumn<QStringList>("logs");
    QTest::addColumn<QStringList>("suppressed");
    QTest::addColumn<QStringList>("recipients");
    QTest::addColumn<Skips>("skips");
    const QString invalid = QStringLiteral("indirizzo non valido");
    const QString duplicate = QStringLiteral("duplicato nella lista");
    const QString already = QStringLiteral("già inviata in questa campagna");
    const QString suppressed = QStringLiteral("in lista esclusi");
    const QString excluded = QStringLiteral("riga esclusa manualmente");

    QTest::newRow("no rows") << QStringList{} << true << QStringList{} << QStringList{} << QStringList{} << Skips{};
    QTest::newRow("order kept, addresses normalised") << QStringList{" B@x.it", "a@X.it\n"} << true << QStringList{}
                                                      << QStringList{} << QStringList{"b@x.it", "a@x.it"} << Skips{};
    QTest::newRow("empty address: excluded first, else vuoto")
        << QStringList{"!", "", "  "} << true << QStringList{} << QStringList{} << QStringList{}
        << Skips{{"", excluded}, {"(vuoto)", invalid}, {"(vuoto)", invalid}};
    QTest::newRow("invalid keeps its address") << QStringList{"Mario@localhost"} << true << QStringList{}
                                               << QStringList{} << QStringList{} << Skips{{"mario@localhost", invalid}};
    QTest::newRow("duplicates by case and blanks, the first is sent")
        << QStringList{"anna@b.it", " ANNA@b.it ", "anna@b.it"} << true << QStringList{} << QStringList{}
        << QStringList{"anna@b.it"} << Skips{{"anna@b.it", duplicate}, {"anna@b.it", duplicate}};
    QTest::newRow("a suppressed address twice gives two suppressed skips")
        << QStringList{"s@b.it", "S@b.it"} << true << QStringList{} << QStringList{"s@b.it"} << QStringList{}
        << Skips{{"s@b.it", suppressed}, {"s@b.it", suppressed}};
    QTest::newRow("delivered twice gives two alreadySent")
        << QStringList{"d@b.it", "d@b.it", "n@b.it"} << true << QStringList{"D@B.it"} << QStringList{}
        << QStringList{"n@b.it"} << Skips{{"d@b.it", already}, {"d@b.it", already}};
    QTest::newRow("failures and other campaigns don't count")
        << QStringList{"a@b.it"} << true << QStringList{"other:a@b.it", "failed:a@b.it"} << QStringList{}
        << QStringList{"a@b.it"} << Skips{};
    QTest::newRow("skipDuplicates off plans delivered again")
        << QStringList{"d@b.it"} << false << QStringList{"d@b.it"} << QStringList{} << QStringList{"d@b.it"} << Skips{};
    QTest::newRow("an excluded row shadows nothing")
        << QStringList{"!e@b.it", "e@b.it"} << true << QStringList{} << QStringList{} << QStringList{"e@b.it"}
        << Skips{{"e@b.it", excluded}};
    // Accented domains: compared, and planned, in their ASCII form.
    QTest::newRow("an accented domain and its ASCII form are one recipient")
        << QStringList{u"a@müller.it"_s, u"A@XN--MLLER-KVA.it"_s} << true << QStringList{} << QStringList{}
        << QStringList{u"a@xn--mller-kva.it"_s} << Skips{{u"a@xn--mller-kva.it"_s, duplicate}};
    QTest::newRow("an exclusion in either form holds for both")
        << QStringList{u"s@xn--mller-kva.it"_s, u"t@müller.it"_s} << true << QStringList{}
        << QStringList{u"s@müller.it"_s, u"t@xn--mller-kva.it"_s} << QStringList{}
        << Skips{{u"s@xn--mller-kva.it"_s, suppressed}, {u"t@xn--mller-kva.it"_s, suppressed}};
    QTest::newRow("delivered under the accented form")
        << QStringList{u"d@xn--mller-kva.it"_s} << true << QStringList{u"d@müller.it"_s} << QStringList{}
        << QStringList{} << Skips{{u"d@xn--mller-kva.it"_s, already}};
    QTest::newRow("smuggled parameters and accented local parts are invalid")
        << QStringList{u"a@b.it> NOTIFY=NEVER"_s, u"niccolò@b.it"_s} << true << QStringList{} << QStringList{}
        << QStringList{} << Skips{{u"a@b.it> notify=never"_s, invalid}, {u"niccolò@b.it"_s, invalid}};
    QTest::newRow("suppressed comes before already sent")
        << QStringList{"x@b.it"} << true << QStringList{"x@b.it"} << QStringList{"x@b.it"} << QStringList{}
        << Skips{{"x@b.it", suppressed}};
}

void TestPlanning::plan() {
    QFETCH(QStringList, rows);
    QFETCH(bool, skipDuplicates);
    QFETCH(QStringList, logs);
    QFETCH(QStringList, suppressed);
    QFETCH(QStringList, recipients);
    QFETCH(Skips, skips);
    Fixture f(rows, skipDuplicates, logs);
    auto plan =
        RunPlanning::plan(f.campaign, f.list, QSet<QString>(suppressed.cbegin(), suppressed.cend()), *f.temp.store);
    // Each recipient gets its own row's values, though planning skipped rows in between.
    RunPlanning::caricaValori(*f.temp.store, f.list.id, plan.recipients);
    QStringList planned;
    QSet<QUuid> ids;
    for (const auto& recipient : plan.recipients) {
        planned << recipient.email;
        const RowValues values = recipient.values();
        QCOMPARE(values.value("nome"), QStringLiteral("N"));
        QCOMPARE(wireAddress(Text::normalizedAddress(values.value("email"))), recipient.email);
        QCOMPARE(recipient.id.version(), QUuid::Random);
        ids.insert(recipient.id);
    }
    QCOMPARE(planned, recipients);
    QCOMPARE(ids.size(), plan.recipients.size());
    Skips found;
    for (const auto& skip : plan.skips)
        found.append({skip.email, RunPlanning::rawValue(skip.reason)});
    QCOMPARE(found, skips);
}

void TestPlanning::sendingAddresses_data() {
    QTest::addColumn<QString>("fromEmail");
    QTest::addColumn<QString>("replyTo");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("wireFrom"); // with no error
    QTest::addColumn<QString>("wireReplyTo");
    QTest::newRow("trimmed, case kept") << u" Info@Ditta.it\n"_s << u""_s << QString() << u"Info@Ditta.it"_s << u""_s;
    QTest::newRow("accented domains in ASCII form")
        << u"info@città.it"_s << u"r@müller.de"_s << QString() << u"info@xn--citt-3na.it"_s << u"r@xn--mller-kva.de"_s;
    QTest::newRow("blank reply address is none") << u"a@b.it"_s << u"  "_s << QString() << u"a@b.it"_s << u""_s;
    QTest::newRow("sender first") << u"a@b.it>"_s << u"r@b.it>"_s << u"Indirizzo mittente non valido"_s << QString()
                                  << QString();
}

void TestPlanning::sendingAddresses() {
    QFETCH(QString, fromEmail);
    QFETCH(QString, replyTo);
    QFETCH(QString, error);
    QFETCH(QString, wireFrom);
    QFETCH(QString, wireReplyTo);
    SMTPConfig config;
    config.fromEmail = fromEmail;
    config.replyTo = replyTo;
    const std::optional<QString> result = RunPlanning::indirizziNonValidi(config);
    QCOMPARE(result.value_or(QString()), error);
    if (!result) {
        QCOMPARE(config.fromEmail, wireFrom);
        QCOMPARE(config.replyTo, wireReplyTo);
    }
}

void TestPlanning::staleReferencesReadAsAbsent() {
    Fixture f({"a@b.it"}, true, {});
    const auto senzaLista = RunPlanning::plan(f.campaign, std::nullopt, {}, *f.temp.store);
    QVERIFY(senzaLista.recipients.isEmpty() && senzaLista.skips.isEmpty());
    MessageTemplate model(QStringLiteral("T"), QString(), QString());
    f.temp.store->insert(model);
    f.campaign.templateId = model.id;
    QVERIFY(RunPlanning::listaValida(f.campaign, *f.temp.store));
    QVERIFY(RunPlanning::modelloValido(f.campaign, *f.temp.store));
    f.temp.store->remove<ContactList>(f.list.id);
    f.temp.store->remove<MessageTemplate>(model.id);
    // A list made afterwards never takes the old identity.
    ContactList newer(QStringLiteral("Nuova"), QString(), {}, QString());
    f.temp.store->insert(newer);
    QVERIFY(!RunPlanning::listaValida(f.campaign, *f.temp.store));
    QVERIFY(!RunPlanning::modelloValido(f.campaign, *f.temp.store));
    QVERIFY(!RunPlanning::listaValida(Campaign(QStringLiteral("senza")), *f.temp.store));
}

BREZZARIO_TEST_GUILESS_MAIN(TestPlanning)
#include "tst_planning.moc"
