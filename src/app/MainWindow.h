#pragma once

#include "app/Sezione.h"
#include "screens/dashboard/SendDashboardView.h"
#include "ui/Ambiente.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class QAction;
class QVBoxLayout;
class SendEngine;
class VoceSidebar;

// The main window: the sidebar of the sections, the screen of the current one, and the commands of the
// menus. It holds an engine of its own for the simulation of the menu, so that a simulation can never
// disturb the engine of a campaign.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    static inline const QString paginaVersioni = QStringLiteral("https://www.nembrosa.example/brezzario/versioni");

    explicit MainWindow(Ambiente ambiente, QWidget* genitore = nullptr);
    ~MainWindow() override;

    Sezione sezione() const { return m_sezione; }
    void vaiA(Sezione sezione);
    QWidget* schermata() const { return m_schermata; }

    const std::shared_ptr<SendEngine>& motoreSimulazione() const { return m_motoreSimulazione; }
    bool mostraSimulazione() const { return m_mostraSimulazione; }
    SendDashboardView* cruscottoSimulazione() const { return m_cruscotto; }

    // Starts the simulation of the menu with its dashboard; ignored while one runs.
    void avviaSimulazione();
    // The keys the window answers to, as the "Scorciatoie da tastiera" entry lists them.
    static QString testoScorciatoie();
    // Shows the keys of `testoScorciatoie` in a table.
    void mostraScorciatoie();
    // Opens the guide installed with the program in the browser, or says where it went wrong.
    void apriGuida();
    // For tests: a smaller or faster simulation than the menu's.
    void impostaSimulazione(int destinatari, double ritmo);

Q_SIGNALS:
    void impostazioniRichieste();

private:
    QWidget* creaSidebar();
    void creaMenu();

    QAction* m_nuovo = nullptr;
    QAction* m_cerca = nullptr;

    Ambiente m_ambiente;
    Sezione m_sezione = Sezione::liste;
    QList<VoceSidebar*> m_voci;
    QVBoxLayout* m_dettaglio = nullptr;
    QWidget* m_schermata = nullptr;

    std::shared_ptr<SendEngine> m_motoreSimulazione;
    bool m_mostraSimulazione = false;
    QPointer<SendDashboardView> m_cruscotto;
    int m_destinatariSimulazione = 60;
    double m_ritmoSimulazione = 0.18;
};
