#include "MemoryKeychain.h"
#include "settings/Keychain.h"
#include "settings/Preset.h"
#include "settings/SettingsStore.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QJsonDocument>
#include <QSettings>

namespace {

using Preferences = QVariantMap; // key → value, for one preference domain

QByteArray profilesJson(const QList<QPair<QString, QString>>& nameAndHost) {
    QList<ProfiloInvio> profili;
    for (const auto& [nome, host] : nameAndHost) {
        SMTPConfig config;
        config.host = host;
        profili.append(ProfiloInvio{QUuid::createUuid(), nome, config});
    }
    return ProfiloInvio::encodeList(profili);
}

QString confPath(const char* application) {
    return qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/velarmo/%1.conf").arg(QLatin1String(application));
}

void seed(const char* application, const Preferences& values) {
    QSettings settings(QStringLiteral("velarmo"), QLatin1String(application));
    settings.clear();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        settings.setValue(it.key(), it.value());
    settings.sync();
}

QVariant storedValue(const char* application, const QString& key) {
    QSettings settings(QStringLiteral("velarmo"), QLatin1String(application));
    return settings.value(key);
}

QStringList names(const SettingsStore& store) {
    QStringList result;
    for (const ProfiloInvio& p : store.profili())
        result << p.nome;
    return result;
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void caricaProfili_data();
    void caricaProfili();
    void formerProfilesAreCopiedOnce();
    void configDecoding_data();
    void configDecoding();
    void profileDecodingIsStrict_data();
    void profileDecodingIsStrict();
    void eliminaProfiloAttivo_data();
    void eliminaProfiloAttivo();
    void selectingTheActiveProfileWritesNothing();
    void aggiungiProfilo();
    void passwordLifecycle();
    void passwordMovesFromFormerService();
    void reloadAfterAccountChange();
    void nomeSuggerito_data();
    void nomeSuggerito();
    void indirizzoDisiscrizione_data();
    void indirizzoDisiscrizione();
    void isConfigured_data();
    void isConfigured();
    void presets_data();
    void presets();

private:
    std::shared_ptr<QHash<MemoryKeychain::Key, QByteArray>> m_secrets;
    MemoryKeychain* m_keychain = nullptr;
};

void TestSettings::init() {
    QFile::remove(confPath("Brezzario"));
    QFile::remove(confPath("Lumacco"));
    auto keychain = std::make_unique<MemoryKeychain>();
    m_keychain = keychain.get();
    m_secrets = keychain->entries;
    Keychain::setBackend(std::move(keychain));
}

void TestSettings::cleanup() {
    Keychain::setBackend(std::make_unique<MemoryKeychain>());
    m_keychain = nullptr;
}

void TestSettings::caricaProfili_data() {
    QTest::addColumn<Preferences>("own");
    QTest::addColumn<Preferences>("former");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("index");
    const QString gmail = hostOf(Preset::gmail);
    const QString aruba = hostOf(Preset::aruba);
    const QByteArray threeProfiles = profilesJson({{"Uno", gmail}, {"Due", gmail}, {"Tre", gmail}});
    const QByteArray onlyHost = R"({"host":"mail.example.it","port":587})";

    QTest::newRow("nothing at all") << Preferences{} << Preferences{} << QStringList{"Brevo", "Aruba"} << 0;
    QTest::newRow("stored Gmail list is left alone") << Preferences{{"profiliInvio", profilesJson({{"Posta", gmail}})}}
                                                     << Preferences{} << QStringList{"Posta"} << 0;
    QTest::newRow("stored empty list counts as absent")
        << Preferences{{"profiliInvio", QByteArray("[]")}} << Preferences{} << QStringList{"Brevo", "Aruba"} << 0;
    QTest::newRow("index past the end is held") << Preferences{{"profiliInvio", threeProfiles}, {"profiloAttivo", 7}}
                                                << Preferences{} << QStringList{"Uno", "Due", "Tre"} << 2;
    QTest::newRow("negative index") << Preferences{{"profiliInvio", threeProfiles}, {"profiloAttivo", -3}}
                                    << Preferences{} << QStringList{"Uno", "Due", "Tre"} << 0;
    QTest::newRow("index that isn't a number") << Preferences{{"profiliInvio", threeProfiles}, {"profiloAttivo", "due"}}
                                               << Preferences{} << QStringList{"Uno", "Due", "Tre"} << 0;
    QTest::newRow("old one-account form") << Preferences{{"smtpConfig", onlyHost}} << Preferences{}
                                          << QStringList{"mail.example.it", "Brevo", "Aruba"} << 0;
    QTest::newRow("old form on Aruba's host adds only Brevo")
        << Preferences{{"smtpConfig", QByteArray(R"({"host":")" + aruba.toUtf8() + R"("})")}} << Preferences{}
        << QStringList{"Aruba", "Brevo"} << 0;
    QTest::newRow("undecodable list") << Preferences{{"profiliInvio", QByteArray("{non è json")}} << Preferences{}
                                      << QStringList{"Brevo", "Aruba"} << 0;
    QTest::newRow("wrongly typed field fails the whole list")
        << Preferences{{"profiliInvio", QByteArray(R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","nome":"X",)"
                                                   R"("config":{"port":"465"}}])")}}
        << Preferences{} << QStringList{"Brevo", "Aruba"} << 0;
    QTest::newRow("wrongly typed old form") << Preferences{{"smtpConfig", QByteArray(R"({"useTLS":"sì"})")}}
                                            << Preferences{} << QStringList{"Brevo", "Aruba"} << 0;
    QTest::newRow("former product's one-account form") << Preferences{} << Preferences{{"smtpConfig", onlyHost}}
                                                       << QStringList{"mail.example.it", "Brevo", "Aruba"} << 0;
    QTest::newRow("former profiles, then our old form")
        << Preferences{{"smtpConfig", onlyHost}}
        << Preferences{{"profiliInvio", profilesJson({{"Vecchio", gmail}})}, {"profiloAttivo", 0}}
        << QStringList{"Vecchio", "mail.example.it", "Brevo", "Aruba"} << 0;
}

void TestSettings::caricaProfili() {
    QFETCH(Preferences, own);
    QFETCH(Preferences, former);
    QFETCH(QStringList, expected);
    QFETCH(int, index);
    seed("Brezzario", own);
    seed("Lumacco", former);
    SettingsStore store;
    QCOMPARE(names(store), expected);
    QCOMPARE(store.indiceAttivo(), index);
}

void TestSettings::formerProfilesAreCopiedOnce() {
    const QByteArray bytes = profilesJson({{"Uno", hostOf(Preset::gmail)}, {"Due", hostOf(Preset::brevo)}});
    seed("Lumacco", {{"profiliInvio", bytes}, {"profiloAttivo", 1}});
    QFile formerFile(confPath("Lumacco"));
    QVERIFY(formerFile.open(QIODevice::ReadOnly));
    const QByteArray formerBefore = formerFile.readAll();
    formerFile.close();
    {
        SettingsStore store;
        // No Aruba among the recovered profiles, so one is added, in memory until the first save.
        QCOMPARE(names(store), QStringList({"Uno", "Due", "Aruba"}));
        QCOMPARE(store.indiceAttivo(), 1);
    }
    QCOMPARE(storedValue("Brezzario", "profiliInvio").toByteArray(), bytes);
    QCOMPARE(storedValue("Brezzario", "profiloAttivo").toInt(), 1);
    QVERIFY(formerFile.open(QIODevice::ReadOnly));
    QCOMPARE(formerFile.readAll(), formerBefore); // the former domain is never changed
    // From now on the recovered profiles are our own and keep their identities.
    SettingsStore again;
    QCOMPARE(ProfiloInvio::encodeList(again.profili()), bytes);
}

void TestSettings::configDecoding_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("decodes");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("dailyLimit");
    QTest::addColumn<double>("delay");
    const QString aruba = hostOf(Preset::aruba);
    QTest::newRow("empty object takes every default") << QByteArray("{}") << true << aruba << 500 << 2.0;
    QTest::newRow("only host and port") << QByteArray(R"({"host":"h.it","port":25})") << true << "h.it" << 500 << 2.0;
    QTest::newRow("null is absent") << QByteArray(R"({"host":null,"dailyLimit":null})") << true << aruba << 500 << 2.0;
    QTest::newRow("integer delay") << QByteArray(R"({"delayBetweenMessages":1})") << true << aruba << 500 << 1.0;
    QTest::newRow("unknown keys are ignored")
        << QByteArray(R"({"colore":"blu","dailyLimit":0})") << true << aruba << 0 << 2.0;
    QTest::newRow("port as text") << QByteArray(R"({"port":"465"})") << false << "" << 0 << 0.0;
    QTest::newRow("port with a fraction") << QByteArray(R"({"port":465.5})") << false << "" << 0 << 0.0;
    QTest::newRow("boolean as number") << QByteArray(R"({"useTLS":1})") << false << "" << 0 << 0.0;
    QTest::newRow("limit as boolean") << QByteArray(R"({"dailyLimit":true})") << false << "" << 0 << 0.0;
    QTest::newRow("text as number") << QByteArray(R"({"fromEmail":5})") << false << "" << 0 << 0.0;
    QTest::newRow("not an object") << QByteArray(R"(["host"])") << false << "" << 0 << 0.0;
    QTest::newRow("not JSON") << QByteArray("host=h.it") << false << "" << 0 << 0.0;
}

void TestSettings::configDecoding() {
    QFETCH(QByteArray, json);
    QFETCH(bool, decodes);
    QFETCH(QString, host);
    QFETCH(int, dailyLimit);
    QFETCH(double, delay);
    const auto config = SMTPConfig::fromJsonBytes(json);
    QCOMPARE(config.has_value(), decodes);
    if (!config)
        return;
    QCOMPARE(config->host, host);
    QCOMPARE(config->dailyLimit, dailyLimit);
    QCOMPARE(config->delayBetweenMessages, delay);
    QCOMPARE(config->motivazioneContatto, SMTPConfig::defaultMotivazione());
    // Encoding writes every field, and decoding it gives the same value back.
    QCOMPARE(config->toJson().size(), 15);
    QCOMPARE(SMTPConfig::fromJson(config->toJson()), config);
}

void TestSettings::profileDecodingIsStrict_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("decodes");
    const QByteArray id = R"("id":"6F9619FF-8B86-D011-B42D-00C04FC964FF")";
    QTest::newRow("complete") << QByteArray("[{" + id + R"(,"nome":"A","config":{}}])") << true;
    QTest::newRow("lower-case id") << QByteArray(
                                          R"([{"id":"6f9619ff-8b86-d011-b42d-00c04fc964ff","nome":"A","config":{}}])")
                                   << true;
    QTest::newRow("no id") << QByteArray(R"([{"nome":"A","config":{}}])") << false;
    QTest::newRow("no name") << QByteArray("[{" + id + R"(,"config":{}}])") << false;
    QTest::newRow("no config") << QByteArray("[{" + id + R"(,"nome":"A"}])") << false;
    QTest::newRow("id that isn't a UUID") << QByteArray(R"([{"id":"uno","nome":"A","config":{}}])") << false;
    QTest::newRow("null name") << QByteArray("[{" + id + R"(,"nome":null,"config":{}}])") << false;
    QTest::newRow("one bad profile spoils the list")
        << QByteArray("[{" + id + R"(,"nome":"A","config":{}},{"nome":"B","config":{}}])") << false;
}

void TestSettings::profileDecodingIsStrict() {
    QFETCH(QByteArray, json);
    QFETCH(bool, decodes);
    QCOMPARE(ProfiloInvio::decodeList(json).has_value(), decodes);
}

void TestSettings::eliminaProfiloAttivo_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("active");
    QTest::addColumn<QStringList>("remaining");
    QTest::addColumn<int>("index");
    QTest::newRow("the last profile stays") << 1 << 0 << QStringList{"P0"} << 0;
    QTest::newRow("last of three") << 3 << 2 << QStringList{"P0", "P1"} << 1;
    QTest::newRow("first of three") << 3 << 0 << QStringList{"P1", "P2"} << 0;
    QTest::newRow("middle of three") << 3 << 1 << QStringList{"P0", "P2"} << 1;
}

void TestSettings::eliminaProfiloAttivo() {
    QFETCH(int, count);
    QFETCH(int, active);
    QFETCH(QStringList, remaining);
    QFETCH(int, index);
    QList<QPair<QString, QString>> profiles;
    for (int i = 0; i < count; ++i)
        profiles.append({QStringLiteral("P%1").arg(i), QStringLiteral("h%1.it").arg(i)});
    seed("Brezzario", {{"profiliInvio", profilesJson(profiles)}, {"profiloAttivo", active}});
    SettingsStore store;
    store.eliminaProfiloAttivo();
    QCOMPARE(names(store), remaining);
    QCOMPARE(store.indiceAttivo(), index);
    SettingsStore reread;
    QCOMPARE(names(reread), remaining);
    QCOMPARE(reread.indiceAttivo(), index);
}

void TestSettings::selectingTheActiveProfileWritesNothing() {
    SettingsStore store;
    store.selezionaProfilo(0);
    QVERIFY(!QFile::exists(confPath("Brezzario"))); // nothing is written at start either
    store.selezionaProfilo(-5);                     // held to 0, which is already active
    QVERIFY(!QFile::exists(confPath("Brezzario")));
    store.selezionaProfilo(9); // held to 1
    QCOMPARE(store.indiceAttivo(), 1);
    QCOMPARE(storedValue("Brezzario", "profiloAttivo").toInt(), 1);
}

void TestSettings::aggiungiProfilo() {
    SettingsStore store;
    store.aggiungiProfilo(QStringLiteral("Brevo"), Preset::gmail); // names need not be unique
    QCOMPARE(names(store), QStringList({"Brevo", "Aruba", "Brevo"}));
    QCOMPARE(store.indiceAttivo(), 2);
    QCOMPARE(store.config(), configPredefinita(Preset::gmail));
    SettingsStore reread;
    QCOMPARE(reread.profili(), store.profili());
    QCOMPARE(reread.indiceAttivo(), 2);
}

void TestSettings::passwordLifecycle() {
    SettingsStore store;
    SMTPConfig brevo = store.config();
    brevo.username = QStringLiteral("anna");
    store.setConfig(brevo);
    const MemoryKeychain::Key brevoKey{Keychain::servizio, "anna@" + hostOf(Preset::brevo)};
    m_secrets->insert(brevoKey, "segreta");

    // A write before the first load stays in memory, and changing profile reads nothing.
    store.setPassword(QStringLiteral("provvisoria"));
    store.selezionaProfilo(1);
    store.selezionaProfilo(0);
    QCOMPARE(store.password(), QStringLiteral("provvisoria"));
    QCOMPARE(m_keychain->reads, 0);
    QCOMPARE(m_secrets->value(brevoKey), QByteArray("segreta"));
    QVERIFY(!store.isConfigured());

    // The first load reads the active account's password, once.
    store.caricaPasswordSeServe();
    QCOMPARE(store.password(), QStringLiteral("segreta"));
    const int readsAfterLoad = m_keychain->reads;
    store.caricaPasswordSeServe();
    QCOMPARE(m_keychain->reads, readsAfterLoad);

    // Once loaded, writes go to the secret store, and "" deletes the entry.
    store.setPassword(QStringLiteral("nuova"));
    QCOMPARE(m_secrets->value(brevoKey), QByteArray("nuova"));
    store.selezionaProfilo(1); // Aruba, no username: no password
    QCOMPARE(store.password(), QString());
    store.selezionaProfilo(0);
    QCOMPARE(store.password(), QStringLiteral("nuova"));
    store.setPassword(QString());
    QVERIFY(!m_secrets->contains(brevoKey));
}

void TestSettings::passwordMovesFromFormerService() {
    SettingsStore store;
    SMTPConfig config = store.config();
    config.username = QStringLiteral("mario");
    store.setConfig(config);
    const QString account = "mario@" + hostOf(Preset::brevo);
    m_secrets->insert({Keychain::servizioPrecedente, account}, "vecchia");
    store.caricaPasswordSeServe();
    QCOMPARE(store.password(), QStringLiteral("vecchia"));
    QCOMPARE(m_secrets->value({Keychain::servizio, account}), QByteArray("vecchia"));
    QCOMPARE(m_secrets->value({Keychain::servizioPrecedente, account}), QByteArray("vecchia")); // left where it was
}

void TestSettings::reloadAfterAccountChange() {
    SettingsStore store;
    store.reloadPasswordForCurrentAccount(); // not loaded yet: nothing happens
    QCOMPARE(m_keychain->reads, 0);
    store.caricaPasswordSeServe();
    QCOMPARE(store.password(), QString());
    m_secrets->insert({Keychain::servizio, "luca@" + hostOf(Preset::brevo)}, "di luca");
    SMTPConfig config = store.config();
    config.username = QStringLiteral("luca");
    store.setConfig(config);
    store.reloadPasswordForCurrentAccount();
    QCOMPARE(store.password(), QStringLiteral("di luca"));
}

void TestSettings::nomeSuggerito_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("name");
    QTest::newRow("Brevo") << hostOf(Preset::brevo) << "Brevo";
    QTest::newRow("Aruba Business") << hostOf(Preset::arubaBusiness) << "Aruba Business";
    QTest::newRow("upper case doesn't match") << hostOf(Preset::gmail).toUpper() << hostOf(Preset::gmail).toUpper();
    QTest::newRow("blank around doesn't match") << " " + hostOf(Preset::aruba) << " " + hostOf(Preset::aruba);
    QTest::newRow("empty isn't personalizzato") << ""
                                                << "";
}

void TestSettings::nomeSuggerito() {
    QFETCH(QString, host);
    QFETCH(QString, name);
    QCOMPARE(::nomeSuggerito(host), name);
}

void TestSettings::indirizzoDisiscrizione_data() {
    QTest::addColumn<QString>("disiscrizione");
    QTest::addColumn<QString>("replyTo");
    QTest::addColumn<QString>("fromEmail");
    QTest::addColumn<QString>("expected");
    QTest::newRow("own address first") << " Stop@Ditta.it "
                                       << "r@ditta.it"
                                       << "f@ditta.it"
                                       << "stop@ditta.it";
    QTest::newRow("invalid, empty reply: sender") << "non valido"
                                                  << ""
                                                  << "Info@Ditta.IT"
                                                  << "info@ditta.it";
    QTest::newRow("reply before sender") << ""
                                         << "Risposte@ditta.it"
                                         << "f@ditta.it"
                                         << "risposte@ditta.it";
    QTest::newRow("none valid") << "x"
                                << "y@"
                                << "@z.it"
                                << "";
}

void TestSettings::indirizzoDisiscrizione() {
    QFETCH(QString, disiscrizione);
    QFETCH(QString, replyTo);
    QFETCH(QString, fromEmail);
    QFETCH(QString, expected);
    SMTPConfig config;
    config.emailDisiscrizione = disiscrizione;
    config.replyTo = replyTo;
    config.fromEmail = fromEmail;
    QCOMPARE(config.indirizzoDisiscrizione(), expected);
}

void TestSettings::isConfigured_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("fromEmail");
    QTest::addColumn<bool>("configured");
    QTest::newRow("complete") << "smtp.ditta.it"
                              << "anna"
                              << "pw"
                              << "anna@ditta.it" << true;
    QTest::newRow("no host") << ""
                             << "anna"
                             << "pw"
                             << "anna@ditta.it" << false;
    QTest::newRow("no username") << "smtp.ditta.it"
                                 << ""
                                 << "pw"
                                 << "anna@ditta.it" << false;
    QTest::newRow("no password") << "smtp.ditta.it"
                                 << "anna"
                                 << ""
                                 << "anna@ditta.it" << false;
    QTest::newRow("invalid sender") << "smtp.ditta.it"
                                    << "anna"
                                    << "pw"
                                    << "anna@ditta" << false;
}

void TestSettings::isConfigured() {
    QFETCH(QString, host);
    QFETCH(QString, username);
    QFETCH(QString, password);
    QFETCH(QString, fromEmail);
    QFETCH(bool, configured);
    SettingsStore store;
    store.caricaPasswordSeServe();
    SMTPConfig config = store.config();
    config.host = host;
    config.username = username;
    config.fromEmail = fromEmail;
    store.setConfig(config);
    store.setPassword(password);
    QCOMPARE(store.isConfigured(), configured);
}

void TestSettings::presets_data() {
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<QString>("raw");
    QTest::addColumn<int>("dailyLimit");
    QTest::newRow("brevo") << Preset::brevo << "brevo" << 300;
    QTest::newRow("aruba") << Preset::aruba << "aruba" << 500;
    QTest::newRow("arubaBusiness") << Preset::arubaBusiness << "arubaBusiness" << 500;
    QTest::newRow("gmail") << Preset::gmail << "gmail" << 400;
    QTest::newRow("personalizzato") << Preset::personalizzato << "personalizzato" << 0;
}

void TestSettings::presets() {
    QFETCH(Preset, preset);
    QFETCH(QString, raw);
    QFETCH(int, dailyLimit);
    QCOMPARE(rawValue(preset), raw);
    QCOMPARE(presetFromRaw(raw), preset);
    const SMTPConfig config = configPredefinita(preset);
    QCOMPARE(config.dailyLimit, dailyLimit);
    QCOMPARE(config.port, 465);
    QVERIFY(config.useTLS);
    QCOMPARE(config.host.isEmpty(), preset == Preset::personalizzato);
    SMTPConfig expected; // every other field keeps the bare defaults
    expected.host = config.host;
    expected.dailyLimit = dailyLimit;
    QCOMPARE(config, expected);
}

BREZZARIO_TEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
