// How long the event loop stalls while the dashboard follows a simulation at pace 0. A 1 ms timer
// records the gaps between its ticks; the longest gap is the longest moment the window could not
// answer the user. The second half of the run is reported apart: by then the register holds its full
// 5,000 events and every refresh works on all of them.

#include "app/BrezzarioApp.h"
#include "engine/SendEngine.h"
#include "screens/dashboard/SendDashboardView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    BrezzarioApp::preparaApplicazione();
    const int destinatari = argc > 1 ? std::atoi(argv[1]) : 10000;

    auto motore = std::make_shared<SendEngine>();
    SendDashboardView foglio(motore);
    foglio.show();

    std::vector<double> tutti, pieni;
    QElapsedTimer cronometro;
    QElapsedTimer corsa;
    QTimer battito;
    battito.setTimerType(Qt::PreciseTimer);
    battito.setInterval(1);
    QObject::connect(&battito, &QTimer::timeout, [&] {
        const double ms = double(cronometro.nsecsElapsed()) / 1e6;
        cronometro.restart();
        tutti.push_back(ms);
        if (motore->eventi().size() >= SendEngine::eventiMassimi)
            pieni.push_back(ms);
    });

    QObject::connect(motore.get(), &SendEngine::changed, &app, [&] {
        if (!motore->isRunning() && motore->processed() == destinatari)
            app.quit();
    });
    QTimer::singleShot(0, &app, [&] {
        cronometro.start();
        corsa.start();
        battito.start();
        motore->simula(destinatari, 0.0);
    });
    app.exec();
    const double secondi = double(corsa.elapsed()) / 1000.0;

    auto riassunto = [](std::vector<double> gap) {
        if (gap.empty())
            return std::make_pair(0.0, 0.0);
        std::sort(gap.begin(), gap.end());
        return std::make_pair(gap.back(), gap[std::size_t(double(gap.size() - 1) * 0.99)]);
    };
    const auto [massimo, p99] = riassunto(tutti);
    const auto [massimoPieno, p99Pieno] = riassunto(pieni);
    std::printf("%-52s %10s\n", "measure", "value");
    std::printf("%-52s %10d\n", "recipients simulated at pace 0", destinatari);
    std::printf("%-52s %10.2f\n", "whole simulation, s", secondi);
    std::printf("%-52s %10.0f\n", "recipients per second", destinatari / secondi);
    std::printf("%-52s %10.2f\n", "longest event-loop stall, ms", massimo);
    std::printf("%-52s %10.2f\n", "99th percentile gap of a 1 ms timer, ms", p99);
    std::printf("%-52s %10.2f\n", "longest stall with 5,000 events held, ms", massimoPieno);
    std::printf("%-52s %10.2f\n", "99th percentile gap with 5,000 events held, ms", p99Pieno);
    std::printf("%-52s %10lld\n", "events held at the end", static_cast<long long>(motore->eventi().size()));
    return 0;
}
