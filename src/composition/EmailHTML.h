#pragma once

#include "settings/SMTPConfig.h"

#include <QString>

#include <optional>

// The fixed table-based page every message goes out in, and the legal footer under it.
namespace EmailHTML {

struct PiePagina {
    QString motivazione;            // why the recipient is written to, trimmed
    QString indirizzoDisiscrizione; // where unsubscribe requests go, trimmed and lower-cased, or empty
    QString mittentePostale;        // the sender's postal details, trimmed; may span lines

    bool haContenuto() const;
    QString testoSemplice() const; // the footer of the text part
    QString mailto() const;        // the unsubscribe link

    bool operator==(const PiePagina&) const = default;
};

// The footer of a configuration, or nothing when it is switched off or would be empty.
std::optional<PiePagina> piePagina(const SMTPConfig& config);

// The whole page round a rendered body. The body is HTML already and is not escaped; an empty
// preheader adds nothing.
QString wrap(const QString& body, const QString& preheader, const std::optional<PiePagina>& piePagina);

} // namespace EmailHTML
