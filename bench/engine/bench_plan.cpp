// Planning a large list: how long SendEngine::plan takes, and the run's row map beside it.
// Usage: bench_plan ROWS. Prints "plan_ms <median>" and "righe_ms <median>" over five rounds.
#include "engine/SendEngine.h"
#include "records/Store.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

double mediana(QList<double> valori) {
    std::sort(valori.begin(), valori.end());
    return valori.at(valori.size() / 2);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int righe = argc > 1 ? std::atoi(argv[1]) : 100000;
    QTemporaryDir cartella;
    const std::unique_ptr<Store> store = Store::open(cartella.filePath(QStringLiteral("bench.sqlite")));
    if (!store)
        return 1;

    // A list as users import them: a few invalid and duplicated addresses, some suppressed, a tenth
    // already delivered by an earlier run of the campaign.
    ContactList lista(QStringLiteral("Grande"), QStringLiteral("g.csv"), {"email", "nome", "citta"},
                      QStringLiteral("email"));
    store->insert(lista);
    QList<ContactRow> tutte;
    tutte.reserve(righe);
    for (int i = 0; i < righe; ++i) {
        QString email = QStringLiteral("Cliente%1@Ditta%2.it").arg(i).arg(i % 97);
        if (i % 500 == 0)
            email = QStringLiteral("senza-chiocciola-%1").arg(i);
        else if (i % 300 == 0)
            email = QStringLiteral("cliente%1@ditta%2.it").arg(i - 1).arg((i - 1) % 97);
        tutte.append(
            ContactRow({{"email", email}, {"nome", QStringLiteral("Nome %1").arg(i)}, {"citta", "Bari"}}, email));
    }
    store->insertRows(lista.id, tutte);
    Campaign campagna(QStringLiteral("Grande"));
    campagna.listId = lista.id;
    store->insert(campagna);
    for (int i = 0; i < righe; i += 10) {
        SendLog log(QStringLiteral("cliente%1@ditta%2.it").arg(i).arg(i % 97), "S", SendStatus::sent, "", "Brevo");
        log.campaignId = campagna.id;
        store->insert(log);
    }
    for (int i = 7; i < righe; i += 100) {
        Suppression esclusa(QStringLiteral("cliente%1@ditta%2.it").arg(i).arg(i % 97), "importato");
        store->insert(esclusa);
    }
    store->save();

    QList<double> piano, mappa;
    qsizetype destinatari = 0;
    for (int giro = 0; giro < 5; ++giro) {
        QElapsedTimer orologio;
        orologio.start();
        const QSet<QString> esclusi = SendEngine::suppressedEmails(*store);
        const SendEngine::Plan risultato = SendEngine::plan(campagna, lista, esclusi, *store);
        piano.append(double(orologio.nsecsElapsed()) / 1e6);
        destinatari = risultato.recipients.size();
        orologio.restart();
        const auto perEmail = SendEngine::righePerEmail(*store);
        mappa.append(double(orologio.nsecsElapsed()) / 1e6);
        if (perEmail.isEmpty())
            return 1;
    }
    std::printf("rows %d recipients %lld\nplan_ms %.1f\nrighe_ms %.1f\n", righe, static_cast<long long>(destinatari),
                mediana(piano), mediana(mappa));
    return 0;
}
