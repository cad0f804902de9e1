#include "EngineTest.h"

#include "Loopback.h"
#include "TestCA.h"
#include "TestEnvironment.h"

#include <QCoro/QCoroTask>

Scena::Scena(const SMTPConfig& config, const QStringList& indirizzi, const TestCA* ca,
             std::chrono::milliseconds timeout)
    : store(*temp.store) {
    settings.setConfig(config);
    settings.setNomeProfiloAttivo(QStringLiteral("Prova TLS"));
    settings.setPassword(AiosmtpdServer::Options().password);
    const SMTPSession::Options opzioni = AiosmtpdServer::sessionOptions(ca, timeout);
    engine->setFabbricaSessionePerTest([opzioni](const SMTPConfig& c, const QString& password) {
        return std::make_unique<SMTPSession>(c, password, opzioni);
    });

    lista = ContactList(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), {"email", "nome", "citta"},
                        QStringLiteral("email"));
    store.insert(lista);
    QList<ContactRow> righe;
    for (const QString& indirizzo : indirizzi)
        righe.append(ContactRow({{"email", indirizzo}, {"nome", nomeDi(indirizzo)}, {"citta", "Bari"}}, indirizzo));
    store.insertRows(lista.id, righe);
    modello = MessageTemplate(QStringLiteral("Saldi"), QStringLiteral("Offerta per {{nome}}"),
                              QStringLiteral("<p>Gentile {{nome}} di {{citta}},</p><p>ecco i saldi.</p>"));
    store.insert(modello);
    campaign = Campaign(QStringLiteral("Saldi di marzo"));
    campaign.templateId = modello.id;
    campaign.listId = lista.id;
    store.insert(campaign);
    store.save();
}

QString Scena::nomeDi(const QString& email) {
    QString nome = email.section(u'@', 0, 0).trimmed();
    if (!nome.isEmpty())
        nome[0] = nome[0].toUpper();
    return nome + QStringLiteral(" & Figli");
}

void Scena::corri() {
    QCoro::waitFor(engine->run(campagna(), settings, store));
}

Campaign Scena::campagna() const {
    return store.find<Campaign>(campaign.id).value_or(Campaign());
}

QList<SendLog> Scena::logs() const {
    return store.logs(campaign.id);
}

QList<SendLog> Scena::logsCon(SendStatus stato) const {
    QList<SendLog> scelti;
    for (const SendLog& log : logs())
        if (log.status() == stato)
            scelti.append(log);
    return scelti;
}

ContactRow Scena::riga(const QString& email) const {
    for (const ContactRow& r : store.rows(lista.id))
        if (r.email == email)
            return r;
    return {};
}

QStringList righeCon(const SendEngine& engine, const QString& prefisso) {
    QStringList scelte;
    for (const QString& riga : engine.activityLog())
        if (riga.startsWith(prefisso))
            scelte.append(riga);
    return scelte;
}

SMTPConfig configurazione(const SMTPConfig& server) {
    SMTPConfig config = server;
    config.fromName = QStringLiteral("Ditta Prova");
    config.replyTo = QStringLiteral("risposte@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    config.escludiRifiutati = true;
    config.piePaginaAttivo = true;
    config.mittentePostale = QStringLiteral("Ditta Prova srl, via Roma 1, Bari");
    config.motivazioneContatto = QStringLiteral("Ricevi questo messaggio perché sei nostro cliente.");
    return config;
}

std::unique_ptr<AiosmtpdServer> avviaServer(TestCA& ca, const QList<AiosmtpdServer::Rule>& rcpt,
                                            const QList<AiosmtpdServer::Rule>& data) {
    AiosmtpdServer::Options options = AiosmtpdServer::withTls(ca, Loopback::engineSmtp);
    options.rejectAtRcpt = rcpt;
    options.rejectAtData = data;
    auto server = std::make_unique<AiosmtpdServer>(options);
    if (!server->start())
        qWarning() << server->errorString();
    return server;
}

TestCA& TestEngine::ca() {
    static TestCA authority;
    return authority;
}

void TestEngine::initTestCase() {
    QVERIFY(ca().isValid());
}

void TestEngine::init() {
    SendEngine::svuotaCacheDominiPerTest();
    SendEngine::setControlloDominiPerTest(QString::fromLatin1(Loopback::engineDns));
}

void TestEngine::cleanupTestCase() {
    SendEngine::setControlloDominiPerTest({});
}

BREZZARIO_TEST_GUILESS_MAIN(TestEngine)
