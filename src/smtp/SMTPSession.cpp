#include "SMTPSession.h"

#include "ConnectionWaiter.h"
#include "HostNameCheck.h"
#include "SocketWait.h"

#include <QDeadlineTimer>
#include <QHostInfo>
#include <QSslConfiguration>
#include <QSslSocket>

#include <QCoro/QCoroAbstractSocket>
#include <QCoro/QCoroSignal>

#include <algorithm>

namespace {

std::chrono::milliseconds remaining(const QDeadlineTimer& deadline) {
    return std::chrono::milliseconds(deadline.remainingTime());
}

// What the socket may hold unread: past it the kernel holds the rest and the server waits, so a server
// that floods the connection can't fill the memory.
constexpr qint64 readLimit = 64 * 1024;

} // namespace

void SMTPSession::SocketDeleter::operator()(QSslSocket* socket) const {
    socket->abort();
    // A queued wake-up may still name the socket; let the event loop drop it after them.
    socket->deleteLater();
}

SMTPSession::SMTPSession(SMTPConfig config, QString password, Options options)
    : m_config(std::move(config)), m_password(std::move(password)), m_options(std::move(options)) {}

SMTPSession::~SMTPSession() = default;

bool SMTPSession::isConnected() const {
    return m_connection && m_connection->state() == QAbstractSocket::ConnectedState;
}

QSslSocket* SMTPSession::makeSocket() const {
    // Every connection may turn into TLS, from the first byte or after STARTTLS, with the same trust rules.
    auto* socket = new QSslSocket;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (!m_options.extraTrustedCertificates.isEmpty())
        configuration.addCaCertificates(m_options.extraTrustedCertificates);
    socket->setSslConfiguration(configuration);
    socket->setReadBufferSize(readLimit);
    HostNameCheck::install(socket, m_config.host);
    return socket;
}

QCoro::Task<> SMTPSession::connect() {
    if (m_config.port < 1 || m_config.port > 65535)
        throw SMTPError::transport(SMTPError::tr("Porta non valida: ") + QString::number(m_config.port));
    m_connection.reset(makeSocket());
    m_reader.clear();
    m_supportsAuthLogin = false;
    m_supportsAuthPlain = false;
    m_supportsStartTls = false;

    co_await open();
    co_await expect(SMTPAwaiting::greeting);
    co_await ehlo();
    if (!m_config.useTLS)
        co_await startTls();
    co_await authenticate();
}

QCoro::Task<> SMTPSession::open() {
    const QString address = m_options.addressForTests.isEmpty() ? m_config.host : m_options.addressForTests;
    const bool tls = m_config.useTLS;
    // Listening before the connection starts: some failures are reported at once, not from the event loop.
    ConnectionWaiter waiter(m_connection.get(), tls);
    if (tls)
        m_connection->connectToHostEncrypted(address, quint16(m_config.port), m_config.host);
    else
        m_connection->connectToHost(address, quint16(m_config.port));
    co_await settle(waiter, tls);
}

QCoro::Task<> SMTPSession::settle(ConnectionWaiter& waiter, bool tls) {
    if (!waiter.isSettled()) {
        const auto settled = co_await qCoro(&waiter, &ConnectionWaiter::settled, m_options.timeout);
        if (!settled.has_value())
            failAndClose(SMTPError::timeout());
    }
    const bool ready =
        m_connection->state() == QAbstractSocket::ConnectedState && (!tls || m_connection->isEncrypted());
    // A failed handshake leaves nothing to go on with: not even QUIT goes on that connection.
    if (!ready)
        failAndClose(socketFailure());
    // Qt also accepts a certificate by its common name: refused here before a byte goes through it.
    if (tls && !HostNameCheck::matches(m_connection->peerCertificate(), m_config.host))
        failAndClose(SMTPError::transport(QSslError(QSslError::HostNameMismatch).errorString()));
}

// A server that doesn't offer STARTTLS, or refuses it, leaves the connection in the clear. That is fine for
// a relay on this machine or one that asks for no password; authenticate() stops anything else.
QCoro::Task<> SMTPSession::startTls() {
    if (!m_supportsStartTls)
        co_return;
    co_await write(QByteArrayLiteral("STARTTLS\r\n"));
    const SMTPResponse reply = co_await readResponse(SMTPAwaiting::startTlsReply);
    if (!SMTPReplies::accepts(SMTPAwaiting::startTlsReply, reply.code)) {
        if (!m_config.username.isEmpty() && !serverIsLocal())
            throw SMTPReplies::refusal(SMTPAwaiting::startTlsReply, reply);
        co_return;
    }
    // Whatever came after the 220 was sent in the clear by anyone on the way: never read it as a reply.
    m_reader.clear();
    m_connection->readAll();
    ConnectionWaiter waiter(m_connection.get(), true);
    m_connection->startClientEncryption();
    co_await settle(waiter, true);
    // What the server announced in the clear may have been tampered with: ask again, and keep only that.
    co_await ehlo();
}

QCoro::Task<> SMTPSession::ehlo() {
    co_await writeCommand("EHLO ", SMTPWire::ehloDomain(m_config, QHostInfo::localHostName()));
    const SMTPResponse reply = co_await expect(SMTPAwaiting::ehloReply);
    // Deliberately loose: any line of the reply that names a mechanism counts.
    const QString announced = reply.message.toUpper();
    m_supportsAuthLogin = announced.contains(QLatin1String("LOGIN"));
    m_supportsAuthPlain = announced.contains(QLatin1String("PLAIN"));
    // STARTTLS only as an extension of its own, never as a word in some other line. The first line
    // names the server.
    const auto offersStartTls = [](const QString& line) {
        return line.section(u' ', 0, 0).compare(QLatin1String("STARTTLS"), Qt::CaseInsensitive) == 0;
    };
    m_supportsStartTls = std::any_of(reply.lines.cbegin() + std::min<qsizetype>(1, reply.lines.size()),
                                     reply.lines.cend(), offersStartTls);
}

QCoro::Task<> SMTPSession::authenticate() {
    if (m_config.username.isEmpty())
        co_return;
    if (!m_connection->isEncrypted() && !serverIsLocal())
        throw SMTPError::transport(
            SMTPError::tr("il server non offre una connessione cifrata: la password non viene inviata in chiaro"));
    // LOGIN unless only PLAIN is announced; with neither announced LOGIN is tried all the same.
    if (!m_supportsAuthLogin && m_supportsAuthPlain)
        co_await authenticatePlain();
    else
        co_await authenticateLogin();
}

bool SMTPSession::serverIsLocal() const {
    return !m_options.loopbackCountsAsRemote && m_connection && m_connection->peerAddress().isLoopback();
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

QCoro::Task<> SMTPSession::sendMessage(QString envelopeFrom, QString recipient, QByteArray data, Meanwhile meanwhile) {
    if (!m_connection)
        throw SMTPError::notConnected();
    const auto mailFrom = SMTPWire::commandLine("MAIL FROM:<", envelopeFrom, ">");
    const auto rcptTo = SMTPWire::commandLine("RCPT TO:<", recipient, ">");
    // Checked before anything is written, so a refused address never leaves half a transaction behind.
    if (!mailFrom || !rcptTo)
        throw SMTPError::transport(SMTPError::tr("indirizzo non valido"));

    co_await write(*mailFrom);
    if (meanwhile.afterMailFrom)
        meanwhile.afterMailFrom();
    co_await expect(SMTPAwaiting::mailFromReply);
    co_await write(*rcptTo);
    co_await expectOrReset(SMTPAwaiting::rcptToReply);
    co_await write(QByteArrayLiteral("DATA\r\n"));
    co_await expectOrReset(SMTPAwaiting::dataReply);
    QByteArray block = SMTPWire::dotStuffed(data);
    block += "\r\n.\r\n"; // within the room dotStuffed keeps, so the message isn't copied again
    co_await write(std::move(block));
    if (meanwhile.afterData)
        meanwhile.afterData();
    co_await expect(SMTPAwaiting::endOfDataReply);
}

QCoro::Task<> SMTPSession::disconnect() {
    if (m_connection) {
        try {
            co_await write(QByteArrayLiteral("QUIT\r\n"));
            co_await readResponse(SMTPAwaiting::quitReply);
        } catch (const SMTPError&) {
            // Leaving is best-effort: the server may already be gone.
        }
    }
    m_connection.reset();
    m_reader.clear();
}

QCoro::Task<SMTPResponse> SMTPSession::expect(SMTPAwaiting state) {
    const SMTPResponse reply = co_await readResponse(state);
    SMTPReplies::check(state, reply);
    co_return reply;
}

QCoro::Task<> SMTPSession::expectOrReset(SMTPAwaiting state) {
    const SMTPResponse reply = co_await readResponse(state);
    if (SMTPReplies::accepts(state, reply.code))
        co_return;
    try {
        co_await write(QByteArrayLiteral("RSET\r\n"));
        co_await readResponse(SMTPAwaiting::rsetReply);
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
    // Handing the bytes to the system now, rather than on the next turn of the event loop, usually leaves
    // nothing to wait for: a command costs no timer and no extra turn.
    m_connection->flush();
    while (m_connection->bytesToWrite() > 0) {
        if (deadline.hasExpired())
            failAndClose(SMTPError::timeout());
        co_await qCoro(*m_connection).waitForBytesWritten(remaining(deadline));
        if (m_connection->state() != QAbstractSocket::ConnectedState)
            throw socketFailure();
    }
}

// The deadline is for the whole reply: a server that dribbles a byte now and then can't hold the wait.
QCoro::Task<SMTPResponse> SMTPSession::readResponse(SMTPAwaiting state) {
    const QDeadlineTimer deadline(m_options.timeout);
    for (;;) {
        if (auto reply = m_reader.next())
            co_return *reply;
        if (m_reader.fault() != SMTPReplyReader::Fault::none)
            failAndClose(SMTPReplies::refusal(
                state, SMTPResponse{m_reader.faultCode(), SMTPError::tr("risposta del server troppo lunga"), {}}));
        if (!m_connection)
            throw SMTPError::notConnected();
        co_await receiveChunk(deadline);
    }
}

QCoro::Task<> SMTPSession::receiveChunk(const QDeadlineTimer& deadline) {
    // Whatever the socket already holds comes first: waiting with unread bytes would return at once.
    QByteArray chunk = m_connection->read(readLimit);
    while (chunk.isEmpty()) {
        if (m_connection->state() != QAbstractSocket::ConnectedState)
            throw socketFailure();
        if (deadline.hasExpired())
            failAndClose(SMTPError::timeout());
        co_await SocketWait(*m_connection, remaining(deadline));
        chunk = m_connection->read(readLimit);
    }
    m_reader.append(chunk);
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

void SMTPSession::failAndClose(const SMTPError& error) {
    m_connection->abort();
    throw error;
}
