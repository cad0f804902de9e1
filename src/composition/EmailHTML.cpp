#include "composition/EmailHTML.h"

#include "composition/TemplateRenderer.h"
#include "records/Text.h"

#include <QStringList>

namespace EmailHTML {

namespace {
using TemplateRenderer::escaped;

const QString pageHead = QStringLiteral(
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
    "<head>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n<title></title>\n</head>\n"
    "<body style=\"margin:0;padding:0;background-color:#f4f4f5;\">\n");

const QString layoutOpen = QStringLiteral(
    "\n<table role=\"presentation\" width=\"100%\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
    "style=\"background-color:#f4f4f5;\">\n<tr>\n<td align=\"center\" style=\"padding:24px 12px;\">\n"
    "<table role=\"presentation\" width=\"640\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
    "style=\"width:640px;max-width:100%;background-color:#ffffff;border-radius:8px;\">\n<tr>\n"
    "<td style=\"padding:28px 32px;font-family:Arial,Helvetica,sans-serif;font-size:14px;line-height:1.5;"
    "color:#222222;\">\n");

const QString bodyClose = QStringLiteral("\n</td>\n</tr>\n");

const QString footerOpen =
    QStringLiteral("<tr>\n<td style=\"padding:0 32px 26px;font-family:Arial,Helvetica,sans-serif;font-size:11px;"
                   "line-height:1.6;color:#6b7280;border-top:1px solid #e5e7eb;padding-top:16px;\">\n");

const QString footerClose = QStringLiteral("\n</td>\n</tr>");

const QString pageClose = QStringLiteral("\n</table>\n</td>\n</tr>\n</table>\n</body>\n</html>");

QString footerHTML(const PiePagina& pie) {
    QStringList lines;
    if (!pie.motivazione.isEmpty())
        lines.append(escaped(pie.motivazione));
    if (!pie.indirizzoDisiscrizione.isEmpty())
        lines.append(QStringLiteral("Non vuoi più ricevere questi messaggi? <a href=\"") + pie.mailto() +
                     QStringLiteral("\" style=\"color:#6b7280;text-decoration:underline;\">Cancella la tua "
                                    "iscrizione</a> (oppure scrivi a ") +
                     escaped(pie.indirizzoDisiscrizione) + QStringLiteral(")."));
    if (!pie.mittentePostale.isEmpty())
        lines.append(escaped(pie.mittentePostale).replace(u'\n', QStringLiteral("<br />")));
    return lines.join(QStringLiteral("<br />"));
}
} // namespace

bool PiePagina::haContenuto() const {
    return !motivazione.isEmpty() || !indirizzoDisiscrizione.isEmpty() || !mittentePostale.isEmpty();
}

QString PiePagina::testoSemplice() const {
    QStringList lines;
    if (!motivazione.isEmpty())
        lines.append(motivazione);
    if (!indirizzoDisiscrizione.isEmpty())
        lines.append(QStringLiteral("Per non ricevere più questi messaggi scrivi a ") + indirizzoDisiscrizione +
                     QStringLiteral(" con oggetto \"Cancellami\"."));
    if (!mittentePostale.isEmpty())
        lines.append(mittentePostale);
    return lines.join(u'\n');
}

QString PiePagina::mailto() const {
    // The subject "Cancellami dalla lista" with everything but letters and digits percent-encoded.
    return QStringLiteral("mailto:") + indirizzoDisiscrizione + QStringLiteral("?subject=Cancellami%20dalla%20lista");
}

std::optional<PiePagina> piePagina(const SMTPConfig& config) {
    if (!config.piePaginaAttivo)
        return std::nullopt;
    PiePagina pie{Text::trimmedWhitespaceAndNewlines(config.motivazioneContatto), config.indirizzoDisiscrizione(),
                  Text::trimmedWhitespaceAndNewlines(config.mittentePostale)};
    if (!pie.haContenuto())
        return std::nullopt;
    return pie;
}

QString wrap(const QString& body, const QString& preheader, const std::optional<PiePagina>& piePagina) {
    QString page;
    page.reserve(body.size() + 2048);
    page += pageHead;
    if (!preheader.isEmpty())
        page += QStringLiteral("<div style=\"display:none;max-height:0;overflow:hidden;mso-hide:all;\">") +
                escaped(preheader) + QStringLiteral("</div>");
    page += layoutOpen;
    page += body;
    page += bodyClose;
    if (piePagina && piePagina->haContenuto())
        page += footerOpen + footerHTML(*piePagina) + footerClose;
    page += pageClose;
    return page;
}

} // namespace EmailHTML
