#include "screens/editor/RichTextEditor.h"

#include "screens/editor/EditorController.h"

#include <QFile>
#include <QJsonObject>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineSettings>

namespace {

// The editor's page may load its own resources but never go anywhere else: a dropped file, a link
// followed with a modifier or a script that changes location are refused.
class PaginaEditor : public QWebEnginePage {
public:
    PaginaEditor(const QUrl& indirizzo, QObject* genitore) : QWebEnginePage(genitore), m_indirizzo(indirizzo) {}

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType tipo, bool principale) override {
        Q_UNUSED(tipo);
        if (!principale)
            return true;
        return url.scheme() == m_indirizzo.scheme() && url.path() == m_indirizzo.path();
    }
    QWebEnginePage* createWindow(WebWindowType tipo) override {
        Q_UNUSED(tipo);
        return nullptr;
    }

private:
    QUrl m_indirizzo;
};

} // namespace

EditorCoordinator::EditorCoordinator(EditorController* controller, QObject* genitore)
    : QObject(genitore), controller(controller) {}

void EditorCoordinator::post(const QJsonValue& corpo) {
    if (!corpo.isObject())
        return;
    const QJsonObject messaggio = corpo.toObject();
    const QJsonValue tipo = messaggio.value(QStringLiteral("type"));
    if (!tipo.isString())
        return;
    if (tipo.toString() == QLatin1String("ready")) {
        if (controller)
            controller->pronto(pendingInitialHTML, proprietarioIniziale);
        return;
    }
    if (tipo.toString() != QLatin1String("change"))
        return;
    const QJsonValue html = messaggio.value(QStringLiteral("html"));
    if (!html.isString() || !onChange || !controller)
        return;
    // A change tells which content it was made in; one that no longer has a template is dropped.
    const auto proprietario = controller->proprietarioDi(messaggio.value(QStringLiteral("gen")).toInteger(-1));
    if (proprietario && *proprietario != 0)
        onChange(html.toString(), *proprietario);
}

RichTextEditor::RichTextEditor(EditorController* controller, const QString& initialHTML, RecordId proprietario,
                               QWidget* genitore, const QString& radice)
    : QWebEngineView(genitore), m_coordinator(new Coordinator(controller, this)), m_canale(new QWebChannel(this)) {
    setObjectName(QStringLiteral("richTextEditor"));
    m_coordinator->pendingInitialHTML = initialHTML;
    m_coordinator->proprietarioIniziale = proprietario;
    m_canale->registerObject(QStringLiteral("editor"), m_coordinator);

    const QString percorso = percorsoPagina(radice);
    const QUrl indirizzo = percorso.isEmpty() ? QUrl() : QUrl::fromLocalFile(percorso);
    auto* pagina = new PaginaEditor(indirizzo, this);
    pagina->setWebChannel(m_canale);
    // The page paints its own white sheet; a transparent view shows nothing on some X servers.
    pagina->setBackgroundColor(Qt::white);
    pagina->settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    pagina->settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    setPage(pagina);
    if (controller)
        controller->setWebView(this);
    if (!percorso.isEmpty())
        load(indirizzo);
}

QString RichTextEditor::percorsoPagina(const QString& radice) {
    for (const QString& candidato :
         {radice + QStringLiteral("/Editor/editor.html"), radice + QStringLiteral("/editor.html")})
        if (QFile::exists(candidato))
            return candidato;
    return {};
}

void RichTextEditor::setOnChange(OnChange onChange) {
    m_coordinator->onChange = std::move(onChange);
}
