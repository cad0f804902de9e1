#include "engine/SendEngine.h"

#include <QHash>
#include <QMetaObject>

#include <algorithm>

SendEngine::SendEngine(QObject* parent) : QObject(parent), m_orologio([] { return QDateTime::currentDateTimeUtc(); }) {}

SendEngine::~SendEngine() = default;

void SendEngine::setOrologio(Orologio orologio) {
    m_orologio = std::move(orologio);
}

QDateTime SendEngine::adesso() const {
    return m_orologio();
}

void SendEngine::notifica() {
    // Coalesced: a loop that writes ten fields between two waits gives the screens one refresh.
    if (m_notificaInAttesa)
        return;
    m_notificaInAttesa = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_notificaInAttesa = false;
            Q_EMIT changed();
        },
        Qt::QueuedConnection);
}

void SendEngine::setPaused(bool paused) {
    m_isPaused = paused;
    notifica();
}

void SendEngine::cancel() {
    m_cancelRequested = true;
    m_isPaused = false;
    notifica();
}

double SendEngine::progress() const {
    if (m_total == 0)
        return 0;
    return double(m_processed) / double(m_total);
}

double SendEngine::trascorso(const QDateTime& a) const {
    if (!m_inizio)
        return 0;
    const QDateTime fino = m_fine ? *m_fine : a;
    return double(m_inizio->msecsTo(fino)) / 1000.0;
}

double SendEngine::velocitaAlMinuto(const QDateTime& a) const {
    const double secondi = trascorso(a);
    const qint64 tentati = m_sent + m_failed;
    if (!(secondi > 1.0) || tentati < 1)
        return 0;
    return double(tentati) / secondi * 60.0;
}

std::optional<double> SendEngine::stimaRimanente(const QDateTime& a) const {
    const qint64 rimanenti = m_total - m_processed;
    const double ritmo = velocitaAlMinuto(a);
    if (!m_isRunning || rimanenti < 1 || !(ritmo > 0))
        return std::nullopt;
    return double(rimanenti) / ritmo * 60.0;
}

QList<SendEngine::EventoInvio> SendEngine::errori() const {
    QList<EventoInvio> risultato;
    for (const EventoInvio& evento : m_eventi)
        if (evento.esito == SendStatus::failed)
            risultato.append(evento);
    return risultato;
}

QList<SendEngine::Motivo> SendEngine::perMotivo(SendStatus esito) const {
    QList<Motivo> gruppi;
    QHash<QString, qsizetype> indice;
    for (const EventoInvio& evento : m_eventi) {
        if (evento.esito != esito)
            continue;
        auto trovato = indice.constFind(evento.dettaglio);
        if (trovato == indice.constEnd()) {
            indice.insert(evento.dettaglio, gruppi.size());
            gruppi.append({evento.dettaglio, 1});
        } else {
            ++gruppi[*trovato].conteggio;
        }
    }
    // Equal counts keep the order in which their reason first appeared.
    std::stable_sort(gruppi.begin(), gruppi.end(),
                     [](const Motivo& a, const Motivo& b) { return a.conteggio > b.conteggio; });
    return gruppi;
}

QList<SendEngine::Motivo> SendEngine::erroriPerMotivo() const {
    return perMotivo(SendStatus::failed);
}

QList<SendEngine::Motivo> SendEngine::scartiPerMotivo() const {
    return perMotivo(SendStatus::skipped);
}

void SendEngine::avvia() {
    m_isRunning = true;
    reset();
    notifica();
}

void SendEngine::reset() {
    m_cancelRequested = false;
    m_isPaused = false;
    m_interrotta = false;
    m_lastError.reset();
    m_activityLog.clear();
    m_eventi.clear();
    m_processed = 0;
    m_sent = 0;
    m_failed = 0;
    m_skipped = 0;
    m_esclusiAggiunti = 0;
    m_rimandati = 0;
    m_inizio = adesso();
    m_fine.reset();
    m_eventiScartati = 0;
    ++m_generazione;
}

void SendEngine::setRunning(bool running) {
    m_isRunning = running;
    notifica();
}

void SendEngine::concludi() {
    m_currentRecipient.clear();
    m_interrotta = m_cancelRequested;
    m_fine = adesso();
    notifica();
}

void SendEngine::setTotal(qint64 total) {
    m_total = total;
    notifica();
}

void SendEngine::contaProcessato() {
    ++m_processed;
    notifica();
}

void SendEngine::contaInviato() {
    ++m_sent;
    notifica();
}

void SendEngine::contaFallito() {
    ++m_failed;
    notifica();
}

void SendEngine::contaSaltato() {
    ++m_skipped;
    notifica();
}

void SendEngine::contaEsclusoAggiunto() {
    ++m_esclusiAggiunti;
    notifica();
}

void SendEngine::setCurrentRecipient(const QString& email) {
    m_currentRecipient = email;
    notifica();
}

void SendEngine::setLastError(const std::optional<QString>& testo) {
    m_lastError = testo;
    notifica();
}

void SendEngine::setDescrizione(const QString& nomeCampagna, const QString& mittente, const QString& server,
                                const QString& servizio, double pausaImpostata) {
    m_nomeCampagna = nomeCampagna;
    m_mittente = mittente;
    m_server = server;
    m_servizio = servizio;
    m_pausaImpostata = pausaImpostata;
    notifica();
}

void SendEngine::setQuota(qint64 inviateOggi, qint64 tettoGiornaliero) {
    m_inviateOggi = inviateOggi;
    m_tettoGiornaliero = tettoGiornaliero;
    notifica();
}

void SendEngine::setRimandati(qint64 rimandati) {
    m_rimandati = rimandati;
    notifica();
}

void SendEngine::append(const QString& riga) {
    m_activityLog.append(riga);
    if (m_activityLog.size() > righeRegistroMassime)
        m_activityLog.remove(0, m_activityLog.size() - righeRegistroMassime);
    notifica();
}

void SendEngine::registra(const QString& email, SendStatus esito, const QString& dettaglio) {
    m_eventi.append({QUuid::createUuid(), adesso(), email, esito, dettaglio});
    if (m_eventi.size() > eventiMassimi) {
        const qsizetype eccesso = m_eventi.size() - eventiMassimi;
        m_eventi.remove(0, eccesso);
        m_eventiScartati += eccesso;
    }
    notifica();
}
