#pragma once

#include "records/ContactList.h"
#include "records/ContactRow.h"
#include "records/MessageTemplate.h"

#include <QDialog>

#include <memory>
#include <optional>

class HTMLPreview;
class NotaView;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QStringListModel;
class Rinfresco;
class SendEngine;
class SettingsStore;
class Store;

// The preview of a template on a real row of a list, as it goes out, with a test send to one address.
// It starts anew each time it opens: row, address and result are not kept.
class PreviewSheet : public QDialog {
    Q_OBJECT
public:
    PreviewSheet(MessageTemplate modello, std::optional<ContactList> lista, SettingsStore& settings, Store& store,
                 QWidget* genitore = nullptr);
    ~PreviewSheet() override;

    // The engine of the test send; tests give it a session that trusts their CA.
    const std::shared_ptr<SendEngine>& motore() const { return m_motore; }

    int indiceRiga() const { return m_indiceRiga; }
    const QList<ContactRow>& righe() const { return m_righe; }
    RowValues valoriCorrenti() const;
    QString corpoRenderizzato() const;
    const std::optional<QString>& esito() const { return m_esito; }
    bool invioInCorso() const { return m_invioInCorso; }

    void setIndiceRiga(int indice);
    void inviaProva();

protected:
    void showEvent(QShowEvent* evento) override;

private:
    QWidget* creaIntestazione();
    QWidget* creaProva();
    void rileggiRighe();
    void aggiorna();
    void aggiornaProva();
    void concludiProva(const QString& esito);

    MessageTemplate m_modello;
    std::optional<ContactList> m_lista;
    SettingsStore& m_settings;
    Store& m_store;
    std::shared_ptr<SendEngine> m_motore;
    QList<ContactRow> m_righe;
    int m_indiceRiga = 0;
    std::optional<QString> m_esito;
    bool m_invioInCorso = false;
    bool m_passwordChiesta = false;

    Rinfresco* m_rinfresco = nullptr;
    QCheckBox* m_sorgente = nullptr;
    NotaView* m_senzaRighe = nullptr;
    QWidget* m_sceltaRiga = nullptr;
    QComboBox* m_righeCombo = nullptr;
    QStringListModel* m_indirizzi = nullptr;
    QLabel* m_oggetto = nullptr;
    QStackedWidget* m_corpo = nullptr;
    HTMLPreview* m_anteprima = nullptr;
    QPlainTextEdit* m_testoSorgente = nullptr;
    QLineEdit* m_indirizzo = nullptr;
    QPushButton* m_invia = nullptr;
    QProgressBar* m_attesa = nullptr;
    QLabel* m_impostazioni = nullptr;
    QLabel* m_esitoTesto = nullptr;
};
