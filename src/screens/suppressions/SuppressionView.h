#pragma once

#include "records/RecordId.h"
#include "ui/Ambiente.h"

#include "ui/Comandi.h"

#include <QWidget>

#include <optional>

class DettaglioEsclusione;
class ImportaEsclusi;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class RiquadroMotivo;
class Rinfresco;
class SuppressionModel;

// The section "Esclusi": the addresses no campaign will write to, with the reason of each in plain words.
class SuppressionView : public QWidget, public ConRicerca {
    Q_OBJECT
public:
    QLineEdit* ricerca() const override { return m_ricerca; }
    explicit SuppressionView(Ambiente& ambiente, QWidget* genitore = nullptr);

    SuppressionModel* modello() const { return m_modello; }
    ImportaEsclusi* importatore() const { return m_importa; }
    std::optional<RecordId> selezione() const { return m_selezione; }
    void rinfrescaOra();

    void aggiungi();
    void importa();
    void esporta();

private:
    QWidget* creaComandi();
    void seguiModello();
    void ricostruisciRiquadri();
    void selezioneCambiata();
    void mostraDettaglio();
    void aggiornaComandi();

    SuppressionModel* m_modello;
    ImportaEsclusi* m_importa;
    Rinfresco* m_rinfresco;
    QGridLayout* m_griglia = nullptr;
    QList<RiquadroMotivo*> m_riquadri;
    QLineEdit* m_nuovoIndirizzo = nullptr;
    QLineEdit* m_motivo = nullptr;
    QPushButton* m_aggiungi = nullptr;
    QPushButton* m_esporta = nullptr;
    QLineEdit* m_ricerca = nullptr;
    QLabel* m_contatore = nullptr;
    QTableView* m_tabella = nullptr;
    DettaglioEsclusione* m_dettaglio = nullptr;
    std::optional<RecordId> m_selezione;
    bool m_ripristino = false;
};
