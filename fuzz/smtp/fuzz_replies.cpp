#include "../composition/FuzzCheck.h"
#include "smtp/SMTPReplyReader.h"
#include "smtp/SMTPWire.h"

#include <algorithm>
#include <cstdint>

namespace {

struct Reading {
    QList<SMTPResponse> replies;
    SMTPReplyReader::Fault fault = SMTPReplyReader::Fault::none;
    int faultCode = 0;
};

void drain(SMTPReplyReader& reader, Reading& reading) {
    while (const auto reply = reader.next())
        reading.replies << *reply;
    // Whatever a server sends, the reader holds at most one reply's lines and one read.
    FUZZ_CHECK(reader.heldBytes() <= 2 * (SMTPReplyReader::maxReplyBytes + SMTPReplyReader::maxLineBytes) + 4096);
}

Reading read(QByteArrayView bytes, qsizetype piece) {
    SMTPReplyReader reader;
    Reading reading;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        reader.append(QByteArrayView(bytes.data() + at, std::min(piece, bytes.size() - at)));
        drain(reader, reading);
    }
    reading.fault = reader.fault();
    reading.faultCode = reader.faultCode();
    return reading;
}

} // namespace

// Reads arbitrary bytes as what a server sends, once whole and once cut into pieces whose size the first
// byte picks: the replies must be the same however the bytes arrive, and none may carry a control character
// towards the history or the screens.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const qsizetype piece = qsizetype(data[0] % 64) + 1;
    const QByteArrayView bytes(reinterpret_cast<const char*>(data) + 1, qsizetype(size) - 1);
    const Reading whole = read(bytes, bytes.size() + 1);
    const Reading cut = read(bytes, piece);
    FUZZ_CHECK(whole.replies == cut.replies);
    FUZZ_CHECK(whole.fault == cut.fault);
    FUZZ_CHECK(whole.faultCode == cut.faultCode);
    for (const SMTPResponse& reply : whole.replies) {
        FUZZ_CHECK(reply.code >= 0 && reply.code <= 999);
        FUZZ_CHECK(!reply.lines.isEmpty());
        FUZZ_CHECK(reply.message.size() <= SMTPReplyReader::maxReplyBytes);
        for (const QChar c : reply.message)
            FUZZ_CHECK(!SMTPWire::isControlCharacter(c));
    }
    return 0;
}
