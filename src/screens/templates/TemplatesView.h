#pragma once

#include "ui/Risorse.h"

#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "records/Store.h"
#include "records/TemplateAttachment.h"

#include "ui/Comandi.h"

#include <QWidget>

#include <optional>

struct Ambiente;
class EditorController;
class ModelliListModel;
class PreviewSheet;
class QListView;
class QStackedWidget;
class Rinfresco;
class TemplateEditorPane;

// The section "modelli": the list of templates and, for the selected one, its editor. Everything the
// user changes is saved at once.
class TemplatesView : public QWidget, public ConNuovo {
    Q_OBJECT
public:
    // `radiceRisorse` is where the editor's page is looked up (tests point it elsewhere).
    explicit TemplatesView(Ambiente& ambiente, QWidget* genitore = nullptr,
                           const QString& radiceRisorse = Risorse::radice());
    ~TemplatesView() override;

    RecordId selezione() const { return m_selezione; }
    RecordId listaRiferimento() const { return m_listaRiferimento; }
    EditorController* editor() const { return m_editor; }
    TemplateEditorPane* pane() const { return m_pane; }
    QListView* elenco() const { return m_elenco; }
    PreviewSheet* anteprima() const { return m_anteprima; }
    Rinfresco* rinfresco() const { return m_rinfresco; }

    void seleziona(RecordId modello);
    void setListaRiferimento(RecordId lista);
    void nuovoModello();
    void nuovo() override { nuovoModello(); }
    void duplica(RecordId modello);
    void elimina(RecordId modello);
    void aggiungiAllegati();
    void mostraAnteprima();

protected:
    void showEvent(QShowEvent* evento) override;

private:
    QWidget* creaColonnaElenco();
    QWidget* creaSegnaposto();
    void aggiorna(Store::Entities cosa, bool nuovaSelezione = false);
    void aggiornaCampiEditor();
    void mostraMenu(const QPoint& punto);
    std::optional<ContactList> riferimento() const;

    Ambiente& m_ambiente;
    QString m_radiceRisorse;
    EditorController* m_editor;
    ModelliListModel* m_modelli;
    Rinfresco* m_rinfresco;
    RecordId m_selezione = 0;
    RecordId m_listaRiferimento = 0;
    QList<ContactList> m_liste;
    QList<TemplateAttachment> m_allegati; // of the selection; read again only when attachments change
    bool m_apparsa = false;

    QListView* m_elenco = nullptr;
    QStackedWidget* m_dettaglio = nullptr;
    QWidget* m_segnaposto = nullptr;
    TemplateEditorPane* m_pane = nullptr;
    PreviewSheet* m_anteprima = nullptr;
};
