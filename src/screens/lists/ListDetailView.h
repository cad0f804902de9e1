#pragma once

#include "records/Store.h"

#include <QWidget>

class ListDetailModel;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableView;

// The detail of one list: its head edited in place, its recipients with a search, and the commands on the
// selected rows.
class ListDetailView : public QWidget {
    Q_OBJECT
public:
    QLineEdit* campoRicerca() const { return m_ricerca; }
    ListDetailView(Store& store, RecordId lista, QWidget* genitore = nullptr);

    ListDetailModel& modello() const { return *m_modello; }
    RecordId lista() const { return m_id; }

private:
    QWidget* creaTesta();
    QWidget* creaAzioni();
    void mostraTesta();
    // Puts the view's selection back on the shown rows whose identity is selected.
    void riapplicaSelezione();
    void selezioneCambiata();
    void aggiornaAzioni();
    void esporta();

    Store& m_store;
    RecordId m_id;
    ListDetailModel* m_modello;
    bool m_riapplicando = false;
    QLineEdit* m_nome = nullptr;
    QLineEdit* m_tag = nullptr;
    QPlainTextEdit* m_note = nullptr;
    QComboBox* m_colonna = nullptr;
    QCheckBox* m_archiviata = nullptr;
    QLabel* m_origine = nullptr;
    QLabel* m_conteggio = nullptr;
    QLineEdit* m_ricerca = nullptr;
    QTableView* m_tabella = nullptr;
    QPushButton* m_escludi = nullptr;
    QPushButton* m_includi = nullptr;
    QPushButton* m_globali = nullptr;
    QLabel* m_selezionate = nullptr;
};
