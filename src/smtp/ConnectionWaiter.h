#pragma once

#include <QObject>

class QTcpSocket;

// Wakes the task that opens a connection exactly once: on the first of "ready" (connected, or encrypted
// for TLS), an error or a close. The socket keeps emitting after that; later events are ignored so the
// waiting task can't be resumed twice.
class ConnectionWaiter : public QObject {
    Q_OBJECT
public:
    ConnectionWaiter(QTcpSocket* socket, bool tls);
    bool isSettled() const { return m_settled; }

Q_SIGNALS:
    void settled();

private:
    void settle();

    bool m_settled = false;
};
