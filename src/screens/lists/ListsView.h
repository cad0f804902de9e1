#pragma once

#include "import/ListImport.h"
#include "ui/Ambiente.h"

#include "ui/Comandi.h"
#include <QPointer>

#include <QWidget>

class ImportSheet;
class ListDetailView;
class ListeModel;
class QLabel;
class QListView;
class QMenu;
class QPushButton;
class QStackedWidget;

// The screen of the "Liste" section: the master list of stored lists, the detail of the selected one, and
// the way in for new files: the "Importa CSV" command or a file dropped on the screen.
class ListsView : public QWidget, public ConNuovo, public ConRicerca {
    Q_OBJECT
public:
    explicit ListsView(Ambiente& ambiente, QWidget* genitore = nullptr);
    ~ListsView() override;

    RecordId selezione() const { return m_selezione; }
    void seleziona(RecordId lista);
    void nuovo() override;
    void eliminaLista(RecordId lista);
    QLineEdit* ricerca() const override;
    // The menu of the selected list, or none with nothing selected. The caller owns it.
    QMenu* creaMenu();
    ImportSheet* foglio() const;
    ListDetailView* dettaglio() const;
    ListeModel& modello() const { return *m_modello; }

    // Reads a file beside the interface, then opens the import sheet or the alert.
    void leggi(const QString& percorso);

protected:
    void dragEnterEvent(QDragEnterEvent* evento) override;
    void dropEvent(QDropEvent* evento) override;

private:
    QWidget* creaBarra();
    QWidget* creaVuoto();
    void scegliFile();
    void letto(const LetturaFile& lettura);
    void mostraDettaglio();
    void listeRicaricate();

    Store& m_store;
    ListeModel* m_modello;
    QListView* m_master = nullptr;
    QStackedWidget* m_pannello = nullptr;
    QWidget* m_vuoto = nullptr;
    QPushButton* m_importa = nullptr;
    QLabel* m_lettura = nullptr;
    QPointer<ListDetailView> m_dettaglio;
    QPointer<ImportSheet> m_foglio;
    RecordId m_selezione = 0;
    bool m_leggendo = false;
};
