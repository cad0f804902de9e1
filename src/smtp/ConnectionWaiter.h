#pragma once

#include <QObject>

class QSslSocket;

// Wakes the task that opens a connection, or upgrades it to TLS, exactly once: on the first of "ready"
// (connected for plain TCP, encrypted for TLS), an error or a close. The socket keeps emitting after that;
// later events are ignored so the waiting task can't be resumed twice.
class ConnectionWaiter : public QObject {
    Q_OBJECT
public:
    ConnectionWaiter(QSslSocket* socket, bool tls);
    bool isSettled() const { return m_settled; }

Q_SIGNALS:
    void settled();

private:
    void settle();

    bool m_settled = false;
};
