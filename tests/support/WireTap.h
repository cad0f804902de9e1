#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpServer>

class QTcpSocket;

// A relay between the client under test and a real server that keeps every byte crossing it either way,
// to show what an eavesdropper on the network would read. It listens on the test's own loopback address
// (Loopback.h), on a port of the system's choosing, and forwards each connection to the server.
class WireTap : public QObject {
    Q_OBJECT
public:
    WireTap(QString serverAddress, quint16 serverPort, QObject* parent = nullptr);
    ~WireTap() override;

    bool listen(const QString& address);
    quint16 port() const { return m_listener.serverPort(); }

    QByteArray fromClient() const { return m_fromClient; } // every connection's, one after the other
    QByteArray fromServer() const { return m_fromServer; }

private:
    void accept();

    QString m_serverAddress;
    quint16 m_serverPort;
    QTcpServer m_listener;
    QList<QPointer<QTcpSocket>> m_sockets;
    QByteArray m_fromClient;
    QByteArray m_fromServer;
};
