#pragma once

#include "records/Statuses.h"
#include "ui/Palette.h"

#include <QIcon>
#include <QString>

// How an outcome is shown wherever one appears (history, the register of a run): symbol and colour.
namespace PresentazioneEsito {

QString simbolo(SendStatus esito);
Colore colore(SendStatus esito);
// The symbol in its colour, made once per outcome.
QIcon icona(SendStatus esito);

} // namespace PresentazioneEsito
