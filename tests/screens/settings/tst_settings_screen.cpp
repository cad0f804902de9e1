#include "tst_settings_screen.h"

#include "app/SettingsWindow.h"
#include "checks/BrevoAPI.h"
#include "checks/Dig.h"
#include "checks/MXCheck.h"
#include "Loopback.h"
#include "screens/settings/SettingsModel.h"
#include "screens/settings/SettingsView.h"
#include "settings/SettingsStore.h"
#include "TestEnvironment.h"
#include "ui/Symbols.h"

#include <QSettings>

namespace {

// Names end in real top-level domains on purpose: reserved demonstration domains are never queried, and a
// name outside these zones gets no answer from NSD, as a domain that no longer exists.
QList<NsdServer::Zone> zone() {
    return {
        // Everything in place for Aruba.
        {QStringLiteral("pronto.it"),
         QStringLiteral("@ IN MX 10 mx\n"
                        "mx IN A 192.0.2.30\n"
                        "@ IN TXT \"v=spf1 include:_spf.aruba.it -all\"\n"
                        "_dmarc IN TXT \"v=DMARC1; p=quarantine; rua=mailto:dmarc@pronto.it\"\n"
                        "mail._domainkey IN TXT \"v=DKIM1; k=rsa; p=MIGfMA0GCSqGSIb3\"\n")},
        // Each record there, each with something to put right for Aruba.
        {QStringLiteral("avvisi.it"), QStringLiteral("@ IN MX 10 mx.pronto.it.\n"
                                                     "@ IN TXT \"v=spf1 mx -all\"\n"
                                                     "_dmarc IN TXT \"v=DMARC1; p=none\"\n"
                                                     "google._domainkey IN TXT \"v=DKIM1; k=rsa; p=MIIBIjAN\"\n")},
        {QStringLiteral("ferramenta-rossi.it"), QStringLiteral("@ IN MX 10 mx\n"
                                                               "mx IN A 192.0.2.11\n")},
        {QStringLiteral("solo-sito.it"), QStringLiteral("@ IN A 192.0.2.20\n")},
    };
}

} // namespace

void TestSettingsScreen::initTestCase() {
    Symbols::preparaTemaIcone();
    m_ca = std::make_unique<TestCA>();
    m_altraCA = std::make_unique<TestCA>();
    QVERIFY(m_ca->isValid());
    QVERIFY(m_altraCA->isValid());
    const QString indirizzo = QString::fromLatin1(Loopback::settingsSmtp);
    m_smtp = std::make_unique<AiosmtpdServer>(AiosmtpdServer::withTls(*m_ca, indirizzo));
    QVERIFY2(m_smtp->start(), qPrintable(m_smtp->errorString()));
    // The same server, but with a certificate from an authority nobody trusts.
    AiosmtpdServer::Options estranea = AiosmtpdServer::withTls(*m_altraCA, indirizzo);
    estranea.port = 2526;
    m_smtpNonAttendibile = std::make_unique<AiosmtpdServer>(estranea);
    QVERIFY2(m_smtpNonAttendibile->start(), qPrintable(m_smtpNonAttendibile->errorString()));
    SettingsModel::setOpzioniSessionePerTest(AiosmtpdServer::sessionOptions(m_ca.get()));

    m_nsd = std::make_unique<NsdServer>(QString::fromLatin1(Loopback::settingsDns));
    QVERIFY2(m_nsd->start(zone()), qPrintable(m_nsd->error()));
    Dig::setResolverForTests(QString::fromLatin1(Loopback::settingsDns));

    m_https = std::make_unique<HttpsServer>(*m_ca, QString::fromLatin1(Loopback::settingsHttps));
    QVERIFY(m_https->listen());
    BrevoAPI::setBaseUrlPerTest(m_https->baseUrl());
    BrevoAPI::setCertificatiAggiuntiviPerTest(m_ca->certificates());
}

void TestSettingsScreen::init() {
    // Each test starts from a first start: no preferences, no secrets, an empty store.
    QSettings(QStringLiteral("velarmo"), QStringLiteral("Brezzario")).clear();
    auto segreti = std::make_unique<MemoryKeychain>();
    m_segreti = segreti->entries;
    Keychain::setBackend(std::move(segreti));
    m_store = std::make_unique<TempStore>();
    m_settings = std::make_unique<SettingsStore>();
    MXCheck::svuotaCachePerTest();
    m_https->clearRoutes();
    m_https->clearRequests();
}

void TestSettingsScreen::cleanup() {
    m_settings.reset();
    m_store.reset();
}

void TestSettingsScreen::cleanupTestCase() {
    Dig::setResolverForTests({});
    SettingsModel::setOpzioniSessionePerTest({});
    m_nsd.reset();
    m_smtp.reset();
    m_smtpNonAttendibile.reset();
}

std::unique_ptr<SettingsView> TestSettingsScreen::apri() {
    auto vista = std::make_unique<SettingsView>(Ambiente{*m_settings, *m_store->store});
    vista->resize(SettingsWindow::larghezza, 900);
    vista->show();
    if (!QTest::qWaitForWindowExposed(vista.get()))
        return nullptr;
    return vista;
}

BREZZARIO_TEST_MAIN(TestSettingsScreen)
