#include "records/StoreSchema.h"

namespace StoreSchema {

const QStringList& statements() {
    // Dates are milliseconds since the epoch, UTC. AUTOINCREMENT keeps identities from ever being reused:
    // a campaign whose list was deleted must never find a new list under the old identity.
    static const QStringList all{
        QStringLiteral("CREATE TABLE BrezzarioMeta (key TEXT PRIMARY KEY, value TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE ContactList (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, "
                       "importedAt INTEGER NOT NULL, sourceFileName TEXT NOT NULL, columns TEXT NOT NULL, "
                       "emailColumn TEXT NOT NULL, note TEXT NOT NULL, tag TEXT NOT NULL, "
                       "isArchived INTEGER NOT NULL)"),
        QStringLiteral("CREATE TABLE ContactRow (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                       "listId INTEGER REFERENCES ContactList(id) ON DELETE CASCADE, \"values\" TEXT NOT NULL, "
                       "email TEXT NOT NULL, isExcluded INTEGER NOT NULL, inviateCount INTEGER NOT NULL, "
                       "erroriCount INTEGER NOT NULL, saltateCount INTEGER NOT NULL, primoInvio INTEGER, "
                       "ultimoInvio INTEGER, ultimoEsitoRaw TEXT NOT NULL, ultimoDettaglio TEXT NOT NULL, "
                       "ultimaCampagna TEXT NOT NULL, ultimoOggetto TEXT NOT NULL)"),
        QStringLiteral("CREATE INDEX ContactRowByList ON ContactRow(listId)"),
        QStringLiteral("CREATE INDEX ContactRowByEmail ON ContactRow(email)"),
        QStringLiteral("CREATE TABLE MessageTemplate (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, "
                       "subject TEXT NOT NULL, html TEXT NOT NULL, plainOverride TEXT NOT NULL, "
                       "updatedAt INTEGER NOT NULL, note TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE TemplateAttachment (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                       "templateId INTEGER REFERENCES MessageTemplate(id) ON DELETE CASCADE, "
                       "filename TEXT NOT NULL, mimeType TEXT NOT NULL, data BLOB NOT NULL)"),
        QStringLiteral("CREATE INDEX TemplateAttachmentByTemplate ON TemplateAttachment(templateId)"),
        // templateId and listId are plain columns: a deleted list or template leaves a stale reference.
        QStringLiteral("CREATE TABLE Campaign (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, "
                       "createdAt INTEGER NOT NULL, statusRaw TEXT NOT NULL, fromName TEXT NOT NULL, "
                       "fromEmail TEXT NOT NULL, replyTo TEXT NOT NULL, snapshotSubject TEXT NOT NULL, "
                       "snapshotHTML TEXT NOT NULL, skipDuplicates INTEGER NOT NULL, templateId INTEGER, "
                       "listId INTEGER)"),
        QStringLiteral("CREATE TABLE SendLog (id INTEGER PRIMARY KEY AUTOINCREMENT, email TEXT NOT NULL, "
                       "subject TEXT NOT NULL, statusRaw TEXT NOT NULL, detail TEXT NOT NULL, "
                       "date INTEGER NOT NULL, servizio TEXT NOT NULL, "
                       "campaignId INTEGER REFERENCES Campaign(id) ON DELETE CASCADE)"),
        QStringLiteral("CREATE INDEX SendLogByDate ON SendLog(date)"),
        QStringLiteral("CREATE INDEX SendLogByCampaign ON SendLog(campaignId)"),
        QStringLiteral("CREATE INDEX SendLogByQuota ON SendLog(servizio, statusRaw, date)"),
        QStringLiteral("CREATE TABLE Suppression (id INTEGER PRIMARY KEY AUTOINCREMENT, email TEXT NOT NULL UNIQUE, "
                       "reason TEXT NOT NULL, createdAt INTEGER NOT NULL)"),
    };
    return all;
}

} // namespace StoreSchema
