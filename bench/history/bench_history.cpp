// The History and Esclusi screens on a store of years: a million logs and 100,000 excluded addresses.
// Usage:
//   bench_history prepara FILE LOGS ESCLUSI   builds the store file
//   bench_history storico FILE                open, filter "Errori", one keystroke of search; peak memory
//   bench_history esclusi FILE                open, one category tile, one keystroke of search; peak memory
//   bench_history importa FILE CELLS          import of a file of that many cells, half of them addresses,
//                                             with the Esclusi screen open: time and longest event-loop gap
//   bench_history corsa FILE HOST PORT N [vuoto]
//       the event loop's gaps while a run of N recipients at pace 0 goes to HOST:PORT with the history open
//       (or with no screen, given "vuoto"), measured by a 1 ms timer
#include "app/BrezzarioApp.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "screens/history/HistoryModel.h"
#include "screens/history/HistoryView.h"
#include "screens/suppressions/ImportaEsclusi.h"
#include "screens/suppressions/RiquadroMotivo.h"
#include "screens/suppressions/SuppressionModel.h"
#include "screens/suppressions/SuppressionView.h"
#include "settings/SettingsStore.h"
#include "ui/Dialoghi.h"

#include <QApplication>
#include <QComboBox>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

long piccoMemoriaKb() {
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    return uso.ru_maxrss;
}

// Until the window has painted what the user sees.
double finoAlDisegno(QWidget& schermata, const QElapsedTimer& orologio) {
    QApplication::processEvents();
    schermata.grab();
    return double(orologio.nsecsElapsed()) / 1e6;
}

void tasto(QLineEdit* campo, char lettera) {
    QKeyEvent premuto(QEvent::KeyPress, Qt::Key_A + (lettera - 'a'), Qt::NoModifier, QString(QChar(lettera)));
    QApplication::sendEvent(campo, &premuto);
    QKeyEvent rilasciato(QEvent::KeyRelease, Qt::Key_A + (lettera - 'a'), Qt::NoModifier, QString(QChar(lettera)));
    QApplication::sendEvent(campo, &rilasciato);
}

int prepara(const QString& percorso, int registri, int esclusi) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return 1;
    QList<RecordId> campagne;
    for (int i = 0; i < 200; ++i) {
        Campaign campagna(QStringLiteral("Campagna %1").arg(i));
        store->insert(campagna);
        campagne.append(campagna.id);
    }
    const QStringList oggetti{"Novità di primavera",      "Saldi di fine stagione", "Il nostro catalogo",
                              "Invito all'inaugurazione", "Auguri di buone feste",  "Nuovi orari del negozio"};
    const QDateTime inizio = QDateTime::currentDateTimeUtc().addYears(-3);
    const qint64 passo = qint64(3) * 365 * 86400 * 1000 / registri;
    for (int i = 0; i < registri; ++i) {
        SendLog log;
        log.email = QStringLiteral("cliente%1@azienda%2.it").arg(i % 150000).arg(i % 977);
        log.subject = oggetti.at(i % oggetti.size());
        const int tipo = i % 100;
        log.statusRaw = tipo < 85 ? "sent" : tipo < 93 ? "failed" : tipo < 98 ? "skipped" : "test";
        if (tipo >= 85 && tipo < 93)
            log.detail = QStringLiteral("Risposta inattesa a RCPT TO: 550 5.1.1 user unknown");
        else if (tipo >= 93 && tipo < 98)
            log.detail = QStringLiteral("in lista esclusi");
        log.servizio = tipo < 98 ? QStringLiteral("Brevo") : QString();
        log.campaignId = tipo < 98 ? campagne.at(i / 5000 % campagne.size()) : 0;
        log.date = inizio.addMSecs(passo * i);
        store->insert(log);
    }
    const QStringList motivi{
        "550 5.1.1 user unknown", "452 4.2.2 mailbox full",  "554 5.7.1 blocked",   "unsubscribe",
        "aggiunto a mano",        "importato da vecchi.csv", "dominio inesistente", "dominio senza server di posta"};
    for (int i = 0; i < esclusi; ++i) {
        Suppression esclusa(QStringLiteral("escluso%1@dominio%2.it").arg(i).arg(i % 311), motivi.at(i % motivi.size()));
        esclusa.createdAt = inizio.addSecs(i * 60);
        store->insert(esclusa);
    }
    return store->save() ? 0 : 1;
}

int storico(const QString& percorso) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return 1;
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *store};
    QElapsedTimer orologio;
    orologio.start();
    HistoryView vista(ambiente);
    vista.resize(1300, 800);
    vista.show();
    const double apertura = finoAlDisegno(vista, orologio);
    const qint64 righe = vista.modello()->righe();
    orologio.restart();
    vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(2);
    const double filtro = finoAlDisegno(vista, orologio);
    const qint64 errori = vista.modello()->righe();
    orologio.restart();
    tasto(vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico")), 'a');
    const double ricerca = finoAlDisegno(vista, orologio);
    // A keystroke with no status filter: the search alone over every log.
    vista.findChild<QComboBox*>(QStringLiteral("filtroStato"))->setCurrentIndex(0);
    QApplication::processEvents();
    orologio.restart();
    tasto(vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico")), 'z');
    const double ricercaTutti = finoAlDisegno(vista, orologio);
    // A keystroke that matches nothing: the count and the first page both read every log.
    vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico"))->clear();
    QApplication::processEvents();
    orologio.restart();
    tasto(vista.findChild<QLineEdit*>(QStringLiteral("ricercaStorico")), 'q');
    const double ricercaVuota = finoAlDisegno(vista, orologio);
    // The floor: SQLite's own count of the same search, ASCII case rules only, with no screen.
    double pavimento = 0;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("pavimento"));
        db.setDatabaseName(percorso);
        if (db.open()) {
            QSqlQuery query(db);
            orologio.restart();
            query.exec(QStringLiteral("SELECT count(*) FROM SendLog WHERE instr(lower(email), 'q') OR "
                                      "instr(lower(subject), 'q')"));
            query.next();
            pavimento = double(orologio.nsecsElapsed()) / 1e6;
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("pavimento"));
    std::printf("rows %lld errors %lld\n", static_cast<long long>(righe), static_cast<long long>(errori));
    std::printf("floor_ms %.1f\n", pavimento);
    std::printf("open_ms %.1f\nfilter_ms %.1f\nkey_ms %.1f\nkey_all_ms %.1f\nkey_none_ms %.1f\npeak_kb %ld\n", apertura,
                filtro, ricerca, ricercaTutti, ricercaVuota, piccoMemoriaKb());
    return 0;
}

int esclusi(const QString& percorso) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return 1;
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *store};
    QElapsedTimer orologio;
    orologio.start();
    SuppressionView vista(ambiente);
    vista.resize(1300, 800);
    vista.show();
    const double apertura = finoAlDisegno(vista, orologio);
    orologio.restart();
    vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-casellaInesistente"))->click();
    const double filtro = finoAlDisegno(vista, orologio);
    orologio.restart();
    tasto(vista.findChild<QLineEdit*>(QStringLiteral("ricercaEsclusi")), 'a');
    const double ricerca = finoAlDisegno(vista, orologio);
    vista.findChild<RiquadroMotivo*>(QStringLiteral("riquadro-tutti"))->click();
    QApplication::processEvents();
    orologio.restart();
    tasto(vista.findChild<QLineEdit*>(QStringLiteral("ricercaEsclusi")), 'z');
    const double ricercaTutti = finoAlDisegno(vista, orologio);
    std::printf("rows %d\n", vista.modello()->tutti());
    std::printf("open_ms %.1f\nfilter_ms %.1f\nkey_ms %.1f\nkey_all_ms %.1f\npeak_kb %ld\n", apertura, filtro, ricerca,
                ricercaTutti, piccoMemoriaKb());
    return 0;
}

int importa(const QString& percorso, int celle) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return 1;
    const QString file = percorso + QStringLiteral(".csv");
    {
        QFile uscita(file);
        if (!uscita.open(QIODevice::WriteOnly))
            return 1;
        QByteArray riga;
        for (int i = 0; i < celle; ++i) {
            riga += i % 2 ? QByteArray("Mario Rossi") : QStringLiteral("nuovo%1@importato.example").arg(i).toUtf8();
            riga += i % 10 == 9 ? '\n' : ';';
            if (riga.size() > 65536) {
                uscita.write(riga);
                riga.clear();
            }
        }
        uscita.write(riga);
    }
    SettingsStore impostazioni;
    Ambiente ambiente{impostazioni, *store};
    SuppressionView vista(ambiente);
    vista.resize(1300, 800);
    vista.show();
    QApplication::processEvents();
    const int prima = vista.modello()->tutti();

    double massimo = 0;
    QElapsedTimer cronometro;
    QTimer battito;
    battito.setTimerType(Qt::PreciseTimer);
    battito.setInterval(1);
    QObject::connect(&battito, &QTimer::timeout, [&] {
        massimo = std::max(massimo, double(cronometro.nsecsElapsed()) / 1e6);
        cronometro.restart();
    });
    QEventLoop attesa;
    QObject::connect(vista.importatore(), &ImportaEsclusi::finito, &attesa, &QEventLoop::quit);
    Dialoghi::rispondiApertura([file] { return file; });
    QElapsedTimer durata;
    durata.start();
    cronometro.start();
    battito.start();
    vista.findChild<QPushButton*>(QStringLiteral("importaEsclusi"))->click();
    attesa.exec();
    const double secondi = double(durata.elapsed()) / 1000.0;
    // The list shows the new entries once, at the end.
    QApplication::processEvents();
    battito.stop();
    std::printf("cells %d\nadded %d\nseconds %.1f\nmax_gap_ms %.1f\npeak_kb %ld\n", celle,
                vista.modello()->tutti() - prima, secondi, massimo, piccoMemoriaKb());
    return 0;
}

int corsa(const QString& percorso, const QString& host, int porta, int quanti, bool conStorico) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    if (!store)
        return 1;
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("c.csv"), {"email", "nome"}, QStringLiteral("email"));
    store->insert(lista);
    QList<ContactRow> righe;
    for (int i = 0; i < quanti; ++i) {
        const QString email = QStringLiteral("corsa%1@prova.example").arg(i);
        righe.append(ContactRow({{"email", email}, {"nome", QStringLiteral("Cliente %1").arg(i)}}, email));
    }
    store->insertRows(lista.id, righe);
    MessageTemplate modello(QStringLiteral("Primavera"), QStringLiteral("Novità per {{nome}}"),
                            QStringLiteral("<p>Gentile {{nome}},</p><p>ecco le novità di primavera.</p>"));
    store->insert(modello);
    Campaign campagna(QStringLiteral("Primavera"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store->insert(campagna);
    store->save();

    SettingsStore impostazioni;
    SMTPConfig config = impostazioni.config();
    config.host = host;
    config.port = porta;
    config.useTLS = false;
    config.username.clear();
    config.fromName = QStringLiteral("Ferramenta Rossi");
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = 0;
    config.verificaDomini = false;
    config.mittentePostale = QStringLiteral("Ferramenta Rossi snc, via Roma 1, 70121 Bari");
    impostazioni.setConfig(config);

    Ambiente ambiente{impostazioni, *store};
    std::unique_ptr<HistoryView> vista;
    if (conStorico) {
        vista = std::make_unique<HistoryView>(ambiente);
        vista->resize(1300, 800);
        vista->show();
        QApplication::processEvents();
    }
    const qint64 prima = vista ? vista->modello()->righe() : 0;

    std::vector<double> gap;
    QElapsedTimer cronometro;
    QTimer battito;
    battito.setTimerType(Qt::PreciseTimer);
    battito.setInterval(1);
    QObject::connect(&battito, &QTimer::timeout, [&] {
        gap.push_back(double(cronometro.nsecsElapsed()) / 1e6);
        cronometro.restart();
    });
    const auto motore = std::make_shared<SendEngine>();
    QElapsedTimer durata;
    cronometro.start();
    durata.start();
    battito.start();
    QCoro::waitFor(motore->run(campagna, impostazioni, *store));
    // Let the last refresh of the screen land inside the measure.
    QElapsedTimer coda;
    coda.start();
    while (coda.elapsed() < 300)
        QApplication::processEvents(QEventLoop::AllEvents, 50);
    battito.stop();
    if (motore->sent() != quanti) {
        std::fprintf(stderr, "sent %lld of %d\n", static_cast<long long>(motore->sent()), quanti);
        return 1;
    }
    std::sort(gap.begin(), gap.end());
    std::printf("seconds %.1f\nrows_added %lld\np99_ms %.2f\nmax_ms %.2f\n", double(durata.elapsed()) / 1000.0,
                static_cast<long long>(vista ? vista->modello()->righe() - prima : 0),
                gap.empty() ? 0.0 : gap[std::size_t(double(gap.size() - 1) * 0.99)], gap.empty() ? 0.0 : gap.back());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    BrezzarioApp::preparaApplicazione();
    const QStringList argomenti = app.arguments();
    const QString modo = argomenti.value(1);
    if (modo == QLatin1String("prepara") && argomenti.size() == 5)
        return prepara(argomenti.at(2), argomenti.at(3).toInt(), argomenti.at(4).toInt());
    if (modo == QLatin1String("storico") && argomenti.size() == 3)
        return storico(argomenti.at(2));
    if (modo == QLatin1String("esclusi") && argomenti.size() == 3)
        return esclusi(argomenti.at(2));
    if (modo == QLatin1String("importa") && argomenti.size() == 4)
        return importa(argomenti.at(2), argomenti.at(3).toInt());
    if (modo == QLatin1String("corsa") && argomenti.size() >= 6)
        return corsa(argomenti.at(2), argomenti.at(3), argomenti.at(4).toInt(), argomenti.at(5).toInt(),
                     argomenti.value(6) != QLatin1String("vuoto"));
    std::fprintf(stderr, "usage: see the head of bench_history.cpp\n");
    return 2;
}
