// Runs one stored campaign against a test server and exits, as the program would if nobody stopped it.
// The durability test kills it at random moments.
//
//     durability_runner STORE CAMPAIGN_ID HOST PORT USER PASSWORD CA_FILE

#include "engine/SendEngine.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QSslCertificate>

#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 8) {
        std::fputs("usage: durability_runner STORE CAMPAIGN_ID HOST PORT USER PASSWORD CA_FILE\n", stderr);
        return 2;
    }
    QString errore;
    const std::unique_ptr<Store> store = Store::open(args.at(1), &errore);
    if (!store) {
        std::fprintf(stderr, "store: %s\n", qPrintable(errore));
        return 3;
    }
    const std::optional<Campaign> campagna = store->find<Campaign>(args.at(2).toLongLong());
    if (!campagna)
        return 4;

    SettingsStore settings;
    SMTPConfig config = settings.config();
    config.host = args.at(3);
    config.port = args.at(4).toInt();
    config.useTLS = true;
    config.username = args.at(5);
    config.fromEmail = QStringLiteral("mittente@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    settings.setConfig(config);
    settings.setPassword(args.at(6));

    SMTPSession::Options opzioni;
    opzioni.timeout = std::chrono::seconds(10);
    opzioni.extraTrustedCertificates = QSslCertificate::fromPath(args.at(7));
    const auto engine = std::make_shared<SendEngine>();
    engine->setFabbricaSessionePerTest([opzioni](const SMTPConfig& c, const QString& password) {
        return std::make_unique<SMTPSession>(c, password, opzioni);
    });
    // Tells the test when messages start going out, so that its kills land during the deliveries.
    QObject::connect(engine.get(), &SendEngine::changed, [&engine] {
        static bool detto = false;
        if (!detto && engine->activityLog().contains(QStringLiteral("Connesso e autenticato."))) {
            detto = true;
            std::puts("connesso");
            std::fflush(stdout);
        }
    });
    QCoro::waitFor(engine->run(*campagna, settings, *store));
    std::printf("%lld\n", static_cast<long long>(engine->sent()));
    return engine->lastError() ? 5 : 0;
}
