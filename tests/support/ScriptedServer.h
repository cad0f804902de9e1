#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSslConfiguration>
#include <QStringList>
#include <QTcpServer>

#include "TestCA.h"

#include <memory>
#include <utility>

class QTcpSocket;

// An in-process SMTP peer that plays a script, for the protocol faults a real server won't produce.
// It listens on the test's own loopback address (Loopback.h), on a port of the system's choosing.
//
// Script lines:
//   "C: text"    the client must send exactly this line next (without its CR LF)
//   "C* text"    the client sends any lines, then exactly this one (a message body that varies)
//   "S: text"    the server sends the line and CR LF
//   "S+ text"    the server sends the text with no line end: the first part of a line
//   "pause N"    the server sends what it has and waits N ms, so the client reads in two goes
//   "close"      the server closes the connection; the rest plays on the next one
//   "dribble N text"  the server sends the text and CR LF one byte every N ms; a close by the client ends it
//   "starttls"   the server sends what it has, then starts TLS on this connection (see setStartTls)
//   "silent"     the server says nothing more; reached when the client closes the connection
//   "next"       this connection is over once the client closes it; the rest plays on the next one
// Consecutive S lines go out in one write, so they reach the client together.
//
// Connections are served one at a time, in the order they came.
// Anything off script (another line, a line after the end, a close while a line is due) is recorded in
// problem() and the connection is closed. usedUp() is true once every line has been played with no problem.
class ScriptedServer : public QObject {
    Q_OBJECT
public:
    explicit ScriptedServer(QStringList script, QObject* parent = nullptr);
    ~ScriptedServer() override;

    // TLS from the first byte with this configuration (certificate and key); plain TCP otherwise.
    void setTls(const QSslConfiguration& configuration);
    // Plain TCP that the script's "starttls" turns into TLS with this configuration.
    void setStartTls(const QSslConfiguration& configuration);
    // The configuration of a server that presents a certificate the test CA issued.
    static QSslConfiguration tlsConfiguration(const TestCA::Issued& issued);
    bool listen(const QString& address);
    quint16 port() const;

    bool usedUp() const { return m_problem.isEmpty() && m_step == m_script.size(); }
    QString problem() const;
    QStringList received() const { return m_received; } // every line the client sent, in order
    int connectionCount() const { return m_connections; }

Q_SIGNALS:
    void lineReceived(const QString& line); // as each line of the client's is read, before the script answers

private:
    void accept();
    void adoptWaiting();
    void readClient();
    void clientClosed();
    void play();
    void fail(const QString& problem);
    void flush();
    void dribble(int interval, QByteArray text, qsizetype sent);

    QSslConfiguration m_startTls;
    QStringList m_script;
    qsizetype m_step = 0;
    std::unique_ptr<QTcpServer> m_server;
    QPointer<QTcpSocket> m_client;
    QList<QPointer<QTcpSocket>> m_waiting;
    QByteArray m_input;
    QByteArray m_output;
    QStringList m_received;
    QString m_problem;
    int m_connections = 0;
    bool m_pausing = false;
    bool m_serverClosed = false;
};
