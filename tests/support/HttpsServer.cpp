#include "HttpsServer.h"

#include <QFile>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QUrlQuery>

namespace {

QByteArray reasonPhrase(int status) {
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 429:
        return "Too Many Requests";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

HttpsServer::HttpsServer(TestCA& ca, QString address, QObject* parent)
    : QObject(parent), m_address(std::move(address)) {
    const TestCA::Issued issued = ca.issue(m_address, {QStringLiteral("localhost")}, {m_address});
    const QList<QSslCertificate> chain = QSslCertificate::fromPath(issued.certificatePath, QSsl::Pem);
    const QSslKey key(readFile(issued.keyPath), QSsl::Ec, QSsl::Pem);
    if (chain.isEmpty() || key.isNull())
        return;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(chain.first());
    configuration.setPrivateKey(key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setAllowedNextProtocols({QByteArrayLiteral("http/1.1")});
    m_server.setSslConfiguration(configuration);
    m_configured = true;
    connect(&m_server, &QTcpServer::pendingConnectionAvailable, this, &HttpsServer::accept);
}

bool HttpsServer::listen() {
    return m_configured && m_server.listen(QHostAddress(m_address), 0);
}

QUrl HttpsServer::baseUrl() const {
    QUrl url;
    url.setScheme(QStringLiteral("https"));
    url.setHost(m_address);
    url.setPort(m_server.serverPort());
    return url;
}

void HttpsServer::answer(const QString& path, const Response& response, const QList<QPair<QString, QString>>& query) {
    m_routes.append({path, query, response});
}

void HttpsServer::accept() {
    while (m_server.hasPendingConnections()) {
        auto* socket = qobject_cast<QSslSocket*>(m_server.nextPendingConnection());
        if (!socket)
            continue;
        connect(socket, &QSslSocket::readyRead, this, [this, socket] { readFrom(socket); });
        connect(socket, &QSslSocket::disconnected, this, [this, socket] {
            m_buffers.remove(socket);
            socket->deleteLater();
        });
        // The request may have arrived with the end of the handshake, before anyone listened.
        readFrom(socket);
    }
}

void HttpsServer::readFrom(QSslSocket* socket) {
    QByteArray& buffer = m_buffers[socket];
    buffer += socket->readAll();
    const qsizetype headerEnd = buffer.indexOf("\r\n\r\n");
    if (headerEnd < 0)
        return;
    Request request;
    const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    if (requestLine.size() < 2) {
        socket->disconnectFromHost();
        return;
    }
    request.method = requestLine.at(0);
    request.url = QUrl::fromEncoded(requestLine.at(1));
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines.at(i).indexOf(':');
        if (colon > 0)
            request.headers.insert(lines.at(i).left(colon).trimmed().toLower(), lines.at(i).mid(colon + 1).trimmed());
    }
    const qsizetype length = request.headers.value("content-length").toLongLong();
    if (buffer.size() < headerEnd + 4 + length)
        return;
    request.body = buffer.mid(headerEnd + 4, length);
    buffer.clear();
    m_requests.append(request);
    socket->write(serialise(responseFor(request)));
    socket->disconnectFromHost();
}

HttpsServer::Response HttpsServer::responseFor(const Request& request) const {
    const QUrlQuery query(request.url);
    for (const Route& route : m_routes) {
        if (route.path != request.url.path())
            continue;
        bool matches = true;
        for (const auto& item : route.query)
            matches = matches && query.hasQueryItem(item.first) && query.queryItemValue(item.first) == item.second;
        if (matches)
            return route.response;
    }
    return {404, R"({"message":"not found"})", {}};
}

QByteArray HttpsServer::serialise(const Response& response) {
    QByteArray out = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' + reasonPhrase(response.status) + "\r\n";
    bool hasType = false;
    for (const auto& header : response.headers) {
        hasType = hasType || header.first.toLower() == "content-type";
        out += header.first + ": " + header.second + "\r\n";
    }
    const bool noBody = response.status == 204 || response.status == 304;
    if (!hasType && !noBody)
        out += "Content-Type: application/json\r\n";
    if (!noBody)
        out += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
    out += "Connection: close\r\n\r\n";
    if (!noBody)
        out += response.body;
    return out;
}
