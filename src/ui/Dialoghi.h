#pragma once

#include <QColor>
#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

// The file panels and message boxes of the screens go through here, so that a test can answer them in the
// user's place. Every hook stays until it is given an empty function again.
namespace Dialoghi {

// Given the proposed file name, gives the chosen path, or an empty text for a cancelled panel.
using RispostaSalvataggio = std::function<QString(const QString& nomeProposto)>;
// Gives the chosen path, or an empty text for a cancelled panel.
using RispostaApertura = std::function<QString()>;
// Given the box's title and text, gives the index of the chosen button (as in `scelta`'s list).
using RispostaDomanda = std::function<int(const QString& titolo, const QString& testo)>;
// Gives the chosen paths, or an empty list for a cancelled panel.
using RispostaAperturaMultipla = std::function<QStringList()>;
// Given the starting colour, gives the chosen one, or an invalid colour for a cancelled picker.
using RispostaColore = std::function<QColor(const QColor& iniziale)>;
// Sees the title and text of an alert that a test has taken over.
using OsservaAvviso = std::function<void(const QString& titolo, const QString& testo)>;

void rispondiSalvataggio(RispostaSalvataggio risposta);
void rispondiApertura(RispostaApertura risposta);
void rispondiDomanda(RispostaDomanda risposta);
void osservaAvvisi(OsservaAvviso osserva);
void rispondiAperturaMultipla(RispostaAperturaMultipla risposta);
void rispondiColore(RispostaColore risposta);

// A save panel for one kind of file; empty when the user cancels.
QString fileDaSalvare(QWidget* genitore, const QString& titolo, const QString& nomeProposto, const QString& filtro);
// An open panel for one kind of file; empty when the user cancels.
QString fileDaAprire(QWidget* genitore, const QString& titolo, const QString& filtro);
// An open panel for several files of any kind; empty when the user cancels.
QStringList fileMultipliDaAprire(QWidget* genitore, const QString& titolo);
// A colour picker; an invalid colour when the user cancels.
QColor colore(QWidget* genitore, const QString& titolo, const QColor& iniziale);
// A window-modal question with the given buttons, the first being the default; gives the index of the
// button chosen, or -1 when the box was closed without a choice.
int scelta(QWidget* genitore, const QString& titolo, const QString& testo, const QStringList& pulsanti);
// A window-modal alert with one "OK" button.
void avviso(QWidget* genitore, const QString& titolo, const QString& testo);

} // namespace Dialoghi
