#pragma once

#include "records/Store.h"
#include "ui/Palette.h"

#include <QString>

// The sending state of a list, derived from its progress at each reading and never stored.
enum class StatoLista { senzaValidi, daFare, inCorso, completata };

StatoLista statoDa(const Store::AvanzamentoLista& avanzamento);
QString simbolo(StatoLista stato);
Colore colore(StatoLista stato);
QString descrizione(StatoLista stato, const Store::AvanzamentoLista& avanzamento);

// The state of one recipient row in the detail's table.
enum class StatoRiga { esclusa, valida, nonValida };

StatoRiga statoRiga(bool isExcluded, const QString& email);
QString simbolo(StatoRiga stato);
Colore colore(StatoRiga stato);
QString testo(StatoRiga stato);

// "Ultimo esito": the word for a row's last outcome and its colour; "—" with no outcome.
QString parolaEsito(const QString& esitoRaw);
Colore coloreEsito(const QString& esitoRaw);
QString aiutoEsito(const QString& dettaglio, const QString& campagna);
