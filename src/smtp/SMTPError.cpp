#include "SMTPError.h"

SMTPError::SMTPError(Case kind, QString text, QString command, int code)
    : m_case(kind), m_text(std::move(text)), m_command(std::move(command)), m_code(code) {
    m_what = errorDescription().toUtf8();
}

SMTPError SMTPError::transport(const QString& text) {
    return {Case::transport, text};
}

SMTPError SMTPError::unexpectedReply(const QString& command, int code, const QString& message) {
    return {Case::unexpectedReply, message, command, code};
}

SMTPError SMTPError::authenticationFailed(const QString& text) {
    return {Case::authenticationFailed, text};
}

SMTPError SMTPError::connectionClosed() {
    return {Case::connectionClosed, {}};
}

SMTPError SMTPError::timeout() {
    return {Case::timeout, {}};
}

SMTPError SMTPError::notConnected() {
    return {Case::notConnected, {}};
}

QString SMTPError::errorDescription() const {
    switch (m_case) {
    case Case::transport:
        return tr("Errore di connessione: ") + m_text;
    case Case::unexpectedReply:
        return tr("Risposta inattesa a ") + m_command + QStringLiteral(": ") + QString::number(m_code) + u' ' + m_text;
    case Case::authenticationFailed:
        return tr("Autenticazione rifiutata: ") + m_text;
    case Case::connectionClosed:
        return tr("Il server ha chiuso la connessione.");
    case Case::timeout:
        return tr("Il server non ha risposto entro il tempo massimo.");
    case Case::notConnected:
        return tr("Connessione non aperta.");
    }
    return {};
}

std::optional<QString> SMTPError::rifiutoDefinitivoDestinatario() const {
    if (m_case != Case::unexpectedReply || m_command != QLatin1String("RCPT TO") || m_code < 500 || m_code > 599)
        return std::nullopt;
    return tr("rifiutato dal server: ") + QString::number(m_code) + u' ' + m_text;
}
