#include "records/CSVText.h"

#include <QSaveFile>

namespace CSVText {

QString campo(const QString& valore) {
    if (!valore.contains(u',') && !valore.contains(u'"') && !valore.contains(u'\n'))
        return valore;
    QString citato = valore;
    citato.replace(QStringLiteral("\""), QStringLiteral("\"\""));
    return u'"' + citato + u'"';
}

QString riga(const QStringList& campi) {
    QStringList citati;
    citati.reserve(campi.size());
    for (const QString& valore : campi)
        citati.append(campo(valore));
    return citati.join(u',') + u'\n';
}

QString data(const QDateTime& istante) {
    const QDateTime utc = istante.toUTC();
    return utc.addMSecs(-utc.time().msec()).toString(Qt::ISODate);
}

bool scrivi(const QString& percorso, const QString& testo) {
    QSaveFile file(percorso);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray byte = testo.toUtf8();
    if (file.write(byte) != byte.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

} // namespace CSVText
