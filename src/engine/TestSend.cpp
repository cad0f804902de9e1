#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"
#include "engine/SendEngine.h"
#include "engine/Tentativo.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"

QCoro::Task<QString> SendEngine::sendTest(MessageTemplate modello, RowValues values, QString to,
                                          SettingsStore& settings, Store& store) {
    SMTPConfig config = settings.config();
    const QString fallito = tr("Invio di prova fallito: ");
    // Checked before anything connects, as at the start of a run; the test address with the same test.
    if (const std::optional<QString> errore = RunPlanning::indirizziNonValidi(config))
        co_return fallito + *errore;
    if (!isValidEmailSyntax(to))
        co_return fallito + tr("Indirizzo per l'invio di prova non valido");
    const QString destinatario = wireAddress(Text::trimmedWhitespaceAndNewlines(to));

    // The live template, not a campaign's snapshot: the user checks what they are editing.
    const MessageComposer::Rendered reso = MessageComposer::compose(modello, values, config);
    MIMEBuilder::Message messaggio;
    messaggio.from = {config.fromName, config.fromEmail};
    messaggio.to = destinatario;
    if (!config.replyTo.isEmpty())
        messaggio.replyTo = config.replyTo;
    messaggio.subject = tr("[PROVA] ") + reso.subject;
    messaggio.html = reso.html;
    messaggio.plainText = reso.plainText;
    for (const TemplateAttachment& allegato : store.attachments(modello.id))
        messaggio.attachments.append({allegato.filename, allegato.mimeType, allegato.data});

    // The session lives in this frame, so nothing below needs the engine once it is made.
    const std::unique_ptr<SMTPSession> sessione = nuovaSessione(config, settings.password());
    if (const auto errore = co_await tenta(sessione->connect())) {
        co_await sessione->disconnect();
        co_return fallito + errore->testo;
    }
    if (const auto errore =
            co_await tenta(sessione->sendMessage(config.fromEmail, destinatario, MIMEBuilder::build(messaggio)))) {
        co_await sessione->disconnect();
        co_return fallito + errore->testo;
    }
    co_await sessione->disconnect();

    SendLog log(to, messaggio.subject, SendStatus::test, QStringLiteral("invio di prova"), QString());
    store.insert(log);
    store.save();
    co_return tr("Messaggio di prova inviato a %1.").arg(to);
}
