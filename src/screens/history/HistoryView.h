#pragma once

#include "ui/Ambiente.h"

#include "ui/Comandi.h"

#include <QWidget>

class HistoryModel;
class QComboBox;
class QLabel;
class QLineEdit;
class QTableView;
class Rinfresco;

// The section "Storico": every outcome ever recorded, searchable, filtered by status, exported and emptied.
class HistoryView : public QWidget, public ConRicerca {
    Q_OBJECT
public:
    QLineEdit* ricerca() const override { return m_ricerca; }
    explicit HistoryView(Ambiente& ambiente, QWidget* genitore = nullptr);

    HistoryModel* modello() const { return m_modello; }
    // Runs a refresh that waits for its turn (tests).
    void rinfrescaOra();

    void esporta();
    void svuota();

protected:
    void showEvent(QShowEvent* evento) override;

private:
    QWidget* creaBarra();
    void mostraRighe(qint64 righe);

    HistoryModel* m_modello;
    Rinfresco* m_rinfresco;
    QComboBox* m_stato = nullptr;
    QLineEdit* m_ricerca = nullptr;
    QLabel* m_contatore = nullptr;
    QTableView* m_tabella = nullptr;
    bool m_dimensionata = false;
};
