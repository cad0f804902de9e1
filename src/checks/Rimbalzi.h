#pragma once

#include "checks/BrevoAPI.h"

#include <QDateTime>
#include <QList>

class Store;

// Writes downloaded bounces into the store: each address goes on the suppression list and every contact
// row that bears it shows the failure.
namespace Rimbalzi {

struct Conteggio {
    int aggiunti = 0;    // new suppressions
    int giaPresenti = 0; // addresses that were suppressed already
};

// Not idempotent, and meant so: applying the same events again counts another failure on each row and
// moves its date, while every address then counts as already present. Saves once at the end; a failed
// save leaves the changes pending in the store.
Conteggio applica(Store& store, const QList<BrevoAPI::Evento>& eventi,
                  const QDateTime& adesso = QDateTime::currentDateTimeUtc());

} // namespace Rimbalzi
