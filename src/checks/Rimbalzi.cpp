#include "checks/Rimbalzi.h"

#include "records/Store.h"
#include "records/Text.h"

namespace Rimbalzi {

Conteggio applica(Store& store, const QList<BrevoAPI::Evento>& eventi, const QDateTime& adesso) {
    QSet<QString> esclusi = store.suppressedEmails();
    QHash<QString, QList<ContactRow>> righe = store.righePerEmail();
    Conteggio conteggio;
    for (const BrevoAPI::Evento& evento : eventi) {
        const QString email = Text::normalizedAddress(evento.email);
        // A stored reason, not an interface text: its words decide the category of the suppression.
        const QString dettaglio = evento.motivo.isEmpty() ? QStringLiteral("rimbalzo definitivo segnalato da Brevo")
                                                          : QStringLiteral("rimbalzo definitivo: ") + evento.motivo;
        const QDateTime data = evento.data.value_or(adesso);
        // The rows are updated in the map too, so that a second event for the same address counts again.
        const auto trovate = righe.find(email);
        if (trovate != righe.end())
            for (ContactRow& riga : *trovate) {
                riga.registraEsito(SendStatus::failed, riga.ultimaCampagna, riga.ultimoOggetto, dettaglio, data);
                store.updateRowOutcome(riga);
            }
        if (esclusi.contains(email)) {
            ++conteggio.giaPresenti;
            continue;
        }
        Suppression esclusione(email, dettaglio);
        store.insert(esclusione);
        esclusi.insert(email);
        ++conteggio.aggiunti;
    }
    store.save();
    return conteggio;
}

} // namespace Rimbalzi
