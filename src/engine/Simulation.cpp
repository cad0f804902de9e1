#include "engine/SendEngine.h"

#include <QCoro/QCoroTimer>
#include <QPointer>
#include <QRandomGenerator>

#include <array>
#include <chrono>

namespace {

// Reserved example domains only, so that a made-up address can never reach a real mailbox.
const std::array<QString, 4> dominiSimulati = {
    QStringLiteral("example.org"),
    QStringLiteral("impianti.example"),
    QStringLiteral("studio.example"),
    QStringLiteral("officine.example"),
};

const std::array<QString, 3> erroriSimulati = {
    QStringLiteral("Risposta inattesa a RCPT TO: 550 mailbox unavailable"),
    QStringLiteral("Risposta inattesa a RCPT TO: 452 mailbox full"),
    QStringLiteral("Risposta inattesa a RCPT TO: 553 relaying denied"),
};

const std::array<QString, 3> scartiSimulati = {
    QStringLiteral("in lista esclusi"),
    QStringLiteral("duplicato nella lista"),
    QStringLiteral("indirizzo non valido"),
};

const QString mittenteSimulato = QStringLiteral("prove@example.org");

std::chrono::milliseconds millisecondi(double secondi) {
    return std::chrono::milliseconds(secondi > 0 ? qRound64(secondi * 1000.0) : 0);
}

} // namespace

QCoro::Task<> SendEngine::simula(int destinatari, double ritmo) {
    if (m_isRunning)
        co_return;
    // An engine owned through a shared pointer stays alive until the task ends; one owned otherwise
    // ends the task at the first wake-up after it has gone.
    const std::shared_ptr<SendEngine> trattenuto = weak_from_this().lock();
    const QPointer<SendEngine> vivo(this);

    avvia();
    setDescrizione(tr("Simulazione di prova"), mittenteSimulato, tr("nessun server (simulazione)"), tr("Simulazione"),
                   ritmo);
    setTotal(destinatari);
    append(tr("Simulazione avviata: nessun messaggio verrà spedito davvero."));

    auto* caso = QRandomGenerator::global();
    for (int i = 0; i < destinatari; ++i) {
        if (m_cancelRequested)
            break;
        while (m_isPaused && !m_cancelRequested) {
            co_await QCoro::sleepFor(std::chrono::milliseconds(300));
            if (!vivo)
                co_return;
        }
        if (m_cancelRequested)
            break;
        const QString indirizzo =
            QStringLiteral("contatto%1@%2").arg(i + 1).arg(dominiSimulati[std::size_t(i) % dominiSimulati.size()]);
        setCurrentRecipient(indirizzo);
        // The pace stands for the time a real message takes; at 0 it still lets the event loop turn.
        co_await QCoro::sleepFor(millisecondi(ritmo));
        if (!vivo)
            co_return;

        const quint32 r = caso->bounded(100u);
        if (r < 8) {
            const QString& testo = erroriSimulati[caso->bounded(quint32(erroriSimulati.size()))];
            contaFallito();
            registra(indirizzo, SendStatus::failed, testo);
            append(QStringLiteral("✗ ") + indirizzo + QStringLiteral(" — ") + testo);
        } else if (r < 14) {
            contaSaltato();
            registra(indirizzo, SendStatus::skipped, scartiSimulati[caso->bounded(quint32(scartiSimulati.size()))]);
        } else {
            contaInviato();
            registra(indirizzo, SendStatus::sent, QString());
            append(QStringLiteral("✓ ") + indirizzo);
        }
        contaProcessato();
    }

    concludi();
    setRunning(false);
    append(tr("Simulazione conclusa: %1 inviate, %2 errori, %3 saltate.").arg(m_sent).arg(m_failed).arg(m_skipped));
}
