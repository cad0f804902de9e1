#include "tst_checks.h"

#include "checks/Dig.h"
#include "checks/DNSCheck.h"
#include "Loopback.h"

#include <QtTest>
#include <QUdpSocket>

using DNSCheck::Esito;

namespace DNSCheck {
char* toString(const Esito& esito) {
    static const char* const casi[] = {"ok", "attenzione", "mancante"};
    return qstrdup(QStringLiteral("%1: %2").arg(QLatin1String(casi[esito.caso]), esito.testo).toUtf8().constData());
}
} // namespace DNSCheck

namespace {

const QString nessunSPF =
    QStringLiteral("Nessun record SPF: il dominio non dichiara chi è autorizzato a spedire per suo conto.");
const QString nessunDKIM = QStringLiteral("Nessuna firma DKIM pubblicata: i messaggi partono senza prova di "
                                          "provenienza e finiscono facilmente in posta indesiderata.");
const QString nessunDMARC =
    QStringLiteral("Nessun record DMARC: consigliato almeno v=DMARC1; p=none; rua=mailto:… per ricevere i rapporti.");

QString dmarcMultipli(int quanti) {
    return QStringLiteral("Ci sono %1 record DMARC: quando sono più di uno i server li ignorano tutti, come se non "
                          "ci fosse. Tienine uno solo.")
        .arg(quanti);
}

} // namespace

void TestChecks::righeTXT_data() {
    QTest::addColumn<QStringList>("pezzi");
    QTest::addColumn<QStringList>("righe");
    QTest::newRow("record in two strings")
        << QStringList{R"("v=spf1 include:a" " -all")"} << QStringList{"v=spf1 include:a -all"};
    QTest::newRow("three strings") << QStringList{R"("v=DKIM1; k=rsa; " "p=MIGf" "MA0")"}
                                   << QStringList{"v=DKIM1; k=rsa; p=MIGfMA0"};
    QTest::newRow("quotes and blanks around")
        << QStringList{R"(  "v=DMARC1; p=none"  )"} << QStringList{"v=DMARC1; p=none"};
    QTest::newRow("empty string dropped") << QStringList{R"("")", R"(" ")"} << QStringList{};
    QTest::newRow("names stay as they are")
        << QStringList{"b1.ditta-it.dkim.brevo.com."} << QStringList{"b1.ditta-it.dkim.brevo.com."};
    QTest::newRow("order kept") << QStringList{R"("b")", R"("a")"} << QStringList{"b", "a"};
}

void TestChecks::righeTXT() {
    QFETCH(QStringList, pezzi);
    QFETCH(QStringList, righe);
    QCOMPARE(DNSCheck::righeTXT(pezzi), righe);
}

void TestChecks::nomeServizio_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("servizio");
    QTest::addColumn<QString>("include");
    QTest::addColumn<QStringList>("selettori");
    QTest::newRow("Brevo") << "smtp-relay.brevo.com"
                           << "Brevo"
                           << "" << QStringList{"brevo1", "brevo2"};
    QTest::newRow("Sendinblue") << "smtp-relay.sendinblue.com"
                                << "Brevo"
                                << "" << QStringList{"brevo1", "brevo2"};
    QTest::newRow("Aruba") << "smtps.aruba.it"
                           << "Aruba"
                           << "_spf.aruba.it" << QStringList{};
    QTest::newRow("Gmail in capitals") << "SMTP.GMAIL.COM"
                                       << "Gmail"
                                       << "_spf.google.com" << QStringList{"google"};
    QTest::newRow("google") << "smtp-relay.google.com"
                            << "Gmail"
                            << "_spf.google.com" << QStringList{"google"};
    QTest::newRow("unknown host is its own name") << "Mail.Ditta.IT"
                                                  << "Mail.Ditta.IT"
                                                  << "" << QStringList{};
    QTest::newRow("brevo before aruba") << "brevo.aruba.it"
                                        << "Brevo"
                                        << "" << QStringList{"brevo1", "brevo2"};
    QTest::newRow("aruba before google") << "aruba.google.com"
                                         << "Aruba"
                                         << "_spf.aruba.it" << QStringList{};
}

void TestChecks::nomeServizio() {
    QFETCH(QString, host);
    QFETCH(QString, servizio);
    QFETCH(QString, include);
    QFETCH(QStringList, selettori);
    QCOMPARE(DNSCheck::nomeServizio(host), servizio);
    QCOMPARE(DNSCheck::includeAtteso(host).value_or(QString()), include);
    QCOMPARE(DNSCheck::includeAtteso(host).has_value(), !include.isEmpty());
    QCOMPARE(DNSCheck::selettoriAttesi(host), selettori);
}

void TestChecks::valutaSPF_data() {
    QTest::addColumn<std::optional<QString>>("record");
    QTest::addColumn<QString>("host");
    QTest::addColumn<Esito>("esito");
    const QString aruba = QStringLiteral("smtps.aruba.it");
    const QString nonInclude = QStringLiteral(
        "SPF presente ma non include %1: con questo servizio l'allineamento SPF non è soddisfatto (conta comunque il "
        "DKIM). Record attuale: %2");
    QTest::newRow("no record") << std::optional<QString>{} << aruba << Esito{Esito::mancante, nessunSPF};
    QTest::newRow("with the include") << std::optional<QString>{"v=spf1 include:_spf.aruba.it ~all"} << aruba
                                      << Esito{Esito::ok, "v=spf1 include:_spf.aruba.it ~all"};
    QTest::newRow("capitals kept in the text") << std::optional<QString>{"V=SPF1 INCLUDE:_SPF.ARUBA.IT -all"} << aruba
                                               << Esito{Esito::ok, "V=SPF1 INCLUDE:_SPF.ARUBA.IT -all"};
    QTest::newRow("Aruba without its include")
        << std::optional<QString>{"v=spf1 include:spf.brevo.com ~all"} << aruba
        << Esito{Esito::attenzione, nonInclude.arg("_spf.aruba.it", "v=spf1 include:spf.brevo.com ~all")};
    QTest::newRow("Gmail without its include")
        << std::optional<QString>{"v=spf1 mx -all"} << "smtp.gmail.com"
        << Esito{Esito::attenzione, nonInclude.arg("_spf.google.com", "v=spf1 mx -all")};
    QTest::newRow("record holding a placeholder")
        << std::optional<QString>{"v=spf1 include:%1 -all"} << aruba
        << Esito{Esito::attenzione,
                 QString(nonInclude).replace("%1", "_spf.aruba.it").replace("%2", "v=spf1 include:%1 -all")};
    QTest::newRow("Brevo expects no include")
        << std::optional<QString>{"v=spf1 -all"} << "smtp-relay.brevo.com" << Esito{Esito::ok, "v=spf1 -all"};
    QTest::newRow("unknown host takes any record")
        << std::optional<QString>{"v=spf1 a -all"} << "mail.ditta.it" << Esito{Esito::ok, "v=spf1 a -all"};
}

void TestChecks::valutaSPF() {
    QFETCH(std::optional<QString>, record);
    QFETCH(QString, host);
    QFETCH(Esito, esito);
    QCOMPARE(DNSCheck::valutaSPF(record, host), esito);
}

void TestChecks::valutaDKIM_data() {
    QTest::addColumn<QStringList>("presenti");
    QTest::addColumn<QString>("host");
    QTest::addColumn<Esito>("esito");
    const QString brevo = QStringLiteral("smtp-relay.brevo.com");
    const QString gmail = QStringLiteral("smtp.gmail.com");
    const QString aruba = QStringLiteral("smtps.aruba.it");
    QTest::newRow("Brevo with its selectors")
        << QStringList{"brevo1", "brevo2", "mail"} << brevo
        << Esito{Esito::ok, "Firma DKIM attiva per questo servizio (selettori: brevo1, brevo2)."};
    QTest::newRow("Brevo with one of them")
        << QStringList{"brevo2", "mail"} << brevo
        << Esito{Esito::ok, "Firma DKIM attiva per questo servizio (selettori: brevo2)."};
    QTest::newRow("Brevo with only mail")
        << QStringList{"mail"} << brevo
        << Esito{Esito::attenzione,
                 "Trovati i selettori mail, ma per questo servizio servono brevo1 e brevo2._domainkey."};
    QTest::newRow("Gmail with others")
        << QStringList{"default", "mail"} << gmail
        << Esito{Esito::attenzione,
                 "Trovati i selettori default, mail, ma per questo servizio servono google._domainkey."};
    QTest::newRow("Gmail with none") << QStringList{} << gmail << Esito{Esito::mancante, nessunDKIM};
    QTest::newRow("Aruba with only Brevo's")
        << QStringList{"brevo1"} << aruba
        << Esito{Esito::attenzione, "Nel DNS c'è solo la firma di un altro servizio (brevo1): i messaggi inviati con "
                                    "Aruba partono senza firma. Attiva il DKIM anche lì."};
    QTest::newRow("Aruba with Brevo's and its own")
        << QStringList{"brevo1", "default"} << aruba
        << Esito{Esito::ok, "Firma DKIM attiva (selettori: brevo1, default)."};
    QTest::newRow("unknown host with Google's only")
        << QStringList{"google"} << "mail.ditta.it"
        << Esito{Esito::attenzione, "Nel DNS c'è solo la firma di un altro servizio (google): i messaggi inviati con "
                                    "mail.ditta.it partono senza firma. Attiva il DKIM anche lì."};
    QTest::newRow("unknown host with none") << QStringList{} << "mail.ditta.it" << Esito{Esito::mancante, nessunDKIM};
}

void TestChecks::valutaDKIM() {
    QFETCH(QStringList, presenti);
    QFETCH(QString, host);
    QFETCH(Esito, esito);
    QCOMPARE(DNSCheck::valutaDKIM(presenti, host), esito);
}

void TestChecks::valutaDMARC_data() {
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<Esito>("esito");
    const QString osservazione = QStringLiteral("DMARC in sola osservazione e senza indirizzo per i rapporti: "
                                                "aggiungi rua=mailto:… per sapere come vieni valutato.");
    QTest::newRow("no record") << QStringList{} << Esito{Esito::attenzione, nessunDMARC};
    QTest::newRow("p=none without rua") << QStringList{"v=DMARC1; p=none"} << Esito{Esito::attenzione, osservazione};
    QTest::newRow("P=NONE in capitals") << QStringList{"v=DMARC1; P=NONE"} << Esito{Esito::attenzione, osservazione};
    QTest::newRow("p=none with rua") << QStringList{"v=DMARC1; p=none; rua=mailto:a@ditta.it"}
                                     << Esito{Esito::ok, "v=DMARC1; p=none; rua=mailto:a@ditta.it"};
    QTest::newRow("quarantine without rua")
        << QStringList{"v=DMARC1; p=quarantine"} << Esito{Esito::ok, "v=DMARC1; p=quarantine"};
    QTest::newRow("two fine records") << QStringList{"v=DMARC1; p=reject", "v=DMARC1; p=reject"}
                                      << Esito{Esito::mancante, dmarcMultipli(2)};
    QTest::newRow("three records") << QStringList{"v=DMARC1; p=none", "v=DMARC1", "v=DMARC1; p=reject"}
                                   << Esito{Esito::mancante, dmarcMultipli(3)};
}

void TestChecks::valutaDMARC() {
    QFETCH(QStringList, records);
    QFETCH(Esito, esito);
    QCOMPARE(DNSCheck::valutaDMARC(records), esito);
}

void TestChecks::txtAgainstNsd_data() {
    QTest::addColumn<QString>("nome");
    QTest::addColumn<QStringList>("righe");
    QTest::newRow("record in two strings")
        << "studio-bianchi.it" << QStringList{"v=spf1 include:_spf.aruba.it -all", "google-site-verification=abc123"};
    QTest::newRow("Brevo's chain names dropped")
        << "brevo1._domainkey.studio-bianchi.it" << QStringList{"k=rsa;p=MIGfMA0GCSqGSIb3DQEB"};
    QTest::newRow("other chain names kept")
        << "default._domainkey.studio-bianchi.it"
        << QStringList{"chiavi.studio-bianchi.it.", "v=DKIM1; k=rsa; p=MIIBIjANBgkq"};
    QTest::newRow("two DMARC records") << "_dmarc.doppio-record.it"
                                       << QStringList{"v=DMARC1; p=none; rua=mailto:a@doppio-record.it",
                                                      "v=DMARC1; p=reject"};
    QTest::newRow("name that doesn't exist") << "nessuno.studio-bianchi.it" << QStringList{};
    QTest::newRow("zone nobody serves") << "chiusa-da-anni.it" << QStringList{};
}

void TestChecks::txtAgainstNsd() {
    QFETCH(QString, nome);
    QFETCH(QStringList, righe);
    QCOMPARE(QCoro::waitFor(DNSCheck::txt(nome)), righe);
}

void TestChecks::selectorsAgainstNsd() {
    QCOMPARE(QCoro::waitFor(DNSCheck::selettoriPresenti(QStringLiteral("studio-bianchi.it"))),
             (QStringList{"brevo1", "brevo2", "default", "mail"}));
    // An empty "p=" still counts: only the text is looked for.
    QCOMPARE(QCoro::waitFor(DNSCheck::selettoriPresenti(QStringLiteral("doppio-record.it"))), QStringList{"google"});
    QCOMPARE(QCoro::waitFor(DNSCheck::selettoriPresenti(QStringLiteral("solo-sito.it"))), QStringList{});
    QCOMPARE(QCoro::waitFor(DNSCheck::cname(QStringLiteral("default._domainkey.studio-bianchi.it"))),
             std::optional<QString>{"chiavi.studio-bianchi.it"});
    QCOMPARE(QCoro::waitFor(DNSCheck::cname(QStringLiteral("mail._domainkey.studio-bianchi.it"))),
             std::optional<QString>{});
}

void TestChecks::selectorThroughUnfollowedCname() {
    // A resolver that gives the CNAME without following it: the key is found by asking the target.
    Dig::setExecutableForTests(standInDig(QStringLiteral("dig-cname"), QStringLiteral(R"(case "$4 $5" in
"TXT default._domainkey.ditta.it"|"CNAME default._domainkey.ditta.it") echo 'chiavi.altrove.it.' ;;
"TXT chiavi.altrove.it") echo '"v=DKIM1; k=rsa; " "p=MIGf"' ;;
"CNAME s1._domainkey.ditta.it") echo 'vuoto.altrove.it.' ;;
"TXT vuoto.altrove.it") echo '"k=rsa; t=y"' ;;
"CNAME k1._domainkey.ditta.it") echo '.' ;;
esac)")));
    QCOMPARE(QCoro::waitFor(DNSCheck::selettoriPresenti(QStringLiteral("ditta.it"))), QStringList{"default"});
}

void TestChecks::verificaAgainstNsd_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("nome");
    QTest::addColumn<QString>("servizio");
    QTest::addColumn<Esito>("spf");
    QTest::addColumn<Esito>("dkim");
    QTest::addColumn<Esito>("dmarc");
    const Esito dmarcBianchi{Esito::ok, "v=DMARC1; p=quarantine; rua=mailto:dmarc@studio-bianchi.it"};
    QTest::newRow("Aruba: direct, CNAME and Brevo chain keys")
        << "  Studio-Bianchi.IT "
        << "smtps.aruba.it"
        << "studio-bianchi.it"
        << "Aruba" << Esito{Esito::ok, "v=spf1 include:_spf.aruba.it -all"}
        << Esito{Esito::ok, "Firma DKIM attiva (selettori: brevo1, brevo2, default, mail)."} << dmarcBianchi;
    QTest::newRow("Brevo") << "studio-bianchi.it"
                           << "smtp-relay.brevo.com"
                           << "studio-bianchi.it"
                           << "Brevo" << Esito{Esito::ok, "v=spf1 include:_spf.aruba.it -all"}
                           << Esito{Esito::ok, "Firma DKIM attiva per questo servizio (selettori: brevo1, brevo2)."}
                           << dmarcBianchi;
    QTest::newRow("Gmail: two SPF and two DMARC records")
        << "doppio-record.it"
        << "smtp.gmail.com"
        << "doppio-record.it"
        << "Gmail" << Esito{Esito::ok, "v=spf1 include:_spf.google.com ~all"}
        << Esito{Esito::ok, "Firma DKIM attiva per questo servizio (selettori: google)."}
        << Esito{Esito::mancante, dmarcMultipli(2)};
    QTest::newRow("nothing published") << "solo-sito.it"
                                       << "mail.ditta.it"
                                       << "solo-sito.it"
                                       << "mail.ditta.it" << Esito{Esito::mancante, nessunSPF}
                                       << Esito{Esito::mancante, nessunDKIM} << Esito{Esito::attenzione, nessunDMARC};
    QTest::newRow("domain nobody serves")
        << "chiusa-da-anni.it"
        << "smtps.aruba.it"
        << "chiusa-da-anni.it"
        << "Aruba" << Esito{Esito::mancante, nessunSPF} << Esito{Esito::mancante, nessunDKIM}
        << Esito{Esito::attenzione, nessunDMARC};
}

void TestChecks::verificaAgainstNsd() {
    QFETCH(QString, dominio);
    QFETCH(QString, host);
    QFETCH(QString, nome);
    QFETCH(QString, servizio);
    QFETCH(Esito, spf);
    QFETCH(Esito, dkim);
    QFETCH(Esito, dmarc);
    const QDateTime prima = QDateTime::currentDateTimeUtc();
    const DNSCheck::Risultato risultato = QCoro::waitFor(DNSCheck::verifica(dominio, host));
    QCOMPARE(risultato.dominio, nome);
    QCOMPARE(risultato.servizio, servizio);
    QCOMPARE(risultato.spf, spf);
    QCOMPARE(risultato.dkim, dkim);
    QCOMPARE(risultato.dmarc, dmarc);
    QVERIFY(risultato.verificatoIl >= prima);
    QVERIFY(risultato.verificatoIl <= QDateTime::currentDateTimeUtc());
}

void TestChecks::verificaWithSilentResolver() {
    QUdpSocket silent;
    QVERIFY(silent.bind(QHostAddress(QString::fromLatin1(Loopback::checksSilent)), 53));
    Dig::setResolverForTests(QString::fromLatin1(Loopback::checksSilent));
    const DNSCheck::Risultato risultato =
        QCoro::waitFor(DNSCheck::verifica(QStringLiteral("studio-bianchi.it"), QStringLiteral("smtps.aruba.it")));
    QCOMPARE(risultato.spf, (Esito{Esito::mancante, nessunSPF}));
    QCOMPARE(risultato.dkim, (Esito{Esito::mancante, nessunDKIM}));
    QCOMPARE(risultato.dmarc, (Esito{Esito::attenzione, nessunDMARC}));
}
