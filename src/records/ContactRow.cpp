#include "records/ContactRow.h"

#include "records/EmailSyntax.h"

void ContactRow::registraEsito(SendStatus status, const QString& campagna, const QString& oggetto,
                               const QString& dettaglio, const QDateTime& data) {
    switch (status) {
    case SendStatus::sent:
        ++inviateCount;
        if (!primoInvio)
            primoInvio = data;
        ultimoInvio = data;
        break;
    case SendStatus::failed:
        // The last attempt, not the last success.
        ++erroriCount;
        ultimoInvio = data;
        break;
    case SendStatus::skipped:
        ++saltateCount;
        break;
    case SendStatus::test:
        return;
    }
    ultimoEsitoRaw = rawValue(status);
    ultimaCampagna = campagna;
    ultimoOggetto = oggetto;
    ultimoDettaglio = dettaglio;
}

QStringList ContactRow::valoriStorico() const {
    const auto esito = ultimoEsito();
    return {
        QString::number(inviateCount),
        QString::number(erroriCount),
        QString::number(saltateCount),
        primoInvio ? isoDate(*primoInvio) : QString(),
        ultimoInvio ? isoDate(*ultimoInvio) : QString(),
        esito ? label(*esito) : QString(),
        ultimaCampagna,
        ultimoOggetto,
        ultimoDettaglio,
    };
}

const QStringList& colonneStorico() {
    static const QStringList columns{
        QStringLiteral("lumacco_inviate"),          QStringLiteral("lumacco_errori"),
        QStringLiteral("lumacco_saltate"),          QStringLiteral("lumacco_primo_invio"),
        QStringLiteral("lumacco_ultimo_invio"),     QStringLiteral("lumacco_ultimo_esito"),
        QStringLiteral("lumacco_ultima_campagna"),  QStringLiteral("lumacco_ultimo_oggetto"),
        QStringLiteral("lumacco_ultimo_dettaglio"),
    };
    return columns;
}

QString isoDate(const QDateTime& date) {
    return date.toUTC().toString(Qt::ISODate);
}

int validRowCount(const QList<ContactRow>& rows) {
    int count = 0;
    for (const ContactRow& row : rows)
        if (!row.isExcluded && isValidEmailSyntax(row.email))
            ++count;
    return count;
}
