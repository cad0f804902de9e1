#pragma once

#include "records/ContactList.h"
#include "records/MessageTemplate.h"

#include <QString>

class Store;

// Invented data for trying the program without real contacts: a list of 24 firms, a formatted template and,
// on request, a finished campaign with its history and some excluded addresses. Every address ends in
// ".example", a suffix reserved for examples, so no message can reach anyone; removal finds the data by its
// names and that suffix alone.
namespace DatiEsempio {

inline const QString nomeLista = QStringLiteral("Clienti dimostrativi");
inline const QString nomeModello = QStringLiteral("Presentazione servizi (esempio)");
inline const QString nomeCampagna = QStringLiteral("Presentazione di primavera (esempio)");
inline const QString suffisso = QStringLiteral(".example");

struct Esito {
    ContactList lista;
    MessageTemplate modello;
    int righe = 0;
};

// The list, under the first free name among "Clienti dimostrativi", "Clienti dimostrativi 2", …, and the
// template.
Esito carica(Store& store);
// The list and template, a campaign that ended 58 minutes ago with 20 logs, and 7 excluded addresses; the
// text for the screen.
QString caricaScenario(Store& store);
// Everything demonstrative, and any campaign left pointing at a removed list or template; the text for the
// screen.
QString rimuoviScenario(Store& store);

} // namespace DatiEsempio
