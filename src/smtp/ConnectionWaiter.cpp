#include "ConnectionWaiter.h"

#include <QSslSocket>

ConnectionWaiter::ConnectionWaiter(QSslSocket* socket, bool tls) {
    if (tls)
        connect(socket, &QSslSocket::encrypted, this, &ConnectionWaiter::settle);
    else
        connect(socket, &QAbstractSocket::connected, this, &ConnectionWaiter::settle);
    connect(socket, &QAbstractSocket::errorOccurred, this, &ConnectionWaiter::settle);
    connect(socket, &QAbstractSocket::disconnected, this, &ConnectionWaiter::settle);
}

void ConnectionWaiter::settle() {
    if (m_settled)
        return;
    m_settled = true;
    Q_EMIT settled();
}
