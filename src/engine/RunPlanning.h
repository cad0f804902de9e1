#pragma once

#include "records/Store.h"
#include "settings/SMTPConfig.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>

#include <optional>

// What a run would do before it connects: which rows become recipients, in which order, and which are
// left out and why. The campaigns screen calls these too, to show beforehand what a run would do.
namespace RunPlanning {

// The raw value is the text that is shown, logged and stored.
enum class SkipReason {
    invalidEmail,
    duplicateInList,
    alreadySent,
    suppressed,
    excludedRow,
    overDailyLimit, // never planned: addresses cut by the quota are only counted
    dominioSenzaPosta,
};
QString rawValue(SkipReason reason);

struct Destinatario {
    QUuid id;
    QString email; // normalised, the domain in its ASCII form: as it goes into RCPT TO and To
    RecordId rowId = 0;
    // The row's values as they were when the run was prepared, kept encoded: a run of 100,000 recipients
    // holds each as a few hundred bytes rather than a hash of strings. Filled by `caricaValori`.
    QByteArray valoriCodificati;

    RowValues values() const { return Store::decodeRowValues(valoriCodificati); }
};

struct Skip {
    QString email;
    SkipReason reason;
    bool operator==(const Skip&) const = default;
};

struct Plan {
    QList<Destinatario> recipients;
    QList<Skip> skips;
};

// The planning of one list, fed its rows a page at a time in store order (a run lets the event loop turn
// between pages); `plan` feeds it all at once.
class Pianificatore {
public:
    Pianificatore(const Campaign& campaign, const QSet<QString>& suppressed, const Store& store);
    void aggiungi(const QList<Store::RigaDaPianificare>& rows);
    Plan risultato() && { return std::move(m_plan); }

private:
    QSet<QString> m_suppressed; // shared with the caller's set when every address is already ASCII
    QSet<QString> m_delivered;
    QSet<QString> m_seen;
    Plan m_plan;
};

// One pass over the list's rows in store order. The delivered set looks at this campaign's logs only. It reads
// addresses and exclusions only, so a screen can plan a large list at every refresh; a run then loads the
// recipients' values with `caricaValori`.
// Addresses are compared in the form they go on the wire, so "a@müller.de" and "a@xn--mller-kva.de" are
// one recipient, and an exclusion stored in either form holds for both.
Plan plan(const Campaign& campaign, const std::optional<ContactList>& list, const QSet<QString>& suppressed,
          const Store& store);
// Loads the values of recipients [da, a) (all of them by default); their rows come in store order.
void caricaValori(const Store& store, RecordId listId, QList<Destinatario>& recipients, qsizetype da = 0,
                  qsizetype a = -1);

// The campaign's list and template if they still exist: a reference left by a deleted record reads as absent.
std::optional<ContactList> listaValida(const Campaign& campaign, const Store& store);
std::optional<MessageTemplate> modelloValido(const Campaign& campaign, const Store& store);

// The set of normalised addresses with every domain in its ASCII form; the same set when all are ASCII.
QSet<QString> formaInvio(const QSet<QString>& addresses);

// The sender, reply and unsubscribe addresses of a configuration, checked with the address test before a
// run or a test send connects: the text that names the first bad one, or nothing. When they pass, the
// sender and reply addresses are trimmed and their domains in ASCII form, as MAIL FROM and the headers
// carry them.
std::optional<QString> indirizziNonValidi(SMTPConfig& config);

// Delivered messages of one send profile in the rolling last 24 hours.
int inviateUltime24Ore(const Store& store, const QString& servizio,
                       const QDateTime& now = QDateTime::currentDateTimeUtc());

} // namespace RunPlanning
