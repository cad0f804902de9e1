#pragma once

#include "engine/SendEngine.h"
#include "ui/DatiRiquadri.h"

#include <QString>
#include <QStringList>

// What the dashboard shows of an engine, derived afresh at each refresh; the widgets only lay it out.

struct IndirizziRifiutati {
    QStringList mostrati;
    qsizetype totale = 0;
    // "Mostra tutti (N)" when part of the list is hidden.
    QString pulsante;
};

namespace SendDashboardModel {

inline constexpr qsizetype indirizziVisibili = 15;

QString titolo(const SendEngine& motore);
QString sottotitolo(const SendEngine& motore);
Colore coloreServizio(const QString& etichetta);
Badge badgeServizio(const SendEngine& motore);
Badge badgeStato(const SendEngine& motore);

QString destinatari(const SendEngine& motore);
QString percentuale(const SendEngine& motore);
// "In corso: " and the address in hand, or nothing.
QString inCorso(const SendEngine& motore);

// Spedite, Rifiutate, Escluse, Da spedire ora, Rimandate a domani.
QList<RiquadroDato> riquadri(const SendEngine& motore);
// Tempo trascorso, Ritmo, Fine stimata, Tasso di errore, Pausa impostata, Quota di oggi.
QList<DatoInline> dati(const SendEngine& motore, const QDateTime& adesso);

bool nessunProblema(const QList<SendEngine::EventoInvio>& errori, const QList<SendEngine::Motivo>& scarti);
QString esclusiAggiunti(const SendEngine& motore);
QStringList rifiutiDelServer(const QList<SendEngine::Motivo>& errori);
QStringList nonContattati(const QList<SendEngine::Motivo>& scarti);
QString rimandati(const SendEngine& motore);
IndirizziRifiutati indirizziRifiutati(const QList<SendEngine::EventoInvio>& errori, bool mostraTutti);

// The register's symbol and colour for an outcome.
QString simboloEsito(SendStatus esito);
Colore coloreEsito(SendStatus esito);

} // namespace SendDashboardModel
