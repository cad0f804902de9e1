#pragma once

#include "engine/RunPlanning.h"
#include "records/Statuses.h"

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

class SettingsStore;
class SMTPSession;
class Store;
struct SMTPConfig;

// The state of one run or simulation, observed by the screens. Each screen that sends owns an engine of
// its own; a running task holds a reference to it, so the engine outlives a screen that is closed
// mid-run. Everything lives on the main thread: the controls are plain writes that the loop reads
// between its waits, and no lock exists.
//
// The run and the simulation write the state through the mutators below; every write tells the screens
// through `changed`, at most once per turn of the event loop.
class SendEngine : public QObject, public std::enable_shared_from_this<SendEngine> {
    Q_OBJECT
public:
    struct EventoInvio {
        QUuid id;
        QDateTime data;
        QString email;
        SendStatus esito = SendStatus::sent;
        QString dettaglio;
    };

    struct Motivo {
        QString motivo;
        qint64 conteggio = 0;
        bool operator==(const Motivo&) const = default;
    };

    using Orologio = std::function<QDateTime()>;

    using SkipReason = RunPlanning::SkipReason;
    using Destinatario = RunPlanning::Destinatario;
    using Plan = RunPlanning::Plan;

    // Makes the session of a run or a test send; tests put in one with a short time-out and their own CA.
    using FabbricaSessione = std::function<std::unique_ptr<SMTPSession>(const SMTPConfig&, const QString& password)>;

    static constexpr qsizetype righeRegistroMassime = 500;
    static constexpr qsizetype eventiMassimi = 5000;

    explicit SendEngine(QObject* parent = nullptr);
    ~SendEngine() override;

    // Every "now" of the engine comes from here; tests put a clock of their own in.
    void setOrologio(Orologio orologio);
    QDateTime adesso() const;

    // --- State -------------------------------------------------------------------------------------
    bool isRunning() const { return m_isRunning; }
    bool isPaused() const { return m_isPaused; }
    qint64 total() const { return m_total; }
    qint64 processed() const { return m_processed; }
    qint64 sent() const { return m_sent; }
    qint64 failed() const { return m_failed; }
    qint64 skipped() const { return m_skipped; }
    const QString& currentRecipient() const { return m_currentRecipient; }
    const std::optional<QString>& lastError() const { return m_lastError; }
    const QStringList& activityLog() const { return m_activityLog; }
    const QList<EventoInvio>& eventi() const { return m_eventi; }
    const std::optional<QDateTime>& inizio() const { return m_inizio; }
    const std::optional<QDateTime>& fine() const { return m_fine; }
    const QString& nomeCampagna() const { return m_nomeCampagna; }
    const QString& mittente() const { return m_mittente; }
    const QString& server() const { return m_server; }
    const QString& servizio() const { return m_servizio; }
    double pausaImpostata() const { return m_pausaImpostata; }
    bool interrotta() const { return m_interrotta; }
    qint64 esclusiAggiunti() const { return m_esclusiAggiunti; }
    qint64 inviateOggi() const { return m_inviateOggi; }
    qint64 tettoGiornaliero() const { return m_tettoGiornaliero; }
    qint64 rimandati() const { return m_rimandati; }
    // Read by the loops only, never by the screens.
    bool cancelRequested() const { return m_cancelRequested; }

    // Events dropped from the front of `eventi` since the last reset, so that a view can follow the
    // bounded list without reading it whole at each change; the generation moves at each reset.
    qint64 eventiScartati() const { return m_eventiScartati; }
    quint64 generazione() const { return m_generazione; }

    // --- Controls of the screens --------------------------------------------------------------------
    void setPaused(bool paused);
    // Takes effect at the next check of the loop: a message or a pace wait under way finishes first.
    void cancel();

    // --- Readings -----------------------------------------------------------------------------------
    double progress() const;
    double trascorso(const QDateTime& a) const;
    double velocitaAlMinuto(const QDateTime& a) const;
    std::optional<double> stimaRimanente(const QDateTime& a) const;
    QList<EventoInvio> errori() const;
    QList<Motivo> erroriPerMotivo() const;
    QList<Motivo> scartiPerMotivo() const;

    // --- Planning, also for the campaigns screen before a run -------------------------------------
    static Plan plan(const Campaign& campaign, const std::optional<ContactList>& list, const QSet<QString>& suppressed,
                     const Store& store);
    static std::optional<ContactList> listaValida(const Campaign& campaign, const Store& store);
    static std::optional<MessageTemplate> modelloValido(const Campaign& campaign, const Store& store);
    static int inviateUltime24Ore(const Store& store, const QString& servizio);
    static QSet<QString> suppressedEmails(const Store& store);
    static QHash<QString, QList<ContactRow>> righePerEmail(const Store& store);

    // --- Real runs ----------------------------------------------------------------------------------
    // Plans, connects and delivers one campaign; the end of the run is the return. Never fails: what
    // happened stands in the state. Returns at once when the engine is already running. The store and
    // the settings must outlive the run; configuration and password are copied at its start. A campaign
    // that another engine of the process is sending is refused with `lastError`: two runs of one campaign
    // at once would both write to the recipients the first has not reached yet.
    QCoro::Task<> run(Campaign campaign, SettingsStore& settings, Store& store);
    // Whether some engine of the process is sending this campaign now.
    static bool campagnaInInvio(RecordId campagna);
    // One message to one address on a session of its own, leaving a log of the status `test`. Touches
    // none of the engine's state, so it may run beside a campaign. Returns the text for the user.
    QCoro::Task<QString> sendTest(MessageTemplate modello, RowValues values, QString to, SettingsStore& settings,
                                  Store& store);

    // --- Test seams ---------------------------------------------------------------------------------
    void setFabbricaSessionePerTest(FabbricaSessione fabbrica);
    std::unique_ptr<SMTPSession> nuovaSessione(const SMTPConfig& config, const QString& password) const;
    // The domain check asks this resolver with this dig; empty texts restore the defaults.
    static void setControlloDominiPerTest(const QString& resolver, const QString& dig = {});
    static void svuotaCacheDominiPerTest();

    // --- Simulation ---------------------------------------------------------------------------------
    // Plays a whole run with made-up recipients and outcomes; touches neither the store nor the
    // settings. Returns at once when the engine is already running.
    QCoro::Task<> simula(int destinatari, double ritmo);

    // --- Written by a run or a simulation -----------------------------------------------------------
    // Sets isRunning and, when it becomes true, clears the state of the previous run.
    void avvia();
    void setRunning(bool running);
    // Ends the run's state: no recipient in hand, `interrotta` from the stop request, `fine` now.
    void concludi();
    void setTotal(qint64 total);
    void contaProcessato();
    void contaInviato();
    void contaFallito();
    void contaSaltato();
    void contaEsclusoAggiunto();
    void setCurrentRecipient(const QString& email);
    void setLastError(const std::optional<QString>& testo);
    void setDescrizione(const QString& nomeCampagna, const QString& mittente, const QString& server,
                        const QString& servizio, double pausaImpostata);
    void setQuota(qint64 inviateOggi, qint64 tettoGiornaliero);
    void setRimandati(qint64 rimandati);
    void append(const QString& riga);
    void registra(const QString& email, SendStatus esito, const QString& dettaglio);

Q_SIGNALS:
    void changed();

private:
    void reset();
    void notifica();
    QList<Motivo> perMotivo(SendStatus esito) const;

    Orologio m_orologio;
    FabbricaSessione m_fabbricaSessione;
    bool m_notificaInAttesa = false;

    bool m_isRunning = false;
    bool m_isPaused = false;
    qint64 m_total = 0;
    qint64 m_processed = 0;
    qint64 m_sent = 0;
    qint64 m_failed = 0;
    qint64 m_skipped = 0;
    QString m_currentRecipient;
    std::optional<QString> m_lastError;
    QStringList m_activityLog;
    QList<EventoInvio> m_eventi;
    std::optional<QDateTime> m_inizio;
    std::optional<QDateTime> m_fine;
    QString m_nomeCampagna;
    QString m_mittente;
    QString m_server;
    QString m_servizio;
    double m_pausaImpostata = 0;
    bool m_interrotta = false;
    qint64 m_esclusiAggiunti = 0;
    qint64 m_inviateOggi = 0;
    qint64 m_tettoGiornaliero = 0;
    qint64 m_rimandati = 0;
    bool m_cancelRequested = false;

    qint64 m_eventiScartati = 0;
    quint64 m_generazione = 0;
};
