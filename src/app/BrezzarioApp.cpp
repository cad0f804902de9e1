#include "app/BrezzarioApp.h"

#include "app/MainWindow.h"
#include "app/SettingsWindow.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"
#include "ui/Risorse.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace {

// The keys' names as an Italian keyboard prints them, which Qt's own Italian translation leaves in English.
class NomiDeiTasti : public QTranslator {
public:
    using QTranslator::QTranslator;
    bool isEmpty() const override { return false; }
    QString translate(const char* contesto, const char* testo, const char*, int) const override {
        if (qstrcmp(contesto, "QShortcut") != 0)
            return {};
        if (qstrcmp(testo, "Shift") == 0)
            return QStringLiteral("Maiusc");
        if (qstrcmp(testo, "Del") == 0)
            return QStringLiteral("Canc");
        return {};
    }
};

} // namespace

void BrezzarioApp::preparaApplicazione() {
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Brezzario"));
    // Closing the last window ends the process at once: a run in progress stops where it is.
    QGuiApplication::setQuitOnLastWindowClosed(true);
    Symbols::preparaTemaIcone();
    // Dates and sizes follow the user's locale; a session with none (the "C" locale of a bare system) gets
    // Italian ones, the language of the whole interface, rather than English words among Italian texts.
    if (QLocale::system().language() == QLocale::C)
        QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    // Qt's own words, the file panels' buttons and the keys' names in the menus among them, in the language of
    // the rest of the interface whatever the system's.
    static QTranslator* traduttore = nullptr;
    if (!traduttore) {
        traduttore = new QTranslator(qApp);
        if (traduttore->load(QLocale(QLocale::Italian, QLocale::Italy), QStringLiteral("qtbase"), QStringLiteral("_"),
                             QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(traduttore);
        QCoreApplication::installTranslator(new NomiDeiTasti(qApp));
    }
    // The desktop matches the windows to the menu entry, and its icon, by this name.
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velarmo.Brezzario"));
    const QString disegno = Risorse::percorso(QStringLiteral("Media/brezzario.svg"));
    QGuiApplication::setWindowIcon(
        QIcon::fromTheme(QStringLiteral("com.velarmo.Brezzario"), disegno.isEmpty() ? QIcon() : QIcon(disegno)));
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
