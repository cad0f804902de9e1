#pragma once

#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "records/TemplateAttachment.h"

#include <QList>
#include <QStringList>

#include <optional>

class Store;

// What the templates screen reads and does with the store, without a widget.
namespace TemplatesModel {

inline constexpr qint64 sogliaAllegati = 10000000;

// Newest change first.
QList<MessageTemplate> modelli(const Store& store);
// Newest import first.
QList<ContactList> liste(const Store& store);

// Creates and saves a new template with a greeting; gives its identity.
RecordId nuovoModello(Store& store);
// A copy with " (copia)" after the name and copies of the attachments; gives its identity, or 0.
RecordId duplica(Store& store, RecordId sorgente);
// Deletes the template and its attachments, at once.
void elimina(Store& store, RecordId modello);

// The body's new HTML from the editor; an unchanged text changes nothing, not even the date.
bool applicaCorpo(Store& store, RecordId modello, const QString& html);
// Name and subject are saved as typed, without moving the template up the list.
void applicaIntestazione(Store& store, RecordId modello, const QString& nome, const QString& oggetto);

QStringList campiDisponibili(const std::optional<ContactList>& lista);
// Fields of subject and body that the reference list has no column for; empty without a list.
QStringList campiMancanti(const MessageTemplate& modello, const std::optional<ContactList>& lista);

qint64 totaleAllegati(const QList<TemplateAttachment>& allegati);
bool allegatiOltreSoglia(const QList<TemplateAttachment>& allegati);
// Reads each file and stores it as an attachment; a file that can't be read is passed over. Gives how
// many were added.
int aggiungiAllegati(Store& store, RecordId modello, const QStringList& percorsi);
void eliminaAllegato(Store& store, RecordId allegato);

QString nomeMostrato(const MessageTemplate& modello);
QString oggettoMostrato(const MessageTemplate& modello);

} // namespace TemplatesModel
