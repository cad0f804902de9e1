#pragma once

#include "TestCA.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPair>
#include <QSslServer>
#include <QUrl>

class QSslSocket;

// A small HTTPS server for tests of HTTP APIs: it presents a certificate of the test CA, answers each
// request with a canned response chosen by path and query, and records every request it got.
// HTTP/1.1, one request per connection.
class HttpsServer : public QObject {
    Q_OBJECT
public:
    struct Response {
        int status = 200;
        QByteArray body;
        QList<QPair<QByteArray, QByteArray>> headers; // Content-Type: application/json unless given
    };
    struct Request {
        QByteArray method;
        QUrl url;                              // path and query as sent
        QHash<QByteArray, QByteArray> headers; // names lower-cased
        QByteArray body;
        QByteArray header(const QByteArray& name) const { return headers.value(name.toLower()); }
    };

    HttpsServer(TestCA& ca, QString address, QObject* parent = nullptr);

    // Listens on a free port of the address.
    bool listen();
    // "https://<address>:<port>"
    QUrl baseUrl() const;

    // Requests for `path` whose query holds every item of `query` get `response`. Routes are tried in
    // the order they were added; a request that matches none gets a 404.
    void answer(const QString& path, const Response& response, const QList<QPair<QString, QString>>& query = {});
    void clearRoutes() { m_routes.clear(); }

    QList<Request> requests() const { return m_requests; }
    void clearRequests() { m_requests.clear(); }

private:
    struct Route {
        QString path;
        QList<QPair<QString, QString>> query;
        Response response;
    };

    void accept();
    void readFrom(QSslSocket* socket);
    Response responseFor(const Request& request) const;
    static QByteArray serialise(const Response& response);

    QString m_address;
    QSslServer m_server;
    QList<Route> m_routes;
    QList<Request> m_requests;
    QHash<QSslSocket*, QByteArray> m_buffers;
    bool m_configured = false;
};
