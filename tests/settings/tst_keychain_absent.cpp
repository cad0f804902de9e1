// With no secret service at all (no session bus), every read must be "no password", at once.
#include "settings/Keychain.h"
#include "settings/SettingsStore.h"
#include "TestEnvironment.h"

#include <QElapsedTimer>

class TestKeychainAbsent : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void readsAnswerNothing();
    void settingsStoreIsNotConfigured();
};

void TestKeychainAbsent::initTestCase() {
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("DISPLAY");
    qunsetenv("WAYLAND_DISPLAY");
}

void TestKeychainAbsent::readsAnswerNothing() {
    QElapsedTimer timer;
    timer.start();
    Keychain::setPassword(QStringLiteral("persa"), QStringLiteral("a@b.it"));
    QCOMPARE(Keychain::password(QStringLiteral("a@b.it")), std::nullopt);
    Keychain::delete_(QStringLiteral("a@b.it"));
    // Well inside the 20 s guard: the answer comes from the missing service, not from giving up on it.
    QVERIFY2(timer.elapsed() < 10'000, qPrintable(QString::number(timer.elapsed())));
}

void TestKeychainAbsent::settingsStoreIsNotConfigured() {
    SettingsStore store;
    SMTPConfig config = store.config();
    config.username = QStringLiteral("anna");
    config.fromEmail = QStringLiteral("anna@ditta.it");
    store.setConfig(config);
    store.caricaPasswordSeServe();
    QVERIFY(store.passwordCaricata());
    QCOMPARE(store.password(), QString());
    QVERIFY(!store.isConfigured());
}

BREZZARIO_TEST_GUILESS_MAIN(TestKeychainAbsent)
#include "tst_keychain_absent.moc"
