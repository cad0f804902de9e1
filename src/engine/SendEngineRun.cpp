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

    bool persa = false;
    for (const RunPlanning::Destinatario& destinatario : std::as_const(m_destinatari)) {
        if (m_engine.cancelRequested())
            break;
        co_await pausa();
        if (!vivo())
            co_return;
        if (m_engine.cancelRequested())
            break;
        m_engine.setCurrentRecipient(destinatario.email);

        QString oggetto;
        const QByteArray dati = MIMEBuilder::build(messaggio(destinatario, &oggetto));
        const auto errore = co_await tenta(sessione->sendMessage(m_config.fromEmail, destinatario.email, dati));
        if (!vivo())
            co_return;
        if (!errore) {
            m_registro->consegna(destinatario.email, oggetto);
        } else {
            m_registro->fallimento(destinatario.email, oggetto, errore->testo, errore->rifiutoDefinitivo);
            // A session the failure left without its connection (a close, a time-out, a reply that couldn't be
            // followed) is opened again at once: the next recipient must not be charged with this one's fault.
            if ((errore->connessioneChiusa || !sessione->isConnected()) && !co_await riconnetti(*sessione)) {
                persa = true;
                break;
            }
            if (!vivo())
                co_return;
        }
        m_engine.contaProcessato();

        // No wait after the last message; a pace of 0 still lets the event loop turn.
        if (m_engine.processed() < m_engine.total()) {
            co_await QCoro::sleepFor(millisecondi(m_config.delayBetweenMessages));
            if (!vivo())
                co_return;
        }
    }

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
