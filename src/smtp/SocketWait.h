#pragma once

#include <QMetaObject>
#include <QTimer>

#include <chrono>
#include <coroutine>

class QAbstractSocket;

// Awaits the next of: bytes to read, the connection's end or failure, the deadline. The waiting coroutine is
// resumed from inside the socket's own signal. QCoro's wait posts the wake-up to the event loop instead, and
// on a fast server each of a message's four round trips then paid for a further turn of the loop and three
// more system calls. Whichever comes first wins; the caller looks at the socket to tell which.
class SocketWait {
public:
    SocketWait(QAbstractSocket& socket, std::chrono::milliseconds timeout);
    // QCoro's task takes the awaiter by value before the wait begins: a copy starts afresh.
    SocketWait(const SocketWait& other) : SocketWait(other.m_socket, other.m_timeout) {}
    SocketWait& operator=(const SocketWait&) = delete;
    ~SocketWait();

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> awaiting);
    void await_resume() const noexcept {}

private:
    void wake();
    void disconnectAll();

    QAbstractSocket& m_socket;
    std::chrono::milliseconds m_timeout;
    QTimer m_timer;
    std::coroutine_handle<> m_awaiting;
    QMetaObject::Connection m_connections[4];
};
