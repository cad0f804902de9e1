#pragma once

#include <QString>

class QSslCertificate;
class QSslSocket;

// Whether a server's certificate names the host the user typed, as RFC 6125 has it: a host name against
// the DNS names of the subjectAltName, where a wildcard stands only for a whole leftmost label; an IP
// address against its IP entries; the subject's common name never. Qt's own check also trusts the common
// name and partial wildcards, so it is replaced by this one.
namespace HostNameCheck {

bool matches(const QSslCertificate& certificate, const QString& host);

// Before the handshake: Qt's host-name verdict gives way to matches(), and only that verdict. Every other
// fault of the certificate still fails the handshake. After it, the caller checks matches() once more,
// since Qt may have accepted what this check refuses.
void install(QSslSocket* socket, const QString& host);

} // namespace HostNameCheck
