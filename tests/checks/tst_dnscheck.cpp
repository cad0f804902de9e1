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
    QTest::newRow("three strings, blanks around")
        << QStringList{R"(  "v=DKIM1; k=rsa; " "p=MIGf" "MA0" )"} << QStringList{"v=DKIM1; k=rsa; p=MIGfMA0"};
    QTest::newRow("empty strings dropped") << QStringList{R"("")", R"(" ")"} << QStringList{};
    QTest::newRow("names stay, order kept")
        << QStringList{R"("b")", "b1.ditta-it.dkim.brevo.com."} << QStringList{"b", "b1.ditta-it.dkim.brevo.com."};
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
    const auto row = [](const char* nome, QString host, QString servizio, QString include, QStringList selettori) {
        QTest::newRow(nome) << host << servizio << include << selettori;
    };
    const QStringList brevo{"brevo1", "brevo2"};
    row("Brevo", "smtp-relay.brevo.com", "Brevo", "", brevo);
    row("Sendinblue", "smtp-relay.sendinblue.com", "Brevo", "", brevo);
    row("Aruba", "smtps.aruba.it", "Aruba", "_spf.aruba.it", {});
    row("Gmail in capitals", "SMTP.GMAIL.COM", "Gmail", "_spf.google.com", {"google"});
    row("google", "smtp-relay.google.com", "Gmail", "_spf.google.com", {"google"});
    row("unknown host is its own name", "Mail.Ditta.IT", "Mail.Ditta.IT", "", {});
    row("brevo before aruba", "brevo.aruba.it", "Brevo", "", brevo);
    row("aruba before google", "aruba.google.com", "Aruba", "_spf.aruba.it", {});
}

void TestChecks::nomeServizio() {
    QFETCH(QString, host);
    QFETCH(QString, servizio);
    QFETCH(QString, include);
    QFETCH(QStringList, selettori);
    QCOMPARE(DNSCheck::nomeServizio(host), servizio);
    QCOMPARE(DNSCheck::includeAtteso(host), include.isEmpty() ? std::nullopt : std::optional<QString>(include));
    QCOMPARE(DNSCheck::selettoriAttesi(host), selettori);
}

void TestChecks::verdetti_data() {
    QTest::addColumn<QString>("record"); // which verdict: SPF, DKIM or DMARC
    QTest::addColumn<QStringList>("trovati");
    QTest::addColumn<QString>("host");
    QTest::addColumn<Esito>("esito");
    const auto row = [](const char* nome, QString record, QStringList trovati, QString host, Esito esito) {
        QTest::newRow(nome) << record << trovati << host << esito;
    };
    const QString aruba = QStringLiteral("smtps.aruba.it");
    const QString brevo = QStringLiteral("smtp-relay.brevo.com");
    const QString gmail = QStringLiteral("smtp.gmail.com");
    const QString nonInclude = QStringLiteral(
        "SPF presente ma non include %1: con questo servizio l'allineamento SPF non è soddisfatto (conta comunque il "
        "DKIM). Record attuale: %2");
    const QString soloAltri = QStringLiteral("Nel DNS c'è solo la firma di un altro servizio (%1): i messaggi inviati "
                                             "con %2 partono senza firma. Attiva il DKIM anche lì.");
    const QString osservazione = QStringLiteral("DMARC in sola osservazione e senza indirizzo per i rapporti: "
                                                "aggiungi rua=mailto:… per sapere come vieni valutato.");

    row("SPF: none", "SPF", {}, aruba, {Esito::mancante, nessunSPF});
    row("SPF: with the include, capitals kept", "SPF", {"V=SPF1 INCLUDE:_SPF.ARUBA.IT -all"}, aruba,
        {Esito::ok, "V=SPF1 INCLUDE:_SPF.ARUBA.IT -all"});
    row("SPF: Gmail without its include", "SPF", {"v=spf1 mx -all"}, gmail,
        {Esito::attenzione, nonInclude.arg("_spf.google.com", "v=spf1 mx -all")});
    row("SPF: record holding a placeholder", "SPF", {"v=spf1 include:%1 -all"}, aruba,
        {Esito::attenzione,
         QString(nonInclude).replace("%1", "_spf.aruba.it").replace("%2", "v=spf1 include:%1 -all")});
    row("SPF: Brevo expects no include", "SPF", {"v=spf1 -all"}, brevo, {Esito::ok, "v=spf1 -all"});

    row("DKIM: Brevo with one of its selectors", "DKIM", {"brevo2", "mail"}, brevo,
        {Esito::ok, "Firma DKIM attiva per questo servizio (selettori: brevo2)."});
    row("DKIM: Brevo with only mail", "DKIM", {"mail"}, brevo,
        {Esito::attenzione, "Trovati i selettori mail, ma per questo servizio servono brevo1 e brevo2._domainkey."});
    row("DKIM: Gmail with others", "DKIM", {"default", "mail"}, gmail,
        {Esito::attenzione, "Trovati i selettori default, mail, ma per questo servizio servono google._domainkey."});
    row("DKIM: Gmail with none", "DKIM", {}, gmail, {Esito::mancante, nessunDKIM});
    row("DKIM: Aruba with only Brevo's", "DKIM", {"brevo1"}, aruba,
        {Esito::attenzione, soloAltri.arg("brevo1", "Aruba")});
    row("DKIM: Aruba with Brevo's and its own", "DKIM", {"brevo1", "default"}, aruba,
        {Esito::ok, "Firma DKIM attiva (selettori: brevo1, default)."});
    row("DKIM: unknown host with Google's only", "DKIM", {"google"}, "mail.ditta.it",
        {Esito::attenzione, soloAltri.arg("google", "mail.ditta.it")});

    row("DMARC: none", "DMARC", {}, "", {Esito::attenzione, nessunDMARC});
    row("DMARC: P=NONE without rua", "DMARC", {"v=DMARC1; P=NONE"}, "", {Esito::attenzione, osservazione});
    row("DMARC: p=none with rua", "DMARC", {"v=DMARC1; p=none; rua=mailto:a@ditta.it"}, "",
        {Esito::ok, "v=DMARC1; p=none; rua=mailto:a@ditta.it"});
    row("DMARC: quarantine without rua", "DMARC", {"v=DMARC1; p=quarantine"}, "",
        {Esito::ok, "v=DMARC1; p=quarantine"});
    row("DMARC: two fine records", "DMARC", {"v=DMARC1; p=reject", "v=DMARC1; p=reject"}, "",
        {Esito::mancante, dmarcMultipli(2)});
}

void TestChecks::verdetti() {
    QFETCH(QString, record);
    QFETCH(QStringList, trovati);
    QFETCH(QString, host);
    QFETCH(Esito, esito);
    const auto spf = trovati.isEmpty() ? std::nullopt : std::optional<QString>(trovati.first());
    QCOMPARE(record == "SPF"    ? DNSCheck::valutaSPF(spf, host)
             : record == "DKIM" ? DNSCheck::valutaDKIM(trovati, host)
                                : DNSCheck::valutaDMARC(trovati),
             esito);
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

    // A resolver that gives the CNAME without following it: the key is found by asking the target.
    standInDig(QStringLiteral("dig-cname"), QStringLiteral(R"(case "$4 $5" in
"TXT default._domainkey.ditta.it"|"CNAME default._domainkey.ditta.it") echo 'chiavi.altrove.it.' ;;
"TXT chiavi.altrove.it") echo '"v=DKIM1; k=rsa; " "p=MIGf"' ;;
"CNAME s1._domainkey.ditta.it") echo 'vuoto.altrove.it.' ;;
"TXT vuoto.altrove.it") echo '"k=rsa; t=y"' ;;
"CNAME k1._domainkey.ditta.it") echo '.' ;;
esac)"));
    QCOMPARE(QCoro::waitFor(DNSCheck::selettoriPresenti(QStringLiteral("ditta.it"))), QStringList{"default"});
}

void TestChecks::verificaAgainstNsd_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("silenzio"); // a resolver that never answers
    QTest::addColumn<QString>("servizio");
    QTest::addColumn<Esito>("spf");
    QTest::addColumn<Esito>("dkim");
    QTest::addColumn<Esito>("dmarc");
    const auto row = [](const char* nome, QString dominio, QString host, bool silenzio, QString servizio, Esito spf,
                        Esito dkim, Esito dmarc) {
        QTest::newRow(nome) << dominio << host << silenzio << servizio << spf << dkim << dmarc;
    };
    const Esito niente[] = {
        {Esito::mancante, nessunSPF}, {Esito::mancante, nessunDKIM}, {Esito::attenzione, nessunDMARC}};
    row("Aruba: direct, CNAME and Brevo chain keys", "  Studio-Bianchi.IT ", "smtps.aruba.it", false, "Aruba",
        {Esito::ok, "v=spf1 include:_spf.aruba.it -all"},
        {Esito::ok, "Firma DKIM attiva (selettori: brevo1, brevo2, default, mail)."},
        {Esito::ok, "v=DMARC1; p=quarantine; rua=mailto:dmarc@studio-bianchi.it"});
    row("Gmail: two SPF and two DMARC records", "doppio-record.it", "smtp.gmail.com", false, "Gmail",
        {Esito::ok, "v=spf1 include:_spf.google.com ~all"},
        {Esito::ok, "Firma DKIM attiva per questo servizio (selettori: google)."}, {Esito::mancante, dmarcMultipli(2)});
    row("nothing published", "solo-sito.it", "mail.ditta.it", false, "mail.ditta.it", niente[0], niente[1], niente[2]);
    row("silent resolver", "studio-bianchi.it", "smtps.aruba.it", true, "Aruba", niente[0], niente[1], niente[2]);
}

void TestChecks::verificaAgainstNsd() {
    QFETCH(QString, dominio);
    QFETCH(QString, host);
    QFETCH(bool, silenzio);
    QFETCH(QString, servizio);
    QFETCH(Esito, spf);
    QFETCH(Esito, dkim);
    QFETCH(Esito, dmarc);
    QUdpSocket silent;
    QVERIFY(silent.bind(QHostAddress(QString::fromLatin1(Loopback::checksSilent)), 53));
    if (silenzio)
        Dig::setResolverForTests(QString::fromLatin1(Loopback::checksSilent));
    const QDateTime prima = QDateTime::currentDateTimeUtc();
    const DNSCheck::Risultato risultato = QCoro::waitFor(DNSCheck::verifica(dominio, host));
    QCOMPARE(risultato.dominio, dominio.trimmed().toLower());
    QCOMPARE(risultato.servizio, servizio);
    QCOMPARE(risultato.spf, spf);
    QCOMPARE(risultato.dkim, dkim);
    QCOMPARE(risultato.dmarc, dmarc);
    QVERIFY(risultato.verificatoIl >= prima);
    QVERIFY(risultato.verificatoIl <= QDateTime::currentDateTimeUtc());
}
