#pragma once

#include <QString>

class QWidget;

// The pane a screen shows with nothing selected: a large symbol, a title and a line of explanation, centred.
QWidget* creaSegnaposto(const QString& simbolo, const QString& titolo, const QString& testo, QWidget* genitore);
