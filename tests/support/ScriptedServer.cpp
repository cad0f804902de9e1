#include "ScriptedServer.h"

#include <QFile>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

namespace {

// Hands out sockets that can turn into TLS halfway through the conversation.
class UpgradableServer : public QTcpServer {
protected:
    void incomingConnection(qintptr descriptor) override {
        auto* socket = new QSslSocket(this);
        if (socket->setSocketDescriptor(descriptor))
            addPendingConnection(socket);
        else
            delete socket;
    }
};

} // namespace

ScriptedServer::ScriptedServer(QStringList script, QObject* parent)
    : QObject(parent), m_script(std::move(script)), m_server(std::make_unique<QTcpServer>()) {}

ScriptedServer::~ScriptedServer() {
    if (m_client)
        m_client->abort();
    for (QTcpSocket* socket : std::as_const(m_waiting))
        if (socket)
            socket->abort();
}

void ScriptedServer::setTls(const QSslConfiguration& configuration) {
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(configuration);
    m_server = std::move(server);
}

void ScriptedServer::setStartTls(const QSslConfiguration& configuration) {
    m_startTls = configuration;
    m_server = std::make_unique<UpgradableServer>();
}

QSslConfiguration ScriptedServer::tlsConfiguration(const TestCA::Issued& issued) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    const QList<QSslCertificate> chain = QSslCertificate::fromPath(issued.certificatePath, QSsl::Pem);
    if (!chain.isEmpty())
        configuration.setLocalCertificate(chain.first());
    QFile key(issued.keyPath);
    if (key.open(QIODevice::ReadOnly))
        configuration.setPrivateKey(QSslKey(&key, QSsl::Ec, QSsl::Pem));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

bool ScriptedServer::listen(const QString& address) {
    // A TLS server hands out its sockets only once the handshake is done, and says so with the second signal.
    connect(m_server.get(), &QTcpServer::newConnection, this, &ScriptedServer::accept);
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &ScriptedServer::accept);
    return m_server->listen(QHostAddress(address), 0);
}

quint16 ScriptedServer::port() const {
    return m_server->serverPort();
}

QString ScriptedServer::problem() const {
    if (!m_problem.isEmpty())
        return m_problem;
    if (m_step < m_script.size())
        return QStringLiteral("script stopped at line %1: %2").arg(m_step + 1).arg(m_script.at(m_step));
    return {};
}

void ScriptedServer::accept() {
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        ++m_connections;
        // A client that reconnects at once may be here before the close of its last connection is.
        m_waiting << socket;
    }
    adoptWaiting();
}

void ScriptedServer::adoptWaiting() {
    if (m_client || m_waiting.isEmpty())
        return;
    QTcpSocket* socket = m_waiting.takeFirst();
    if (!socket)
        return;
    m_client = socket;
    m_input.clear();
    connect(socket, &QTcpSocket::readyRead, this, &ScriptedServer::readClient);
    connect(socket, &QTcpSocket::disconnected, this, &ScriptedServer::clientClosed);
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    play();
    if (m_client && m_client->state() != QAbstractSocket::ConnectedState)
        clientClosed(); // it went away while it waited
}

void ScriptedServer::fail(const QString& problem) {
    if (m_problem.isEmpty())
        m_problem = QStringLiteral("line %1: %2").arg(m_step + 1).arg(problem);
    if (m_client)
        m_client->abort();
}

void ScriptedServer::flush() {
    if (m_client && !m_output.isEmpty())
        m_client->write(m_output);
    m_output.clear();
}

// Plays server lines until the script waits for the client (or for time to pass).
void ScriptedServer::play() {
    while (m_client && !m_pausing && m_problem.isEmpty() && m_step < m_script.size()) {
        const QString line = m_script.at(m_step);
        if (line.startsWith(QLatin1String("S: "))) {
            m_output += line.mid(3).toUtf8() + "\r\n";
        } else if (line.startsWith(QLatin1String("S+ "))) {
            m_output += line.mid(3).toUtf8();
        } else if (line.startsWith(QLatin1String("pause "))) {
            flush();
            m_pausing = true;
            ++m_step;
            QTimer::singleShot(line.mid(6).toInt(), this, [this] {
                m_pausing = false;
                play();
            });
            return;
        } else if (line.startsWith(QLatin1String("dribble "))) {
            flush();
            m_pausing = true;
            dribble(line.section(u' ', 1, 1).toInt(), line.section(u' ', 2).toUtf8() + "\r\n", 0);
            return;
        } else if (line == QLatin1String("starttls")) {
            flush();
            auto* socket = qobject_cast<QSslSocket*>(m_client.data());
            if (!socket || m_startTls.isNull()) {
                fail(QStringLiteral("\"starttls\" without setStartTls()"));
                return;
            }
            socket->setSslConfiguration(m_startTls);
            socket->startServerEncryption();
        } else if (line == QLatin1String("close")) {
            flush();
            ++m_step;
            m_serverClosed = true;
            m_client->disconnectFromHost();
            return;
        } else {
            break; // "C:", "silent" and "next" wait for the client
        }
        ++m_step;
    }
    flush();
    readClient(); // lines that arrived while the server was talking or pausing
}

void ScriptedServer::dribble(int interval, QByteArray text, qsizetype sent) {
    QTimer::singleShot(interval, this, [this, interval, text, sent] {
        if (!m_client || !m_pausing)
            return; // the client closed: clientClosed() went past this line
        m_client->write(text.mid(sent, 1));
        if (sent + 1 < text.size()) {
            dribble(interval, text, sent + 1);
            return;
        }
        m_pausing = false;
        ++m_step;
        play();
    });
}

void ScriptedServer::readClient() {
    if (!m_client || m_pausing)
        return;
    m_input += m_client->readAll();
    for (;;) {
        const qsizetype end = m_input.indexOf("\r\n");
        if (end < 0 || !m_client)
            return;
        const QString line = QString::fromUtf8(m_input.left(end));
        m_input.remove(0, end + 2);
        m_received << line;
        Q_EMIT lineReceived(line);
        const QString expected = m_step < m_script.size() ? m_script.at(m_step) : QString();
        if (expected.startsWith(QLatin1String("C* "))) {
            // Any lines up to and including this one: the body of a message whose bytes vary.
            if (expected.mid(3) == line) {
                ++m_step;
                play();
                if (m_pausing)
                    return;
            }
            continue;
        }
        if (!expected.startsWith(QLatin1String("C: "))) {
            fail(QStringLiteral("the client sent \"%1\" where the script has \"%2\"").arg(line, expected));
            return;
        }
        if (expected.mid(3) != line) {
            fail(QStringLiteral("the client sent \"%1\", the script expects \"%2\"").arg(line, expected.mid(3)));
            return;
        }
        ++m_step;
        play();
        if (m_pausing)
            return;
    }
}

void ScriptedServer::clientClosed() {
    if (!m_client)
        return;
    m_client->disconnect(this);
    m_client = nullptr;
    const bool serverClosed = std::exchange(m_serverClosed, false);
    if (m_problem.isEmpty() && !serverClosed && m_step < m_script.size()) {
        const QString expected = m_script.at(m_step);
        if (expected == QLatin1String("silent") || expected == QLatin1String("next") ||
            expected.startsWith(QLatin1String("dribble "))) {
            ++m_step;
            m_pausing = false;
        } else
            m_problem = QStringLiteral("line %1: the client closed the connection, the script expects \"%2\"")
                            .arg(m_step + 1)
                            .arg(expected);
    }
    adoptWaiting();
}
