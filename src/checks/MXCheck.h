#pragma once

#include <QCoro/QCoroTask>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

// Which recipient domains can receive mail at all, asked of the DNS through dig. Nothing here fails: a
// query that can't be made reads as a domain that doesn't resolve, which callers take as uncertain.
namespace MXCheck {

enum class Esito {
    recapitabile,       // an answer to the MX query
    senzaServerDiPosta, // no MX, but an A record
    nonRisolto,         // neither
    dimostrativo,       // a reserved demonstration domain, never asked
};

// Called with the number of domains finished and the total, on the thread that runs verifica().
using Avanzamento = std::function<void(int fatti, int totale)>;

// How many queries run at once in verifica().
inline constexpr int larghezza = 12;

// The domains of the addresses that have exactly one "@" with something after it, lower-cased.
QSet<QString> domini(const QStringList& indirizzi);

bool eDimostrativo(const QString& dominio);

// One domain, from the process-wide cache when it was asked before.
QCoro::Task<Esito> esito(QString dominio);

// Every domain, at most `larghezza` at a time, in ascending order of name.
QCoro::Task<QHash<QString, Esito>> verifica(QSet<QString> domini, Avanzamento avanzamento = {});

// For tests only: forget every cached answer.
void svuotaCachePerTest();

} // namespace MXCheck
