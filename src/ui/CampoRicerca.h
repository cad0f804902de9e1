#pragma once

#include <QString>

class QLineEdit;
class QWidget;

// The search field of the screens' bars: a magnifying glass in front, a button that clears it.
QLineEdit* campoRicerca(const QString& suggerimento, const char* nome, int larghezzaMinima, QWidget* genitore);
