// How reading replies scales, and what a hostile server can make the client hold.
//   bench_replies parse          time per byte of replies arriving in 64-byte pieces, against the former
//                                reading, which decoded every buffered line again at each piece
//   bench_replies flood HOST PORT  one connect() to a server that never ends its greeting: the error, the
//                                time to it and the peak resident memory before and after
#include "smtp/SMTPReplyReader.h"
#include "smtp/SMTPSession.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace {

// The former reading, kept here only to measure against: it started again from the first byte of the
// buffer, decoding every line, each time a piece arrived.
std::optional<SMTPResponse> formerParse(QByteArray& buffer) {
    if (buffer.size() < 2)
        return std::nullopt;
    QStringList lines;
    qsizetype start = 0;
    for (;;) {
        const qsizetype end = buffer.indexOf("\r\n", start);
        if (end < 0)
            return std::nullopt;
        const QByteArray line = buffer.mid(start, end - start);
        lines << QString::fromUtf8(line);
        start = end + 2;
        if (line.size() >= 4 && line.at(3) == ' ') {
            buffer.remove(0, start);
            return SMTPResponse{line.left(3).toInt(), lines.join(u' '), {}};
        }
    }
}

QByteArray multiLineReply(qsizetype size) {
    const QByteArray line = "250-" + QByteArray(56, 'x') + "\r\n";
    QByteArray reply;
    while (reply.size() + line.size() + 8 <= size)
        reply += line;
    return reply + "250 ok\r\n";
}

constexpr qsizetype piece = 64;

// Nanoseconds per byte and the replies read, the stream arriving in pieces: `feed` takes one piece and
// says how many replies it completed.
template <typename Feed> std::pair<double, int> timePieces(const QByteArray& stream, Feed feed) {
    QElapsedTimer clock;
    clock.start();
    int replies = 0;
    for (qsizetype at = 0; at < stream.size(); at += piece)
        replies += feed(QByteArrayView(stream.constData() + at, std::min(piece, stream.size() - at)));
    return {double(clock.nsecsElapsed()) / double(stream.size()), replies};
}

std::pair<double, int> timeReader(const QByteArray& stream) {
    SMTPReplyReader reader;
    return timePieces(stream, [&reader](QByteArrayView bytes) {
        reader.append(bytes);
        int replies = 0;
        while (reader.next())
            ++replies;
        return replies;
    });
}

std::pair<double, int> timeFormer(const QByteArray& stream) {
    QByteArray buffer;
    return timePieces(stream, [&buffer](QByteArrayView bytes) {
        buffer += bytes;
        int replies = 0;
        while (formerParse(buffer))
            ++replies;
        return replies;
    });
}

// The fastest of five runs: the machine is shared, and a slower run only measures the others.
template <typename Time> std::pair<double, int> fastest(Time time, const QByteArray& stream) {
    std::pair<double, int> best = time(stream);
    for (int i = 1; i < 5; ++i)
        best = std::min(best, time(stream));
    return best;
}

int parse() {
    std::printf("%-34s %10s %14s %14s %10s\n", "input (64-byte pieces)", "bytes", "ns/byte now", "ns/byte before",
                "before/now");
    for (const qsizetype size : {8 * 1024, 16 * 1024, 32 * 1024, 62 * 1024}) {
        const QByteArray stream = multiLineReply(size);
        const auto now = fastest(timeReader, stream);
        const auto before = fastest(timeFormer, stream);
        if (now.second != 1 || before.second != 1)
            return 1;
        std::printf("%-34s %10lld %14.1f %14.1f %10.1f\n",
                    qPrintable(QStringLiteral("one reply of %1 KB").arg(size / 1024)), qlonglong(stream.size()),
                    now.first, before.first, before.first / now.first);
    }
    // Past 64 KB a reply is refused now, so the long streams are many replies one after the other.
    for (const int megabytes : {1, 4, 16}) {
        const QByteArray one = multiLineReply(62 * 1024);
        const QByteArray stream = one.repeated(megabytes * 1024 * 1024 / one.size());
        const auto now = fastest(timeReader, stream);
        std::printf("%-34s %10lld %14.1f %14s %10s\n",
                    qPrintable(QStringLiteral("%1 MB of 62 KB replies").arg(megabytes)), qlonglong(stream.size()),
                    now.first, "-", "-");
    }
    return 0;
}

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

QCoro::Task<int> flood(SMTPConfig config) {
    SMTPSession::Options options;
    options.timeout = std::chrono::seconds(60);
    SMTPSession session(config, QString(), options);
    const long before = peakKilobytes();
    QElapsedTimer clock;
    clock.start();
    QString outcome = QStringLiteral("connected");
    try {
        co_await session.connect();
    } catch (const SMTPError& error) {
        outcome = error.errorDescription();
    }
    const double milliseconds = double(clock.nsecsElapsed()) / 1e6;
    co_await session.disconnect();
    std::printf("outcome %s\nms %.1f\npeak_kb_before %ld\npeak_kb_after %ld\n", qPrintable(outcome), milliseconds,
                before, peakKilobytes());
    co_return 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QByteArray mode = argc > 1 ? QByteArray(argv[1]) : QByteArray();
    if (mode == "parse")
        return parse();
    if (mode == "flood" && argc == 4) {
        SMTPConfig config;
        config.host = QString::fromLocal8Bit(argv[2]);
        config.port = QByteArray(argv[3]).toInt();
        config.useTLS = false;
        config.username.clear();
        config.fromEmail = QStringLiteral("mittente@prova.example");
        return QCoro::waitFor(flood(config));
    }
    std::fprintf(stderr, "usage: bench_replies parse | bench_replies flood HOST PORT\n");
    return 2;
}
