#include "engine/RunPlanning.h"
#include "TempStore.h"
#include "TestEnvironment.h"

using RunPlanning::SkipReason;

namespace {

struct Fixture {
    TempStore temp;
    ContactList list{QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email"}, QStringLiteral("email")};
    Campaign campaign{QStringLiteral("Saldi")};

    // Rows are given as addresses; a leading "!" marks a row the user excluded.
    Fixture(const QStringList& addresses, bool skipDuplicates, const QStringList& delivered) {
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
        for (const QString& address : delivered) {
            SendLog log(address, QStringLiteral("S"), SendStatus::sent, QString(), QStringLiteral("Brevo"));
            log.campaignId = campaign.id;
            temp.store->insert(log);
        }
    }
};

using Skips = QList<QPair<QString, QString>>; // address, reason text

Skips skipsOf(const RunPlanning::Plan& plan) {
    Skips result;
    for (const auto& skip : plan.skips)
        result.append({skip.email, RunPlanning::rawValue(skip.reason)});
    return result;
}

QStringList recipientsOf(const RunPlanning::Plan& plan) {
    QStringList result;
    for (const auto& recipient : plan.recipients)
        result.append(recipient.email);
    return result;
}

} // namespace

class TestPlanning : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void plan_data();
    void plan();
    void otherCampaignsDontCount();
    void absentListPlansNothing();
    void staleReferencesReadAsAbsent();
};

void TestPlanning::plan_data() {
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("skipDuplicates");
    QTest::addColumn<QStringList>("delivered"); // sent logs of this campaign
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
    QTest::newRow("empty address: excluded or vuoto")
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
    QTest::newRow("skipDuplicates off plans delivered again")
        << QStringList{"d@b.it"} << false << QStringList{"d@b.it"} << QStringList{} << QStringList{"d@b.it"} << Skips{};
    QTest::newRow("an excluded row shadows nothing")
        << QStringList{"!e@b.it", "e@b.it"} << true << QStringList{} << QStringList{} << QStringList{"e@b.it"}
        << Skips{{"e@b.it", excluded}};
    QTest::newRow("excluded comes before invalid")
        << QStringList{"!nope"} << true << QStringList{} << QStringList{} << QStringList{} << Skips{{"nope", excluded}};
    QTest::newRow("duplicate comes before suppressed")
        << QStringList{"x@b.it", "x@b.it"} << true << QStringList{} << QStringList{} << QStringList{"x@b.it"}
        << Skips{{"x@b.it", duplicate}};
    QTest::newRow("suppressed comes before already sent")
        << QStringList{"x@b.it"} << true << QStringList{"x@b.it"} << QStringList{"x@b.it"} << QStringList{}
        << Skips{{"x@b.it", suppressed}};
}

void TestPlanning::plan() {
    QFETCH(QStringList, rows);
    QFETCH(bool, skipDuplicates);
    QFETCH(QStringList, delivered);
    QFETCH(QStringList, suppressed);
    QFETCH(QStringList, recipients);
    QFETCH(Skips, skips);
    Fixture f(rows, skipDuplicates, delivered);
    const QSet<QString> suppressedSet(suppressed.cbegin(), suppressed.cend());
    const auto plan = RunPlanning::plan(f.campaign, f.list, suppressedSet, *f.temp.store);
    QCOMPARE(recipientsOf(plan), recipients);
    QCOMPARE(skipsOf(plan), skips);
    QSet<QUuid> ids;
    for (const auto& recipient : plan.recipients) {
        QCOMPARE(recipient.values.value("nome"), QStringLiteral("N"));
        ids.insert(recipient.id);
    }
    QCOMPARE(ids.size(), plan.recipients.size());
}

void TestPlanning::otherCampaignsDontCount() {
    Fixture f({"a@b.it"}, true, {});
    Campaign other(QStringLiteral("Altra"));
    f.temp.store->insert(other);
    SendLog log(QStringLiteral("a@b.it"), QStringLiteral("S"), SendStatus::sent, QString(), QStringLiteral("Brevo"));
    log.campaignId = other.id;
    f.temp.store->insert(log);
    SendLog failed(QStringLiteral("a@b.it"), QStringLiteral("S"), SendStatus::failed, QString(), QString());
    failed.campaignId = f.campaign.id;
    f.temp.store->insert(failed);
    const auto plan = RunPlanning::plan(f.campaign, f.list, {}, *f.temp.store);
    QCOMPARE(recipientsOf(plan), QStringList{"a@b.it"});
}

void TestPlanning::absentListPlansNothing() {
    Fixture f({"a@b.it"}, true, {});
    const auto plan = RunPlanning::plan(f.campaign, std::nullopt, {}, *f.temp.store);
    QVERIFY(plan.recipients.isEmpty());
    QVERIFY(plan.skips.isEmpty());
}

void TestPlanning::staleReferencesReadAsAbsent() {
    Fixture f({"a@b.it"}, true, {});
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
    Campaign unset(QStringLiteral("senza"));
    QVERIFY(!RunPlanning::listaValida(unset, *f.temp.store));
}

BREZZARIO_TEST_GUILESS_MAIN(TestPlanning)
#include "tst_planning.moc"
