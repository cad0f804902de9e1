#include "screens/campaigns/CampaignReadings.h"

#include "composition/TemplateRenderer.h"
#include "engine/RunPlanning.h"
#include "records/Statuses.h"
#include "records/Store.h"
#include "ui/Formati.h"

#include <QCoreApplication>
#include <QLocale>
#include <QMap>

#include <algorithm>

namespace {
QString tr(const char* testo) {
    return QCoreApplication::translate("CampaignDetailView", testo);
}

QString unDecimale(double valore) {
    return formato(QStringLiteral("%.1f"), valore);
}
} // namespace

namespace CampaignReadings {

double stima(double pausa, qint64 messaggi) {
    return messaggi >= 1 ? (pausa + 1.0) * double(messaggi) - pausa : 0.0;
}

QString dominioMittente(const QString& fromEmail) {
    return fromEmail.mid(fromEmail.lastIndexOf(u'@') + 1);
}

LettureCampagna leggi(const Campaign& campagna, const Store& store, const ProfiloAttivo& profilo, bool motoreInCorsa,
                      const QDateTime& adesso) {
    LettureCampagna l;
    const std::optional<ContactList> lista = RunPlanning::listaValida(campagna, store);
    const std::optional<MessageTemplate> modello = RunPlanning::modelloValido(campagna, store);
    l.listaValida = lista.has_value();
    l.modelloValido = modello.has_value();
    l.riferimentiRotti = (campagna.listId > 0 && !lista) || (campagna.templateId > 0 && !modello);
    if (campagna.id > 0) {
        l.giaInviate = store.sentCount(campagna.id);
        l.errori = store.failedCount(campagna.id);
    }

    // One plan for every figure below.
    const RunPlanning::Plan piano = RunPlanning::plan(campagna, lista, store.suppressedEmails(), store);
    l.daContattare = piano.recipients.size();
    QMap<QString, qsizetype> perMotivo; // sorted by label
    for (const RunPlanning::Skip& salto : piano.skips) {
        if (salto.reason == RunPlanning::SkipReason::alreadySent)
            continue;
        ++perMotivo[RunPlanning::rawValue(salto.reason)];
        ++l.esclusi;
    }
    for (auto it = perMotivo.cbegin(); it != perMotivo.cend(); ++it)
        l.esclusiPerMotivo.append({it.key(), it.value()});

    l.inviateUltime24Ore = RunPlanning::inviateUltime24Ore(store, profilo.nome, adesso.toUTC());
    l.residuo = profilo.dailyLimit < 1 ? qint64(l.daContattare)
                                       : std::max<qint64>(0, profilo.dailyLimit - l.inviateUltime24Ore);
    l.partiranno = std::min<qint64>(l.daContattare, l.residuo);

    if (lista && modello)
        l.campiMancanti = TemplateRenderer::missingFields(modello->subject + u' ' + modello->html, lista->columns);

    const QString prefisso = l.giaInviate < 1 ? tr("Avvia invio (") : tr("Riprendi invio (");
    if (l.partiranno == 0)
        l.etichettaAvvio = tr("Quota di oggi esaurita");
    else if (l.partiranno >= l.daContattare)
        l.etichettaAvvio = prefisso + QString::number(l.partiranno) + u')';
    else
        l.etichettaAvvio = prefisso + QString::number(l.partiranno) + tr(" ora, ") + QString::number(l.daContattare) +
                           tr(" da contattare)");

    l.pronta = profilo.configurato && campagna.listId > 0 && campagna.templateId > 0 && l.daContattare > 0 &&
               l.partiranno >= 1 && !motoreInCorsa;
    l.stimaSecondi = stima(profilo.delayBetweenMessages, l.partiranno);
    l.fineprevista = l.partiranno == 0 ? QStringLiteral("—")
                                       : QLocale().toString(adesso.addMSecs(qint64(l.stimaSecondi * 1000)).time(),
                                                            QLocale::ShortFormat);
    return l;
}

std::optional<QPair<QString, QString>> avvisoDominio(const std::optional<DNSCheck::Risultato>& esito) {
    using DNSCheck::Esito;
    if (!esito || (esito->spf.caso != Esito::mancante && esito->dkim.caso != Esito::mancante &&
                   esito->dmarc.caso != Esito::mancante))
        return std::nullopt;
    const QString titolo = tr("Il dominio ") + esito->dominio + tr(" non è autenticato per ") + esito->servizio;
    QStringList parti;
    if (esito->dkim.caso == Esito::mancante)
        parti.append(esito->dkim.testo);
    if (esito->spf.caso == Esito::mancante)
        parti.append(esito->spf.testo);
    parti.append(tr("I messaggi partiranno lo stesso e i server li accetteranno, ma senza firma i filtri non possono "
                    "verificare che siano davvero tuoi. Sistema i record DNS prima di continuare: trovi il dettaglio "
                    "in Impostazioni → Autenticazione del dominio."));
    return QPair<QString, QString>{titolo, parti.join(u'\n')};
}

QString nomeNuovaCampagna(const QDateTime& adesso) {
    return tr("Campagna del ") + dataOraBreve(adesso);
}

QString statoInElenco(const Campaign& campagna, qint64 inviate) {
    return label(campagna.status()) + QStringLiteral(" · ") + tr("%1 inviate").arg(inviate);
}

QString erroriInElenco(qint64 errori) {
    return errori >= 1 ? QStringLiteral("· ") + tr("%1 errori").arg(errori) : QString();
}

} // namespace CampaignReadings

QList<RiquadroDato> LettureCampagna::riquadri() const {
    return {
        {qint64(daContattare), tr("ancora da contattare"), QStringLiteral("paperplane"), Colore::accent},
        {giaInviate, tr("già inviate"), QStringLiteral("checkmark.circle"), Colore::green},
        {qint64(esclusi), tr("esclusi"), QStringLiteral("minus.circle"), Colore::secondary},
        {errori, tr("errori"), QStringLiteral("exclamationmark.triangle"), Colore::red},
    };
}

QList<DatoTondo> LettureCampagna::datiTondi(const ProfiloAttivo& profilo) const {
    return {
        {tr("Partiranno ora"), QString::number(partiranno), partiranno == 1 ? tr("messaggio") : tr("messaggi"),
         partiranno == 0 ? Colore::orange : Colore::accent},
        {tr("Uno ogni"), unDecimale(profilo.delayBetweenMessages), tr("secondi"), Colore::primary},
        {tr("Durata prevista"), durataLeggibile(stimaSecondi), tr("fino all'ultimo invio"), Colore::primary},
        {tr("Fine prevista"), fineprevista, tr("orario"), Colore::primary},
    };
}

QStringList LettureCampagna::righeEsclusi() const {
    QStringList righe;
    for (const auto& [etichetta, quanti] : esclusiPerMotivo)
        righe.append(QString::number(quanti) + u' ' + etichetta);
    return righe;
}

QString LettureCampagna::rigaCampiMancanti() const {
    if (campiMancanti.isEmpty())
        return {};
    return tr("Il modello usa campi che questa lista non ha: ") + campiMancanti.join(QStringLiteral(", ")) +
           tr(". Verranno sostituiti con testo vuoto.");
}

QString LettureCampagna::rigaQuota(const ProfiloAttivo& profilo) const {
    if (profilo.dailyLimit < 1)
        return {};
    return tr("Con ") + profilo.nome + tr(", nelle ultime 24 ore sono partiti ") + QString::number(inviateUltime24Ore) +
           tr(" messaggi su un tetto di ") + QString::number(profilo.dailyLimit) + tr(": oggi ne restano ") +
           QString::number(residuo) + u'.';
}

QString LettureCampagna::rigaAttesa() const {
    if (partiranno >= daContattare)
        return {};
    return tr("Gli altri ") + QString::number(daContattare - partiranno) +
           tr(" restano in attesa: premi di nuovo \"Riprendi invio\" domani per continuare da dove eri rimasto.");
}

QString LettureCampagna::titoloConferma() const {
    return tr("Inviare ") + QString::number(partiranno) + tr(" messaggi?");
}

QString LettureCampagna::testoConferma(const ProfiloAttivo& profilo,
                                       const std::optional<DNSCheck::Risultato>& esitoDNS) const {
    QString testo = tr("Partiranno ") + QString::number(partiranno) + tr(" messaggi da ") + profilo.fromEmail +
                    tr(" con ") + profilo.nome + tr(", uno ogni ") + unDecimale(profilo.delayBetweenMessages) +
                    tr(" secondi (circa ") + durataLeggibile(stimaSecondi) + tr(").");
    using DNSCheck::Esito;
    if (esitoDNS && (esitoDNS->spf.caso == Esito::mancante || esitoDNS->dkim.caso == Esito::mancante ||
                     esitoDNS->dmarc.caso == Esito::mancante))
        testo += tr("\n\nAttenzione: il dominio ") + esitoDNS->dominio + tr(" non è autenticato per ") +
                 esitoDNS->servizio + tr(" — senza SPF e DKIM i messaggi rischiano seriamente la posta indesiderata.");
    return testo;
}
