#include "AiutiModulo.h"
#include "app/SettingsWindow.h"
#include "screens/domains/RimbalziView.h"
#include "screens/settings/SettingsView.h"
#include "Screenshot.h"
#include "settings/Keychain.h"
#include "settings/SettingsStore.h"
#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Symbols.h"

#include <QPushButton>
#include <QSettings>

using namespace AiutiModulo;

// The form against the real secret service (gnome-keyring in a private D-Bus session): what is typed is
// there after a restart, and a cleared key is gone.
class TestSettingsKeyring : public QObject {
    Q_OBJECT

private:
    // As a start of the program would: a new settings store and a new screen, shown.
    std::unique_ptr<SettingsView> apri(std::unique_ptr<SettingsStore>& settings) {
        settings = std::make_unique<SettingsStore>();
        auto vista = std::make_unique<SettingsView>(Ambiente{*settings, *m_store.store});
        vista->resize(SettingsWindow::larghezza, 900);
        vista->show();
        if (!QTest::qWaitForWindowExposed(vista.get()))
            return nullptr;
        return vista;
    }

    TempStore m_store;

private Q_SLOTS:
    void initTestCase() {
        Symbols::preparaTemaIcone();
        QVERIFY2(!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"), "run through with-keyring.sh");
    }

    void init() { QSettings(QStringLiteral("velarmo"), QStringLiteral("Brezzario")).clear(); }

    void passwordDopoIlRiavvio() {
        std::unique_ptr<SettingsStore> settings;
        {
            auto vista = apri(settings);
            QVERIFY(vista);
            scegli(trova<QComboBox>(vista.get(), "profilo"), 1);
            digita(trova<QLineEdit>(vista.get(), "nomeUtente"), QStringLiteral("info@ditta.it"));
            digita(trova<QLineEdit>(vista.get(), "password"), QStringLiteral("Pàssword ünicode 42"));
        }
        QCOMPARE(Keychain::password(QStringLiteral("info@ditta.it@smtps.aruba.it")),
                 std::optional<QString>(QStringLiteral("Pàssword ünicode 42")));
        auto vista = apri(settings);
        QVERIFY(vista);
        QCOMPARE(settings->nomeProfiloAttivo(), QStringLiteral("Aruba"));
        QCOMPARE(trova<QLineEdit>(vista.get(), "password")->text(), QStringLiteral("Pàssword ünicode 42"));
        // The other profile has another account, and so no password.
        scegli(trova<QComboBox>(vista.get(), "profilo"), 0);
        QCOMPARE(trova<QLineEdit>(vista.get(), "password")->text(), QString());
        scegli(trova<QComboBox>(vista.get(), "profilo"), 1);
        // Clearing the field removes the entry.
        digita(trova<QLineEdit>(vista.get(), "password"), QString());
        QCOMPARE(Keychain::password(QStringLiteral("info@ditta.it@smtps.aruba.it")), std::nullopt);
        QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-portachiavi")));
    }

    void chiaveBrevo() {
        std::unique_ptr<SettingsStore> settings;
        {
            auto vista = apri(settings);
            QVERIFY(vista);
            auto* pannello = vista->findChild<RimbalziView*>();
            QVERIFY(pannello);
            digita(trova<QLineEdit>(pannello, "chiaveAPI"), QStringLiteral("xkeysib-0123456789"));
        }
        QCOMPARE(Keychain::password(Keychain::accountBrevo),
                 std::optional<QString>(QStringLiteral("xkeysib-0123456789")));
        auto vista = apri(settings);
        QVERIFY(vista);
        auto* pannello = vista->findChild<RimbalziView*>();
        QCOMPARE(pannello->chiaveAPI(), QStringLiteral("xkeysib-0123456789"));
        auto* chiave = trova<QLineEdit>(pannello, "chiaveAPI");
        chiave->setFocus();
        chiave->selectAll();
        QTest::keyClick(chiave, Qt::Key_Backspace);
        QCOMPARE(Keychain::password(Keychain::accountBrevo), std::nullopt);
        QVERIFY(!trova<QPushButton>(pannello, "scaricaRimbalzi")->isEnabled());
    }
};

BREZZARIO_TEST_MAIN(TestSettingsKeyring)
#include "tst_settings_keyring.moc"
