#include "NsdServer.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>

namespace {

bool writeText(const QString& path, const QString& text) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text.toUtf8()) >= 0;
}

QString nsdExecutable() {
    const QString found = QStandardPaths::findExecutable(QStringLiteral("nsd"),
                                                         {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")});
    return found.isEmpty() ? QStringLiteral("nsd") : found;
}

} // namespace

NsdServer::NsdServer(QString address) : m_address(std::move(address)) {}

NsdServer::~NsdServer() {
    stop();
}

QString NsdServer::log() const {
    QFile file(m_dir.filePath(QStringLiteral("nsd.log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

bool NsdServer::writeFiles(const QList<Zone>& zones) {
    const QString folder = m_dir.path();
    QString config = QStringLiteral("server:\n"
                                    "  ip-address: %1@53\n"
                                    "  username: \"\"\n"
                                    "  chroot: \"\"\n"
                                    "  database: \"\"\n"
                                    "  zonesdir: \"%2\"\n"
                                    "  pidfile: \"%2/nsd.pid\"\n"
                                    "  zonelistfile: \"%2/zone.list\"\n"
                                    "  xfrdfile: \"%2/xfrd.state\"\n"
                                    "  server-count: 1\n"
                                    "  verbosity: 1\n"
                                    "remote-control:\n"
                                    "  control-enable: no\n")
                         .arg(m_address, folder);
    int index = 0;
    for (const Zone& zone : zones) {
        const QString file = QStringLiteral("zone%1.txt").arg(++index);
        const QString text = QStringLiteral("$ORIGIN %1.\n$TTL 60\n"
                                            "@ IN SOA ns.nsd.invalid. hostmaster.nsd.invalid. 1 3600 600 86400 60\n"
                                            "@ IN NS ns.nsd.invalid.\n%2\n")
                                 .arg(zone.name, zone.records);
        if (!writeText(m_dir.filePath(file), text))
            return false;
        config += QStringLiteral("zone:\n  name: \"%1\"\n  zonefile: \"%2/%3\"\n").arg(zone.name, folder, file);
    }
    return writeText(m_dir.filePath(QStringLiteral("nsd.conf")), config);
}

bool NsdServer::answers(const QString& zone) const {
    QProcess dig;
    dig.start(QStringLiteral("/usr/bin/dig"),
              {QStringLiteral("+short"), QStringLiteral("+time=1"), QStringLiteral("+tries=1"), QStringLiteral("SOA"),
               zone, QStringLiteral("@") + m_address});
    if (!dig.waitForFinished(5'000))
        return false;
    const QByteArray output = dig.readAllStandardOutput();
    return !output.trimmed().isEmpty() && !output.startsWith(';');
}

bool NsdServer::start(const QList<Zone>& zones) {
    stop();
    m_error.clear();
    if (!m_dir.isValid() || zones.isEmpty() || !writeFiles(zones)) {
        m_error = QStringLiteral("could not write the NSD files");
        return false;
    }
    // A test that crashes must not leave a server holding its address: nsd ends with its parent.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(m_dir.filePath(QStringLiteral("nsd.log")));
    m_process.start(nsdExecutable(),
                    {QStringLiteral("-d"), QStringLiteral("-c"), m_dir.filePath(QStringLiteral("nsd.conf"))});
    if (!m_process.waitForStarted(10'000)) {
        m_error = QStringLiteral("nsd could not be started: ") + m_process.errorString();
        return false;
    }
    const QDeadlineTimer deadline(15'000);
    while (!deadline.hasExpired()) {
        if (answers(zones.first().name))
            return true;
        if (m_process.waitForFinished(50)) {
            m_error = QStringLiteral("nsd ended at start:\n") + log();
            return false;
        }
    }
    m_error = QStringLiteral("nsd never answered:\n") + log();
    stop();
    return false;
}

void NsdServer::stop() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(10'000)) {
        m_process.kill();
        m_process.waitForFinished(5'000);
    }
}
