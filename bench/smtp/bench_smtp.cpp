// Messages per second through one SMTPSession at pace 0: one connection, one recipient per message.
// Usage: bench_smtp HOST PORT MESSAGES SIZE   (plain TCP, no AUTH). Prints "rate <messages per second>".
#include "smtp/SMTPSession.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <QCoro/QCoroTimer>

#include <cstdio>

namespace {

QByteArray message(int size) {
    QByteArray data(
        "From: Mittente <mittente@prova.example>\r\nTo: destinatario@prova.example\r\n"
        "Subject: Prova di velocita\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n");
    const QByteArray line = QByteArray(74, 'x') + "\r\n";
    while (data.size() + line.size() <= size)
        data += line;
    return data;
}

QCoro::Task<int> run(SMTPConfig config, int count, int size) {
    SMTPSession session(config, QString());
    const QByteArray data = message(size);
    try {
        co_await session.connect();
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < count; ++i) {
            co_await session.sendMessage(QStringLiteral("mittente@prova.example"),
                                         QStringLiteral("destinatario%1@prova.example").arg(i), data);
            // A run at pace 0 still gives the event loop a turn between messages.
            co_await QCoro::sleepFor(std::chrono::milliseconds(0));
        }
        const double seconds = double(clock.nsecsElapsed()) / 1e9;
        co_await session.disconnect();
        std::printf("rate %.1f\n", count / seconds);
        co_return 0;
    } catch (const SMTPError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        co_return 1;
    }
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench_smtp HOST PORT MESSAGES SIZE\n");
        return 2;
    }
    SMTPConfig config;
    config.host = QString::fromLocal8Bit(argv[1]);
    config.port = QByteArray(argv[2]).toInt();
    config.useTLS = false;
    config.username.clear();
    config.fromEmail = QStringLiteral("mittente@prova.example");
    return QCoro::waitFor(run(config, QByteArray(argv[3]).toInt(), QByteArray(argv[4]).toInt()));
}
