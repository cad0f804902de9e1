#include "WireTap.h"

#include <QTcpSocket>

WireTap::WireTap(QString serverAddress, quint16 serverPort, QObject* parent)
    : QObject(parent), m_serverAddress(std::move(serverAddress)), m_serverPort(serverPort) {
    connect(&m_listener, &QTcpServer::newConnection, this, &WireTap::accept);
}

WireTap::~WireTap() {
    for (QTcpSocket* socket : std::as_const(m_sockets))
        if (socket)
            socket->abort();
}

bool WireTap::listen(const QString& address) {
    return m_listener.listen(QHostAddress(address), 0);
}

void WireTap::accept() {
    while (QTcpSocket* client = m_listener.nextPendingConnection()) {
        auto* server = new QTcpSocket(this);
        m_sockets << client << server;
        // Writes made while the upstream connection is still opening wait in its buffer.
        server->connectToHost(m_serverAddress, m_serverPort);
        connect(client, &QTcpSocket::readyRead, this, [this, client, server] {
            const QByteArray bytes = client->readAll();
            m_fromClient += bytes;
            server->write(bytes);
        });
        connect(server, &QTcpSocket::readyRead, this, [this, client, server] {
            const QByteArray bytes = server->readAll();
            m_fromServer += bytes;
            client->write(bytes);
        });
        connect(client, &QTcpSocket::disconnected, server, &QTcpSocket::disconnectFromHost);
        connect(server, &QTcpSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
    }
}
