#include "AiosmtpdServer.h"

#include "TestCA.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

AiosmtpdServer::Options AiosmtpdServer::withTls(TestCA& ca, const QString& address) {
    Options options;
    options.address = address;
    const TestCA::Issued issued = ca.issue(address, {}, {address});
    options.certificatePath = issued.certificatePath;
    options.keyPath = issued.keyPath;
    return options;
}

AiosmtpdServer::Options AiosmtpdServer::withStartTls(TestCA& ca, const QString& address) {
    Options options = withTls(ca, address);
    options.startTls = true;
    return options;
}

AiosmtpdServer::Options AiosmtpdServer::plain(const QString& address) {
    Options options;
    options.address = address;
    return options;
}

AiosmtpdServer::AiosmtpdServer(Options options) : m_options(std::move(options)) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

AiosmtpdServer::~AiosmtpdServer() {
    stop();
}

bool AiosmtpdServer::start() {
    if (!m_spool.isValid()) {
        m_error = QStringLiteral("no spool folder");
        return false;
    }
    QStringList arguments{QStringLiteral(BREZZARIO_TEST_SUPPORT_DIR "/smtp_server.py"),
                          QStringLiteral("--host"),
                          m_options.address,
                          QStringLiteral("--port"),
                          QString::number(m_options.port),
                          QStringLiteral("--spool"),
                          m_spool.path()};
    if (!m_options.certificatePath.isEmpty())
        arguments << QStringLiteral("--cert") << m_options.certificatePath << QStringLiteral("--key")
                  << m_options.keyPath;
    if (m_options.startTls)
        arguments << QStringLiteral("--starttls");
    if (!m_options.username.isEmpty())
        arguments << QStringLiteral("--user") << m_options.username << QStringLiteral("--password")
                  << m_options.password << QStringLiteral("--mechanisms") << m_options.mechanisms.join(u',');
    if (m_options.authRequired)
        arguments << QStringLiteral("--auth-required");
    for (const Rule& rule : std::as_const(m_options.rejectAtRcpt))
        arguments << QStringLiteral("--reject-rcpt") << rule.pattern + u'=' + rule.reply;
    for (const Rule& rule : std::as_const(m_options.rejectAtData))
        arguments << QStringLiteral("--reject-data") << rule.pattern + u'=' + rule.reply;

    m_process.start(QStringLiteral(BREZZARIO_PYTHON), arguments);
    QByteArray output;
    const QDeadlineTimer deadline(20'000);
    while (!output.contains("READY\n")) {
        if (m_process.state() == QProcess::NotRunning || deadline.hasExpired() ||
            !m_process.waitForReadyRead(int(deadline.remainingTime()))) {
            m_error = QStringLiteral("aiosmtpd did not start on %1:%2 (%3)")
                          .arg(m_options.address)
                          .arg(m_options.port)
                          .arg(m_process.errorString());
            stop();
            return false;
        }
        output += m_process.readAllStandardOutput();
    }
    return true;
}

void AiosmtpdServer::stop() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(10'000)) {
        m_process.kill();
        m_process.waitForFinished(5'000);
    }
}

SMTPConfig AiosmtpdServer::config() const {
    SMTPConfig config;
    config.host = m_options.address;
    config.port = m_options.port;
    config.useTLS = !m_options.certificatePath.isEmpty() && !m_options.startTls;
    config.username = m_options.username;
    config.fromEmail = QStringLiteral("mittente@prova.example");
    return config;
}

SMTPSession::Options AiosmtpdServer::sessionOptions(const TestCA* ca, std::chrono::milliseconds timeout) {
    SMTPSession::Options options;
    options.timeout = timeout;
    if (ca)
        options.extraTrustedCertificates = ca->certificates();
    return options;
}

QList<AiosmtpdServer::Message> AiosmtpdServer::messages() const {
    QList<Message> result;
    const QDir spool(m_spool.path());
    for (const QString& name : spool.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QFile file(spool.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        Message message;
        message.mailFrom = object.value(QLatin1String("mail_from")).toString();
        for (const QJsonValue& to : object.value(QLatin1String("rcpt_tos")).toArray())
            message.rcptTos << to.toString();
        message.data = QByteArray::fromBase64(object.value(QLatin1String("data")).toString().toLatin1());
        message.authenticatedAs = object.value(QLatin1String("authenticated_as")).toString();
        result << message;
    }
    return result;
}

int AiosmtpdServer::messageCount() const {
    return int(QDir(m_spool.path()).entryList({QStringLiteral("*.json")}, QDir::Files).size());
}

QList<AiosmtpdServer::AuthAttempt> AiosmtpdServer::authAttempts() const {
    QList<AuthAttempt> result;
    QFile file(QDir(m_spool.path()).filePath(QStringLiteral("auth.jsonl")));
    if (!file.open(QIODevice::ReadOnly))
        return result;
    while (!file.atEnd()) {
        const QJsonObject object = QJsonDocument::fromJson(file.readLine()).object();
        result << AuthAttempt{
            object.value(QLatin1String("mechanism")).toString(), object.value(QLatin1String("login")).toString(),
            object.value(QLatin1String("success")).toBool(), object.value(QLatin1String("tls")).toBool()};
    }
    return result;
}

QStringList AiosmtpdServer::conversation() const {
    QFile file(QDir(m_spool.path()).filePath(QStringLiteral("conversation.log")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}
