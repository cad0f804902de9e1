#pragma once

#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A certificate authority made with openssl when a test starts. Servers in tests present certificates
// it issued; the client trusts it in-process through QSslConfiguration, never system-wide.
class TestCA {
public:
    struct Issued {
        QString certificatePath;
        QString keyPath;
    };

    TestCA();
    bool isValid() const { return m_valid; }
    QString certificatePath() const { return m_dir.filePath(QStringLiteral("ca.pem")); }
    QList<QSslCertificate> certificates() const;

    // A server certificate for the given host names and IP addresses.
    Issued issue(const QString& name, const QStringList& dnsNames, const QStringList& ipAddresses = {});

private:
    bool openssl(const QStringList& arguments);

    QTemporaryDir m_dir;
    bool m_valid = false;
    int m_serial = 0;
};
