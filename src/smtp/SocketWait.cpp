#include "SocketWait.h"

#include <QAbstractSocket>

SocketWait::SocketWait(QAbstractSocket& socket, std::chrono::milliseconds timeout)
    : m_socket(socket), m_timeout(timeout) {
    m_timer.setSingleShot(true);
}

SocketWait::~SocketWait() {
    disconnectAll();
}

void SocketWait::await_suspend(std::coroutine_handle<> awaiting) {
    m_awaiting = awaiting;
    const auto wake = [this] { this->wake(); };
    m_connections[0] = QObject::connect(&m_socket, &QIODevice::readyRead, &m_socket, wake, Qt::DirectConnection);
    m_connections[1] =
        QObject::connect(&m_socket, &QAbstractSocket::disconnected, &m_socket, wake, Qt::DirectConnection);
    m_connections[2] =
        QObject::connect(&m_socket, &QAbstractSocket::errorOccurred, &m_socket, wake, Qt::DirectConnection);
    m_connections[3] = QObject::connect(&m_timer, &QTimer::timeout, &m_timer, wake, Qt::DirectConnection);
    m_timer.start(m_timeout);
}

void SocketWait::wake() {
    // Once only: the socket may signal again before the resumed coroutine waits anew, and this object is gone
    // as soon as it has resumed.
    if (!m_awaiting)
        return;
    disconnectAll();
    m_timer.stop();
    std::exchange(m_awaiting, {}).resume();
}

void SocketWait::disconnectAll() {
    for (QMetaObject::Connection& connection : m_connections)
        QObject::disconnect(connection);
}
