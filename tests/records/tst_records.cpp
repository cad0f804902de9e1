#include "records/ContactRow.h"
#include "records/EmailSyntax.h"
#include "records/SendLog.h"
#include "records/Statuses.h"
#include "records/Suppression.h"
#include "records/Text.h"
#include "TestEnvironment.h"

using namespace Qt::Literals::StringLiterals;

class TestRecords : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void emailSyntax_data();
    void emailSyntax();
    void wireAddress_data();
    void wireAddress();
    void trimming_data();
    void trimming();
    void characterCount_data();
    void characterCount();
    void deduci_data();
    void deduci();
    void registraEsito_data();
    void registraEsito();
    void valoriStorico();
    void statusRawValues_data();
    void statusRawValues();
    void suppressionNormalisesItsAddress();
    void validRowCountLeavesOutExcludedRows();
};

void TestRecords::emailSyntax_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("valid");
    const QString local254 = QString(250, u'a') + QStringLiteral("@b.it"); // 255 in all
    QTest::newRow("plain") << "mario.rossi@example.it" << true;
    QTest::newRow("blanks and capitals around") << "  Mario.Rossi@Example.IT \n" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("only whitespace") << " \t\n" << false;
    QTest::newRow("inner blank") << "mario rossi@example.it" << false;
    QTest::newRow("no at sign") << "mario.example.it" << false;
    QTest::newRow("two at signs") << "a@b@example.it" << false;
    QTest::newRow("nothing before at") << "@example.it" << false;
    QTest::newRow("domain without point") << "mario@localhost" << false;
    QTest::newRow("domain begins with point") << "mario@.example.it" << false;
    QTest::newRow("domain ends with point") << "mario@example.it." << false;
    QTest::newRow("domain of two characters") << "mario@.i" << false;
    QTest::newRow("domain of three characters") << "mario@a.i" << true;
    QTest::newRow("254 characters") << QString(local254).remove(0, 1) << true;
    QTest::newRow("255 characters") << local254 << false;
    QTest::newRow("254 after trimming") << QStringLiteral("   ") + QString(local254).remove(0, 1) + "  " << true;
    QTest::newRow("inner line feed") << "mario@exa\nmple.it" << false;
    QTest::newRow("inner carriage return") << "mario\r@example.it" << false;
    QTest::newRow("inner tab") << "mario\t@example.it" << false;
    QTest::newRow("inner NUL") << QString::fromUtf16(u"mario\u0000x@example.it", 19) << false;
    QTest::newRow("inner DEL") << "mario\x7f@example.it" << false;
    QTest::newRow("inner C1 NEL") << QString::fromUtf16(u"mario\u0085x@example.it") << false;
    QTest::newRow("inner C1 CSI") << QString::fromUtf16(u"mario\u009bx@example.it") << false;
    QTest::newRow("no-break space around") << QString::fromUtf16(u"\u00a0a@b.it\u00a0") << true;

    // Parameters smuggled through an address into MAIL FROM or RCPT TO.
    QTest::newRow("closing bracket after the domain") << "a@dest.example>" << false;
    QTest::newRow("sender adding SIZE and AUTH") << "x@y.example> SIZE=1 AUTH=<z@w.example" << false;
    QTest::newRow("test address adding NOTIFY") << "a@dest.example>NOTIFY=NEVER" << false;
    for (const char* special : {"<", "(", ")", "[", "]", "\\", ",", ";", ":", "\""})
        QTest::addRow("special %s in the local part", special)
            << QStringLiteral("ma%1rio@example.it").arg(special) << false;
    QTest::newRow("special in the domain") << "mario@exam;ple.it" << false;

    // Characters that print as nothing or as a blank.
    const QList<QPair<const char*, char32_t>> invisible = {
        {"zero-width space", 0x200B},    {"zero-width non-joiner", 0x200C}, {"zero-width joiner", 0x200D},
        {"byte order mark", 0xFEFF},     {"soft hyphen", 0x00AD},           {"line separator", 0x2028},
        {"paragraph separator", 0x2029}, {"no-break space inside", 0x00A0}, {"language tag", 0xE0001},
    };
    for (const auto& [name, code] : invisible) {
        QTest::addRow("%s in the local part", name)
            << u"mario"_s + QStringView(QChar::fromUcs4(code)).toString() + u"@example.it"_s << false;
        QTest::addRow("%s in the domain", name)
            << u"mario@exa"_s + QStringView(QChar::fromUcs4(code)).toString() + u"mple.it"_s << false;
    }

    // Addresses that aren't ASCII: the domain has an ASCII form, the local part must be ASCII already.
    QTest::newRow("accented local part") << u"niccolò@example.it"_s << false;
    QTest::newRow("fullwidth local part") << u"ｍａｒｉｏ@example.it"_s << false;
    QTest::newRow("accented domain") << u"mario@müller.de"_s << true;
    QTest::newRow("fullwidth domain") << u"mario@ｅｘａｍｐｌｅ.it"_s << true;
    QTest::newRow("accented domain too long on the wire") << QString(240, u'a') + u"@città.it"_s << false;
}

void TestRecords::emailSyntax() {
    QFETCH(QString, address);
    QFETCH(bool, valid);
    QCOMPARE(isValidEmailSyntax(address), valid);
}

void TestRecords::wireAddress_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ASCII as it stands") << u"Mario.Rossi@Example.it"_s << u"Mario.Rossi@Example.it"_s;
    QTest::newRow("accented domain") << u"mario@müller.de"_s << u"mario@xn--mller-kva.de"_s;
    QTest::newRow("only the labels that need it") << u"a@posta.città.it"_s << u"a@posta.xn--citt-3na.it"_s;
    QTest::newRow("fullwidth domain") << u"mario@ｅｘａｍｐｌｅ.it"_s << u"mario@example.it"_s;
    QTest::newRow("no at sign") << u"città.it"_s << u"città.it"_s;
}

void TestRecords::wireAddress() {
    QFETCH(QString, address);
    QFETCH(QString, expected);
    QCOMPARE(::wireAddress(address), expected);
}

void TestRecords::trimming_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("whitespace");
    QTest::addColumn<QString>("whitespaceAndNewlines");
    QTest::newRow("tab and blanks") << " \tabc\t "
                                    << "abc"
                                    << "abc";
    QTest::newRow("line feed is not whitespace") << "\nabc\n"
                                                 << "\nabc\n"
                                                 << "abc";
    QTest::newRow("no-break space is Zs") << QString::fromUtf16(u"\u00a0abc\u2003") << "abc"
                                          << "abc";
    QTest::newRow("line separator is a newline")
        << QString::fromUtf16(u"\u2028abc") << QString::fromUtf16(u"\u2028abc") << "abc";
    QTest::newRow("NEL and CR LF") << QString::fromUtf16(u"\u0085abc\r\n") << QString::fromUtf16(u"\u0085abc\r\n")
                                   << "abc";
    QTest::newRow("inner space kept") << "  a b  "
                                      << "a b"
                                      << "a b";
    QTest::newRow("zero-width space is not whitespace")
        << QString::fromUtf16(u"\u200babc") << QString::fromUtf16(u"\u200babc") << QString::fromUtf16(u"\u200babc");
}

void TestRecords::trimming() {
    QFETCH(QString, text);
    QFETCH(QString, whitespace);
    QFETCH(QString, whitespaceAndNewlines);
    QCOMPARE(Text::trimmedWhitespace(text), whitespace);
    QCOMPARE(Text::trimmedWhitespaceAndNewlines(text), whitespaceAndNewlines);
}

void TestRecords::characterCount_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("count");
    QTest::newRow("ascii") << "abc" << 3;
    QTest::newRow("combining accent") << QString::fromUtf16(u"e\u0301a") << 2;
    QTest::newRow("flag emoji") << QString::fromUtf16(u"\U0001F1EE\U0001F1F9") << 1;
    QTest::newRow("CR LF is one") << "a\r\nb" << 3;
    QTest::newRow("empty") << "" << 0;
}

void TestRecords::characterCount() {
    QFETCH(QString, text);
    QFETCH(int, count);
    QCOMPARE(Text::characterCount(text), count);
}

void TestRecords::deduci_data() {
    QTest::addColumn<QString>("reason");
    QTest::addColumn<MotivoEsclusione>("motivo");
    using M = MotivoEsclusione;
    QTest::newRow("empty") << "" << M::aggiuntoAMano;
    QTest::newRow("from the lists screen") << "aggiunta dalla lista" << M::aggiuntoAMano;
    QTest::newRow("550 before mailbox full") << "550 mailbox full" << M::casellaInesistente;
    QTest::newRow("452 mailbox full") << "452 Mailbox FULL" << M::casellaPiena;
    QTest::newRow("550 before quota") << "quota exceeded 550" << M::casellaInesistente;
    QTest::newRow("domain words before code") << "550 dominio inesistente" << M::dominioInesistente;
    QTest::newRow("domain without mail") << "Dominio senza server di posta" << M::dominioSenzaPosta;
    QTest::newRow("import before unsubscribe") << "importato da disiscritti.csv" << M::importato;
    QTest::newRow("unsubscribed") << "Disiscritto su richiesta" << M::disiscritto;
    QTest::newRow("cancellami") << "CANCELLAMI" << M::disiscritto;
    QTest::newRow("unsubscribe before 550") << "550 unsubscribe" << M::disiscritto;
    QTest::newRow("user unknown") << "User unknown" << M::casellaInesistente;
    QTest::newRow("enhanced code") << "rejected 5.1.1" << M::casellaInesistente;
    QTest::newRow("recipient rejected") << "Recipient address rejected: x" << M::casellaInesistente;
    QTest::newRow("relaying denied") << "Relaying denied" << M::rifiutatoDalServer;
    QTest::newRow("blocked") << "IP blocked" << M::rifiutatoDalServer;
    QTest::newRow("554") << "554 no" << M::rifiutatoDalServer;
    QTest::newRow("553 before nothing else") << "553 sender" << M::rifiutatoDalServer;
    QTest::newRow("452 before blocked") << "452 blocked" << M::casellaPiena;
    QTest::newRow("rifiutato dal server") << "Rifiutato dal server" << M::rifiutatoDalServer;
    QTest::newRow("dominio non esiste") << "il dominio non esiste" << M::dominioInesistente;
}

void TestRecords::deduci() {
    QFETCH(QString, reason);
    QFETCH(MotivoEsclusione, motivo);
    QCOMPARE(::deduci(reason), motivo);
}

void TestRecords::registraEsito_data() {
    QTest::addColumn<QList<SendStatus>>("outcomes");
    QTest::addColumn<int>("inviate");
    QTest::addColumn<int>("errori");
    QTest::addColumn<int>("saltate");
    QTest::addColumn<int>("primoInvio");  // index of the outcome whose date it holds, -1 absent
    QTest::addColumn<int>("ultimoInvio"); // likewise
    QTest::addColumn<QString>("ultimoEsitoRaw");
    using S = SendStatus;
    QTest::newRow("test changes nothing") << QList<S>{S::test} << 0 << 0 << 0 << -1 << -1 << "";
    QTest::newRow("first failure") << QList<S>{S::failed} << 0 << 1 << 0 << -1 << 0 << "failed";
    QTest::newRow("second delivery") << QList<S>{S::sent, S::sent} << 2 << 0 << 0 << 0 << 1 << "sent";
    QTest::newRow("failure after delivery") << QList<S>{S::sent, S::failed} << 1 << 1 << 0 << 0 << 1 << "failed";
    QTest::newRow("skip moves no date") << QList<S>{S::sent, S::skipped} << 1 << 0 << 1 << 0 << 0 << "skipped";
    QTest::newRow("test after delivery") << QList<S>{S::sent, S::test} << 1 << 0 << 0 << 0 << 0 << "sent";
}

void TestRecords::registraEsito() {
    QFETCH(QList<SendStatus>, outcomes);
    QFETCH(int, inviate);
    QFETCH(int, errori);
    QFETCH(int, saltate);
    QFETCH(int, primoInvio);
    QFETCH(int, ultimoInvio);
    QFETCH(QString, ultimoEsitoRaw);
    const QDateTime start = QDateTime(QDate(2026, 3, 1), QTime(9, 0), Qt::UTC);
    ContactRow row({{"email", "a@b.it"}}, "a@b.it");
    for (int i = 0; i < outcomes.size(); ++i)
        row.registraEsito(outcomes.at(i), QStringLiteral("C%1").arg(i), QStringLiteral("S%1").arg(i),
                          QStringLiteral("D%1").arg(i), start.addSecs(60 * i));
    QCOMPARE(row.inviateCount, inviate);
    QCOMPARE(row.erroriCount, errori);
    QCOMPARE(row.saltateCount, saltate);
    QCOMPARE(row.primoInvio, primoInvio < 0 ? std::nullopt : std::optional(start.addSecs(60 * primoInvio)));
    QCOMPARE(row.ultimoInvio, ultimoInvio < 0 ? std::nullopt : std::optional(start.addSecs(60 * ultimoInvio)));
    QCOMPARE(row.ultimoEsitoRaw, ultimoEsitoRaw);
    // The last outcome that wasn't a test names its campaign, subject and detail.
    int last = -1;
    for (int i = 0; i < outcomes.size(); ++i)
        if (outcomes.at(i) != SendStatus::test)
            last = i;
    QCOMPARE(row.ultimaCampagna, last < 0 ? QString() : QStringLiteral("C%1").arg(last));
    QCOMPARE(row.ultimoOggetto, last < 0 ? QString() : QStringLiteral("S%1").arg(last));
    QCOMPARE(row.ultimoDettaglio, last < 0 ? QString() : QStringLiteral("D%1").arg(last));
}

void TestRecords::valoriStorico() {
    ContactRow row({}, "a@b.it");
    QCOMPARE(row.valoriStorico(), QStringList({"0", "0", "0", "", "", "", "", "", ""}));
    const QDateTime when = QDateTime(QDate(2026, 3, 1), QTime(9, 5, 7, 450), Qt::UTC);
    row.registraEsito(SendStatus::sent, "Saldi", "Ciao, Anna", "", when);
    row.registraEsito(SendStatus::failed, "Saldi", "Ciao, Anna", "550 no", when.addDays(1));
    QCOMPARE(row.valoriStorico(), QStringList({"1", "1", "0", "2026-03-01T09:05:07Z", "2026-03-02T09:05:07Z", "Errore",
                                               "Saldi", "Ciao, Anna", "550 no"}));
    QCOMPARE(colonneStorico().size(), 9);
    QCOMPARE(colonneStorico().first(), QStringLiteral("lumacco_inviate"));
    QCOMPARE(colonneStorico().last(), QStringLiteral("lumacco_ultimo_dettaglio"));
}

void TestRecords::statusRawValues_data() {
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("logStatus");      // as a SendLog reads it
    QTest::addColumn<bool>("rowOutcomePresent"); // as ContactRow.ultimoEsito reads it
    QTest::addColumn<QString>("campaignStatus");
    QTest::newRow("sent") << "sent"
                          << "sent" << true << "draft";
    QTest::newRow("failed") << "failed"
                            << "failed" << true << "failed";
    QTest::newRow("unknown") << "bounced"
                             << "sent" << false << "draft";
    QTest::newRow("upper case is unknown") << "SENT"
                                           << "sent" << false << "draft";
    QTest::newRow("completed") << "completed"
                               << "sent" << false << "completed";
    QTest::newRow("empty") << ""
                           << "sent" << false << "draft";
}

void TestRecords::statusRawValues() {
    QFETCH(QString, raw);
    QFETCH(QString, logStatus);
    QFETCH(bool, rowOutcomePresent);
    QFETCH(QString, campaignStatus);
    SendLog log;
    log.statusRaw = raw;
    QCOMPARE(rawValue(log.status()), logStatus);
    ContactRow row;
    row.ultimoEsitoRaw = raw;
    QCOMPARE(row.ultimoEsito().has_value(), rowOutcomePresent);
    QCOMPARE(rawValue(campaignStatusFromRaw(raw)), campaignStatus);
}

void TestRecords::suppressionNormalisesItsAddress() {
    const Suppression suppression(QStringLiteral("  Anna.Bianchi@Example.IT\n"), QStringLiteral("550"));
    QCOMPARE(suppression.email, QStringLiteral("anna.bianchi@example.it"));
    QCOMPARE(suppression.motivo(), MotivoEsclusione::casellaInesistente);
}

void TestRecords::validRowCountLeavesOutExcludedRows() {
    ContactRow good({}, "a@b.it");
    ContactRow excluded({}, "c@d.it");
    excluded.isExcluded = true;
    ContactRow invalid({}, "nope");
    QCOMPARE(validRowCount({good, excluded, invalid, good}), 2);
}

BREZZARIO_TEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
