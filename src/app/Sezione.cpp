#include "app/Sezione.h"

#include <QCoreApplication>

const QList<Sezione>& tutteLeSezioni() {
    static const QList<Sezione> sezioni = {Sezione::liste,   Sezione::modelli, Sezione::campagne,
                                           Sezione::storico, Sezione::esclusi, Sezione::impostazioni};
    return sezioni;
}

QString rawValue(Sezione sezione) {
    switch (sezione) {
    case Sezione::liste:
        return QStringLiteral("liste");
    case Sezione::modelli:
        return QStringLiteral("modelli");
    case Sezione::campagne:
        return QStringLiteral("campagne");
    case Sezione::storico:
        return QStringLiteral("storico");
    case Sezione::esclusi:
        return QStringLiteral("esclusi");
    case Sezione::impostazioni:
        return QStringLiteral("impostazioni");
    }
    return {};
}

QString titolo(Sezione sezione) {
    switch (sezione) {
    case Sezione::liste:
        return QCoreApplication::translate("Sezione", "Liste CSV");
    case Sezione::modelli:
        return QCoreApplication::translate("Sezione", "Modelli");
    case Sezione::campagne:
        return QCoreApplication::translate("Sezione", "Campagne");
    case Sezione::storico:
        return QCoreApplication::translate("Sezione", "Storico invii");
    case Sezione::esclusi:
        return QCoreApplication::translate("Sezione", "Esclusi");
    case Sezione::impostazioni:
        return QCoreApplication::translate("Sezione", "Impostazioni");
    }
    return {};
}

QString simbolo(Sezione sezione) {
    switch (sezione) {
    case Sezione::liste:
        return QStringLiteral("tablecells");
    case Sezione::modelli:
        return QStringLiteral("doc.richtext");
    case Sezione::campagne:
        return QStringLiteral("paperplane.fill");
    case Sezione::storico:
        return QStringLiteral("clock.arrow.circlepath");
    case Sezione::esclusi:
        return QStringLiteral("nosign");
    case Sezione::impostazioni:
        return QStringLiteral("gearshape.fill");
    }
    return {};
}
