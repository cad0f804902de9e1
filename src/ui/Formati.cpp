#include "ui/Formati.h"

#include <QCoreApplication>
#include <QLocale>

#include <cmath>

QString durataLeggibile(double secondi) {
    // Halves go away from zero: 59.5 s reads as a minute.
    const double arrotondati = std::round(secondi);
    if (!(arrotondati >= 1))
        return QStringLiteral("—");
    const long long totale = static_cast<long long>(arrotondati);
    if (totale >= 3600)
        return formato(QCoreApplication::translate("durataLeggibile", "%d h %02d m"), int(totale / 3600),
                       int(totale % 3600 / 60));
    if (totale >= 60)
        return formato(QCoreApplication::translate("durataLeggibile", "%d m %02d s"), int(totale / 60),
                       int(totale % 60));
    return QString::number(totale) + QStringLiteral(" s");
}

QString dataOraBreve(const QDateTime& istante) {
    const QDateTime locale = istante.toLocalTime();
    const QLocale lingua;
    return lingua.toString(locale.date(), QLocale::ShortFormat) + QStringLiteral(" ") +
           lingua.toString(locale.time(), QLocale::ShortFormat);
}
