#include "ui/PresentazioneEsito.h"

#include "ui/Symbols.h"

#include <QMap>

namespace PresentazioneEsito {

QString simbolo(SendStatus esito) {
    switch (esito) {
    case SendStatus::sent:
        return QStringLiteral("checkmark.circle.fill");
    case SendStatus::failed:
        return QStringLiteral("xmark.octagon.fill");
    case SendStatus::skipped:
        return QStringLiteral("minus.circle");
    case SendStatus::test:
        return QStringLiteral("testtube.2");
    }
    return {};
}

Colore colore(SendStatus esito) {
    switch (esito) {
    case SendStatus::sent:
        return Colore::green;
    case SendStatus::failed:
        return Colore::red;
    case SendStatus::skipped:
        return Colore::secondary;
    case SendStatus::test:
        return Colore::blue;
    }
    return Colore::primary;
}

QIcon icona(SendStatus esito) {
    // Main thread only, as every widget.
    static QMap<SendStatus, QIcon> fatte;
    auto trovata = fatte.constFind(esito);
    if (trovata == fatte.constEnd())
        trovata = fatte.insert(esito, Symbols::iconaColorata(simbolo(esito), Palette::colore(colore(esito))));
    return *trovata;
}

} // namespace PresentazioneEsito
