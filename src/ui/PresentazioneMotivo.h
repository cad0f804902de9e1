#pragma once

#include "records/Statuses.h"
#include "ui/Palette.h"

#include <QString>

// How a category of excluded address is shown, wherever it appears: label, symbol, colour, the plain-words
// explanation, and whether taking such an address back deserves a warning.
namespace PresentazioneMotivo {

QString etichetta(MotivoEsclusione motivo);
QString simbolo(MotivoEsclusione motivo);
Colore colore(MotivoEsclusione motivo);
QString spiegazione(MotivoEsclusione motivo);
// The address can't be delivered or asked not to be written to: putting it back harms the sender.
bool sconsigliaRiabilitare(MotivoEsclusione motivo);
QString avvisoRiabilitazione();

} // namespace PresentazioneMotivo
