// Delivery over one connection at pace 0 with messages shaped like real campaigns (about 22 KB: an HTML body
// with a picture and a small attachment), rendered per recipient and logged durably per message.
// Usage: bench_delivery assets DIR            writes picture.png and listino.pdf, the inputs the peers share
//        bench_delivery run HOST PORT N DIR   runs a stored campaign of N recipients to HOST:PORT
// "run" prints: bytes <one message>, rate <messages/s>, cpu_us <CPU per message>, peak_kb <peak resident>,
// growth_kb <resident memory from the first message to the last>.
#include "composition/MIMEBuilder.h"
#include "composition/MessageComposer.h"
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
            immagine.setPixel(x, y,
                              qRgb(x * 4 + caso.bounded(40), y * 5 + caso.bounded(40), 120 + caso.bounded(60)));
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
    return double(uso.ru_utime.tv_sec + uso.ru_stime.tv_sec) + double(uso.ru_utime.tv_usec + uso.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "assets") == 0)
        return creaRisorse(QString::fromLocal8Bit(argv[2]));
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
    SMTPConfig config = settings.config();
    config.host = QString::fromLocal8Bit(argv[2]);
    config.port = std::atoi(argv[3]);
    config.useTLS = false;
    config.username.clear();
    config.fromName = QStringLiteral("Ferramenta Rossi");
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    config.mittentePostale = QStringLiteral("Ferramenta Rossi snc, via Roma 1, 70121 Bari");
    settings.setConfig(config);

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
