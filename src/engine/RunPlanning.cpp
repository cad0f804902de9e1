#include "engine/RunPlanning.h"

#include "records/Casuale.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"

#include <QCoreApplication>

#include <algorithm>

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

Pianificatore::Pianificatore(const Campaign& campaign, const QSet<QString>& suppressed, const Store& store)
    : m_suppressed(formaInvio(suppressed)),
      m_delivered(campaign.skipDuplicates ? formaInvio(store.sentEmails(campaign.id)) : QSet<QString>()) {}

void Pianificatore::aggiungi(const QList<Store::RigaDaPianificare>& rows) {
    m_plan.recipients.reserve(m_plan.recipients.size() + rows.size());
    for (const Store::RigaDaPianificare& row : rows) {
        const QString email = wireAddress(Text::normalizedAddress(row.email));
        std::optional<SkipReason> reason;
        if (row.isExcluded)
            reason = SkipReason::excludedRow;
        else if (!isValidEmailSyntax(email))
            reason = SkipReason::invalidEmail;
        else if (m_seen.contains(email))
            reason = SkipReason::duplicateInList;
        else if (m_suppressed.contains(email))
            reason = SkipReason::suppressed;
        else if (m_delivered.contains(email))
            reason = SkipReason::alreadySent;
        if (reason) {
            const bool vuoto = *reason == SkipReason::invalidEmail && email.isEmpty();
            m_plan.skips.append({vuoto ? QStringLiteral("(vuoto)") : email, *reason});
            continue;
        }
        // Only an accepted row enters the seen set, so an excluded or suppressed row shadows nothing.
        m_seen.insert(email);
        m_plan.recipients.append({uuidCasuale(), email, row.id, {}});
    }
}

Plan plan(const Campaign& campaign, const std::optional<ContactList>& list, const QSet<QString>& suppressed,
          const Store& store) {
    if (!list)
        return {};
    Pianificatore pianificatore(campaign, suppressed, store);
    pianificatore.aggiungi(store.righeDaPianificare(list->id));
    return std::move(pianificatore).risultato();
}

void caricaValori(const Store& store, RecordId listId, QList<Destinatario>& recipients, qsizetype da, qsizetype a) {
    if (a < 0 || a > recipients.size())
        a = recipients.size();
    QList<RecordId> ids;
    ids.reserve(a - da);
    for (qsizetype i = da; i < a; ++i)
        ids.append(recipients.at(i).rowId);
    QList<QByteArray> valori = store.valoriCodificati(listId, ids);
    for (qsizetype i = da; i < a; ++i)
        recipients[i].valoriCodificati = std::move(valori[i - da]);
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
