#pragma once

#include "checks/DNSCheck.h"
#include "records/Campaign.h"
#include "ui/DatiRiquadri.h"

#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <optional>

class Store;

// What the detail of a campaign needs to know of the active sending profile.
struct ProfiloAttivo {
    QString nome;
    QString fromEmail;
    QString host;
    double delayBetweenMessages = 0;
    int dailyLimit = 0;
    bool configurato = false;
};

// Everything the campaign detail shows that is derived rather than stored: who would receive the message if
// the user pressed the button now, why the others would not, the quota, the estimate, the button's words.
// One plan of the run serves every figure of one refresh.
struct LettureCampagna {
    qsizetype daContattare = 0;                        // the plan's recipients
    qint64 giaInviate = 0;                             // the campaign's sent count
    qint64 errori = 0;                                 // the campaign's failed count
    qsizetype esclusi = 0;                             // skips, less those already sent in this campaign
    QList<QPair<QString, qsizetype>> esclusiPerMotivo; // label and count, sorted by label
    qint64 inviateUltime24Ore = 0;
    qint64 residuo = 0;
    qint64 partiranno = 0;
    bool listaValida = false;
    bool modelloValido = false;
    bool riferimentiRotti = false;
    QStringList campiMancanti;
    bool pronta = false;
    QString etichettaAvvio;
    double stimaSecondi = 0;
    QString fineprevista; // "—" when nothing leaves now

    QList<RiquadroDato> riquadri() const;
    QList<DatoTondo> datiTondi(const ProfiloAttivo& profilo) const;
    // Each "%lld label" line of the excluded, in order.
    QStringList righeEsclusi() const;
    // Empty when the template uses no field the list lacks.
    QString rigaCampiMancanti() const;
    // Empty when the profile has no daily limit.
    QString rigaQuota(const ProfiloAttivo& profilo) const;
    // Empty when everyone to contact leaves now.
    QString rigaAttesa() const;
    QString titoloConferma() const;
    QString testoConferma(const ProfiloAttivo& profilo, const std::optional<DNSCheck::Risultato>& esitoDNS) const;
};

namespace CampaignReadings {

LettureCampagna leggi(const Campaign& campagna, const Store& store, const ProfiloAttivo& profilo, bool motoreInCorsa,
                      const QDateTime& adesso = QDateTime::currentDateTime());

// The seconds a run of `messaggi` takes at `pausa` seconds between messages: one second a message, no pause
// after the last.
double stima(double pausa, qint64 messaggi);

// The domain to check: what stands after the last "@", or the whole text when there is none.
QString dominioMittente(const QString& fromEmail);

// The warning over the sender's domain when SPF, DKIM or DMARC is missing: title and text.
std::optional<QPair<QString, QString>> avvisoDominio(const std::optional<DNSCheck::Risultato>& esito);

// "Campagna del " and the moment, for a new campaign.
QString nomeNuovaCampagna(const QDateTime& adesso = QDateTime::currentDateTime());

// The line under a campaign's name in the list: its status, what was sent and, in red, the errors.
QString statoInElenco(const Campaign& campagna, qint64 inviate);
QString erroriInElenco(qint64 errori);

} // namespace CampaignReadings
