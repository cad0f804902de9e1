#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// CSV as the program writes it, for every file it exports: fields joined with a comma, a field holding a
// comma, a double quote or a line feed goes between double quotes with inner quotes doubled, every line
// (the header too) ends with a line feed, UTF-8 without a byte order mark.
namespace CSVText {

QString campo(const QString& valore);
QString riga(const QStringList& campi);
// UTC, whole seconds, zone letter Z: "2025-03-04T09:05:07Z".
QString data(const QDateTime& istante);
// Replaces the file at once or not at all. A failure is the caller's to ignore.
bool scrivi(const QString& percorso, const QString& testo);

} // namespace CSVText
