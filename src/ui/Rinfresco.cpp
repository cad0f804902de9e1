#include "ui/Rinfresco.h"

Rinfresco::Rinfresco(Store& store, Store::Entities interessa, std::function<void(Store::Entities)> aggiorna,
                     QObject* genitore, int intervalloMs)
    : QObject(genitore), m_aggiorna(std::move(aggiorna)), m_interessa(interessa), m_intervallo(intervalloMs) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Rinfresco::esegui);
    connect(&store, &Store::changed, this, &Rinfresco::segnala);
}

void Rinfresco::segnala(Store::Entities cosa) {
    cosa &= m_interessa;
    if (!cosa)
        return;
    m_inAttesa |= cosa;
    if (m_timer.isActive())
        return;
    // After a quiet spell the first change shows at once; while changes pour in, one refresh per interval.
    const qint64 passati = m_ultimo.isValid() ? m_ultimo.elapsed() : m_intervallo;
    m_timer.start(passati >= m_intervallo ? 0 : int(m_intervallo - passati));
}

void Rinfresco::esegui() {
    m_timer.stop();
    if (!m_inAttesa)
        return;
    const Store::Entities cosa = m_inAttesa;
    m_inAttesa = {};
    m_ultimo.restart();
    m_aggiorna(cosa);
}
