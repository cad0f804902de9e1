#pragma once

#include "SMTPError.h"
#include "SMTPWire.h"

// A session is always waiting for one reply; its states are named after that reply. This is the one place
// that decides which codes let the conversation go on and what the user reads when another code comes.
enum class SMTPAwaiting {
    greeting,
    ehloReply,
    startTlsReply,
    authLoginReply,
    authUsernameReply,
    authPasswordReply,
    authPlainReply,
    mailFromReply,
    rcptToReply,
    dataReply,
    endOfDataReply,
    rsetReply,
    quitReply,
};

namespace SMTPReplies {

bool accepts(SMTPAwaiting state, int code);
// What the user reads when the reply isn't accepted in that state.
SMTPError refusal(SMTPAwaiting state, const SMTPResponse& response);
// Throws refusal() unless the reply is accepted.
void check(SMTPAwaiting state, const SMTPResponse& response);

} // namespace SMTPReplies
