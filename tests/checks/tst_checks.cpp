#include "tst_checks.h"

#include "checks/BrevoAPI.h"
#include "checks/Dig.h"
#include "checks/MXCheck.h"
#include "Loopback.h"
#include "TestEnvironment.h"

#include <QFile>

namespace {

// What the tests ask of the DNS. Names end in real top-level domains on purpose: reserved demonstration
// domains are never queried.
QList<NsdServer::Zone> zones() {
    return {
        {QStringLiteral("ferramenta-rossi.it"), QStringLiteral("@ IN MX 10 mx1\n"
                                                               "@ IN MX 20 mx2\n"
                                                               "@ IN A 192.0.2.10\n"
                                                               "mx1 IN A 192.0.2.11\n"
                                                               "mx2 IN A 192.0.2.12\n"
                                                               "vuoto IN TXT \"k=rsa; t=y\"\n")},
        {QStringLiteral("solo-sito.it"), QStringLiteral("@ IN A 192.0.2.20\n")},
        {QStringLiteral("studio-bianchi.it"),
         QStringLiteral("@ IN MX 10 mx.ferramenta-rossi.it.\n"
                        "@ IN TXT \"v=spf1 include:_spf.aruba.it\" \" -all\"\n"
                        "@ IN TXT \"google-site-verification=abc123\"\n"
                        "_dmarc IN TXT \"v=DMARC1; p=quarantine; rua=mailto:dmarc@studio-bianchi.it\"\n"
                        "mail._domainkey IN TXT \"v=DKIM1; k=rsa; p=MIGfMA0GCSqGSIb3\"\n"
                        "default._domainkey IN CNAME chiavi.studio-bianchi.it.\n"
                        "chiavi IN TXT \"v=DKIM1; k=rsa; p=MIIBIjANBgkq\"\n"
                        "brevo1._domainkey IN CNAME b1.studio-bianchi-it.dkim.brevo.com.\n"
                        "brevo2._domainkey IN CNAME b2.studio-bianchi-it.dkim.brevo.com.\n"
                        "s1._domainkey IN TXT \"k=rsa; t=y\"\n"
                        "selector1._domainkey IN CNAME vuoto.ferramenta-rossi.it.\n")},
        {QStringLiteral("dkim.brevo.com"), QStringLiteral("b1.studio-bianchi-it IN CNAME brevo17\n"
                                                          "b2.studio-bianchi-it IN CNAME brevo18\n"
                                                          "brevo17 IN TXT \"k=rsa;p=MIGfMA0GCSqGSIb3DQEB\"\n"
                                                          "brevo18 IN TXT \"k=rsa;p=MIGfMA0GCSqGSIb3DQEC\"\n")},
        {QStringLiteral("doppio-record.it"),
         QStringLiteral("@ IN TXT \"v=spf1 include:_spf.google.com ~all\"\n"
                        "@ IN TXT \"V=SPF1 -all\"\n"
                        "_dmarc IN TXT \"v=DMARC1; p=none; rua=mailto:a@doppio-record.it\"\n"
                        "_dmarc IN TXT \"v=DMARC1; p=reject\"\n"
                        "google._domainkey IN TXT \"v=DKIM1; k=rsa; p=\"\n")},
    };
}

} // namespace

void TestChecks::initTestCase() {
    QVERIFY(m_dir.isValid());
    m_nsd = std::make_unique<NsdServer>(QString::fromLatin1(Loopback::checksDns));
    QVERIFY2(m_nsd->start(zones()), qPrintable(m_nsd->error()));

    m_ca = std::make_unique<TestCA>();
    QVERIFY(m_ca->isValid());
    m_https = std::make_unique<HttpsServer>(*m_ca, QString::fromLatin1(Loopback::checksHttps));
    QVERIFY(m_https->listen());
    BrevoAPI::setBaseUrlPerTest(m_https->baseUrl());
    BrevoAPI::setCertificatiAggiuntiviPerTest(m_ca->certificates());
}

void TestChecks::init() {
    MXCheck::svuotaCachePerTest();
    Dig::setExecutableForTests({});
    Dig::setResolverForTests(QString::fromLatin1(Loopback::checksDns));
    m_https->clearRoutes();
    m_https->clearRequests();
    BrevoAPI::setCertificatiAggiuntiviPerTest(m_ca->certificates());
}

void TestChecks::cleanupTestCase() {
    m_nsd.reset();
    Dig::setResolverForTests({});
    Dig::setExecutableForTests({});
}

QString TestChecks::standInDig(const QString& name, const QString& body) {
    const QString path = m_dir.filePath(name);
    QFile script(path);
    if (!script.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    script.write("#!/bin/sh\n" + body.toUtf8() + "\n");
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    Dig::setExecutableForTests(path);
    return path;
}

BREZZARIO_TEST_GUILESS_MAIN(TestChecks)
