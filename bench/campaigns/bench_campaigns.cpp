// The Campaigns screen with a list of real size.
//   bench_campaigns piano STORE ROWS
//       the plan of a campaign of ROWS rows and the detail's whole reading, median of 5, in ms
//   bench_campaigns corsa STORE HOST PORT ROWS SENT dettaglio|nessuno
//       a run at pace 0 to HOST:PORT of SENT messages (the daily limit cuts the ROWS-row list), with the
//       campaign's detail open or no screen; prints the rate and the event loop's longest waits of a 1 ms timer
#include "app/BrezzarioApp.h"
#include "engine/RunPlanning.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "screens/campaigns/CampaignReadings.h"
#include "screens/campaigns/CampaignsView.h"
#include "settings/SettingsStore.h"
#include "ui/Ambiente.h"

#include <QApplication>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

std::optional<Campaign> archivio(Store& store, int righe) {
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), {"Email", "Nome", "Citta"},
                      QStringLiteral("Email"));
    if (!store.insert(lista))
        return std::nullopt;
    QList<ContactRow> tutte;
    tutte.reserve(righe);
    for (int i = 0; i < righe; ++i) {
        // Some duplicates and some bad addresses, as in a real export.
        const QString email = i % 50 == 7   ? QStringLiteral("senza-chiocciola%1").arg(i)
                              : i % 40 == 3 ? QStringLiteral("cliente%1@ditta%2.example").arg(i - 1).arg((i - 1) % 97)
                                            : QStringLiteral("cliente%1@ditta%2.example").arg(i).arg(i % 97);
        tutte.append(
            ContactRow({{"Email", email}, {"Nome", QStringLiteral("Cliente %1").arg(i)}, {"Citta", "Bari"}}, email));
    }
    store.insertRows(lista.id, tutte);
    MessageTemplate modello(QStringLiteral("Primavera"), QStringLiteral("Novità per {{Nome}}"),
                            QStringLiteral("<p>Gentile {{Nome}} di {{Citta}},</p><p>ecco le novità.</p>"));
    store.insert(modello);
    Campaign campagna(QStringLiteral("Primavera"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store.insert(campagna);
    store.save();
    return campagna;
}

double mediana(std::vector<double> valori) {
    std::sort(valori.begin(), valori.end());
    return valori[valori.size() / 2];
}

int piano(const QString& percorso, int righe) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    const std::optional<Campaign> campagna = store ? archivio(*store, righe) : std::nullopt;
    if (!campagna)
        return 1;
    const ProfiloAttivo profilo{QStringLiteral("Brevo"),
                                QStringLiteral("negozio@prova.example"),
                                QStringLiteral("smtp-relay.brevo.com"),
                                2.0,
                                300,
                                true};
    std::vector<double> pianoMs, lettureMs;
    qsizetype destinatari = 0;
    for (int giro = 0; giro < 5; ++giro) {
        QElapsedTimer orologio;
        orologio.start();
        const RunPlanning::Plan p = RunPlanning::plan(*campagna, RunPlanning::listaValida(*campagna, *store),
                                                      store->suppressedEmails(), *store);
        pianoMs.push_back(double(orologio.nsecsElapsed()) / 1e6);
        destinatari = p.recipients.size();
        orologio.restart();
        const LettureCampagna l = CampaignReadings::leggi(*campagna, *store, profilo, false);
        lettureMs.push_back(double(orologio.nsecsElapsed()) / 1e6);
    }
    std::printf("plan_ms %.1f\nreadings_ms %.1f\nrecipients %lld\n", mediana(pianoMs), mediana(lettureMs),
                static_cast<long long>(destinatari));
    return 0;
}

int corsa(const QString& percorso, const QString& host, int porta, int righe, int inviate, bool conDettaglio) {
    const std::unique_ptr<Store> store = Store::open(percorso);
    const std::optional<Campaign> campagna = store ? archivio(*store, righe) : std::nullopt;
    if (!campagna)
        return 1;
    SettingsStore impostazioni;
    SMTPConfig config = impostazioni.config();
    config.host = host;
    config.port = porta;
    config.useTLS = false;
    config.username.clear();
    config.fromEmail = QStringLiteral("negozio@prova.example");
    config.delayBetweenMessages = 0;
    config.dailyLimit = inviate;
    config.verificaDomini = false;
    impostazioni.setConfig(config);

    Ambiente ambiente{impostazioni, *store};
    std::unique_ptr<CampaignsView> vista;
    if (conDettaglio) {
        vista = std::make_unique<CampaignsView>(ambiente);
        vista->resize(1300, 900);
        vista->show();
        vista->seleziona(campagna->id);
        QApplication::processEvents();
    }
    std::vector<double> attese;
    QElapsedTimer cronometro;
    QTimer battito;
    battito.setTimerType(Qt::PreciseTimer);
    battito.setInterval(1);
    QObject::connect(&battito, &QTimer::timeout, [&] {
        attese.push_back(double(cronometro.nsecsElapsed()) / 1e6);
        cronometro.restart();
    });
    // With the screen open the run is the screen's own, as when the user starts it there.
    const std::shared_ptr<SendEngine> motore = vista ? vista->motore() : std::make_shared<SendEngine>();
    QElapsedTimer durata;
    cronometro.start();
    durata.start();
    battito.start();
    QCoro::waitFor(motore->run(*campagna, impostazioni, *store));
    const double secondi = double(durata.nsecsElapsed()) / 1e9;
    battito.stop();
    if (motore->sent() != inviate) {
        std::fprintf(stderr, "sent %lld of %d\n", static_cast<long long>(motore->sent()), inviate);
        return 1;
    }
    std::sort(attese.begin(), attese.end());
    std::printf("rate %.1f\np99_ms %.2f\nmax_ms %.2f\n", double(inviate) / secondi,
                attese[std::size_t(double(attese.size() - 1) * 0.99)], attese.back());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    BrezzarioApp::preparaApplicazione();
    const QStringList argomenti = app.arguments();
    const QString modo = argomenti.value(1);
    if (modo == QLatin1String("piano") && argomenti.size() == 4)
        return piano(argomenti.at(2), argomenti.at(3).toInt());
    if (modo == QLatin1String("corsa") && argomenti.size() == 8)
        return corsa(argomenti.at(2), argomenti.at(3), argomenti.at(4).toInt(), argomenti.at(5).toInt(),
                     argomenti.at(6).toInt(), argomenti.at(7) == QLatin1String("dettaglio"));
    std::fprintf(stderr, "usage: see the head of bench_campaigns.cpp\n");
    return 2;
}
