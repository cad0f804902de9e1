#include "screens/dashboard/SendDashboardModel.h"

#include "ui/Formati.h"
#include "ui/PresentazioneEsito.h"

#include <QCoreApplication>

namespace SendDashboardModel {

namespace {
QString tr(const char* testo) {
    return QCoreApplication::translate("SendDashboardView", testo);
}
} // namespace

QString titolo(const SendEngine& motore) {
    return motore.nomeCampagna().isEmpty() ? tr("Invio") : motore.nomeCampagna();
}

QString sottotitolo(const SendEngine& motore) {
    return tr("da ") + motore.mittente() + tr(" · server ") + motore.server();
}

Colore coloreServizio(const QString& etichetta) {
    const QString nome = etichetta.toLower();
    if (nome.contains(QLatin1String("brevo")))
        return Colore::teal;
    if (nome.contains(QLatin1String("aruba")))
        return Colore::orange;
    if (nome.contains(QLatin1String("gmail")))
        return Colore::red;
    if (nome.contains(QLatin1String("simulazione")))
        return Colore::secondary;
    return Colore::accent;
}

Badge badgeServizio(const SendEngine& motore) {
    const QString etichetta = motore.servizio().isEmpty() ? QStringLiteral("—") : motore.servizio();
    return {etichetta, coloreServizio(etichetta), QStringLiteral("antenna.radiowaves.left.and.right"),
            tr("Servizio di invio in uso: ") + etichetta + QStringLiteral(" — ") + motore.server()};
}

Badge badgeStato(const SendEngine& motore) {
    if (motore.isRunning() && motore.isPaused())
        return {tr("In pausa"), Colore::orange, {}, {}};
    if (motore.isRunning())
        return {tr("Invio in corso"), Colore::blue, {}, {}};
    if (motore.interrotta())
        return {tr("Interrotto"), Colore::orange, {}, {}};
    if (motore.failed() >= 1 && motore.sent() == 0)
        return {tr("Fallito"), Colore::red, {}, {}};
    return {tr("Completato"), Colore::green, {}, {}};
}

QString destinatari(const SendEngine& motore) {
    return formato(tr("%lld di %lld destinatari"), static_cast<long long>(motore.processed()),
                   static_cast<long long>(motore.total()));
}

QString percentuale(const SendEngine& motore) {
    return QString::number(static_cast<long long>(motore.progress() * 100)) + QStringLiteral("%");
}

QString inCorso(const SendEngine& motore) {
    if (!motore.isRunning() || motore.currentRecipient().isEmpty())
        return {};
    return tr("In corso: ") + motore.currentRecipient();
}

QList<RiquadroDato> riquadri(const SendEngine& motore) {
    return {
        {motore.sent(), tr("Spedite"), QStringLiteral("checkmark.circle.fill"), Colore::green, true},
        {motore.failed(), tr("Rifiutate"), QStringLiteral("xmark.octagon.fill"), Colore::red, true},
        {motore.skipped(), tr("Escluse"), QStringLiteral("minus.circle.fill"), Colore::secondary, true},
        {motore.total() - motore.processed(), tr("Da spedire ora"), QStringLiteral("clock.fill"), Colore::blue, true},
        {motore.rimandati(), tr("Rimandate a domani"), QStringLiteral("calendar.badge.clock"), Colore::indigo,
         motore.rimandati() != 0},
    };
}

QList<DatoInline> dati(const SendEngine& motore, const QDateTime& adesso) {
    const double ritmo = motore.velocitaAlMinuto(adesso);
    const std::optional<double> stima = motore.stimaRimanente(adesso);
    QString fine;
    if (stima)
        fine = durataLeggibile(*stima);
    else
        fine = motore.isRunning() ? QStringLiteral("—") : tr("conclusa");
    const qint64 tentati = motore.sent() + motore.failed();
    const double tasso = tentati < 1 ? 0.0 : double(motore.failed()) / double(tentati) * 100.0;
    return {
        {tr("Tempo trascorso"), durataLeggibile(motore.trascorso(adesso)), Colore::primary, true},
        {tr("Ritmo"), ritmo > 0 ? formato(tr("%.1f al minuto"), ritmo) : QStringLiteral("—"), Colore::primary, true},
        {tr("Fine stimata"), fine, Colore::primary, true},
        {tr("Tasso di errore"), formato(QStringLiteral("%.1f%%"), tasso), tasso > 10.0 ? Colore::red : Colore::primary,
         true},
        {tr("Pausa impostata"), formato(tr("%.1f s"), motore.pausaImpostata()), Colore::primary, true},
        {tr("Quota di oggi"),
         QString::number(motore.inviateOggi() + motore.sent()) + u'/' + QString::number(motore.tettoGiornaliero()),
         Colore::primary, motore.tettoGiornaliero() >= 1},
    };
}

bool nessunProblema(const QList<SendEngine::EventoInvio>& errori, const QList<SendEngine::Motivo>& scarti) {
    return errori.isEmpty() && scarti.isEmpty();
}

QString esclusiAggiunti(const SendEngine& motore) {
    if (motore.esclusiAggiunti() < 1)
        return {};
    return formato(tr("%lld indirizzi aggiunti agli esclusi: non saranno più contattati."),
                   static_cast<long long>(motore.esclusiAggiunti()));
}

QStringList rifiutiDelServer(const QList<SendEngine::Motivo>& errori) {
    QStringList righe;
    for (const SendEngine::Motivo& voce : errori)
        righe << QString::number(voce.conteggio) + QStringLiteral("× ") + voce.motivo;
    return righe;
}

QStringList nonContattati(const QList<SendEngine::Motivo>& scarti) {
    QStringList righe;
    for (const SendEngine::Motivo& voce : scarti)
        righe << QString::number(voce.conteggio) + u' ' +
                     (voce.conteggio == 1 ? tr("destinatario") : tr("destinatari")) + QStringLiteral(": ") +
                     voce.motivo;
    return righe;
}

QString rimandati(const SendEngine& motore) {
    if (motore.rimandati() < 1)
        return {};
    return QString::number(motore.rimandati()) + tr(" destinatari non entrano nella quota di oggi (tetto ") +
           QString::number(motore.tettoGiornaliero()) +
           tr("): non è un errore, partiranno alla prossima tornata con \"Riprendi invio\".");
}

IndirizziRifiutati indirizziRifiutati(const QList<SendEngine::EventoInvio>& errori, bool mostraTutti) {
    IndirizziRifiutati risultato;
    risultato.totale = errori.size();
    const qsizetype quanti = mostraTutti ? errori.size() : qMin(errori.size(), indirizziVisibili);
    for (qsizetype i = 0; i < quanti; ++i)
        risultato.mostrati << errori.at(i).email;
    if (!mostraTutti && errori.size() > indirizziVisibili)
        risultato.pulsante = tr("Mostra tutti (") + QString::number(errori.size()) + QStringLiteral(")");
    return risultato;
}

QString simboloEsito(SendStatus esito) {
    return PresentazioneEsito::simbolo(esito);
}

Colore coloreEsito(SendStatus esito) {
    return PresentazioneEsito::colore(esito);
}

} // namespace SendDashboardModel
