// Delivery over one connection at pace 0 with messages shaped like real campaigns (about 22 KB: an HTML body
// with a picture and a small attachment), rendered per recipient and logged durably per message.
// Usage: bench_delivery assets DIR            writes picture.png and listino.pdf, the inputs the peers share
//        bench_delivery run HOST PORT N DIR   runs a stored campaign of N recipients to HOST:PORT
//        bench_delivery prepare HOST PORT N   prepares a run of a stored list of N rows, stops at the first message
// "run" prints: bytes <one message>, rate <messages/s>, cpu_us <CPU per message>, peak_kb <peak resident>,
// growth_kb <resident memory from the first message to the last>.
// "prepare" prints: bytes_per_recipient <heap in use after preparing, beyond what it was before>,
// stall_ms <longest wait of a 1 ms timer while preparing>, prepare_ms <time to the first message>.
#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>

namespace {

QByteArray leggi(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool scrivi(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A photo-like picture: smooth colours with noise, so it compresses about as badly as a real one.
int creaRisorse(const QString& cartella) {
    QImage immagine(64, 48, QImage::Format_RGB32);
    QRandomGenerator caso(2026);
    for (int y = 0; y < immagine.height(); ++y)
        for (int x = 0; x < immagine.width(); ++x)
            immagine.setPixel(x, y, qRgb(x * 4 + caso.bounded(40), y * 5 + caso.bounded(40), 120 + caso.bounded(60)));
    if (!immagine.save(cartella + QStringLiteral("/picture.png")))
        return 1;
    QByteArray listino(4000, Qt::Uninitialized);
    for (char& byte : listino)
        byte = char(caso.bounded(256));
    return scrivi(cartella + QStringLiteral("/listino.pdf"), listino) ? 0 : 1;
}

qint64 residenteKb() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> campi = statm.readAll().split(' ');
    return campi.size() > 1 ? campi.at(1).toLongLong() * (sysconf(_SC_PAGESIZE) / 1024) : 0;
}

double cpuSecondi() {
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    return double(uso.ru_utime.tv_sec + uso.ru_stime.tv_sec) +
           double(uso.ru_utime.tv_usec + uso.ru_stime.tv_usec) / 1e6;
}

SMTPConfig configurazione(SettingsStore& settings, const char* host, const char* port) {
    SMTPConfig config = settings.config();
    config.host = QString::fromLocal8Bit(host);
    config.port = std::atoi(port);
    config.useTLS = false;
    config.username.clear();
    config.fromName = QStringLiteral("Ferramenta Rossi");
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    config.mittentePostale = QStringLiteral("Ferramenta Rossi snc, via Roma 1, 70121 Bari");
    settings.setConfig(config);
    return config;
}

// A list shaped like an imported spreadsheet (a dozen columns), a campaign on it, and how much preparing its
// run holds per recipient and how long it keeps the event loop from turning.
int preparazione(const char* host, const char* port, int quanti) {
    QTemporaryDir cartella;
    qputenv("XDG_CONFIG_HOME", cartella.filePath(QStringLiteral("config")).toUtf8());
    const std::unique_ptr<Store> store = Store::open(cartella.filePath(QStringLiteral("bench.sqlite")));
    if (!store)
        return 1;
    const QStringList colonne = {"Nome",  "Cognome",   "Email",           "Telefono", "Indirizzo",       "CAP",
                                 "Città", "Provincia", "Ragione sociale", "Importo",  "Data iscrizione", "Note"};
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), colonne, QStringLiteral("Email"));
    store->insert(lista);
    {
        QList<ContactRow> righe;
        righe.reserve(quanti);
        for (int i = 0; i < quanti; ++i) {
            const QString email = QStringLiteral("cliente%1@ditta%2.example").arg(i).arg(i % 97);
            righe.append(ContactRow({{"Nome", "Giulia"},
                                     {"Cognome", "Esposito"},
                                     {"Email", email},
                                     {"Telefono", "+39 051 6345521"},
                                     {"Indirizzo", QStringLiteral("Via Garibaldi, %1").arg(i % 250)},
                                     {"CAP", "40121"},
                                     {"Città", "Bologna"},
                                     {"Provincia", "BO"},
                                     {"Ragione sociale", "Esposito & Greco S.r.l. - Consulenza fiscale"},
                                     {"Importo", "1250,00"},
                                     {"Data iscrizione", "12/03/2021"},
                                     {"Note", i % 5 == 0 ? "Preferisce essere contattata di mattina" : ""}},
                                    email));
        }
        store->insertRows(lista.id, righe);
    }
    MessageTemplate modello(QStringLiteral("Avviso"), QStringLiteral("Avviso per {{Nome}}"),
                            QStringLiteral("<p>Gentile {{Nome}} {{Cognome}},</p><p>un avviso.</p>"));
    store->insert(modello);
    Campaign campagna(QStringLiteral("Avviso"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store->insert(campagna);
    store->save();
    malloc_trim(0);

    SettingsStore settings;
    configurazione(settings, host, port);
    const auto engine = std::make_shared<SendEngine>();
    QElapsedTimer orologio, battito;
    qint64 stallo = 0;
    std::optional<qint64> occupata, prima;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!prima)
            return;
        stallo = std::max(stallo, battito.restart());
        if (!occupata && engine->sent() + engine->failed() > 0) {
            occupata = qint64(mallinfo2().uordblks) - *prima;
            engine->cancel();
        }
    });
    timer.start(1);
    QTimer::singleShot(0, [&] {
        prima = qint64(mallinfo2().uordblks);
        battito.start();
        orologio.start();
    });
    QCoreApplication::processEvents();
    QCoro::waitFor(engine->run(campagna, settings, *store));
    std::printf("bytes_per_recipient %.0f\nstall_ms %lld\nprepare_ms %lld\n", double(occupata.value_or(0)) / quanti,
                static_cast<long long>(stallo), static_cast<long long>(orologio.elapsed()));
    return occupata ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "assets") == 0)
        return creaRisorse(QString::fromLocal8Bit(argv[2]));
    if (argc == 5 && qstrcmp(argv[1], "prepare") == 0)
        return preparazione(argv[2], argv[3], std::atoi(argv[4]));
    if (argc != 6 || qstrcmp(argv[1], "run") != 0)
        return 2;
    const QString risorse = QString::fromLocal8Bit(argv[5]);
    const QByteArray picture = leggi(risorse + QStringLiteral("/picture.png"));
    const QByteArray listino = leggi(risorse + QStringLiteral("/listino.pdf"));
    QString html = QString::fromUtf8(leggi(QStringLiteral(BENCH_DELIVERY_DIR "/template.html")));
    if (picture.isEmpty() || listino.isEmpty() || html.isEmpty())
        return 1;
    // The editor stores pictures inside the template as data addresses; the run turns them into inline parts.
    html.replace(QStringLiteral("{{immagine}}"),
                 QStringLiteral("data:image/png;base64,") + QString::fromLatin1(picture.toBase64()));

    QTemporaryDir cartella;
    qputenv("XDG_CONFIG_HOME", cartella.filePath(QStringLiteral("config")).toUtf8());
    const std::unique_ptr<Store> store = Store::open(cartella.filePath(QStringLiteral("bench.sqlite")));
    if (!store)
        return 1;
    const int quanti = std::atoi(argv[4]);
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email", "nome", "citta"},
                      QStringLiteral("email"));
    store->insert(lista);
    QList<ContactRow> righe;
    righe.reserve(quanti);
    for (int i = 0; i < quanti; ++i) {
        const QString email = QStringLiteral("cliente%1@prova.example").arg(i);
        righe.append(
            ContactRow({{"email", email}, {"nome", QStringLiteral("Cliente %1").arg(i)}, {"citta", "Bari"}}, email));
    }
    store->insertRows(lista.id, righe);
    MessageTemplate modello(QStringLiteral("Primavera"), QStringLiteral("Novità di primavera per {{nome}}"), html);
    store->insert(modello);
    TemplateAttachment allegato(QStringLiteral("listino.pdf"), QStringLiteral("application/pdf"), listino);
    allegato.templateId = modello.id;
    store->insert(allegato);
    Campaign campagna(QStringLiteral("Primavera"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store->insert(campagna);
    store->save();
    righe.clear();
    righe.squeeze();

    SettingsStore settings;
    const SMTPConfig config = configurazione(settings, argv[2], argv[3]);

    // One message as the run builds it, for its size.
    const RowValues valori{{"email", "cliente0@prova.example"}, {"nome", "Cliente 0"}, {"citta", "Bari"}};
    const MessageComposer::Rendered reso = MessageComposer::compose(modello, valori, config);
    MIMEBuilder::Message esempio;
    esempio.from = {config.fromName, config.fromEmail};
    esempio.to = valori.value("email");
    esempio.subject = reso.subject;
    esempio.html = reso.html;
    esempio.plainText = reso.plainText;
    esempio.attachments = {{allegato.filename, allegato.mimeType, allegato.data}};
    std::printf("bytes %lld\n", static_cast<long long>(MIMEBuilder::build(esempio).size()));

    const auto engine = std::make_shared<SendEngine>();
    qint64 primo = 0;
    QTimer campione;
    QObject::connect(&campione, &QTimer::timeout, [&] {
        if (primo == 0 && engine->sent() > 0)
            primo = residenteKb();
    });
    campione.start(5);
    const double cpuPrima = cpuSecondi();
    QElapsedTimer orologio;
    orologio.start();
    QCoro::waitFor(engine->run(campagna, settings, *store));
    const double secondi = double(orologio.nsecsElapsed()) / 1e9;
    const double cpu = cpuSecondi() - cpuPrima;
    const qint64 ultimo = residenteKb();
    if (engine->sent() != quanti) {
        std::fprintf(stderr, "sent %lld of %d: %s\n", static_cast<long long>(engine->sent()), quanti,
                     qPrintable(engine->lastError().value_or(engine->activityLog().join(u'\n'))));
        return 1;
    }
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    std::printf("rate %.1f\ncpu_us %.1f\npeak_kb %ld\ngrowth_kb %lld\n", quanti / secondi, cpu * 1e6 / quanti,
                uso.ru_maxrss, static_cast<long long>(ultimo - primo));
    return 0;
}
