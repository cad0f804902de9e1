#pragma once

#include "checks/DNSCheck.h"
#include "checks/MXCheck.h"
#include "checks/Rimbalzi.h"

#include <QHash>
#include <QString>
#include <QStringList>

class Store;

// What the three domain panels show and do with the store, without widgets.
namespace DominiModel {

// --- The sender's domain ------------------------------------------------------------------------------

bool haMancanti(const DNSCheck::Risultato& risultato);
// "Il dominio … è configurato correttamente per …" unless a verdict is missing: a warning alone still counts
// as configured.
QString titolo(const DNSCheck::Risultato& risultato);
// What to do about a missing record, by service.
QString suggerimento(const QString& servizio);

// --- The recipients' domains --------------------------------------------------------------------------

struct Riepilogo {
    int indirizzi = 0; // distinct valid addresses examined
    int domini = 0;    // distinct domains among them
    int recapitabili = 0;
    QStringList senzaServerDiPosta; // domains, sorted
    QStringList inesistenti;        // domains, sorted
    QStringList daScartare;         // addresses on inesistenti domains, sorted
    QStringList incerti;            // addresses on senzaServerDiPosta domains, sorted
    int dimostrativi = 0;           // addresses on reserved demonstration domains
};

// Every valid address of every list, archived ones too, normalised, once each, sorted.
QStringList indirizziDelleListe(const Store& store);
Riepilogo riepiloga(const QStringList& indirizzi, const QHash<QString, MXCheck::Esito>& esiti);

QString avanzamento(int fatti, int totale);
QString lineaConteggi(const Riepilogo& riepilogo);
QString lineaDimostrativi(const Riepilogo& riepilogo); // empty when there are none
QString lineaNessunProblema(const Riepilogo& riepilogo);
QString lineaInesistenti(const Riepilogo& riepilogo);
QString lineaSenzaServer(const Riepilogo& riepilogo);
QString elenco(const QStringList& indirizzi); // "· " before each address, one a line
// How many addresses the button would put on the suppression list.
int daAggiungere(const Riepilogo& riepilogo, bool includiIncerti);
QString esitoAggiunta(int aggiunti);

// Suppresses the unreachable addresses, and the uncertain ones too when asked, marking every row that bears
// them. An address already suppressed is passed over with its rows. Saves once; gives how many were added.
int aggiungiAgliEsclusi(Store& store, const Riepilogo& riepilogo, bool includiIncerti);

// --- Brevo's deferred bounces -------------------------------------------------------------------------

QString esitoScarica(qsizetype eventi, const Rimbalzi::Conteggio& conteggio, int giorni);

} // namespace DominiModel
