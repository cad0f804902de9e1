#pragma once

#include "screens/suppressions/SuppressionModel.h"

#include <QWidget>

class QLabel;
class QPushButton;

// What one excluded address is: its category in plain words, what the server answered, whether taking it
// back is wise, and the button that takes it back.
class DettaglioEsclusione : public QWidget {
    Q_OBJECT
public:
    explicit DettaglioEsclusione(QWidget* genitore = nullptr);
    void mostra(const SuppressionModel::Voce& voce);

Q_SIGNALS:
    void togliRichiesto(RecordId id);

private:
    QLabel* m_simbolo;
    QLabel* m_email;
    QLabel* m_etichetta;
    QLabel* m_spiegazione;
    QLabel* m_titoloRisposta;
    QLabel* m_risposta;
    QLabel* m_avviso;
    QPushButton* m_togli;
    RecordId m_id = 0;
};
