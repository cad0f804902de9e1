#pragma once

#include "engine/SendEngine.h"

#include <QDialog>

#include <memory>

class BadgeView;
class DatoInlineView;
class EventiModel;
class NotaView;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeView;
class QTimer;
class QVariantAnimation;
class RiquadroView;

// The sheet that shows one engine at work: progress, rates, what went wrong, the register of outcomes,
// and the commands to pause, stop and export. It shows the same after the end, until the engine starts
// again. Hiding it leaves the run alone.
class SendDashboardView : public QDialog {
    Q_OBJECT
public:
    static constexpr int larghezza = 900;
    static constexpr int altezza = 720;

    explicit SendDashboardView(std::shared_ptr<SendEngine> motore, QWidget* genitore = nullptr);
    ~SendDashboardView() override;

    const std::shared_ptr<SendEngine>& motore() const { return m_motore; }
    bool mostraTutti() const { return m_mostraTutti; }

    // Asks for a file and writes the report there; a cancelled panel or a failed write changes nothing.
    void esportaRapporto();

public Q_SLOTS:
    // Reads the engine again; called at each change of the engine and every second.
    void aggiorna();

private:
    QWidget* creaIntestazione();
    QWidget* creaAvanzamento();
    QWidget* creaRiquadri();
    QWidget* creaDati();
    QWidget* creaProblemi();
    QWidget* creaRegistro();
    QWidget* creaComandi();
    void aggiornaProblemi();
    void aggiornaComandi();
    void scorriAllUltimo();

    std::shared_ptr<SendEngine> m_motore;
    bool m_mostraTutti = false;
    QTimer* m_fotogramma = nullptr;

    QLabel* m_titolo = nullptr;
    QLabel* m_sottotitolo = nullptr;
    BadgeView* m_servizio = nullptr;
    BadgeView* m_stato = nullptr;
    QProgressBar* m_barra = nullptr;
    QLabel* m_destinatari = nullptr;
    QLabel* m_percentuale = nullptr;
    QLabel* m_inCorso = nullptr;
    QList<RiquadroView*> m_riquadri;
    QList<DatoInlineView*> m_dati;

    NotaView* m_ultimoErrore = nullptr;
    QLabel* m_nessunProblema = nullptr;
    NotaView* m_esclusi = nullptr;
    QWidget* m_dettaglioProblemi = nullptr;
    QLabel* m_titoloRifiuti = nullptr;
    QLabel* m_rifiuti = nullptr;
    QLabel* m_titoloScarti = nullptr;
    QLabel* m_scarti = nullptr;
    NotaView* m_rimandati = nullptr;
    QLabel* m_titoloIndirizzi = nullptr;
    QLabel* m_indirizzi = nullptr;
    QPushButton* m_mostraTuttiPulsante = nullptr;

    EventiModel* m_eventi = nullptr;
    QTreeView* m_registro = nullptr;
    QVariantAnimation* m_scorrimento = nullptr;
    int m_righeViste = -1;

    QPushButton* m_pausa = nullptr;
    QPushButton* m_interrompi = nullptr;
    QPushButton* m_esporta = nullptr;
    QPushButton* m_principale = nullptr;
};
