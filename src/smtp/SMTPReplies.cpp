#include "SMTPReplies.h"

namespace SMTPReplies {

namespace {

// The label a refusal carries, as the user reads it after "Risposta inattesa a ".
QString label(SMTPAwaiting state) {
    switch (state) {
    case SMTPAwaiting::greeting:
        return QStringLiteral("CONNECT");
    case SMTPAwaiting::ehloReply:
        return QStringLiteral("EHLO");
    case SMTPAwaiting::startTlsReply:
        return QStringLiteral("STARTTLS");
    case SMTPAwaiting::mailFromReply:
        return QStringLiteral("MAIL FROM");
    case SMTPAwaiting::rcptToReply:
        return QStringLiteral("RCPT TO");
    case SMTPAwaiting::dataReply:
        return QStringLiteral("DATA");
    case SMTPAwaiting::endOfDataReply:
        return SMTPError::tr("invio messaggio");
    default:
        return {};
    }
}

bool isAuthentication(SMTPAwaiting state) {
    return state == SMTPAwaiting::authLoginReply || state == SMTPAwaiting::authUsernameReply ||
           state == SMTPAwaiting::authPasswordReply || state == SMTPAwaiting::authPlainReply;
}

} // namespace

bool accepts(SMTPAwaiting state, int code) {
    switch (state) {
    case SMTPAwaiting::greeting:
    case SMTPAwaiting::startTlsReply:
        return code == 220;
    case SMTPAwaiting::ehloReply:
        return code >= 200 && code <= 399;
    case SMTPAwaiting::authLoginReply:
    case SMTPAwaiting::authUsernameReply:
        return code == 334;
    case SMTPAwaiting::authPasswordReply:
    case SMTPAwaiting::authPlainReply:
        return code == 235;
    case SMTPAwaiting::mailFromReply:
    case SMTPAwaiting::endOfDataReply:
        return code == 250;
    case SMTPAwaiting::rcptToReply:
        return code == 250 || code == 251;
    case SMTPAwaiting::dataReply:
        return code == 354;
    case SMTPAwaiting::rsetReply:
    case SMTPAwaiting::quitReply:
        return true;
    }
    return false;
}

SMTPError refusal(SMTPAwaiting state, const SMTPResponse& response) {
    if (isAuthentication(state))
        return SMTPError::authenticationFailed(QString::number(response.code) + u' ' + response.message);
    return SMTPError::unexpectedReply(label(state), response.code, response.message);
}

void check(SMTPAwaiting state, const SMTPResponse& response) {
    if (!accepts(state, response.code))
        throw refusal(state, response);
}

} // namespace SMTPReplies
