#include "engine/RunPlanning.h"

#include "records/EmailSyntax.h"
#include "records/Text.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <algorithm>

namespace RunPlanning {

namespace {
// A random (version 4) identity from the process's seeded generator: the system generator behind
// QUuid::createUuid costs a system call each, which a plan of 100,000 rows feels.
QUuid nuovoId() {
    quint64 bits[2];
    QRandomGenerator::global()->fillRange(bits);
    QByteArray bytes(reinterpret_cast<const char*>(bits), sizeof bits);
    bytes[6] = char((bytes[6] & 0x0F) | 0x40);
    bytes[8] = char((bytes[8] & 0x3F) | 0x80);
    return QUuid::fromRfc4122(bytes);
}
} // namespace

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
    const QSet<QString> delivered =
        campaign.skipDuplicates ? formaInvio(store.sentEmails(campaign.id)) : QSet<QString>();
    const QSet<QString> excluded = formaInvio(suppressed);
    QSet<QString> seen;
    const QList<Store::RigaDaPianificare> rows = store.righeDaPianificare(list->id);
    result.recipients.reserve(rows.size());
    seen.reserve(rows.size());
    for (const Store::RigaDaPianificare& row : rows) {
        const QString email = wireAddress(Text::normalizedAddress(row.email));
        std::optional<SkipReason> reason;
        if (row.isExcluded)
            reason = SkipReason::excludedRow;
        else if (!isValidEmailSyntax(email))
            reason = SkipReason::invalidEmail;
        else if (seen.contains(email))
            reason = SkipReason::duplicateInList;
        else if (excluded.contains(email))
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
        result.recipients.append({nuovoId(), email, row.id, {}});
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

QSet<QString> formaInvio(const QSet<QString>& addresses) {
    if (std::all_of(addresses.cbegin(), addresses.cend(),
                    [](const QString& address) { return Text::isAscii(address); }))
        return addresses;
    QSet<QString> converted;
    converted.reserve(addresses.size());
    for (const QString& address : addresses)
        converted.insert(wireAddress(address));
    return converted;
}

std::optional<QString> indirizziNonValidi(SMTPConfig& config) {
    if (!isValidEmailSyntax(config.fromEmail))
        return QCoreApplication::translate("SendEngine", "Indirizzo mittente non valido");
    if (!Text::isBlank(config.replyTo) && !isValidEmailSyntax(config.replyTo))
        return QCoreApplication::translate("SendEngine", "Indirizzo di risposta non valido");
    // The unsubscribe address only counts where the footer puts it in the message.
    if (config.piePaginaAttivo && !Text::isBlank(config.emailDisiscrizione) &&
        !isValidEmailSyntax(config.emailDisiscrizione))
        return QCoreApplication::translate("SendEngine", "Indirizzo per le cancellazioni non valido");
    config.fromEmail = wireAddress(Text::trimmedWhitespaceAndNewlines(config.fromEmail));
    config.replyTo = wireAddress(Text::trimmedWhitespaceAndNewlines(config.replyTo));
    return std::nullopt;
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
