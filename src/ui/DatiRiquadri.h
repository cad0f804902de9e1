#pragma once

#include "ui/Palette.h"

#include <QString>

// What the tiles of any screen show: plain values that a screen's model derives and its view lays out.

struct Badge {
    QString testo;
    Colore colore = Colore::primary;
    QString simbolo;
    QString tooltip;
};

// A counter tile: symbol, number, label, on its colour at low opacity.
struct RiquadroDato {
    qint64 valore = 0;
    QString etichetta;
    QString icona;
    Colore colore = Colore::primary;
    bool mostrato = true;
};

// One figure of the row of figures.
struct DatoInline {
    QString titolo;
    QString valore;
    Colore colore = Colore::primary;
    bool mostrato = true;
};

// A figure with a caption under its value.
struct DatoTondo {
    QString titolo;
    QString valore;
    QString dettaglio;
    Colore colore = Colore::primary;
};
