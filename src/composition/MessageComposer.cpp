#include "composition/MessageComposer.h"

#include "composition/EmailHTML.h"
#include "composition/TemplateRenderer.h"

namespace MessageComposer {

Rendered compose(const MessageTemplate& template_, const RowValues& values, const SMTPConfig& config) {
    Rendered r;
    r.subject = TemplateRenderer::substitute(template_.subject, values, false);
    const QString body = TemplateRenderer::substitute(template_.html, values, true);
    const std::optional<EmailHTML::PiePagina> pie = EmailHTML::piePagina(config);
    r.html = EmailHTML::wrap(body, QString(), pie);
    // The text version comes from the body alone: the frame round it holds no words.
    r.plainText = template_.plainOverride.isEmpty()
                      ? TemplateRenderer::htmlToPlainText(body)
                      : TemplateRenderer::substitute(template_.plainOverride, values, false);
    if (pie && pie->haContenuto())
        r.plainText += QStringLiteral("\n\n-- \n") + pie->testoSemplice();
    return r;
}

} // namespace MessageComposer
