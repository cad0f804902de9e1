#pragma once

#include "settings/SMTPConfig.h"
#include "ui/Ambiente.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class DominioCheckView;
class NotaView;
class PulsanteAttesa;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QScrollArea;
class QSlider;
class RimbalziView;
class SendDashboardView;
class SendEngine;
class SezioneModulo;
class VerificaDominiView;

// The one form of the send profiles: account, server, sender, footer, pace, the domain panels, the
// simulation and the connection test. Every field writes straight into the active profile; there is no
// save button. Two instances (the section and the settings window) share the stores and nothing else.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    explicit SettingsView(Ambiente ambiente, QWidget* genitore = nullptr);
    ~SettingsView() override;

    void provaConnessione();
    void simulaSpedizione();

    bool provaInCorso() const { return m_provaInCorso; }
    std::optional<QString> esitoProva() const { return m_esitoProva; }
    bool provaRiuscita() const { return m_provaRiuscita; }
    const std::shared_ptr<SendEngine>& motoreProva() const { return m_motoreProva; }
    bool mostraCruscottoProva() const { return m_mostraCruscottoProva; }
    QScrollArea* scorrimento() const { return m_scorrimento; }

    // For tests: a shorter simulation than the 60 recipients at 0.18 s a user gets.
    void impostaSimulazione(int destinatari, double ritmo);

protected:
    void showEvent(QShowEvent* evento) override;

private:
    SezioneModulo* creaServizio();
    SezioneModulo* creaServer();
    SezioneModulo* creaMittente();
    SezioneModulo* creaPiePagina();
    SezioneModulo* creaRitmo();
    SezioneModulo* creaProva();
    SezioneModulo* creaConnessione();
    QLineEdit* campo(QFormLayout* righe, const QString& etichetta, const char* nome);
    QCheckBox* interruttore(QFormLayout* righe, const QString& testo, const char* nome);

    // Reads the stores again. A field the user is typing in is left alone, and catches up when left, unless
    // `forza`: after another profile or provider was chosen, every field shows the new values.
    void aggiorna(bool forza = false);
    void aggiornaProfili(bool forza);
    void aggiornaBrevo(bool brevo);
    void aggiornaProva();
    void scriviConfig(const std::function<void(SMTPConfig&)>& cambia);

    Ambiente m_ambiente;
    bool m_provaInCorso = false;
    std::optional<QString> m_esitoProva;
    bool m_provaRiuscita = false;
    std::shared_ptr<SendEngine> m_motoreProva;
    bool m_mostraCruscottoProva = false;
    SendDashboardView* m_cruscotto = nullptr;
    int m_destinatariSimulazione = 60;
    double m_ritmoSimulazione = 0.18;
    bool m_giaMostrata = false;

    QScrollArea* m_scorrimento;
    QComboBox* m_profilo = nullptr;
    QLineEdit* m_nomeProfilo = nullptr;
    QPushButton* m_aggiungi = nullptr;
    QPushButton* m_elimina = nullptr;
    QComboBox* m_provider = nullptr;
    QLabel* m_suggerimento = nullptr;
    QLineEdit* m_host = nullptr;
    QLineEdit* m_porta = nullptr;
    QCheckBox* m_tls = nullptr;
    QLineEdit* m_nomeUtente = nullptr;
    QLineEdit* m_password = nullptr;
    QLineEdit* m_nomeMittente = nullptr;
    QLineEdit* m_indirizzoMittente = nullptr;
    QLineEdit* m_rispondiA = nullptr;
    NotaView* m_avvisoMittente = nullptr;
    DominioCheckView* m_dominio = nullptr;
    QCheckBox* m_piePagina = nullptr;
    QFormLayout* m_righePiePagina = nullptr;
    QPlainTextEdit* m_motivazione = nullptr;
    QLineEdit* m_disiscrizione = nullptr;
    QPlainTextEdit* m_mittentePostale = nullptr;
    QLabel* m_notaPiePagina = nullptr;
    QCheckBox* m_verificaDomini = nullptr;
    QCheckBox* m_escludiRifiutati = nullptr;
    QSlider* m_pausa = nullptr;
    QLabel* m_valorePausa = nullptr;
    QLineEdit* m_limite = nullptr;
    QLabel* m_notaRitmo = nullptr;
    VerificaDominiView* m_verificaDominiVista = nullptr;
    SezioneModulo* m_sezioneBrevo = nullptr;
    RimbalziView* m_rimbalzi = nullptr;
    QPushButton* m_simula = nullptr;
    PulsanteAttesa* m_prova = nullptr;
    NotaView* m_esitoProvaVista = nullptr;
};
