#include "TestCA.h"

#include <QFile>
#include <QProcess>

bool TestCA::openssl(const QStringList& arguments) {
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qWarning("openssl %s failed: %s", qUtf8Printable(arguments.join(u' ')),
                 process.readAllStandardError().constData());
        return false;
    }
    return true;
}

TestCA::TestCA() {
    m_valid = openssl({"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout",
                       "ca.key", "-out", "ca.pem", "-days", "2", "-subj", "/CN=Brezzario Test CA", "-addext",
                       "basicConstraints=critical,CA:TRUE", "-addext", "keyUsage=critical,keyCertSign,cRLSign"});
}

QList<QSslCertificate> TestCA::certificates() const {
    return QSslCertificate::fromPath(certificatePath(), QSsl::Pem);
}

TestCA::Issued TestCA::issue(const QString& name, const QStringList& dnsNames, const QStringList& ipAddresses) {
    const QString base = QStringLiteral("server%1").arg(++m_serial);
    QStringList alternatives;
    for (const QString& dns : dnsNames)
        alternatives << QStringLiteral("DNS:") + dns;
    for (const QString& ip : ipAddresses)
        alternatives << QStringLiteral("IP:") + ip;
    QFile extensions(m_dir.filePath(base + QStringLiteral(".ext")));
    if (extensions.open(QIODevice::WriteOnly)) {
        extensions.write("basicConstraints=CA:FALSE\nextendedKeyUsage=serverAuth\n");
        if (!alternatives.isEmpty())
            extensions.write("subjectAltName=" + alternatives.join(u',').toUtf8() + "\n");
        extensions.close();
    }
    const bool ok =
        openssl({"req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", base + ".key",
                 "-out", base + ".csr", "-subj", "/CN=" + name}) &&
        openssl({"x509", "-req", "-in", base + ".csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-set_serial",
                 QString::number(1000 + m_serial), "-out", base + ".pem", "-days", "2", "-extfile", base + ".ext"});
    if (!ok)
        return {};
    return {m_dir.filePath(base + ".pem"), m_dir.filePath(base + ".key")};
}
