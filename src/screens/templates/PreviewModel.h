#pragma once

#include "records/ContactList.h"
#include "records/ContactRow.h"
#include "records/MessageTemplate.h"
#include "settings/SMTPConfig.h"

#include <QList>

#include <optional>

class Store;

// What the preview shows, worked out from the template, a list and the settings, without a widget.
namespace PreviewModel {

// The list's rows that could receive the message: not excluded, with a valid address, by address.
QList<ContactRow> righe(const Store& store, const std::optional<ContactList>& lista);
// The values of the chosen row; an index past the end takes the last row, no rows give no values.
RowValues valoriCorrenti(const QList<ContactRow>& righe, int indiceRiga);
int indiceEffettivo(const QList<ContactRow>& righe, int indiceRiga);
// The subject as it goes out, or "(vuoto)".
QString oggetto(const MessageTemplate& modello, const RowValues& valori);
// The body in the frame with the footer, exactly as a recipient gets it.
QString corpoRenderizzato(const MessageTemplate& modello, const RowValues& valori, const SMTPConfig& config);
bool puoInviare(const QString& indirizzo, bool invioInCorso, bool configurato);
// The result reads as a success only when it begins with "Messaggio".
bool esitoPositivo(const QString& esito);

} // namespace PreviewModel
