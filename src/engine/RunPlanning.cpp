#include "engine/RunPlanning.h"

#include "records/Casuale.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"

namespace RunPlanning {

QString rawValue(SkipReason reason) {
    switch (reason) {
    case SkipReason::invalidEmail:
        return QStringLiteral("indirizzo non valido");
    case SkipReason::duplicateInList:
        return QStringLiteral("duplicato nella lista");
    case SkipReason::alreadySent:
        return QStringLiteral("già inviata in questa campagna");
    case SkipReason::suppressed:
        return QStringLiteral("in lista esclusi");
    case SkipReason::excludedRow:
        return QStringLiteral("riga esclusa manualmente");
    case SkipReason::overDailyLimit:
        return QStringLiteral("oltre il limite giornaliero impostato");
    case SkipReason::dominioSenzaPosta:
        return QStringLiteral("dominio senza server di posta");
    }
    return {};
}

Plan plan(const Campaign& campaign, const std::optional<ContactList>& list, const QSet<QString>& suppressed,
          const Store& store) {
    Plan result;
    if (!list)
        return result;
    const QSet<QString> delivered = campaign.skipDuplicates ? store.sentEmails(campaign.id) : QSet<QString>();
    QSet<QString> seen;
    const QList<Store::RigaDaPianificare> rows = store.righeDaPianificare(list->id);
    result.recipients.reserve(rows.size());
    seen.reserve(rows.size());
    for (const Store::RigaDaPianificare& row : rows) {
        const QString email = Text::normalizedAddress(row.email);
        std::optional<SkipReason> reason;
        if (row.isExcluded)
            reason = SkipReason::excludedRow;
        else if (!isValidEmailSyntax(email))
            reason = SkipReason::invalidEmail;
        else if (seen.contains(email))
            reason = SkipReason::duplicateInList;
        else if (suppressed.contains(email))
            reason = SkipReason::suppressed;
        else if (delivered.contains(email))
            reason = SkipReason::alreadySent;
        if (reason) {
            const bool vuoto = *reason == SkipReason::invalidEmail && email.isEmpty();
            result.skips.append({vuoto ? QStringLiteral("(vuoto)") : email, *reason});
            continue;
        }
        // Only an accepted row enters the seen set, so an excluded or suppressed row shadows nothing.
        seen.insert(email);
        result.recipients.append({uuidCasuale(), email, row.id, {}});
    }
    return result;
}

void caricaValori(const Store& store, RecordId listId, QList<Destinatario>& recipients) {
    QList<RecordId> ids;
    ids.reserve(recipients.size());
    for (const Destinatario& destinatario : std::as_const(recipients))
        ids.append(destinatario.rowId);
    QList<QByteArray> valori = store.valoriCodificati(listId, ids);
    for (qsizetype i = 0; i < recipients.size(); ++i)
        recipients[i].valoriCodificati = std::move(valori[i]);
}

std::optional<ContactList> listaValida(const Campaign& campaign, const Store& store) {
    if (campaign.listId <= 0)
        return std::nullopt;
    return store.find<ContactList>(campaign.listId);
}

std::optional<MessageTemplate> modelloValido(const Campaign& campaign, const Store& store) {
    if (campaign.templateId <= 0)
        return std::nullopt;
    return store.find<MessageTemplate>(campaign.templateId);
}

int inviateUltime24Ore(const Store& store, const QString& servizio, const QDateTime& now) {
    return store.inviateUltime24Ore(servizio, now);
}

} // namespace RunPlanning
