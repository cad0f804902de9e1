#include "tst_settings_screen.h"

#include "AiutiModulo.h"
#include "engine/SendEngine.h"
#include "screens/dashboard/SendDashboardView.h"
#include "screens/settings/SettingsView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QCheckBox>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>

using namespace AiutiModulo;

namespace {

const QString testoBrevo = QStringLiteral(
    "Nome utente e password si trovano in Brevo → SMTP e API → SMTP: il nome utente è il tuo \"SMTP login\", la "
    "password è la \"SMTP key\" (non la password dell'account). L'indirizzo mittente deve essere un mittente "
    "verificato o appartenere a un dominio autenticato in Brevo.");

QStringList titoliVisibili(QWidget* vista) {
    QStringList titoli;
    for (QLabel* titolo : vista->findChildren<QLabel*>(QStringLiteral("titoloSezione")))
        if (titolo->isVisibleTo(vista))
            titoli << titolo->text();
    return titoli;
}

} // namespace

void TestSettingsScreen::sezioniInOrdine() {
    auto vista = apri();
    QVERIFY(vista);
    const QStringList comuni = {"Servizio di invio",          "Server di posta in uscita",     "Mittente",
                                "Autenticazione del dominio", "Disiscrizione e piè di pagina", "Ritmo di invio",
                                "Controllo dei domini"};
    // A first start is on Brevo, so its bounce section stands before the simulation.
    QCOMPARE(titoliVisibili(vista.get()),
             comuni + QStringList({"Rimbalzi differiti (Brevo)", "Dati di esempio", "Prova"}));
    scegli(trova<QComboBox>(vista.get(), "profilo"), 1);
    QCOMPARE(settings().nomeProfiloAttivo(), QStringLiteral("Aruba"));
    QCOMPARE(titoliVisibili(vista.get()), comuni + QStringList({"Dati di esempio", "Prova"}));
    QVERIFY(!vista->findChild<QWidget*>(QStringLiteral("rimbalzi")));
}

void TestSettingsScreen::providerPersonalizzatoNonCambiaNulla() {
    auto vista = apri();
    QVERIFY(vista);
    const SMTPConfig prima = settings().config();
    auto* provider = trova<QComboBox>(vista.get(), "provider");
    QCOMPARE(provider->currentText(), QStringLiteral("Brevo (smtp-relay.brevo.com)"));
    scegli(provider, 4);
    QCOMPARE(settings().config(), prima);
    // The picker reads the host again at once.
    QCOMPARE(provider->currentIndex(), 0);
    QCOMPARE(trova<QLabel>(vista.get(), "suggerimentoProvider")->text(), testoBrevo);
}

void TestSettingsScreen::hostDigitatoSceglieIlProvider() {
    auto vista = apri();
    QVERIFY(vista);
    scegli(trova<QComboBox>(vista.get(), "profilo"), 1);
    digita(trova<QLineEdit>(vista.get(), "porta"), QStringLiteral("2465"));
    digita(trova<QLineEdit>(vista.get(), "limite"), QStringLiteral("123"));
    auto* host = trova<QLineEdit>(vista.get(), "host");
    host->setFocus();
    host->selectAll();
    QTest::keyClick(host, Qt::Key_Backspace);
    QTest::keyClicks(host, QStringLiteral("smtp-relay.brevo.co"));
    auto* provider = trova<QComboBox>(vista.get(), "provider");
    QCOMPARE(provider->currentText(), QStringLiteral("Personalizzato"));
    QVERIFY(!trova<QLabel>(vista.get(), "suggerimentoProvider")->isVisibleTo(vista.get()));
    QVERIFY(!trova<QWidget>(vista.get(), "sezioneBrevo")->isVisibleTo(vista.get()));
    QTest::keyClicks(host, QStringLiteral("m"));
    QCOMPARE(provider->currentIndex(), 0);
    QCOMPARE(trova<QLabel>(vista.get(), "suggerimentoProvider")->text(), testoBrevo);
    QVERIFY(trova<QWidget>(vista.get(), "sezioneBrevo")->isVisibleTo(vista.get()));
    QVERIFY(vista->findChild<QWidget*>(QStringLiteral("rimbalzi")));
    QCOMPARE(settings().config().port, 2465);
    QCOMPARE(settings().config().dailyLimit, 123);
    QCOMPARE(settings().nomeProfiloAttivo(), QStringLiteral("Aruba"));
    QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-host-brevo-digitato")));
}

void TestSettingsScreen::presetSostituisceIlLimite_data() {
    QTest::addColumn<int>("voce");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("limite");
    QTest::newRow("Brevo") << 0 << "smtp-relay.brevo.com" << 300;
    QTest::newRow("Aruba") << 1 << "smtps.aruba.it" << 500;
    QTest::newRow("Aruba Business") << 2 << "smtps.arubabusiness.it" << 500;
    QTest::newRow("Gmail") << 3 << "smtp.gmail.com" << 400;
}

void TestSettingsScreen::presetSostituisceIlLimite() {
    QFETCH(int, voce);
    QFETCH(QString, host);
    QFETCH(int, limite);
    auto vista = apri();
    QVERIFY(vista);
    QTest::mouseClick(trova<QPushButton>(vista.get(), "aggiungiProfilo"), Qt::LeftButton);
    QCOMPARE(settings().nomeProfiloAttivo(), QStringLiteral("Nuovo profilo"));
    QCOMPARE(trova<QComboBox>(vista.get(), "provider")->currentText(), QStringLiteral("Personalizzato"));
    digita(trova<QLineEdit>(vista.get(), "host"), QStringLiteral("posta.ditta.it"));
    digita(trova<QLineEdit>(vista.get(), "porta"), QStringLiteral("2525"));
    trova<QCheckBox>(vista.get(), "tls")->click();
    digita(trova<QLineEdit>(vista.get(), "nomeUtente"), QStringLiteral("mario@ditta.it"));
    digita(trova<QLineEdit>(vista.get(), "limite"), QStringLiteral("42"));
    trova<QSlider>(vista.get(), "pausa")->setFocus();
    QTest::keyClick(trova<QSlider>(vista.get(), "pausa"), Qt::Key_End);
    // The account on the provider's host already has a password: choosing the provider brings it in.
    m_segreti->insert({Keychain::servizio, QStringLiteral("mario@ditta.it@") + host}, "Salvata!1");

    scegli(trova<QComboBox>(vista.get(), "provider"), voce);
    const SMTPConfig config = settings().config();
    QCOMPARE(config.host, host);
    QCOMPARE(config.port, 465);
    QVERIFY(config.useTLS);
    QCOMPARE(config.dailyLimit, limite);
    QCOMPARE(config.delayBetweenMessages, 30.0);
    QCOMPARE(config.username, QStringLiteral("mario@ditta.it"));
    QCOMPARE(config.fromEmail, QStringLiteral("mario@ditta.it"));
    QCOMPARE(trova<QLineEdit>(vista.get(), "host")->text(), host);
    QCOMPARE(trova<QLineEdit>(vista.get(), "porta")->text(), QStringLiteral("465"));
    QCOMPARE(trova<QLineEdit>(vista.get(), "limite")->text(), QString::number(limite));
    QCOMPARE(trova<QLineEdit>(vista.get(), "password")->text(), QStringLiteral("Salvata!1"));
    QCOMPARE(settings().nomeProfiloAttivo(), QStringLiteral("Nuovo profilo"));
}

// A profile filled in as the user guide tells it for each provider, from a first start: afterwards it is
// complete, its password sits in the secret store under its own account, and the form shows that provider's
// hint and limit. The screenshots are the guide's pictures of the three providers.
void TestSettingsScreen::profiloPerProvider_data() {
    QTest::addColumn<int>("profilo");  // the profile to use, or -1 for a new one
    QTest::addColumn<int>("provider"); // the provider to choose, or -1 to keep the profile's own
    QTest::addColumn<QString>("nome");
    QTest::addColumn<QString>("nomeUtente");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("mittente"); // typed after the user name, or empty to leave it to the form
    QTest::addColumn<QString>("mittenteDalNomeUtente");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("limite");
    QTest::addColumn<QString>("suggerimento");
    // Brevo's SMTP login has the form of an address, so it lands in the empty sender first: the guide tells
    // the user to put the real sender in its place.
    QTest::newRow("Brevo") << 0 << -1 << "Brevo"
                           << "8a1b2c001@smtp-brevo.com"
                           << "xsmtpsib-a1b2c3d4e5f6"
                           << "info@ferramenta-rossi.it"
                           << "8a1b2c001@smtp-brevo.com"
                           << "smtp-relay.brevo.com" << 300 << "Nome utente e password si trovano in Brevo";
    QTest::newRow("Aruba") << 1 << -1 << "Aruba"
                           << "info@ferramenta-rossi.it"
                           << "Casella-2026"
                           << ""
                           << "info@ferramenta-rossi.it"
                           << "smtps.aruba.it" << 500 << "Nome utente: l'indirizzo completo della casella.";
    QTest::newRow("Gmail") << -1 << 3 << "Gmail"
                           << "ferramenta.rossi@gmail.com"
                           << "abcd efgh ijkl mnop"
                           << ""
                           << "ferramenta.rossi@gmail.com"
                           << "smtp.gmail.com" << 400 << "Serve una \"password per le app\"";
}

void TestSettingsScreen::profiloPerProvider() {
    QFETCH(int, profilo);
    QFETCH(int, provider);
    QFETCH(QString, nome);
    QFETCH(QString, nomeUtente);
    QFETCH(QString, password);
    QFETCH(QString, mittente);
    QFETCH(QString, mittenteDalNomeUtente);
    QFETCH(QString, host);
    QFETCH(int, limite);
    QFETCH(QString, suggerimento);
    auto vista = apri();
    QVERIFY(vista);
    if (profilo >= 0) {
        scegli(trova<QComboBox>(vista.get(), "profilo"), profilo);
    } else {
        QTest::mouseClick(trova<QPushButton>(vista.get(), "aggiungiProfilo"), Qt::LeftButton);
        digita(trova<QLineEdit>(vista.get(), "nomeProfilo"), nome);
    }
    if (provider >= 0)
        scegli(trova<QComboBox>(vista.get(), "provider"), provider);
    QCOMPARE(settings().nomeProfiloAttivo(), nome);
    QVERIFY(!settings().isConfigured());

    digita(trova<QLineEdit>(vista.get(), "nomeUtente"), nomeUtente);
    QCOMPARE(settings().config().fromEmail, mittenteDalNomeUtente);
    digita(trova<QLineEdit>(vista.get(), "password"), password);
    digita(trova<QLineEdit>(vista.get(), "nomeMittente"), QStringLiteral("Ferramenta Rossi"));
    if (!mittente.isEmpty())
        digita(trova<QLineEdit>(vista.get(), "indirizzoMittente"), mittente);

    const SMTPConfig config = settings().config();
    QCOMPARE(config.host, host);
    QCOMPARE(config.port, 465);
    QVERIFY(config.useTLS);
    QCOMPARE(config.dailyLimit, limite);
    QCOMPARE(config.username, nomeUtente);
    QCOMPARE(config.fromName, QStringLiteral("Ferramenta Rossi"));
    QCOMPARE(config.fromEmail, mittente.isEmpty() ? mittenteDalNomeUtente : mittente);
    QVERIFY(settings().isConfigured());
    QCOMPARE(m_segreti->value({Keychain::servizio, nomeUtente + u'@' + host}), password.toUtf8());
    QVERIFY(trova<QLabel>(vista.get(), "suggerimentoProvider")->text().startsWith(suggerimento));
    QVERIFY(!trova<NotaView>(vista.get(), "avvisoMittente")->isVisibleTo(vista.get()));
    QCOMPARE(trova<QLineEdit>(vista.get(), "limite")->text(), QString::number(limite));
    // The other profiles keep what they had.
    for (const ProfiloInvio& altro : settings().profili())
        if (altro.nome != nome)
            QVERIFY(altro.config.username.isEmpty());
    vista->scorrimento()->verticalScrollBar()->setValue(0);
    QTest::qWait(300); // rows shown, hidden or rewrapped above settle their heights over a few layout passes
    QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-profilo-") + nome));
}

void TestSettingsScreen::nomeUtenteRiempieIlMittente_data() {
    QTest::addColumn<QString>("mittente");
    QTest::addColumn<QStringList>("digitati");
    QTest::addColumn<QString>("atteso");
    QTest::newRow("address in capitals, typed key by key")
        << "" << QStringList{"Mario.Rossi@Ditta-Esempio.COM"} << "mario.rossi@ditta-esempio.com";
    QTest::newRow("only once") << "" << QStringList{"Mario@Ditta.it", "Altro@Ditta.it"} << "mario@ditta.it";
    QTest::newRow("not an address") << "" << QStringList{"mario.rossi"} << "";
    QTest::newRow("sender already set") << "info@ditta.it" << QStringList{"Mario@Ditta.it"} << "info@ditta.it";
}

void TestSettingsScreen::nomeUtenteRiempieIlMittente() {
    QFETCH(QString, mittente);
    QFETCH(QStringList, digitati);
    QFETCH(QString, atteso);
    SMTPConfig config = settings().config();
    config.fromEmail = mittente;
    settings().setConfig(config);
    auto vista = apri();
    QVERIFY(vista);
    for (const QString& nome : digitati)
        digita(trova<QLineEdit>(vista.get(), "nomeUtente"), nome);
    QCOMPARE(settings().config().username, digitati.last());
    QCOMPARE(settings().config().fromEmail, atteso);
    QCOMPARE(trova<QLineEdit>(vista.get(), "indirizzoMittente")->text(), atteso);
}

void TestSettingsScreen::avvisoMittente_data() {
    QTest::addColumn<QString>("mittente");
    QTest::addColumn<QString>("avviso");
    QTest::newRow("empty") << ""
                           << "Manca l'indirizzo mittente: su Aruba deve essere la stessa casella del nome utente, "
                              "altrimenti il server rifiuta l'invio.";
    QTest::newRow("malformed") << "info@"
                               << "Indirizzo mittente non valido";
    QTest::newRow("with a blank") << "info @ditta.it"
                                  << "Indirizzo mittente non valido";
    QTest::newRow("valid") << "Info@Ditta.it"
                           << "";
}

void TestSettingsScreen::avvisoMittente() {
    QFETCH(QString, mittente);
    QFETCH(QString, avviso);
    auto vista = apri();
    QVERIFY(vista);
    digita(trova<QLineEdit>(vista.get(), "indirizzoMittente"), mittente);
    QCOMPARE(settings().config().fromEmail, mittente);
    auto* nota = trova<NotaView>(vista.get(), "avvisoMittente");
    QCOMPARE(nota->isVisibleTo(vista.get()), !avviso.isEmpty());
    if (!avviso.isEmpty()) {
        QCOMPARE(nota->testo(), avviso);
        QCOMPARE(nota->colore(), Colore::orange);
    }
}

void TestSettingsScreen::profiliAggiuntaEdEliminazione() {
    auto vista = apri();
    QVERIFY(vista);
    auto* profilo = trova<QComboBox>(vista.get(), "profilo");
    auto* elimina = trova<QPushButton>(vista.get(), "eliminaProfilo");
    QCOMPARE(profilo->count(), 2);
    QVERIFY(elimina->isEnabled());
    QTest::mouseClick(elimina, Qt::LeftButton);
    QCOMPARE(settings().profili().size(), 1);
    QCOMPARE(profilo->count(), 1);
    QCOMPARE(profilo->currentText(), QStringLiteral("Aruba"));
    QCOMPARE(trova<QLineEdit>(vista.get(), "host")->text(), QStringLiteral("smtps.aruba.it"));
    QVERIFY(!elimina->isEnabled());
    QTest::mouseClick(elimina, Qt::LeftButton);
    QCOMPARE(settings().profili().size(), 1);

    QTest::mouseClick(trova<QPushButton>(vista.get(), "aggiungiProfilo"), Qt::LeftButton);
    QCOMPARE(profilo->count(), 2);
    QCOMPARE(profilo->currentText(), QStringLiteral("Nuovo profilo"));
    QCOMPARE(trova<QLineEdit>(vista.get(), "host")->text(), QString());
    QCOMPARE(trova<QComboBox>(vista.get(), "provider")->currentText(), QStringLiteral("Personalizzato"));
    QVERIFY(!trova<QPushButton>(vista.get(), "provaConnessione")->isEnabled());
    QVERIFY(elimina->isEnabled());
    digita(trova<QLineEdit>(vista.get(), "nomeProfilo"), QStringLiteral("Newsletter clienti"));
    QCOMPARE(profilo->itemText(1), QStringLiteral("Newsletter clienti"));
    QCOMPARE(settings().profili().at(1).nome, QStringLiteral("Newsletter clienti"));
    scegli(profilo, 0);
    QCOMPARE(trova<QLineEdit>(vista.get(), "nomeProfilo")->text(), QStringLiteral("Aruba"));
    QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-profili")));
}

void TestSettingsScreen::pausaDaZeroATrenta() {
    auto vista = apri();
    QVERIFY(vista);
    auto* pausa = trova<QSlider>(vista.get(), "pausa");
    auto* valore = trova<QLabel>(vista.get(), "valorePausa");
    QCOMPARE(valore->text(), QStringLiteral("2.0 s"));
    pausa->setFocus();
    QTest::keyClick(pausa, Qt::Key_Home);
    QCOMPARE(settings().config().delayBetweenMessages, 0.0);
    QCOMPARE(valore->text(), QStringLiteral("0.0 s"));
    QTest::keyClick(pausa, Qt::Key_Right);
    QCOMPARE(settings().config().delayBetweenMessages, 0.5);
    QCOMPARE(valore->text(), QStringLiteral("0.5 s"));
    QTest::keyClick(pausa, Qt::Key_End);
    QTest::keyClick(pausa, Qt::Key_Left);
    QCOMPARE(settings().config().delayBetweenMessages, 29.5);
    QCOMPARE(valore->text(), QStringLiteral("29.5 s"));
    // A delay written elsewhere between two steps is shown as it is, not rounded to the slider.
    SMTPConfig config = settings().config();
    config.delayBetweenMessages = 2.3;
    settings().setConfig(config);
    QCOMPARE(valore->text(), QStringLiteral("2.3 s"));
    QCOMPARE(settings().config().delayBetweenMessages, 2.3);
}

void TestSettingsScreen::campiDelPiePagina() {
    auto vista = apri();
    QVERIFY(vista);
    const char* campi[] = {"motivazione", "disiscrizione", "mittentePostale", "notaPiePagina"};
    auto visibili = [&] {
        int quanti = 0;
        for (const char* nome : campi)
            quanti += trova<QWidget>(vista.get(), nome)->isVisibleTo(vista.get());
        return quanti;
    };
    QCOMPARE(visibili(), 4);
    auto* disiscrizione = trova<QLineEdit>(vista.get(), "disiscrizione");
    QCOMPARE(disiscrizione->placeholderText(), QStringLiteral("come il mittente"));
    digita(trova<QLineEdit>(vista.get(), "indirizzoMittente"), QStringLiteral("Info@Ditta.it"));
    QCOMPARE(disiscrizione->placeholderText(), QStringLiteral("info@ditta.it"));
    auto* postale = trova<QPlainTextEdit>(vista.get(), "mittentePostale");
    postale->setFocus();
    QTest::keyClicks(postale, QStringLiteral("Ditta Srl"));
    QTest::keyClick(postale, Qt::Key_Return);
    QTest::keyClicks(postale, QStringLiteral("Via Roma 1, Bergamo"));
    QCOMPARE(settings().config().mittentePostale, QStringLiteral("Ditta Srl\nVia Roma 1, Bergamo"));

    trova<QCheckBox>(vista.get(), "piePagina")->click();
    QVERIFY(!settings().config().piePaginaAttivo);
    QCOMPARE(visibili(), 0);
    QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-senza-pie-pagina")));
    trova<QCheckBox>(vista.get(), "piePagina")->click();
    QVERIFY(settings().config().piePaginaAttivo);
    QCOMPARE(visibili(), 4);
    QCOMPARE(postale->toPlainText(), QStringLiteral("Ditta Srl\nVia Roma 1, Bergamo"));
}

void TestSettingsScreen::testoQualsiasiNeiCampi_data() {
    QTest::addColumn<QString>("testo");
    QTest::newRow("empty") << QString();
    QTest::newRow("very long") << QString(20000, u'x');
    QTest::newRow("control characters") << QStringLiteral("a\x01\x07\tb\x7f\x1b[31m\r\nc") + QChar(0x85);
    QTest::newRow("non-Latin scripts") << QStringLiteral(
        "東京 Ελληνικά العربية עברית 🙂 e\u0301");
    QTest::newRow("only blanks") << QStringLiteral("   \u00a0 ");
}

void TestSettingsScreen::testoQualsiasiNeiCampi() {
    QFETCH(QString, testo);
    auto vista = apri();
    QVERIFY(vista);
    // The key first: its field goes with the Brevo host.
    const char* campiDiTesto[] = {"chiaveAPI",    "nomeProfilo",       "host",      "nomeUtente",   "password",
                                  "nomeMittente", "indirizzoMittente", "rispondiA", "disiscrizione"};
    for (const char* nome : campiDiTesto) {
        auto* campo = trova<QLineEdit>(vista.get(), nome);
        QVERIFY2(campo, nome);
        campo->setFocus();
        campo->selectAll();
        campo->insert(testo); // as a paste would
        QTest::keyClick(campo, Qt::Key_Tab);
    }
    for (const char* nome : {"porta", "limite"}) {
        auto* campo = trova<QLineEdit>(vista.get(), nome);
        campo->setFocus();
        campo->selectAll();
        campo->insert(testo);
    }
    for (const char* nome : {"motivazione", "mittentePostale"})
        trova<QPlainTextEdit>(vista.get(), nome)->setPlainText(testo);

    // Whatever the field holds, the store kept it and reads it back after a restart.
    auto testoDi = [&](const char* nome) { return trova<QLineEdit>(vista.get(), nome)->text(); };
    const SMTPConfig config = settings().config();
    QCOMPARE(config.host, testoDi("host"));
    QCOMPARE(config.username, testoDi("nomeUtente"));
    QCOMPARE(config.fromName, testoDi("nomeMittente"));
    QCOMPARE(config.fromEmail, testoDi("indirizzoMittente"));
    QCOMPARE(config.replyTo, testoDi("rispondiA"));
    QCOMPARE(config.emailDisiscrizione, testoDi("disiscrizione"));
    QCOMPARE(settings().password(), testoDi("password"));
    QCOMPARE(config.motivazioneContatto, trova<QPlainTextEdit>(vista.get(), "motivazione")->toPlainText());
    QCOMPARE(config.mittentePostale, trova<QPlainTextEdit>(vista.get(), "mittentePostale")->toPlainText());
    QCOMPARE(config.port, 465); // the number fields refuse what isn't a number
    QCOMPARE(config.dailyLimit, 300);
    QCOMPARE(settings().nomeProfiloAttivo(), testoDi("nomeProfilo"));
    const SettingsStore riaperto;
    QCOMPARE(riaperto.config(), config);
    QVERIFY(
        TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-testo-qualsiasi-") +
                                                     QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-')));
}

void TestSettingsScreen::dueIstanzeCondividonoSoloLeImpostazioni() {
    auto sezione = apri();
    auto finestra = apri();
    QVERIFY(sezione && finestra);
    digita(trova<QLineEdit>(sezione.get(), "host"), QStringLiteral("posta.ditta.it"));
    QCOMPARE(trova<QLineEdit>(finestra.get(), "host")->text(), QStringLiteral("posta.ditta.it"));
    QCOMPARE(trova<QComboBox>(finestra.get(), "provider")->currentText(), QStringLiteral("Personalizzato"));
    // A test started in one shows only in that one.
    digita(trova<QLineEdit>(sezione.get(), "porta"), QStringLiteral("70000"));
    QTest::mouseClick(trova<QPushButton>(sezione.get(), "provaConnessione"), Qt::LeftButton);
    QTRY_VERIFY(!sezione->provaInCorso());
    QVERIFY(sezione->esitoProva().has_value());
    QVERIFY(!finestra->esitoProva().has_value());
    QVERIFY(!trova<NotaView>(finestra.get(), "esitoProva")->isVisibleTo(finestra.get()));
}

void TestSettingsScreen::simulazioneApreIlCruscotto() {
    auto vista = apri();
    QVERIFY(vista);
    vista->impostaSimulazione(12, 0.02);
    auto* simula = trova<QPushButton>(vista.get(), "simula");
    QTest::mouseClick(simula, Qt::LeftButton);
    QVERIFY(vista->mostraCruscottoProva());
    auto* cruscotto = vista->findChild<SendDashboardView*>();
    QVERIFY(cruscotto);
    QCOMPARE(cruscotto->motore(), vista->motoreProva());
    QVERIFY(vista->motoreProva()->isRunning());
    QTRY_VERIFY(!simula->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(!vista->motoreProva()->isRunning(), 20000);
    QTRY_VERIFY(simula->isEnabled()); // the form follows the engine at its next refresh
    QCOMPARE(vista->motoreProva()->total(), 12);
    QVERIFY(TestSupport::salvaSchermata(cruscotto, QStringLiteral("impostazioni-simulazione-cruscotto")));
    // Nothing reaches the store.
    QVERIFY(!m_store->store->hasPendingChanges());
    QCOMPARE(m_store->store->all<SendLog>().size(), 0);
    cruscotto->close();
    QTRY_VERIFY(!vista->mostraCruscottoProva());
}

void TestSettingsScreen::schermataIntera() {
    SMTPConfig config = settings().config();
    config.fromEmail = QStringLiteral("info@pronto.it");
    config.username = QStringLiteral("info@pronto.it");
    settings().setConfig(config);
    auto vista = apri();
    QVERIFY(vista);
    QTRY_VERIFY(vista->findChild<QWidget*>(QStringLiteral("dominioCheck"))
                    ->findChild<QLabel*>(QStringLiteral("titoloDominio"))
                    ->isVisibleTo(vista.get()));
    QWidget* modulo = vista->scorrimento()->widget();
    QVERIFY(TestSupport::salvaSchermata(modulo, QStringLiteral("impostazioni-modulo-intero")));
    QScrollBar* barra = vista->scorrimento()->verticalScrollBar();
    QVERIFY(barra->maximum() > 0);
    for (int passo = 0; passo <= 3; ++passo) {
        barra->setValue(barra->maximum() * passo / 3);
        QVERIFY(TestSupport::salvaSchermata(vista.get(), QStringLiteral("impostazioni-scorsa-%1").arg(passo)));
    }
}
