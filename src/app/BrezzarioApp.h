#pragma once

#include "app/SettingsWindow.h"
#include "ui/Ambiente.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class MainWindow;
class SettingsStore;
class Store;

// The application: the one settings store and the one store of the process, made in that order, and
// the two windows that show them.
class BrezzarioApp : public QObject {
    Q_OBJECT
public:
    using ApriArchivio = std::function<std::unique_ptr<Store>()>;

    // Settings of the process that hold before any window: icons, closing, the name in title bars.
    static void preparaApplicazione();

    // The store comes from `apriArchivio`, which by default opens the user's file or falls back to one
    // in memory.
    explicit BrezzarioApp(ApriArchivio apriArchivio = {});
    ~BrezzarioApp() override;

    SettingsStore& settings() { return *m_settings; }
    Store& store() { return *m_store; }
    MainWindow& finestraPrincipale() { return *m_principale; }
    SettingsWindow* finestraImpostazioni() const { return m_impostazioni; }

    void mostraImpostazioni();

private:
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<Store> m_store;
    std::unique_ptr<MainWindow> m_principale;
    QPointer<SettingsWindow> m_impostazioni;
};
