#include "composition/MessageComposer.h"
#include "engine/Corsa.h"
#include "engine/Tentativo.h"
#include "smtp/SMTPSession.h"

#include <QCoro/QCoroTimer>

#include <QSet>

#include <chrono>

namespace {

std::chrono::milliseconds millisecondi(double secondi) {
    return std::chrono::milliseconds(secondi > 0 ? qRound64(secondi * 1000.0) : 0);
}

// The campaigns being sent by any engine; the interface thread is the only one that runs them.
QSet<RecordId>& campagneInInvio() {
    static QSet<RecordId> campagne;
    return campagne;
}

// Holds a campaign as being sent for as long as the run lasts.
class Prenotazione {
public:
    explicit Prenotazione(RecordId campagna) : m_campagna(campagna) { campagneInInvio().insert(campagna); }
    ~Prenotazione() { campagneInInvio().remove(m_campagna); }
    Prenotazione(const Prenotazione&) = delete;
    Prenotazione& operator=(const Prenotazione&) = delete;

private:
    RecordId m_campagna;
};

} // namespace

bool SendEngine::campagnaInInvio(RecordId campagna) {
    return campagneInInvio().contains(campagna);
}

QCoro::Task<> SendEngine::run(Campaign campaign, SettingsStore& settings, Store& store) {
    // An engine owned through a shared pointer stays alive until the run ends; one owned otherwise ends
    // the run at the first wake-up after it has gone.
    const std::shared_ptr<SendEngine> trattenuto = weak_from_this().lock();
    if (isRunning())
        co_return;
    // The screen that started a run may be gone, its run going on: a screen made afresh must not start
    // the same campaign a second time beside it.
    if (campagnaInInvio(campaign.id)) {
        const QString testo = tr("Questa campagna è già in invio: attendi che finisca, poi riprendila.");
        setLastError(testo);
        append(testo);
        co_return;
    }
    const Prenotazione prenotazione(campaign.id);
    Corsa corsa(*this, store);
    if (co_await corsa.prepara(std::move(campaign), settings))
        co_await corsa.consegna();
}

MIMEBuilder::Message Corsa::messaggio(const RunPlanning::Destinatario& destinatario, QString* oggetto) const {
    const MessageComposer::Rendered reso = MessageComposer::compose(m_modello, destinatario.values(), m_config);
    *oggetto = reso.subject;
    MIMEBuilder::Message m;
    m.from = {m_config.fromName, m_config.fromEmail};
    m.to = destinatario.email;
    if (!m_config.replyTo.isEmpty())
        m.replyTo = m_config.replyTo;
    m.subject = reso.subject;
    m.html = reso.html;
    m.plainText = reso.plainText;
    m.inlineImages = m_immagini;
    m.attachments = m_allegati;
    const QString disiscrizione = m_config.replyTo.isEmpty() ? m_config.fromEmail : m_config.replyTo;
    m.extraHeaders = {{QStringLiteral("List-Unsubscribe"),
                       QStringLiteral("<mailto:") + disiscrizione + QStringLiteral("?subject=Cancellami>")}};
    return m;
}

Corsa::Pronto Corsa::componi(const RunPlanning::Destinatario& destinatario) const {
    Pronto pronto;
    pronto.dati = MIMEBuilder::build(messaggio(destinatario, &pronto.oggetto));
    return pronto;
}

QCoro::Task<> Corsa::consegna() {
    const std::unique_ptr<SMTPSession> sessione = m_engine.nuovaSessione(m_config, m_password);
    m_engine.append(tr("Connessione a %1:%2…").arg(m_config.host).arg(m_config.port));
    if (const auto errore = co_await tenta(sessione->connect())) {
        if (!vivo())
            co_return;
        m_engine.setLastError(errore->testo);
        m_engine.append(tr("Connessione fallita: ") + errore->testo);
        m_engine.setRunning(false);
        salvaStato(CampaignStatus::failed);
        co_return;
    }
    if (!vivo())
        co_return;
    m_engine.append(tr("Connesso e autenticato."));

    // At pace 0 the run works while the server does: the next message is made while the server takes the
    // last one in, and a delivery is recorded while the server answers the next MAIL FROM. What goes on the
    // wire and in what order doesn't change; a delivery waits at most until the next command is out, so the
    // one message a killed process may leave without its log is still the last the server accepted.
    const bool diSeguito = m_config.delayBetweenMessages <= 0;
    std::optional<Pronto> pronto;
    struct Consegnato {
        QString email;
        QString oggetto;
    };
    std::optional<Consegnato> inSospeso; // delivered, not yet recorded
    const auto registraInSospeso = [this, &inSospeso] {
        if (!inSospeso)
            return;
        m_registro->consegna(inSospeso->email, inSospeso->oggetto);
        m_engine.contaProcessato();
        inSospeso.reset();
    };
    bool persa = false;
    const qsizetype quanti = m_destinatari.size();
    for (qsizetype i = 0; i < quanti; ++i) {
        const RunPlanning::Destinatario& destinatario = m_destinatari.at(i);
        if (m_engine.cancelRequested() || m_engine.isPaused()) {
            // A paused or stopped run shows every outcome; a message made before a pause would carry its date.
            registraInSospeso();
            pronto.reset();
        }
        if (m_engine.cancelRequested())
            break;
        co_await pausa();
        if (!vivo())
            co_return;
        if (m_engine.cancelRequested())
            break;
        m_engine.setCurrentRecipient(destinatario.email);

        const Pronto questo = pronto ? std::move(*pronto) : componi(destinatario);
        pronto.reset();
        const bool prossimoSubito = diSeguito && i + 1 < quanti;
        SMTPSession::Meanwhile intanto;
        if (inSospeso)
            intanto.afterMailFrom = registraInSospeso;
        if (prossimoSubito)
            intanto.afterData = [this, &pronto, &prossimo = m_destinatari.at(i + 1)] { pronto = componi(prossimo); };
        const auto errore = co_await tenta(
            sessione->sendMessage(m_config.fromEmail, destinatario.email, questo.dati, std::move(intanto)));
        if (!vivo())
            co_return;
        registraInSospeso(); // when the MAIL FROM never went out
        if (!errore && prossimoSubito) {
            inSospeso = Consegnato{destinatario.email, questo.oggetto};
        } else if (!errore) {
            m_registro->consegna(destinatario.email, questo.oggetto);
            m_engine.contaProcessato();
        } else {
            // The next message is made afresh once the connection is back: a reconnection may take a while.
            pronto.reset();
            m_registro->fallimento(destinatario.email, questo.oggetto, errore->testo, errore->rifiutoDefinitivo);
            // A session the failure left without its connection (a close, a time-out, a reply that couldn't be
            // followed) is opened again at once: the next recipient must not be charged with this one's fault.
            if ((errore->connessioneChiusa || !sessione->isConnected()) && !co_await riconnetti(*sessione)) {
                persa = true;
                break;
            }
            if (!vivo())
                co_return;
            m_engine.contaProcessato();
        }

        // No wait after the last message; a pace of 0 still lets the event loop turn.
        if (i + 1 < quanti) {
            co_await QCoro::sleepFor(millisecondi(m_config.delayBetweenMessages));
            if (!vivo())
                co_return;
        }
    }
    registraInSospeso();

    if (!persa) {
        co_await sessione->disconnect();
        if (!vivo())
            co_return;
    }
    m_engine.concludi();
    if (m_engine.cancelRequested())
        salvaStato(CampaignStatus::paused);
    else if (m_engine.failed() >= 1 && m_engine.sent() == 0)
        salvaStato(CampaignStatus::failed);
    else
        salvaStato(CampaignStatus::completed);
    m_engine.append(tr("Fine: %1 inviate, %2 errori, %3 saltate.")
                        .arg(m_engine.sent())
                        .arg(m_engine.failed())
                        .arg(m_engine.skipped()));
    m_engine.setRunning(false);
}

QCoro::Task<> Corsa::pausa() {
    // The connection stays open and nothing is sent; a server that closes it meanwhile is found out by the
    // next message.
    while (m_engine.isPaused() && !m_engine.cancelRequested()) {
        co_await QCoro::sleepFor(std::chrono::milliseconds(300));
        if (!vivo())
            co_return;
    }
}

QCoro::Task<bool> Corsa::riconnetti(SMTPSession& sessione) {
    co_await sessione.disconnect();
    const auto errore = co_await tenta(sessione.connect());
    if (!vivo())
        co_return true;
    if (!errore) {
        m_engine.append(tr("Connessione ristabilita."));
        co_return true;
    }
    m_engine.setLastError(tr("Connessione persa: ") + errore->testo);
    m_engine.append(tr("Invio interrotto: ") + errore->testo);
    co_await sessione.disconnect();
    co_return false;
}
