#include "tst_settings_screen.h"

#include "AiutiModulo.h"
#include "app/SettingsWindow.h"
#include "records/Text.h"
#include "screens/domains/DominioCheckView.h"
#include "screens/domains/RimbalziView.h"
#include "screens/domains/VerificaDominiView.h"
#include "screens/settings/SettingsView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QCheckBox>
#include <QScrollArea>

using namespace AiutiModulo;

namespace {

const QString suggerimentoBrevo = QStringLiteral(
    "In Brevo: Impostazioni → Mittenti, domini e IP dedicati → Domini → Aggiungi un dominio. Pubblica poi i record "
    "che ti fornisce (brevo-code, brevo._domainkey e DMARC) nel pannello DNS di Aruba.");
const QString suggerimentoAruba =
    QStringLiteral("Nel pannello Aruba: attiva la firma DKIM per il dominio e pubblica il record indicato. Il record "
                   "SPF con include:_spf.aruba.it deve restare.");
const QString suggerimentoAltro =
    QStringLiteral("Pubblica nel DNS del dominio i record SPF e DKIM indicati dal tuo servizio di invio.");

void aggiungiLista(Store& store, const QString& nome, const QStringList& indirizzi) {
    ContactList lista;
    lista.name = nome;
    QVERIFY(store.insert(lista));
    QList<ContactRow> righe;
    for (const QString& indirizzo : indirizzi) {
        ContactRow riga;
        riga.email = indirizzo;
        riga.values = {{QStringLiteral("ragione sociale"), QStringLiteral("Ditta di ") + indirizzo}};
        righe.append(riga);
    }
    QVERIFY(store.insertRows(lista.id, righe));
    QVERIFY(store.save());
}

QString testoNota(QWidget* radice, const char* nome) {
    auto* nota = trova<NotaView>(radice, nome);
    return nota && nota->isVisibleTo(radice) ? nota->testo() : QString();
}

QString testoEtichetta(QWidget* radice, const char* nome) {
    auto* etichetta = trova<QLabel>(radice, nome);
    return etichetta && etichetta->isVisibleTo(radice) ? etichetta->text() : QString();
}

} // namespace

void TestSettingsScreen::dominioDelMittente_data() {
    QTest::addColumn<QString>("mittente");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("titolo");
    QTest::addColumn<Colore>("colore"); // of all three verdicts, or red when any is missing
    QTest::addColumn<QString>("suggerimento");
    QTest::newRow("everything in place") << "Info@Pronto.it"
                                         << "smtps.aruba.it"
                                         << "Il dominio pronto.it è configurato correttamente per Aruba"
                                         << Colore::green << "";
    QTest::newRow("warnings only") << "info@avvisi.it"
                                   << "smtps.aruba.it"
                                   << "Il dominio avvisi.it è configurato correttamente per Aruba" << Colore::orange
                                   << "";
    QTest::newRow("missing, Aruba") << "info@solo-sito.it"
                                    << "smtps.aruba.it"
                                    << "Il dominio solo-sito.it non è ancora pronto per Aruba" << Colore::red
                                    << suggerimentoAruba;
    QTest::newRow("missing, Brevo") << "info@solo-sito.it"
                                    << "smtp-relay.brevo.com"
                                    << "Il dominio solo-sito.it non è ancora pronto per Brevo" << Colore::red
                                    << suggerimentoBrevo;
    QTest::newRow("missing, own server") << "info@solo-sito.it"
                                         << "posta.solo-sito.it"
                                         << "Il dominio solo-sito.it non è ancora pronto per posta.solo-sito.it"
                                         << Colore::red << suggerimentoAltro;
}

// The panel checks by itself when the form first shows, with the sender's domain and the profile's host.
void TestSettingsScreen::dominioDelMittente() {
    QFETCH(QString, mittente);
    QFETCH(QString, host);
    QFETCH(QString, titolo);
    QFETCH(Colore, colore);
    QFETCH(QString, suggerimento);
    SMTPConfig config = settings().config();
    config.fromEmail = mittente;
    config.host = host;
    settings().setConfig(config);
    auto vista = apri();
    QVERIFY(vista);
    auto* pannello = vista->findChild<DominioCheckView*>();
    QVERIFY(pannello->inCorso());
    QVERIFY(trova<PulsanteAttesa>(pannello, "verificaDominio")->inAttesa());
    QTRY_VERIFY_WITH_TIMEOUT(pannello->risultato().has_value(), 20000);
    QVERIFY(!pannello->inCorso());
    QCOMPARE(testoEtichetta(pannello, "titoloDominio"), titolo);
    QStringList titoli;
    for (const char* nome : {"verdettoSPF", "verdettoDKIM", "verdettoDMARC"}) {
        auto* verdetto = trova<NotaView>(pannello, nome);
        titoli << verdetto->testo().section(u':', 0, 0);
        if (colore != Colore::red)
            QCOMPARE(verdetto->colore(), colore);
    }
    QCOMPARE(titoli, (QStringList{"SPF", "DKIM", "DMARC"}));
    if (colore == Colore::red)
        QCOMPARE(trova<NotaView>(pannello, "verdettoSPF")->colore(), Colore::red);
    QCOMPARE(testoEtichetta(pannello, "suggerimentoDominio"), suggerimento);
    QVERIFY(!trova<QLabel>(pannello, "introduzione")->isVisibleTo(pannello));

    // A press checks again.
    const QDateTime prima = pannello->risultato()->verificatoIl;
    QTest::mouseClick(trova<QPushButton>(pannello, "verificaDominio"), Qt::LeftButton);
    QVERIFY(pannello->inCorso());
    QTRY_VERIFY_WITH_TIMEOUT(!pannello->inCorso(), 20000);
    QVERIFY(pannello->risultato()->verificatoIl >= prima);
    vista->scorrimento()->ensureWidgetVisible(pannello, 0, 200);
    QVERIFY(TestSupport::salvaSchermata(
        vista.get(),
        QStringLiteral("dominio-") + QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-').remove(u',')));
}

void TestSettingsScreen::dominioVuotoNonVerifica() {
    auto vista = apri();
    QVERIFY(vista);
    auto* pannello = vista->findChild<DominioCheckView*>();
    QVERIFY(!pannello->inCorso());
    auto* pulsante = trova<QPushButton>(pannello, "verificaDominio");
    QVERIFY(!pulsante->isEnabled());
    pannello->verifica();
    QVERIFY(!pannello->inCorso());
    QVERIFY(trova<QLabel>(pannello, "introduzione")->isVisibleTo(pannello));
    // A sender typed afterwards enables the button; the check waits for it.
    digita(trova<QLineEdit>(vista.get(), "indirizzoMittente"), QStringLiteral("info@pronto.it"));
    QVERIFY(pulsante->isEnabled());
    QVERIFY(!pannello->inCorso());
    QTest::mouseClick(pulsante, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(pannello->risultato().has_value(), 20000);
    QCOMPARE(pannello->risultato()->dominio, QStringLiteral("pronto.it"));
}

void TestSettingsScreen::verificaDomini() {
    Store& store = *m_store->store;
    aggiungiLista(store, QStringLiteral("Clienti"),
                  {QStringLiteral("Anna@Ferramenta-Rossi.it"), QStringLiteral("bruno@solo-sito.it"),
                   QStringLiteral("carla@sparito.it"), QStringLiteral("demo1@nembrosa.example"),
                   QStringLiteral("dario@sparito.it"), QStringLiteral("non-un-indirizzo"), QString()});
    aggiungiLista(store, QStringLiteral("Fornitori"),
                  {QStringLiteral("  CARLA@sparito.it "), QStringLiteral("elena@ferramenta-rossi.it"),
                   QStringLiteral("demo2@prova.test")});
    VerificaDominiView pannello(store);
    pannello.resize(SettingsWindow::larghezza, 600);
    pannello.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pannello));
    auto* aggiungi = trova<QPushButton>(&pannello, "aggiungiAgliEsclusi");
    QVERIFY(!aggiungi->isVisibleTo(&pannello));

    auto* controlla = trova<PulsanteAttesa>(&pannello, "controllaDomini");
    QTest::mouseClick(controlla, Qt::LeftButton);
    QVERIFY(pannello.inCorso());
    QVERIFY(controlla->inAttesa());
    QVERIFY(QRegularExpression(QStringLiteral("^[0-5] di 5 domini$"))
                .match(testoEtichetta(&pannello, "avanzamento"))
                .hasMatch());
    QTest::mouseClick(controlla, Qt::LeftButton); // no second run meanwhile
    QTRY_VERIFY_WITH_TIMEOUT(!pannello.inCorso(), 20000);

    QCOMPARE(testoEtichetta(&pannello, "conteggi"),
             QStringLiteral("7 indirizzi, 5 domini distinti: 1 con server di posta."));
    QCOMPARE(testoNota(&pannello, "dimostrativi"),
             QStringLiteral("2 indirizzi appartengono ai dati dimostrativi (domini .example): esclusi dal controllo, "
                            "non sono un problema."));
    QCOMPARE(testoNota(&pannello, "nessunProblema"), QString());
    QCOMPARE(testoNota(&pannello, "inesistenti"), QStringLiteral("1 domini non esistono più: sparito.it"));
    QCOMPARE(testoNota(&pannello, "senzaServer"),
             QStringLiteral("1 domini esistono ma non dichiarano un server di posta (solo-sito.it): la consegna è "
                            "incerta, ma vengono comunque inviati."));
    QCOMPARE(testoEtichetta(&pannello, "daScartare"), QStringLiteral("· carla@sparito.it\n· dario@sparito.it"));
    QCOMPARE(testoEtichetta(&pannello, "incerti"), QStringLiteral("· bruno@solo-sito.it"));
    auto* includi = trova<QCheckBox>(&pannello, "includiIncerti");
    QCOMPARE(includi->text(), QStringLiteral("Escludi anche questi 1 indirizzi"));
    QCOMPARE(aggiungi->text(), QStringLiteral("Aggiungi agli esclusi (2)"));
    QVERIFY(aggiungi->isEnabled());
    includi->click();
    QCOMPARE(aggiungi->text(), QStringLiteral("Aggiungi agli esclusi (3)"));
    QVERIFY(TestSupport::salvaSchermata(&pannello, QStringLiteral("verifica-domini-esito")));

    QTest::mouseClick(aggiungi, Qt::LeftButton);
    QCOMPARE(testoEtichetta(&pannello, "esclusiAggiunti"), QStringLiteral("3 indirizzi aggiunti agli esclusi."));
    QVERIFY(!aggiungi->isEnabled());
    QTest::mouseClick(aggiungi, Qt::LeftButton);
    QCOMPARE(pannello.esclusiAggiunti(), std::optional<int>(3));
    QVERIFY(!store.hasPendingChanges());
    QHash<QString, QString> motivi;
    for (const Suppression& esclusione : store.all<Suppression>())
        motivi.insert(esclusione.email, esclusione.reason);
    QCOMPARE(motivi.size(), 3);
    QCOMPARE(motivi.value("carla@sparito.it"), QStringLiteral("dominio inesistente (controllo DNS)"));
    QCOMPARE(motivi.value("dario@sparito.it"), QStringLiteral("dominio inesistente (controllo DNS)"));
    QCOMPARE(motivi.value("bruno@solo-sito.it"), QStringLiteral("dominio senza server di posta (controllo DNS)"));
    const auto righe = store.righePerEmail();
    QCOMPARE(righe.value("carla@sparito.it").size(), 2);
    // Marked, with every other field of the row as it was.
    for (const ContactRow& riga : store.all<ContactRow>())
        if (Text::normalizedAddress(riga.email) == QLatin1String("carla@sparito.it")) {
            QVERIFY(riga.isExcluded);
            QCOMPARE(riga.values.value(QStringLiteral("ragione sociale")), QStringLiteral("Ditta di ") + riga.email);
        }
    QVERIFY(!righe.value("anna@ferramenta-rossi.it").first().isExcluded);
    QVERIFY(TestSupport::salvaSchermata(&pannello, QStringLiteral("verifica-domini-aggiunti")));
}

void TestSettingsScreen::verificaDominiSoloIncerti() {
    Store& store = *m_store->store;
    aggiungiLista(store, QStringLiteral("Sito"), {QStringLiteral("bruno@solo-sito.it")});
    VerificaDominiView pannello(store);
    pannello.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pannello));
    pannello.controlla();
    QTRY_VERIFY_WITH_TIMEOUT(!pannello.inCorso(), 20000);
    auto* aggiungi = trova<QPushButton>(&pannello, "aggiungiAgliEsclusi");
    QVERIFY(aggiungi->isVisibleTo(&pannello));
    QVERIFY(!aggiungi->isEnabled());
    QCOMPARE(aggiungi->text(), QStringLiteral("Aggiungi agli esclusi (0)"));
    trova<QCheckBox>(&pannello, "includiIncerti")->click();
    QVERIFY(aggiungi->isEnabled());
    QCOMPARE(aggiungi->text(), QStringLiteral("Aggiungi agli esclusi (1)"));
}

void TestSettingsScreen::verificaDominiGiaEsclusi() {
    Store& store = *m_store->store;
    aggiungiLista(store, QStringLiteral("Vecchi"), {QStringLiteral("carla@sparito.it")});
    aggiungiLista(store, QStringLiteral("Demo"), {QStringLiteral("a@nembrosa.example"), QStringLiteral("b@x.test")});
    Suppression gia(QStringLiteral("carla@sparito.it"), QStringLiteral("disiscritto"));
    QVERIFY(store.insert(gia));
    QVERIFY(store.save());
    VerificaDominiView pannello(store);
    pannello.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pannello));
    pannello.controlla();
    QTRY_VERIFY_WITH_TIMEOUT(!pannello.inCorso(), 20000);
    QTest::mouseClick(trova<QPushButton>(&pannello, "aggiungiAgliEsclusi"), Qt::LeftButton);
    QCOMPARE(testoEtichetta(&pannello, "esclusiAggiunti"), QStringLiteral("Erano già tutti fra gli esclusi."));
    // The address already suppressed keeps its reason, and its row isn't touched.
    QCOMPARE(store.all<Suppression>().size(), 1);
    QCOMPARE(store.all<Suppression>().first().reason, QStringLiteral("disiscritto"));
    QVERIFY(!store.righePerEmail().value("carla@sparito.it").first().isExcluded);

    // A new check makes the button usable again; a list of demonstration addresses alone is no problem.
    store.remove<ContactList>(store.all<ContactList>().first().id);
    QVERIFY(store.save());
    pannello.controlla();
    QVERIFY(!pannello.esclusiAggiunti());
    QTRY_VERIFY_WITH_TIMEOUT(!pannello.inCorso(), 20000);
    QCOMPARE(testoEtichetta(&pannello, "conteggi"),
             QStringLiteral("2 indirizzi, 2 domini distinti: 0 con server di posta."));
    QCOMPARE(pannello.esito()->dimostrativi, 2);
    QCOMPARE(testoNota(&pannello, "nessunProblema"),
             QStringLiteral("Nessun problema: tutti i domini possono ricevere posta."));
    QVERIFY(!trova<QPushButton>(&pannello, "aggiungiAgliEsclusi")->isVisibleTo(&pannello));
    QVERIFY(TestSupport::salvaSchermata(&pannello, QStringLiteral("verifica-domini-dimostrativi")));
}

void TestSettingsScreen::rimbalzi_data() {
    QTest::addColumn<int>("periodo"); // index of the picker
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("corpo");
    QTest::addColumn<QString>("esito");
    QTest::addColumn<bool>("positivo");
    QTest::addColumn<int>("esclusi"); // suppressions afterwards; one was there before
    QTest::newRow("events") << 1 << 200 << QByteArray(R"({"events":[
        {"email":"Gino@Ditta.it","date":"2026-03-01T10:00:00.123+01:00","event":"hardBounces","reason":"550 no such user"},
        {"email":"gia@ditta.it","date":"2026-03-02T10:00:00+01:00","event":"hardBounces"}]})")
                            << "2 rimbalzi trovati: 1 aggiunti agli esclusi, 1 già presenti." << true << 2;
    QTest::newRow("none in 30 days") << 1 << 200 << QByteArray(R"({"events":[]})")
                                     << "Nessun rimbalzo negli ultimi 30 giorni." << true << 1;
    QTest::newRow("none in 7 days") << 0 << 200 << QByteArray(R"({"events":[]})")
                                    << "Nessun rimbalzo negli ultimi 7 giorni." << true << 1;
    QTest::newRow("key refused") << 2 << 401 << QByteArray(R"({"code":"unauthorized"})")
                                 << "Chiave API rifiutata da Brevo (401)." << false << 1;
}

void TestSettingsScreen::rimbalzi() {
    QFETCH(int, periodo);
    QFETCH(int, status);
    QFETCH(QByteArray, corpo);
    QFETCH(QString, esito);
    QFETCH(bool, positivo);
    QFETCH(int, esclusi);
    Suppression gia(QStringLiteral("gia@ditta.it"), QStringLiteral("disiscritto"));
    QVERIFY(m_store->store->insert(gia));
    QVERIFY(m_store->store->save());
    m_https->answer(QString::fromLatin1(BrevoAPI::percorsoEventi), {status, corpo, {}}, {{"event", "hardBounces"}});
    m_https->answer(QString::fromLatin1(BrevoAPI::percorsoEventi), {200, R"({"events":[]})", {}});

    auto vista = apri();
    QVERIFY(vista);
    auto* pannello = vista->findChild<RimbalziView*>();
    QVERIFY(pannello);
    auto* scarica = trova<PulsanteAttesa>(pannello, "scaricaRimbalzi");
    QVERIFY(!scarica->isEnabled());
    digita(trova<QLineEdit>(pannello, "chiaveAPI"), QStringLiteral("xkeysib-prova"));
    QCOMPARE(m_segreti->value({Keychain::servizio, Keychain::accountBrevo}), QByteArray("xkeysib-prova"));
    scegli(trova<QComboBox>(pannello, "periodo"), periodo);
    QVERIFY(scarica->isEnabled());
    QTest::mouseClick(scarica, Qt::LeftButton);
    QVERIFY(pannello->inCorso());
    QVERIFY(scarica->inAttesa());
    QTRY_VERIFY_WITH_TIMEOUT(!pannello->inCorso(), 20000);

    auto* nota = trova<NotaView>(pannello, "esitoRimbalzi");
    QVERIFY2(nota->testo().startsWith(esito), qPrintable(nota->testo()));
    QCOMPARE(nota->colore(), positivo ? Colore::green : Colore::red);
    QCOMPARE(m_store->store->all<Suppression>().size(), esclusi);
    const HttpsServer::Request prima = m_https->requests().first();
    QCOMPARE(prima.header("api-key"), QByteArray("xkeysib-prova"));
    QCOMPARE(QUrlQuery(prima.url).queryItemValue("days"), QString::number(QList<int>{7, 30, 90}.at(periodo)));
    vista->scorrimento()->ensureWidgetVisible(nota);
    QVERIFY(TestSupport::salvaSchermata(
        vista.get(), QStringLiteral("rimbalzi-") + QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-')));
}

void TestSettingsScreen::chiaveBrevoSvuotata() {
    m_segreti->insert({Keychain::servizio, Keychain::accountBrevo}, "xkeysib-salvata");
    auto vista = apri();
    QVERIFY(vista);
    auto* pannello = vista->findChild<RimbalziView*>();
    auto* chiave = trova<QLineEdit>(pannello, "chiaveAPI");
    QCOMPARE(chiave->text(), QStringLiteral("xkeysib-salvata"));
    QCOMPARE(chiave->echoMode(), QLineEdit::Password);
    QVERIFY(trova<QPushButton>(pannello, "scaricaRimbalzi")->isEnabled());
    chiave->setFocus();
    chiave->selectAll();
    QTest::keyClick(chiave, Qt::Key_Backspace);
    QVERIFY(!m_segreti->contains({Keychain::servizio, Keychain::accountBrevo}));
    QVERIFY(!trova<QPushButton>(pannello, "scaricaRimbalzi")->isEnabled());
    pannello->scarica();
    QVERIFY(!pannello->inCorso());
    QVERIFY(m_https->requests().isEmpty());
}
