#include "SMTPError.h"

#include <QSslSocket>

QString SMTPError::testoConnessione(const QAbstractSocket& socket) {
    switch (socket.error()) {
    case QAbstractSocket::ConnectionRefusedError:
        return tr("il server ha rifiutato la connessione (nessun servizio su questa porta)");
    case QAbstractSocket::HostNotFoundError:
        return tr("server non trovato: controlla il nome dell'host");
    case QAbstractSocket::NetworkError:
        return tr("rete non raggiungibile");
    case QAbstractSocket::SocketTimeoutError:
        return tr("il server non risponde");
    case QAbstractSocket::SslHandshakeFailedError: {
        const auto* tls = qobject_cast<const QSslSocket*>(&socket);
        const QList<QSslError> errori = tls ? tls->sslHandshakeErrors() : QList<QSslError>();
        if (errori.isEmpty())
            return tr("il server non ha aperto una connessione cifrata: controlla la porta e l'opzione SSL/TLS");
        for (const QSslError& errore : errori)
            if (errore.error() == QSslError::HostNameMismatch)
                return tr("il certificato del server non corrisponde al nome dell'host");
        for (const QSslError& errore : errori)
            if (errore.error() == QSslError::CertificateExpired)
                return tr("il certificato del server è scaduto");
        return tr("il certificato del server non è attendibile");
    }
    case QAbstractSocket::SslInternalError:
    case QAbstractSocket::SslInvalidUserDataError:
        return tr("la connessione cifrata non è riuscita");
    default:
        return socket.errorString();
    }
}
