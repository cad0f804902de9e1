#include "app/BrezzarioApp.h"

#include "app/MainWindow.h"
#include "app/SettingsWindow.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"
#include "ui/Symbols.h"

#include <QApplication>

void BrezzarioApp::preparaApplicazione() {
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Brezzario"));
    // Closing the last window ends the process at once: a run in progress stops where it is.
    QGuiApplication::setQuitOnLastWindowClosed(true);
    Symbols::preparaTemaIcone();
}

BrezzarioApp::BrezzarioApp(ApriArchivio apriArchivio) : m_settings(std::make_unique<SettingsStore>()) {
    m_store = apriArchivio ? apriArchivio() : Store::openDefault();
    m_principale = std::make_unique<MainWindow>(Ambiente{*m_settings, *m_store});
    connect(m_principale.get(), &MainWindow::impostazioniRichieste, this, &BrezzarioApp::mostraImpostazioni);
}

BrezzarioApp::~BrezzarioApp() {
    delete m_impostazioni;
}

void BrezzarioApp::mostraImpostazioni() {
    if (!m_impostazioni) {
        m_impostazioni = new SettingsWindow(Ambiente{*m_settings, *m_store});
        m_impostazioni->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_impostazioni->show();
    m_impostazioni->raise();
    m_impostazioni->activateWindow();
}
