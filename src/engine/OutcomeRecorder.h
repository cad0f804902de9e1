#pragma once

#include "engine/RunPlanning.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <optional>

class SendEngine;
class Store;

// Where each outcome of a run leaves its mark: a log in the store, every row that holds the address in
// any list, the engine's events and counters and, for a definitive refusal, the suppression list. Each
// delivery or failure is saved at once (at pace 0 a delivery as soon as the next transaction's first command
// is out), so that a process killed mid-run loses at most the last message the server accepted.
class OutcomeRecorder {
public:
    struct Contesto {
        RecordId campagna = 0;
        QString nomeCampagna;
        QString servizio;
        bool escludiRifiutati = true;
        QSet<QString> suppressed; // grows with the refusals of the run
        // The rows of every list that hold one of the run's addresses, by normalised address; each is read
        // and written back at its outcome, so a run holds no copy of them.
        QHash<QString, QList<RecordId>> righe;
    };

    OutcomeRecorder(SendEngine& engine, Store& store, Contesto contesto);

    void consegna(const QString& email, const QString& oggetto);
    void fallimento(const QString& email, const QString& oggetto, const QString& testo,
                    const std::optional<QString>& rifiutoDefinitivo);
    // A skip isn't saved here: the preparation saves once after all of them.
    void salto(const QString& email, RunPlanning::SkipReason motivo, const QString& oggettoModello);

private:
    void inserisciLog(const QString& email, const QString& oggetto, SendStatus stato, const QString& dettaglio);
    void aggiornaRighe(const QString& email, SendStatus stato, const QString& oggetto, const QString& dettaglio);
    void escludi(const QString& email, const QString& motivo);

    SendEngine& m_engine;
    Store& m_store;
    Contesto m_contesto;
};
