#include "checks/Dig.h"

#include <QMutex>
#include <QMutexLocker>
#include <QProcess>
#include <QStringDecoder>

#include <QCoro/QCoroSignal>

namespace Dig {

namespace {

struct Seams {
    QMutex lock;
    QString resolver;
    QString executable;
};

Seams& seams() {
    static Seams instance;
    return instance;
}

QString resolver() {
    QMutexLocker locker(&seams().lock);
    return seams().resolver.isEmpty() ? QString::fromLatin1(publicResolver) : seams().resolver;
}

QString executable() {
    QMutexLocker locker(&seams().lock);
    return seams().executable.isEmpty() ? QString::fromLatin1(defaultExecutable) : seams().executable;
}

// Fires once, when the process has ended or could not be started at all; QProcess tells those two
// apart with different signals, and a wait must end on either.
class ProcessEnd : public QObject {
    Q_OBJECT
public:
    explicit ProcessEnd(QProcess& process) {
        connect(&process, &QProcess::finished, this, &ProcessEnd::fire);
        connect(&process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                fire();
        });
    }

Q_SIGNALS:
    void ended();

private:
    void fire() {
        if (m_fired)
            return;
        m_fired = true;
        Q_EMIT ended();
    }
    bool m_fired = false;
};

} // namespace

QStringList arguments(const QString& type, const QString& name) {
    return {QStringLiteral("+short"),        QStringLiteral("+time=3"), QStringLiteral("+tries=1"), type, name,
            QStringLiteral("@") + resolver()};
}

QStringList answerPieces(const QByteArray& output) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(output);
    if (decoder.hasError())
        return {};
    QStringList pieces;
    for (const QString& piece : text.split(u'\n', Qt::SkipEmptyParts))
        if (!piece.startsWith(u';'))
            pieces.append(piece);
    return pieces;
}

QCoro::Task<QStringList> query(QString type, QString name) {
    QProcess process;
    process.setProgram(executable());
    process.setArguments(arguments(type, name));
    // The error channel is never read; QProcess drains it so that dig can't block on a full pipe.
    process.setProcessChannelMode(QProcess::SeparateChannels);
    ProcessEnd end(process);
    process.start(QIODevice::ReadOnly);
    // dig's own arguments bound the wait (one try of three seconds), so there is no time-out here.
    if (process.state() != QProcess::NotRunning)
        co_await qCoro(&end, &ProcessEnd::ended);
    if (process.error() == QProcess::FailedToStart)
        co_return QStringList{};
    co_return answerPieces(process.readAllStandardOutput());
}

void setResolverForTests(const QString& address) {
    QMutexLocker locker(&seams().lock);
    seams().resolver = address;
}

void setExecutableForTests(const QString& path) {
    QMutexLocker locker(&seams().lock);
    seams().executable = path;
}

} // namespace Dig

#include "Dig.moc"
