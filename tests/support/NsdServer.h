#pragma once

#include <QList>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A real authoritative DNS server: NSD in the foreground on one loopback address and port 53, serving
// zones that the test writes as text, with its configuration, state and log in a folder of its own. The
// server is stopped with the object.
class NsdServer {
public:
    struct Zone {
        QString name;    // "ditta.it"
        QString records; // zone-file lines relative to the zone's name; SOA and NS are added
    };

    explicit NsdServer(QString address);
    ~NsdServer();
    NsdServer(const NsdServer&) = delete;
    NsdServer& operator=(const NsdServer&) = delete;

    // Writes the files, starts nsd and waits until /usr/bin/dig gets an answer from it. On failure the
    // reason, with what nsd wrote, is in error().
    bool start(const QList<Zone>& zones);
    void stop();

    QString address() const { return m_address; }
    QString error() const { return m_error; }
    QString log() const;

private:
    bool writeFiles(const QList<Zone>& zones);
    bool answers(const QString& zone) const;

    QString m_address;
    QTemporaryDir m_dir;
    QProcess m_process;
    QString m_error;
};
