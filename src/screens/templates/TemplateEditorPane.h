#pragma once

#include "ui/Risorse.h"

#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "records/TemplateAttachment.h"

#include <QWidget>

#include <optional>

class EditorController;
class EditorToolbar;
class PannelloLaterale;
class QLineEdit;
class QToolButton;
class QVBoxLayout;
class RichTextEditor;

// The selected template: its name and subject, the rich-text body, and the side panel. Every change is
// saved at once through the signals; the body's content changes only through the controller.
class TemplateEditorPane : public QWidget {
    Q_OBJECT
public:
    TemplateEditorPane(EditorController* editor, const QString& initialHTML, RecordId proprietario,
                       QWidget* genitore = nullptr, const QString& radiceRisorse = Risorse::radice());

    // Shows the template; `nuovaSelezione` also replaces texts the user may be typing in.
    void mostra(const MessageTemplate& modello, const std::optional<ContactList>& riferimento,
                const QList<ContactList>& liste, const QList<TemplateAttachment>& allegati, bool nuovaSelezione);

    RichTextEditor* editorView() const { return m_vista; }
    PannelloLaterale* pannello() const { return m_pannello; }
    QLineEdit* campoNome() const { return m_nome; }
    QLineEdit* campoOggetto() const { return m_oggetto; }

Q_SIGNALS:
    void intestazioneCambiata(const QString& nome, const QString& oggetto);
    void corpoCambiato(RecordId modello, const QString& html);

private:
    QWidget* creaIntestazione();
    void aggiornaMenuCampi(const QStringList& campi);

    EditorController* m_editor;
    QLineEdit* m_nome = nullptr;
    QLineEdit* m_oggetto = nullptr;
    QToolButton* m_campo = nullptr;
    QStringList m_campiMenu;
    bool m_menuPronto = false;
    EditorToolbar* m_toolbar = nullptr;
    RichTextEditor* m_vista = nullptr;
    PannelloLaterale* m_pannello = nullptr;
};
