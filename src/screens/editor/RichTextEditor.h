#pragma once

#include "ui/Risorse.h"

#include "records/RecordId.h"

#include <QJsonValue>
#include <QObject>
#include <QPointer>
#include <QWebEngineView>

#include <functional>

class EditorController;
class QWebChannel;

// Receives what the page posts. Its only callable method is `post`, and it reads nothing but the
// message's "type", "html" and "gen": nothing the page sends can run code here.
class EditorCoordinator : public QObject {
    Q_OBJECT
public:
    EditorCoordinator(EditorController* controller, QObject* genitore);
    Q_INVOKABLE void post(const QJsonValue& corpo);

    QPointer<EditorController> controller;
    std::function<void(const QString& html, RecordId proprietario)> onChange;
    QString pendingInitialHTML;
    RecordId proprietarioIniziale = 0;
};

// The web view that shows the editor's page and hears its messages through one QWebChannel object.
class RichTextEditor : public QWebEngineView {
    Q_OBJECT
public:
    // The new HTML, and the template whose content the page was showing when it was edited.
    using OnChange = std::function<void(const QString& html, RecordId proprietario)>;

    using Coordinator = EditorCoordinator;

    // The page is looked up in `radice` + "/Editor", then in `radice` itself; with neither the editor
    // stays blank. The program's own files are the usual root.
    RichTextEditor(EditorController* controller, const QString& initialHTML, RecordId proprietario,
                   QWidget* genitore = nullptr, const QString& radice = Risorse::radice());

    // The page file under the root, or an empty text when there is none.
    static QString percorsoPagina(const QString& radice);

    void setOnChange(OnChange onChange);
    Coordinator* coordinator() const { return m_coordinator; }

private:
    Coordinator* m_coordinator;
    QWebChannel* m_canale;
};
