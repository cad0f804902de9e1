#include "SMTPSession.h"

#include "ConnectionWaiter.h"

#include <QDeadlineTimer>
#include <QHostInfo>
#include <QSslConfiguration>
#include <QSslSocket>

#include <QCoro/QCoroAbstractSocket>
#include <QCoro/QCoroSignal>

namespace {

std::chrono::milliseconds remaining(const QDeadlineTimer& deadline) {
    return std::chrono::milliseconds(deadline.remainingTime());
}

} // namespace

void SMTPSession::SocketDeleter::operator()(QTcpSocket* socket) const {
    socket->abort();
    // A queued wake-up may still name the socket; let the event loop drop it after them.
    socket->deleteLater();
}

SMTPSession::SMTPSession(SMTPConfig config, QString password, Options options)
    : m_config(std::move(config)), m_password(std::move(password)), m_options(std::move(options)) {}

SMTPSession::~SMTPSession() = default;

QTcpSocket* SMTPSession::makeSocket() const {
    if (!m_config.useTLS)
        return new QTcpSocket;
    auto* socket = new QSslSocket;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (!m_options.extraTrustedCertificates.isEmpty())
        configuration.addCaCertificates(m_options.extraTrustedCertificates);
    socket->setSslConfiguration(configuration);
    return socket;
}

QCoro::Task<> SMTPSession::connect() {
    if (m_config.port < 1 || m_config.port > 65535)
        throw SMTPError::transport(SMTPError::tr("Porta non valida: ") + QString::number(m_config.port));
    m_connection.reset(makeSocket());
    m_buffer.clear();
    m_supportsAuthLogin = false;
    m_supportsAuthPlain = false;

    const bool tls = m_config.useTLS;
    // Listening before the connection starts: some failures are reported at once, not from the event loop.
    ConnectionWaiter waiter(m_connection.get(), tls);
    if (tls)
        static_cast<QSslSocket*>(m_connection.get())->connectToHostEncrypted(m_config.host, quint16(m_config.port));
    else
        m_connection->connectToHost(m_config.host, quint16(m_config.port));
    if (!waiter.isSettled()) {
        const auto settled = co_await qCoro(&waiter, &ConnectionWaiter::settled, m_options.timeout);
        if (!settled.has_value())
            failTimedOut();
    }
    const bool ready = m_connection->state() == QAbstractSocket::ConnectedState &&
                       (!tls || static_cast<QSslSocket*>(m_connection.get())->isEncrypted());
    if (!ready)
        throw socketFailure();

    co_await expect(SMTPAwaiting::greeting);
    co_await ehlo();
    co_await authenticate();
}

QCoro::Task<> SMTPSession::ehlo() {
    co_await writeCommand("EHLO ", SMTPWire::ehloDomain(m_config, QHostInfo::localHostName()));
    const SMTPResponse reply = co_await expect(SMTPAwaiting::ehloReply);
    // Deliberately loose: any line of the reply that names a mechanism counts.
    const QString announced = reply.message.toUpper();
    m_supportsAuthLogin = announced.contains(QLatin1String("LOGIN"));
    m_supportsAuthPlain = announced.contains(QLatin1String("PLAIN"));
}

QCoro::Task<> SMTPSession::authenticate() {
    if (m_config.username.isEmpty())
        co_return;
    // LOGIN unless only PLAIN is announced; with neither announced LOGIN is tried all the same.
    if (!m_supportsAuthLogin && m_supportsAuthPlain)
        co_await authenticatePlain();
    else
        co_await authenticateLogin();
}

QCoro::Task<> SMTPSession::authenticateLogin() {
    co_await write(QByteArrayLiteral("AUTH LOGIN\r\n"));
    co_await expect(SMTPAwaiting::authLoginReply);
    co_await write(m_config.username.toUtf8().toBase64() + "\r\n");
    co_await expect(SMTPAwaiting::authUsernameReply);
    co_await write(m_password.toUtf8().toBase64() + "\r\n");
    co_await expect(SMTPAwaiting::authPasswordReply);
}

QCoro::Task<> SMTPSession::authenticatePlain() {
    const QByteArray token = '\0' + m_config.username.toUtf8() + '\0' + m_password.toUtf8();
    co_await write("AUTH PLAIN " + token.toBase64() + "\r\n");
    co_await expect(SMTPAwaiting::authPlainReply);
}

QCoro::Task<> SMTPSession::sendMessage(QString envelopeFrom, QString recipient, QByteArray data) {
    if (!m_connection)
        throw SMTPError::notConnected();
    const auto mailFrom = SMTPWire::commandLine("MAIL FROM:<", envelopeFrom, ">");
    const auto rcptTo = SMTPWire::commandLine("RCPT TO:<", recipient, ">");
    // Checked before anything is written, so a refused address never leaves half a transaction behind.
    if (!mailFrom || !rcptTo)
        throw SMTPError::transport(SMTPError::tr("indirizzo non valido"));

    co_await write(*mailFrom);
    co_await expect(SMTPAwaiting::mailFromReply);
    co_await write(*rcptTo);
    co_await expectOrReset(SMTPAwaiting::rcptToReply);
    co_await write(QByteArrayLiteral("DATA\r\n"));
    co_await expectOrReset(SMTPAwaiting::dataReply);
    co_await write(SMTPWire::dotStuffed(data) + "\r\n.\r\n");
    co_await expect(SMTPAwaiting::endOfDataReply);
}

QCoro::Task<> SMTPSession::disconnect() {
    if (m_connection) {
        try {
            co_await write(QByteArrayLiteral("QUIT\r\n"));
            co_await readResponse();
        } catch (const SMTPError&) {
            // Leaving is best-effort: the server may already be gone.
        }
    }
    m_connection.reset();
    m_buffer.clear();
}

QCoro::Task<SMTPResponse> SMTPSession::expect(SMTPAwaiting state) {
    const SMTPResponse reply = co_await readResponse();
    SMTPReplies::check(state, reply);
    co_return reply;
}

QCoro::Task<> SMTPSession::expectOrReset(SMTPAwaiting state) {
    const SMTPResponse reply = co_await readResponse();
    if (SMTPReplies::accepts(state, reply.code))
        co_return;
    try {
        co_await write(QByteArrayLiteral("RSET\r\n"));
        co_await readResponse();
    } catch (const SMTPError&) {
        // The refusal is what the caller needs to hear, not the fate of the RSET.
    }
    throw SMTPReplies::refusal(state, reply);
}

QCoro::Task<> SMTPSession::writeCommand(const char* verb, QString argument, const char* suffix) {
    const auto line = SMTPWire::commandLine(verb, argument, suffix);
    if (!line)
        throw SMTPError::transport(SMTPError::tr("indirizzo non valido"));
    co_await write(*line);
}

QCoro::Task<> SMTPSession::write(QByteArray bytes) {
    if (!m_connection)
        throw SMTPError::notConnected();
    if (m_connection->state() != QAbstractSocket::ConnectedState)
        throw socketFailure();
    const QDeadlineTimer deadline(m_options.timeout);
    if (m_connection->write(bytes) != bytes.size())
        throw socketFailure();
    while (m_connection->bytesToWrite() > 0) {
        if (deadline.hasExpired())
            failTimedOut();
        co_await qCoro(*m_connection).waitForBytesWritten(remaining(deadline));
        if (m_connection->state() != QAbstractSocket::ConnectedState)
            throw socketFailure();
    }
}

QCoro::Task<SMTPResponse> SMTPSession::readResponse() {
    for (;;) {
        if (auto reply = SMTPWire::parseBufferedResponse(m_buffer))
            co_return *reply;
        if (!m_connection)
            throw SMTPError::notConnected();
        co_await receiveChunk();
    }
}

QCoro::Task<> SMTPSession::receiveChunk() {
    // Whatever the socket already holds comes first: waiting with unread bytes would return at once.
    QByteArray chunk = m_connection->readAll();
    const QDeadlineTimer deadline(m_options.timeout);
    while (chunk.isEmpty()) {
        if (m_connection->state() != QAbstractSocket::ConnectedState)
            throw socketFailure();
        if (deadline.hasExpired())
            failTimedOut();
        co_await qCoro(*m_connection).waitForReadyRead(remaining(deadline));
        chunk = m_connection->readAll();
    }
    m_buffer += chunk;
}

SMTPError SMTPSession::socketFailure() const {
    if (!m_connection)
        return SMTPError::notConnected();
    switch (m_connection->error()) {
    case QAbstractSocket::RemoteHostClosedError:
    case QAbstractSocket::UnknownSocketError:
        return SMTPError::connectionClosed();
    default:
        return SMTPError::transport(SMTPError::testoConnessione(*m_connection));
    }
}

void SMTPSession::failTimedOut() {
    // A session that timed out is dead: whatever the server does later must not be read as a reply.
    m_connection->abort();
    throw SMTPError::timeout();
}
