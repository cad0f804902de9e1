#include "MimeReader.h"
#include "Screenshot.h"
#include "TempStore.h"

#include "checks/MXCheck.h"
#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"

#include "composition/TemplateRenderer.h"
#include "engine/DatiEsempio.h"
#include "records/EmailSyntax.h"
#include "records/Store.h"
#include "records/Suppression.h"
#include "screens/settings/SezioneDatiEsempio.h"

#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QTest>

namespace {

const QString nessunoRimosso = QStringLiteral("Rimossi 0 elementi dimostrativi. I dati veri non sono stati toccati.");

// The user's own data: a list, a template, a campaign on them, a log and an exclusion.
struct DatiVeri {
    RecordId lista = 0, modello = 0, campagna = 0;
    explicit DatiVeri(Store& store) {
        ContactList l(QStringLiteral("Clienti veri"), QStringLiteral("veri.csv"), {"email"}, QStringLiteral("email"));
        store.insert(l);
        QList<ContactRow> righe{ContactRow({{"email", "anna@ditta.it"}}, QStringLiteral("anna@ditta.it"))};
        store.insertRows(l.id, righe);
        MessageTemplate m(QStringLiteral("Saldi"), QStringLiteral("Saldi"), QStringLiteral("<p>Saldi</p>"));
        store.insert(m);
        Campaign c(QStringLiteral("Saldi estivi"));
        c.listId = l.id;
        c.templateId = m.id;
        store.insert(c);
        SendLog log(QStringLiteral("anna@ditta.it"), QStringLiteral("Saldi"), SendStatus::sent, {},
                    QStringLiteral("Aruba"));
        log.campaignId = c.id;
        store.insert(log);
        Suppression s(QStringLiteral("vecchio@ditta.it"), QStringLiteral("escluso a mano"));
        store.insert(s);
        store.save();
        lista = l.id;
        modello = m.id;
        campagna = c.id;
    }
    bool intatti(const Store& store) const {
        return store.find<ContactList>(lista) && store.rowCount(lista) == 1 && store.find<MessageTemplate>(modello) &&
               store.find<Campaign>(campagna) && store.all<SendLog>().size() == 1 &&
               store.suppressedEmails() == QSet<QString>{"vecchio@ditta.it"};
    }
};

} // namespace

class TestDatiEsempio : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void caricaDueVolte();
    void scenario();
    void rimozioneLasciaIDatiVeri_data();
    void rimozioneLasciaIDatiVeri();
    void modelloSuUnaRiga();
    void dominiDimostrativi();
    void sezione();
};

// Twice: "Clienti dimostrativi" then "Clienti dimostrativi 2", two templates of the same name; every address
// valid and under ".example"; the template uses only fields the list has.
void TestDatiEsempio::caricaDueVolte() {
    TempStore temp;
    Store& store = *temp.store;
    const DatiEsempio::Esito primo = DatiEsempio::carica(store);
    const DatiEsempio::Esito secondo = DatiEsempio::carica(store);
    QCOMPARE(primo.lista.name, QStringLiteral("Clienti dimostrativi"));
    QCOMPARE(secondo.lista.name, QStringLiteral("Clienti dimostrativi 2"));
    QCOMPARE(primo.righe, 24);
    QCOMPARE(store.all<MessageTemplate>().size(), 2);
    const QList<ContactRow> righe = store.rows(primo.lista.id);
    QCOMPARE(righe.size(), 24);
    QSet<QString> indirizzi;
    for (const ContactRow& riga : righe) {
        QVERIFY2(isValidEmailSyntax(riga.email) && riga.email.endsWith(QStringLiteral(".example")),
                 qPrintable(riga.email));
        indirizzi.insert(riga.email);
    }
    QCOMPARE(indirizzi.size(), 24);
    QCOMPARE(righe.first().values.value("Azienda"), QStringLiteral("Rossi Impianti Srl"));
    QCOMPARE(righe.last().values.value("Telefono"), QStringLiteral("070 456789"));
    QVERIFY(TemplateRenderer::missingFields(primo.modello.subject + u' ' + primo.modello.html, primo.lista.columns)
                .isEmpty());
    QCOMPARE(DatiEsempio::rimuoviScenario(store),
             QStringLiteral("Rimossi 4 elementi dimostrativi. I dati veri non sono stati toccati."));
    QVERIFY(store.all<ContactList>().isEmpty());
    QVERIFY(store.all<MessageTemplate>().isEmpty());
}

// The scenario: the campaign, 20 logs with their statuses, rows counted as after a real run, 7 exclusions of
// which a second scenario adds none.
void TestDatiEsempio::scenario() {
    TempStore temp;
    Store& store = *temp.store;
    QCOMPARE(DatiEsempio::caricaScenario(store),
             QStringLiteral("Creata la campagna \"Presentazione di primavera (esempio)\" con 20 invii nello storico e "
                            "7 esclusi dimostrativi."));
    const QList<Campaign> campagne = store.all<Campaign>();
    QCOMPARE(campagne.size(), 1);
    QCOMPARE(campagne.first().status(), CampaignStatus::completed);
    QCOMPARE(store.sentCount(campagne.first().id), 16);
    QCOMPARE(store.failedCount(campagne.first().id), 2);
    const QList<SendLog> logs = store.all<SendLog>();
    QCOMPARE(logs.size(), 20);
    // The run ended 58 minutes ago and took 38.
    qint64 primo = std::numeric_limits<qint64>::max(), ultimo = 0;
    for (const SendLog& log : logs) {
        primo = std::min(primo, log.date.toSecsSinceEpoch());
        ultimo = std::max(ultimo, log.date.toSecsSinceEpoch());
    }
    QCOMPARE(ultimo - primo, qint64(38 * 60));
    QVERIFY(qAbs(QDateTime::currentSecsSinceEpoch() - ultimo - 58 * 60) < 60);

    const ContactList lista = store.all<ContactList>().first();
    const QList<ContactRow> righe = store.rows(lista.id);
    QCOMPARE(righe.at(0).inviateCount, 1);
    QCOMPARE(righe.at(4).erroriCount, 1);
    QCOMPARE(righe.at(4).ultimoEsito(), std::optional(SendStatus::failed));
    QCOMPARE(righe.at(15).saltateCount, 1);
    QCOMPARE(righe.at(20).inviateCount, 0);

    // One exclusion of each kind the screen shows, two of them for rows 5 and 16.
    QSet<MotivoEsclusione> tipi;
    for (const Suppression& s : store.all<Suppression>())
        tipi.insert(s.motivo());
    QCOMPARE(tipi.size(), 6);
    QVERIFY(store.suppressedEmails().contains(righe.at(4).email));
    QVERIFY(store.suppressedEmails().contains(righe.at(15).email));

    QVERIFY(DatiEsempio::caricaScenario(store).endsWith(QStringLiteral(" e 0 esclusi dimostrativi.")));
}

void TestDatiEsempio::rimozioneLasciaIDatiVeri_data() {
    QTest::addColumn<bool>("scenario");
    QTest::addColumn<QString>("esito");
    QTest::newRow("empty store") << false << nessunoRimosso;
    // The campaign (its 20 logs go with it, uncounted), the list, the template, the real log under .example,
    // 7 exclusions, and the user's campaign that joined the demo list.
    QTest::newRow("after the scenario") << true
                                        << "Rimossi 12 elementi dimostrativi. I dati veri non sono stati toccati.";
}

void TestDatiEsempio::rimozioneLasciaIDatiVeri() {
    QFETCH(bool, scenario);
    TempStore temp;
    Store& store = *temp.store;
    const DatiVeri veri(store);
    if (scenario) {
        DatiEsempio::caricaScenario(store);
        // A real log of an address under .example goes too; a campaign of the user's on the demo list as well.
        SendLog log(QStringLiteral("prova@qualcosa.example"), QStringLiteral("Prova"), SendStatus::test, {}, {});
        store.insert(log);
        Campaign sua(QStringLiteral("La mia prova"));
        sua.listId = store.all<ContactList>().last().id;
        sua.templateId = veri.modello;
        store.insert(sua);
        store.save();
    }
    QTEST(DatiEsempio::rimuoviScenario(store), "esito");
    QVERIFY(veri.intatti(store));
    QCOMPARE(store.all<Campaign>().size(), 1);
}

// The demo template on a demo row: every field filled, and a message Python's email package reads back.
void TestDatiEsempio::modelloSuUnaRiga() {
    TempStore temp;
    const DatiEsempio::Esito esito = DatiEsempio::carica(*temp.store);
    const ContactRow riga = temp.store->rows(esito.lista.id).at(2);
    SMTPConfig config;
    config.fromEmail = QStringLiteral("info@nembrosa.example");
    const MessageComposer::Rendered reso = MessageComposer::compose(esito.modello, riga.values, config);
    QCOMPARE(reso.subject,
             QStringLiteral("Officine Meccaniche Verdi: un gestionale pensato per chi fa Meccanica di precisione"));
    QVERIFY(!reso.html.contains(QStringLiteral("{{")));
    for (const QString& atteso : {QStringLiteral("Buongiorno Luigi Verdi,"), QStringLiteral("di Brescia"),
                                  QStringLiteral("BS e tutta Italia"), QStringLiteral("https://www.nembrosa.example")})
        QVERIFY2(reso.html.contains(atteso), qPrintable(atteso));
    MIMEBuilder::Message messaggio;
    messaggio.from = {QStringLiteral("Nembrosa Software"), config.fromEmail};
    messaggio.to = riga.email;
    messaggio.subject = reso.subject;
    messaggio.html = reso.html;
    messaggio.plainText = reso.plainText;
    const QJsonObject letto = TestSupport::readWithPython(MIMEBuilder::build(messaggio));
    QCOMPARE(letto.value("subject").toString(), reso.subject);
    QVERIFY(letto.value("raw").toObject().value("To").toString().contains(riga.email));
}

// Every address of the list is on a reserved demonstration domain, which the domain check never asks.
void TestDatiEsempio::dominiDimostrativi() {
    TempStore temp;
    const DatiEsempio::Esito esito = DatiEsempio::carica(*temp.store);
    for (const ContactRow& riga : temp.store->rows(esito.lista.id)) {
        const QString dominio = riga.email.mid(riga.email.lastIndexOf(u'@') + 1);
        QVERIFY2(MXCheck::eDimostrativo(dominio), qPrintable(dominio));
    }
}

// The settings' section: each button writes its result in green under them.
void TestDatiEsempio::sezione() {
    TempStore temp;
    SezioneDatiEsempio vista(*temp.store);
    vista.resize(700, 220);
    vista.show();
    QVERIFY(QTest::qWaitForWindowExposed(&vista));
    QVERIFY(vista.esitoEsempio().isEmpty());
    QTest::mouseClick(vista.findChild<QPushButton*>(QStringLiteral("esempioListaEModello")), Qt::LeftButton);
    QCOMPARE(vista.esitoEsempio(), QStringLiteral("Creata la lista \"Clienti dimostrativi\" con 24 contatti e il "
                                                  "modello \"Presentazione servizi (esempio)\"."));
    QTest::mouseClick(vista.findChild<QPushButton*>(QStringLiteral("esempioScenario")), Qt::LeftButton);
    QVERIFY(vista.esitoEsempio().startsWith(QStringLiteral("Creata la campagna")));
    TestSupport::salvaSchermata(&vista, QStringLiteral("impostazioni-dati-esempio"));
    QTest::mouseClick(vista.findChild<QPushButton*>(QStringLiteral("esempioRimuovi")), Qt::LeftButton);
    QVERIFY(vista.esitoEsempio().startsWith(QStringLiteral("Rimossi ")));
    QVERIFY(temp.store->all<ContactList>().isEmpty());
}

BREZZARIO_TEST_MAIN(TestDatiEsempio)
#include "tst_dati_esempio.moc"
