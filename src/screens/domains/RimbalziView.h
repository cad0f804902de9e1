#pragma once

#include <QWidget>

#include <optional>

class NotaView;
class PulsanteAttesa;
class QComboBox;
class QLineEdit;
class Store;

// Downloads from Brevo the refusals that came after delivery and puts those addresses on the suppression
// list. The API key lives in the secret store and is written at each change of the field.
class RimbalziView : public QWidget {
    Q_OBJECT
public:
    explicit RimbalziView(Store& store, QWidget* genitore = nullptr);

    // Does nothing while a download runs or without a key.
    void scarica();

    QString chiaveAPI() const { return m_chiaveAPI; }
    int giorni() const { return m_giorni; }
    bool inCorso() const { return m_inCorso; }

private:
    void cambiaChiave(const QString& chiave);
    void concludi(std::optional<qsizetype> eventi, const QString& testo);
    void mostra();

    Store& m_store;
    QString m_chiaveAPI;
    bool m_inCorso = false;
    std::optional<QString> m_esito;
    bool m_esitoPositivo = false;
    int m_giorni = 30;

    QLineEdit* m_chiave;
    QComboBox* m_periodo;
    PulsanteAttesa* m_pulsante;
    NotaView* m_esitoVista;
};
