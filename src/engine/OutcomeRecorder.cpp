#include "engine/OutcomeRecorder.h"

#include "engine/SendEngine.h"
#include "records/Store.h"
#include "records/Text.h"

OutcomeRecorder::OutcomeRecorder(SendEngine& engine, Store& store, Contesto contesto)
    : m_engine(engine), m_store(store), m_contesto(std::move(contesto)) {}

void OutcomeRecorder::consegna(const QString& email, const QString& oggetto) {
    inserisciLog(email, oggetto, SendStatus::sent, QString());
    m_engine.contaInviato();
    m_engine.append(QStringLiteral("✓ ") + email);
    m_engine.registra(email, SendStatus::sent, QString());
    aggiornaRighe(email, SendStatus::sent, oggetto, QString());
    m_store.save();
}

void OutcomeRecorder::fallimento(const QString& email, const QString& oggetto, const QString& testo,
                                 const std::optional<QString>& rifiutoDefinitivo) {
    inserisciLog(email, oggetto, SendStatus::failed, testo);
    m_engine.contaFallito();
    m_engine.append(QStringLiteral("✗ ") + email + QStringLiteral(" — ") + testo);
    m_engine.registra(email, SendStatus::failed, testo);
    aggiornaRighe(email, SendStatus::failed, oggetto, testo);
    // Only a refusal of the recipient itself says the address is dead; 4xx, time-outs and drops never do.
    if (m_contesto.escludiRifiutati && rifiutoDefinitivo)
        escludi(email, *rifiutoDefinitivo);
    m_store.save();
}

void OutcomeRecorder::salto(const QString& email, RunPlanning::SkipReason motivo, const QString& oggettoModello) {
    const QString dettaglio = RunPlanning::rawValue(motivo);
    // A delivered address has its log already; a campaign run five times must not pile up lines for it.
    if (motivo != RunPlanning::SkipReason::alreadySent) {
        inserisciLog(email, oggettoModello, SendStatus::skipped, dettaglio);
        aggiornaRighe(email, SendStatus::skipped, oggettoModello, dettaglio);
    }
    m_engine.contaSaltato();
    m_engine.registra(email, SendStatus::skipped, dettaglio);
}

void OutcomeRecorder::inserisciLog(const QString& email, const QString& oggetto, SendStatus stato,
                                   const QString& dettaglio) {
    SendLog log(email, oggetto, stato, dettaglio, m_contesto.servizio);
    log.date = m_engine.adesso();
    log.campaignId = m_contesto.campagna;
    m_store.insert(log);
}

void OutcomeRecorder::aggiornaRighe(const QString& email, SendStatus stato, const QString& oggetto,
                                    const QString& dettaglio) {
    auto trovate = m_contesto.righe.find(Text::normalizedAddress(email));
    if (trovate == m_contesto.righe.end())
        return;
    const QDateTime adesso = m_engine.adesso();
    // Read afresh each time, so two outcomes of one address in a run add up.
    for (const RecordId id : std::as_const(*trovate)) {
        std::optional<ContactRow> riga = m_store.rigaPerEsito(id);
        if (!riga)
            continue; // the list was deleted during the run
        riga->registraEsito(stato, m_contesto.nomeCampagna, oggetto, dettaglio, adesso);
        m_store.updateRowOutcome(*riga);
    }
}

void OutcomeRecorder::escludi(const QString& email, const QString& motivo) {
    const QString normalizzato = Text::normalizedAddress(email);
    if (m_contesto.suppressed.contains(normalizzato))
        return;
    Suppression esclusione(normalizzato, motivo);
    esclusione.createdAt = m_engine.adesso();
    m_store.insert(esclusione);
    m_contesto.suppressed.insert(normalizzato);
    m_engine.contaEsclusoAggiunto();
    m_engine.append(QStringLiteral("→ ") + normalizzato + QStringLiteral(" aggiunto agli esclusi (") + motivo +
                    QStringLiteral(")"));
}
