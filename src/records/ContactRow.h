#pragma once

#include "records/RecordId.h"
#include "records/Statuses.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

using RowValues = QHash<QString, QString>;

// One recipient of a list, with delivery statistics of its own. The cell order comes from the list's
// columns; `values` is what the template renderer gets for this recipient.
struct ContactRow {
    RecordId id = 0;
    RecordId listId = 0;
    RowValues values;
    QString email; // as taken from the list's address column; normalised only where compared
    bool isExcluded = false;
    int inviateCount = 0;
    int erroriCount = 0;
    int saltateCount = 0;
    std::optional<QDateTime> primoInvio;  // first delivery; set once and never moved
    std::optional<QDateTime> ultimoInvio; // last attempt, delivered or failed
    QString ultimoEsitoRaw;
    QString ultimoDettaglio;
    QString ultimaCampagna;
    QString ultimoOggetto;

    ContactRow() = default;
    ContactRow(RowValues values, QString email) : values(std::move(values)), email(std::move(email)) {}

    std::optional<SendStatus> ultimoEsito() const { return sendStatusFromRaw(ultimoEsitoRaw); }

    // Applies one outcome to the counters and the last-outcome fields.
    void registraEsito(SendStatus status, const QString& campagna, const QString& oggetto, const QString& dettaglio,
                       const QDateTime& data);

    // The nine statistics, in the order of colonneStorico(), as a list export writes them.
    QStringList valoriStorico() const;
};

const QStringList& colonneStorico();

// ISO 8601 in UTC with whole seconds and the zone letter Z, as every CSV the program writes has it.
QString isoDate(const QDateTime& date);

int validRowCount(const QList<ContactRow>& rows);
