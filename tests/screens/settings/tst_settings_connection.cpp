#include "tst_settings_screen.h"

#include "AiutiModulo.h"
#include "Loopback.h"
#include "screens/settings/SettingsView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QCheckBox>
#include <QScrollArea>

using namespace AiutiModulo;

void TestSettingsScreen::provaConnessione_data() {
    QTest::addColumn<QString>("porta");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("riuscita");
    QTest::addColumn<QString>("inizio"); // the text shown starts with this
    const QString giusta = QStringLiteral("Segreta!42");
    QTest::newRow("right password") << "2525" << giusta << true << "Connessione e autenticazione riuscite.";
    QTest::newRow("wrong password") << "2525"
                                    << "Sbagliata!7" << false << "Autenticazione rifiutata: 535";
    QTest::newRow("empty password") << "2525"
                                    << "" << false << "Autenticazione rifiutata: 535";
    QTest::newRow("closed port") << "2599" << giusta << false
                                 << "Errore di connessione: il server ha rifiutato la connessione";
    QTest::newRow("port out of range") << "70000" << giusta << false
                                       << "Errore di connessione: Porta non valida: 70000";
    QTest::newRow("negative port") << "-1" << giusta << false << "Errore di connessione: Porta non valida: -1";
    QTest::newRow("untrusted certificate")
        << "2526" << giusta << false << "Errore di connessione: il certificato del server non è attendibile";
}

void TestSettingsScreen::provaConnessione() {
    QFETCH(QString, porta);
    QFETCH(QString, password);
    QFETCH(bool, riuscita);
    QFETCH(QString, inizio);
    auto vista = apri();
    QVERIFY(vista);
    scegli(trova<QComboBox>(vista.get(), "provider"), 4);
    digita(trova<QLineEdit>(vista.get(), "host"), QString::fromLatin1(Loopback::settingsSmtp));
    digita(trova<QLineEdit>(vista.get(), "porta"), porta);
    digita(trova<QLineEdit>(vista.get(), "nomeUtente"), m_smtp->options().username);
    digita(trova<QLineEdit>(vista.get(), "password"), password);
    QVERIFY(trova<QCheckBox>(vista.get(), "tls")->isChecked());
    const int messaggi = m_smtp->messageCount();

    auto* pulsante = trova<PulsanteAttesa>(vista.get(), "provaConnessione");
    QTest::mouseClick(pulsante, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!vista->provaInCorso(), 20000);
    QVERIFY(pulsante->isEnabled());

    auto* esito = trova<NotaView>(vista.get(), "esitoProva");
    QVERIFY(esito->isVisibleTo(vista.get()));
    QVERIFY2(esito->testo().startsWith(inizio), qPrintable(esito->testo()));
    QCOMPARE(vista->provaRiuscita(), riuscita);
    QCOMPARE(esito->colore(), riuscita ? Colore::green : Colore::red);
    // Nothing sent, nothing stored, and the password shows nowhere.
    QCOMPARE(m_smtp->messageCount(), messaggi);
    QVERIFY(!m_store->store->hasPendingChanges());
    if (!password.isEmpty())
        for (const QString& testo : testiVisibili(vista.get()))
            QVERIFY2(!testo.contains(password), qPrintable(testo));
    vista->scorrimento()->ensureWidgetVisible(esito);
    QVERIFY(
        TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-prova-") +
                                                     QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-')));
}

void TestSettingsScreen::provaConnessioneUsaLaCopia() {
    auto vista = apri();
    QVERIFY(vista);
    digita(trova<QLineEdit>(vista.get(), "host"), QString::fromLatin1(Loopback::settingsSmtp));
    digita(trova<QLineEdit>(vista.get(), "porta"), QStringLiteral("2525"));
    digita(trova<QLineEdit>(vista.get(), "nomeUtente"), m_smtp->options().username);
    digita(trova<QLineEdit>(vista.get(), "password"), m_smtp->options().password);
    auto* pulsante = trova<PulsanteAttesa>(vista.get(), "provaConnessione");
    QTest::mouseClick(pulsante, Qt::LeftButton);
    QVERIFY(vista->provaInCorso());
    QVERIFY(pulsante->inAttesa());
    QVERIFY(!pulsante->isEnabled());
    QVERIFY(TestSupport::salvaSchermata(pulsante, QStringLiteral("impostazioni-prova-in-corso")));
    // The user goes on editing while the test runs: the test uses what stood at its start.
    digita(trova<QLineEdit>(vista.get(), "password"), QStringLiteral("cambiata"));
    digita(trova<QLineEdit>(vista.get(), "porta"), QStringLiteral("1"));
    QTRY_VERIFY_WITH_TIMEOUT(!vista->provaInCorso(), 20000);
    QVERIFY(vista->provaRiuscita());
    QCOMPARE(*vista->esitoProva(), QStringLiteral("Connessione e autenticazione riuscite."));
    QCOMPARE(settings().password(), QStringLiteral("cambiata"));
}
