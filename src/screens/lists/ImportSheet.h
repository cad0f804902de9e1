#pragma once

#include "import/ListImport.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QStandardItemModel;
class QTableView;
class NotaView;
class Store;

// The sheet in which the user turns a file read once into a list: name, header row, address column and what
// is dropped, with a preview. Only "Importa" writes to the store.
class ImportSheet : public QDialog {
    Q_OBJECT
public:
    ImportSheet(PendingImport pending, Store& store, QWidget* genitore);
    ~ImportSheet() override;

    const ImportSheetState& stato() const { return m_stato; }

Q_SIGNALS:
    void completata(const ContactList& lista);

private:
    QWidget* creaModulo();
    QWidget* creaAnteprima();
    // Shows what derives from the header row: facts, columns, the column picker and the preview.
    void mostraTabella();
    // Shows what derives from the column and the options: the preview's accent, the foot line, the buttons.
    void mostraConteggio();
    void importa();
    void prossimaFetta();
    void reject() override;

    ImportSheetState m_stato;
    Store& m_store;
    QLabel* m_fatti = nullptr;
    QLineEdit* m_nome = nullptr;
    QLineEdit* m_tag = nullptr;
    QLineEdit* m_note = nullptr;
    QSpinBox* m_riga = nullptr;
    QLabel* m_colonneTrovate = nullptr;
    QComboBox* m_colonna = nullptr;
    QCheckBox* m_scarta = nullptr;
    QCheckBox* m_rimuovi = nullptr;
    QStandardItemModel* m_griglia = nullptr;
    QTableView* m_anteprima = nullptr;
    QLabel* m_iconaPiede = nullptr;
    QLabel* m_piede = nullptr;
    QPushButton* m_importa = nullptr;
    QPushButton* m_annulla = nullptr;
    QWidget* m_modulo = nullptr;
    QProgressBar* m_progresso = nullptr;
    std::unique_ptr<Importazione> m_importazione;
};
