// Runs inside with-keyring.sh: a private D-Bus session with a real, unlocked gnome-keyring.
#include "settings/Keychain.h"
#include "settings/SettingsStore.h"
#include "TestEnvironment.h"

#include <QUuid>

class TestKeychain : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void roundTrip_data();
    void roundTrip();
    void emptyPasswordRemovesTheEntry();
    void formerServiceMovesOver();
    void settingsStoreLoadsFromTheSecretService();
};

namespace {
QString uniqueAccount() {
    return QStringLiteral("utente-%1@smtp.example.it").arg(QUuid::createUuid().toString(QUuid::Id128));
}
} // namespace

void TestKeychain::initTestCase() {
    QVERIFY2(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"), "run through with-keyring.sh");
}

void TestKeychain::roundTrip_data() {
    QTest::addColumn<QString>("secret");
    QTest::newRow("plain") << "segreta";
    QTest::newRow("accents and symbols") << QString::fromUtf16(u"pàss wörd €£ \"'\\");
    QTest::newRow("emoji") << QString::fromUtf16(u"chiave\U0001F511");
}

void TestKeychain::roundTrip() {
    QFETCH(QString, secret);
    const QString account = uniqueAccount();
    QCOMPARE(Keychain::password(account), std::nullopt);
    Keychain::setPassword(secret, account);
    QCOMPARE(Keychain::password(account), secret);
    Keychain::setPassword(QStringLiteral("sostituita"), account); // a write replaces
    QCOMPARE(Keychain::password(account), QStringLiteral("sostituita"));
    Keychain::delete_(account);
    QCOMPARE(Keychain::password(account), std::nullopt);
}

void TestKeychain::emptyPasswordRemovesTheEntry() {
    const QString account = uniqueAccount();
    Keychain::setPassword(QStringLiteral("x"), account);
    Keychain::setPassword(QString(), account);
    QCOMPARE(Keychain::password(account), std::nullopt);
    Keychain::setPassword(QStringLiteral("x"), QString()); // an empty account does nothing
    QCOMPARE(Keychain::password(QString()), std::nullopt);
}

void TestKeychain::formerServiceMovesOver() {
    const QString account = uniqueAccount();
    Keychain::setPassword(QStringLiteral("di prima"), account, Keychain::servizioPrecedente);
    QCOMPARE(Keychain::password(account), QStringLiteral("di prima"));
    // It now lives under our own service, and the former entry is still there.
    Keychain::delete_(account, Keychain::servizioPrecedente);
    QCOMPARE(Keychain::password(account), QStringLiteral("di prima"));
    QCOMPARE(Keychain::password(account, Keychain::servizioPrecedente), std::nullopt);
}

void TestKeychain::settingsStoreLoadsFromTheSecretService() {
    SettingsStore store;
    SMTPConfig config = store.config();
    config.username = QStringLiteral("keyring-%1").arg(QUuid::createUuid().toString(QUuid::Id128));
    store.setConfig(config);
    Keychain::setPassword(QStringLiteral("dal portachiavi"), store.accountCorrente());
    store.caricaPasswordSeServe();
    QCOMPARE(store.password(), QStringLiteral("dal portachiavi"));
    store.setPassword(QStringLiteral("cambiata"));
    QCOMPARE(Keychain::password(store.accountCorrente()), QStringLiteral("cambiata"));
}

BREZZARIO_TEST_GUILESS_MAIN(TestKeychain)
#include "tst_keychain.moc"
