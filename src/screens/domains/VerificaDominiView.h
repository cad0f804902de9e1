#pragma once

#include "screens/domains/DominiModel.h"

#include <QWidget>

#include <optional>

class NotaView;
class PulsanteAttesa;
class QCheckBox;
class QLabel;
class QPushButton;
class Store;

// Asks the DNS about the domain of every address in every list, as a run would, and offers to put the
// addresses that can't be reached on the suppression list.
class VerificaDominiView : public QWidget {
    Q_OBJECT
public:
    explicit VerificaDominiView(Store& store, QWidget* genitore = nullptr);

    // Does nothing while a check runs.
    void controlla();
    void aggiungiAgliEsclusi();

    bool inCorso() const { return m_inCorso; }
    const std::optional<DominiModel::Riepilogo>& esito() const { return m_esito; }
    std::optional<int> esclusiAggiunti() const { return m_esclusiAggiunti; }

private:
    void concludi(const QStringList& indirizzi, const QHash<QString, MXCheck::Esito>& esiti);
    void mostra();

    Store& m_store;
    bool m_inCorso = false;
    int m_fatti = 0;
    int m_totale = 0;
    std::optional<DominiModel::Riepilogo> m_esito;
    std::optional<int> m_esclusiAggiunti;
    bool m_includiIncerti = false;

    PulsanteAttesa* m_pulsante;
    QLabel* m_avanzamento;
    QLabel* m_conteggi;
    NotaView* m_dimostrativi;
    NotaView* m_nessunProblema;
    NotaView* m_inesistenti;
    NotaView* m_senzaServer;
    QLabel* m_titoloDaScartare;
    QLabel* m_daScartare;
    QLabel* m_titoloIncerti;
    QLabel* m_incerti;
    QCheckBox* m_includiIncertiScelta;
    QLabel* m_notaIncerti;
    QPushButton* m_aggiungi;
    QLabel* m_aggiunti;
};
