#pragma once

#include "records/SendLog.h"

#include <QDateTime>
#include <QString>

#include <optional>

// What the History screen asks of the logs: a status (an unknown raw value reads as sent) and a text that
// the address or the subject must contain, without regard to case. The text is taken as typed.
struct FiltroRegistri {
    std::optional<SendStatus> stato;
    QString ricerca;
};

// A log with the name of its campaign, empty for a test message or a campaign that is gone.
struct RigaStorico {
    SendLog log;
    QString campagna;
    bool haCampagna = false;
};

// The logs stored after a given identity that pass a filter.
struct NovitaRegistri {
    qint64 quanti = 0;
    QDateTime primaData;  // the oldest of them, invalid when there are none
    QDateTime ultimaData; // the newest of them
    RecordId ultimoId = 0;
};
