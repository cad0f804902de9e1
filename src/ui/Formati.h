#pragma once

#include <QDateTime>
#include <QString>

// The text of a duration: "—" under a second, then "45 s", "3 m 07 s", "2 h 05 m".
QString durataLeggibile(double secondi);

// printf-style formatting of a translated pattern, for the figures whose format is fixed ("%.1f s").
template <typename... Argomenti> QString formato(const QString& modello, Argomenti... argomenti) {
    return QString::asprintf(modello.toUtf8().constData(), argomenti...);
}

// A moment as the tables show it: short date and short time in the user's locale, in local time.
QString dataOraBreve(const QDateTime& istante);
