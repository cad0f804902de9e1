#include "HostNameCheck.h"

#include <QHostAddress>
#include <QMultiMap>
#include <QSslCertificate>
#include <QSslSocket>
#include <QUrl>

namespace HostNameCheck {

namespace {

QString withoutTrailingDot(QString name) {
    if (name.endsWith(u'.'))
        name.chop(1);
    return name;
}

// The ASCII form in lower case; empty when the name can't be one.
QString asciiName(const QString& name) {
    return QString::fromLatin1(QUrl::toAce(withoutTrailingDot(name.trimmed()))).toLower();
}

bool matchesDnsName(const QString& pattern, const QString& host) {
    const QString name = withoutTrailingDot(pattern.trimmed()).toLower();
    if (name.isEmpty() || host.isEmpty())
        return false;
    if (!name.startsWith(QLatin1String("*.")))
        return !name.contains(u'*') && asciiName(name) == host;
    // "*.example.com" stands for one whole label in front of at least two more: never "*.com", never
    // "a.b.example.com", never a label that only begins or ends like the pattern.
    const QString rest = name.mid(2);
    if (rest.contains(u'*') || !rest.contains(u'.') || rest.startsWith(u'.') || rest.endsWith(u'.'))
        return false;
    const qsizetype dot = host.indexOf(u'.');
    return dot > 0 && QStringView(host).mid(dot + 1) == asciiName(rest);
}

} // namespace

bool matches(const QSslCertificate& certificate, const QString& host) {
    if (certificate.isNull())
        return false;
    QString typed = host.trimmed();
    if (typed.startsWith(u'[') && typed.endsWith(u']'))
        typed = typed.mid(1, typed.size() - 2);
    const auto names = certificate.subjectAlternativeNames();
    const QHostAddress address(typed);
    if (!address.isNull()) {
        for (const QString& entry : names.values(QSsl::AlternativeNameEntryType::IpAddressEntry))
            if (QHostAddress(entry).isEqual(address, QHostAddress::StrictConversion))
                return true;
        return false;
    }
    const QString ascii = asciiName(typed);
    for (const QString& entry : names.values(QSsl::AlternativeNameEntryType::DnsEntry))
        if (matchesDnsName(entry, ascii))
            return true;
    return false;
}

void install(QSslSocket* socket, const QString& host) {
    socket->setPeerVerifyName(host);
    QObject::connect(socket, &QSslSocket::sslErrors, socket, [socket, host](const QList<QSslError>& errors) {
        QList<QSslError> mismatches;
        for (const QSslError& error : errors)
            if (error.error() == QSslError::HostNameMismatch)
                mismatches << error;
        if (!mismatches.isEmpty() && matches(mismatches.first().certificate(), host))
            socket->ignoreSslErrors(mismatches);
    });
}

} // namespace HostNameCheck
