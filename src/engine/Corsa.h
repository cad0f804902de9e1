#pragma once

#include "composition/MIMEBuilder.h"
#include "engine/OutcomeRecorder.h"
#include "engine/SendEngine.h"
#include "settings/SMTPConfig.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QPointer>

#include <memory>
#include <optional>

class SettingsStore;
class SMTPSession;

// One run of a campaign: what the preparation settles and the delivery loop then works through. Lives in
// the frame of SendEngine::run and dies with it.
class Corsa {
    Q_DECLARE_TR_FUNCTIONS(SendEngine)
public:
    Corsa(SendEngine& engine, Store& store);
    ~Corsa();

    // Everything before the connection. False when there is nothing to deliver: the engine was running
    // already, the campaign lost its template or list, or the engine went away meanwhile.
    QCoro::Task<bool> prepara(Campaign campaign, SettingsStore& settings);
    // Opening, the loop and the end of the run.
    QCoro::Task<> consegna();

private:
    // Pages of the preparation: each takes a few milliseconds on this machine's kind of hardware.
    static constexpr int righePerPagina = 5000;
    static constexpr int saltiPerPagina = 500;

    // Lets the event loop turn; false when the engine went away meanwhile.
    QCoro::Task<bool> cedi();
    QCoro::Task<bool> righeDegliIndirizzi(const RunPlanning::Plan& piano, QHash<QString, QList<RecordId>>& righe);
    QCoro::Task<> controllaDomini();
    void tagliaAllaQuota();
    void salvaStato(CampaignStatus stato);
    MIMEBuilder::Message messaggio(const RunPlanning::Destinatario& destinatario, QString* oggetto) const;
    // One recipient's message, ready for the wire.
    struct Pronto {
        QByteArray dati;
        QString oggetto;
    };
    Pronto componi(const RunPlanning::Destinatario& destinatario) const;
    // The single attempt after a lost connection; false when it failed and the run ends.
    QCoro::Task<bool> riconnetti(SMTPSession& sessione);
    QCoro::Task<> pausa();
    bool vivo() const { return !m_vivo.isNull(); }

    SendEngine& m_engine;
    QPointer<SendEngine> m_vivo;
    Store& m_store;
    SMTPConfig m_config;
    QString m_password;
    Campaign m_campagna;
    MessageTemplate m_modello; // subject and HTML from the campaign's snapshot, the rest live
    QList<RunPlanning::Destinatario> m_destinatari;
    QList<MIMEBuilder::Attachment> m_allegati;
    // The template's pictures, taken out of its HTML and encoded once for the whole run.
    QList<MIMEBuilder::InlineImage> m_immagini;
    std::unique_ptr<OutcomeRecorder> m_registro;
};
