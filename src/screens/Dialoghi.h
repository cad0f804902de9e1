#pragma once

#include <QString>

#include <functional>

class QWidget;

// The file panels of the screens go through here, so that a test can answer them in the user's place.
namespace Dialoghi {

// Given the proposed file name, gives the chosen path, or an empty text for a cancelled panel.
using RispostaSalvataggio = std::function<QString(const QString& nomeProposto)>;

// For tests only: answers every save panel until it is given an empty function again.
void rispondiSalvataggio(RispostaSalvataggio risposta);

// A save panel for one kind of file; empty when the user cancels.
QString fileDaSalvare(QWidget* genitore, const QString& titolo, const QString& nomeProposto, const QString& filtro);

} // namespace Dialoghi
