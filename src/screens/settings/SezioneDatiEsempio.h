#pragma once

#include "ui/Modulo.h"

class QLabel;
class Store;

// The settings' section "Dati di esempio": three buttons that fill the store with invented data or take it
// away, and the result of the last one in green.
class SezioneDatiEsempio : public SezioneModulo {
    Q_OBJECT
public:
    SezioneDatiEsempio(Store& store, QWidget* genitore = nullptr);
    QString esitoEsempio() const;

private:
    void mostra(const QString& esito);

    Store& m_store;
    QLabel* m_esito;
};
