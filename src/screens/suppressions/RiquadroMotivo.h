#pragma once

#include "ui/Palette.h"

#include <QAbstractButton>

// One tile of the summary of excluded addresses: symbol, count and label in the category's colour. A
// click chooses the filter; the active tile is drawn filled.
struct DatiRiquadroMotivo {
    QString titolo;
    int quanti = 0;
    QString icona;
    Colore colore = Colore::primary;
    bool attivo = false;
};

class RiquadroMotivo : public QAbstractButton {
    Q_OBJECT
public:
    explicit RiquadroMotivo(QWidget* genitore = nullptr);
    void imposta(const DatiRiquadroMotivo& dati);
    const DatiRiquadroMotivo& dati() const { return m_dati; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* evento) override;

private:
    DatiRiquadroMotivo m_dati;
};
