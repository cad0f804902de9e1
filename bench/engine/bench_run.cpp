// A whole run at pace 0 over one plain connection: planning, rendering, MIME, delivery and a durable log per
// message. Usage: bench_run HOST PORT RECIPIENTS. Prints "bytes <size of one message>", "rate <messages per
// second>" and "peak_kb <peak resident memory of the process>".
#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <cstdio>

namespace {

const QString html = QStringLiteral(
    "<h1>Novità di primavera</h1><p>Gentile {{nome}} di {{citta}},</p>"
    "<p>anche quest'anno la nostra ditta ha preparato per i clienti più affezionati una selezione di articoli "
    "a prezzi speciali: attrezzi da giardino, vernici all'acqua, ferramenta minuta e tutto quello che serve per "
    "i lavori di stagione. Le offerte valgono fino alla fine del mese, nei negozi e sul sito.</p>"
    "<ul><li>Tagliaerba elettrico: <b>149 €</b></li><li>Vernice per esterni, 5 litri: <b>39 €</b></li>"
    "<li>Set di cacciaviti: <b>19 €</b></li></ul>"
    "<p>Per qualsiasi domanda può rispondere a questo messaggio o chiamarci in orario di negozio.</p>"
    "<p>Cordiali saluti,<br>Ferramenta Rossi</p>");

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 4)
        return 2;
    QTemporaryDir cartella;
    qputenv("XDG_CONFIG_HOME", cartella.filePath(QStringLiteral("config")).toUtf8());
    const std::unique_ptr<Store> store = Store::open(cartella.filePath(QStringLiteral("bench.sqlite")));
    if (!store)
        return 1;
    const int quanti = std::atoi(argv[3]);
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email", "nome", "citta"},
                      QStringLiteral("email"));
    store->insert(lista);
    QList<ContactRow> righe;
    for (int i = 0; i < quanti; ++i) {
        const QString email = QStringLiteral("cliente%1@prova.example").arg(i);
        righe.append(
            ContactRow({{"email", email}, {"nome", QStringLiteral("Cliente %1").arg(i)}, {"citta", "Bari"}}, email));
    }
    store->insertRows(lista.id, righe);
    MessageTemplate modello(QStringLiteral("Primavera"), QStringLiteral("Novità per {{nome}}"), html);
    store->insert(modello);
    Campaign campagna(QStringLiteral("Primavera"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store->insert(campagna);
    store->save();

    SettingsStore settings;
    SMTPConfig config = settings.config();
    config.host = QString::fromLocal8Bit(argv[1]);
    config.port = std::atoi(argv[2]);
    config.useTLS = false;
    config.username.clear();
    config.fromName = QStringLiteral("Ferramenta Rossi");
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    config.mittentePostale = QStringLiteral("Ferramenta Rossi snc, via Roma 1, 70121 Bari");
    settings.setConfig(config);

    MIMEBuilder::Message esempio;
    const MessageComposer::Rendered reso = MessageComposer::compose(modello, righe.first().values, config);
    esempio.from = {config.fromName, config.fromEmail};
    esempio.to = righe.first().email;
    esempio.subject = reso.subject;
    esempio.html = reso.html;
    esempio.plainText = reso.plainText;
    std::printf("bytes %lld\n", static_cast<long long>(MIMEBuilder::build(esempio).size()));

    const auto engine = std::make_shared<SendEngine>();
    QElapsedTimer orologio;
    orologio.start();
    QCoro::waitFor(engine->run(campagna, settings, *store));
    const double secondi = double(orologio.nsecsElapsed()) / 1e9;
    if (engine->sent() != quanti) {
        std::fprintf(stderr, "sent %lld of %d: %s\n", static_cast<long long>(engine->sent()), quanti,
                     qPrintable(engine->lastError().value_or(engine->activityLog().join(u'\n'))));
        return 1;
    }
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    std::printf("rate %.1f\npeak_kb %ld\n", quanti / secondi, uso.ru_maxrss);
    return 0;
}
