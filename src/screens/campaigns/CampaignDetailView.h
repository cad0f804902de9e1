#pragma once

#include "checks/DNSCheck.h"
#include "records/Campaign.h"
#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "screens/campaigns/CampaignReadings.h"

#include <QWidget>

#include <memory>
#include <optional>

struct Ambiente;
class DatoInlineView;
class NotaView;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QTimer;
class RiquadroView;
class SendDashboardView;
class SendEngine;
class SezioneModulo;

// One campaign: which list and template it joins, who would receive it now and why the others would not,
// how long it would take, and the controls of a run. Every figure comes from one reading of the store.
class CampaignDetailView : public QWidget {
    Q_OBJECT
public:
    CampaignDetailView(Ambiente& ambiente, std::shared_ptr<SendEngine> motore, QWidget* genitore = nullptr);
    ~CampaignDetailView() override;

    // Shows the campaign with the lists and templates of the pickers, newest first.
    void imposta(const Campaign& campagna, const QList<ContactList>& liste, const QList<MessageTemplate>& modelli,
                 const QHash<RecordId, int>& validiPerLista);
    // Reads the figures again from the store and the active profile.
    void aggiornaLetture();
    // The running controls, from the engine's state.
    void aggiornaMotore();

    const Campaign& campagna() const { return m_campagna; }
    const LettureCampagna& letture() const { return m_letture; }
    ProfiloAttivo profilo() const;
    const std::optional<DNSCheck::Risultato>& esitoDNS() const { return m_esitoDNS; }
    SendDashboardView* cruscotto() const { return m_cruscotto; }

    // The main button: asks for confirmation and, if given, opens the dashboard and starts the run.
    void chiediAvvio();
    void apriAnteprima();
    void apriCruscotto();

protected:
    void showEvent(QShowEvent* evento) override;

private:
    QWidget* creaImpostazioni();
    QWidget* creaDestinatari();
    QWidget* creaComandi();
    QWidget* creaRegistro();
    void salva();
    void controllaDominio();
    void mostraAvvisoDominio();

    Ambiente& m_ambiente;
    std::shared_ptr<SendEngine> m_motore;
    Campaign m_campagna;
    QList<ContactList> m_liste;
    QList<MessageTemplate> m_modelli;
    LettureCampagna m_letture;
    std::optional<DNSCheck::Risultato> m_esitoDNS;
    QString m_dominioControllato; // the sender and host the last check was for
    bool m_apparsa = false;
    qsizetype m_righeRegistro = -1;

    NotaView* m_banner;
    QLabel* m_bannerTitolo;
    QLineEdit* m_nome;
    QComboBox* m_lista;
    QComboBox* m_modello;
    QCheckBox* m_saltaInviati;
    QLabel* m_mittente;
    QWidget* m_avvisoDominio;
    QLabel* m_avvisoTitolo;
    QLabel* m_avvisoTesto;
    QList<RiquadroView*> m_riquadri;
    QLabel* m_righeEsclusi;
    NotaView* m_campiMancanti;
    QList<DatoInlineView*> m_dati;
    QLabel* m_quota;
    QLabel* m_attesa;
    QStackedWidget* m_comandi;
    QLabel* m_ultimoErrore;
    QPushButton* m_anteprima;
    QPushButton* m_avvia;
    NotaView* m_altroInvio;
    NotaView* m_nonConfigurato;
    QLabel* m_statoInvio;
    QProgressBar* m_progresso;
    QPushButton* m_pausa;
    QPushButton* m_interrompi;
    QLabel* m_contatori;
    SezioneModulo* m_registro;
    QListWidget* m_righeRegistroVista;
    SendDashboardView* m_cruscotto = nullptr;
    QTimer* m_battitoMotore;
};
