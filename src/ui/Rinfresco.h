#pragma once

#include "records/Store.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

// Coalesces the store's change signal for one screen: the screen re-derives what it shows at most once per
// interval (100 ms by default), however many saves a run makes in between, and at once after a quiet spell.
// Only changes to the kinds of record the screen shows count.
class Rinfresco : public QObject {
    Q_OBJECT
public:
    Rinfresco(Store& store, Store::Entities interessa, std::function<void(Store::Entities)> aggiorna, QObject* genitore,
              int intervalloMs = 100);

    // What changed since the last refresh, gathered while the refresh waited.
    Store::Entities inAttesa() const { return m_inAttesa; }
    // Runs a pending refresh now (tests, and a screen that must show the latest state at once).
    void esegui();

private:
    void segnala(Store::Entities cosa);

    std::function<void(Store::Entities)> m_aggiorna;
    Store::Entities m_interessa;
    Store::Entities m_inAttesa;
    QTimer m_timer;
    QElapsedTimer m_ultimo;
    int m_intervallo;
};
