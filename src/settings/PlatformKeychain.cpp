#include "settings/Keychain.h"

#include <QEventLoop>
#include <qt6keychain/keychain.h>
#include <QTimer>

namespace {

// The secret service answers asynchronously. Waiting in a local loop that takes no user input keeps
// the three operations synchronous; the guard makes a secret service that never answers read as absent.
constexpr int guardMilliseconds = 20'000;

bool runAndWait(QKeychain::Job& job) {
    job.setAutoDelete(false);
    QEventLoop loop;
    bool finished = false;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, &loop, &QEventLoop::quit);
    guard.start(guardMilliseconds);
    job.start();
    if (!finished)
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    return finished && job.error() == QKeychain::NoError;
}

class PlatformKeychain final : public KeychainBackend {
public:
    std::optional<QByteArray> read(const QString& service, const QString& account) override {
        QKeychain::ReadPasswordJob job(service);
        job.setKey(account);
        if (!runAndWait(job))
            return std::nullopt;
        return job.binaryData();
    }

    void write(const QString& service, const QString& account, const QByteArray& secret) override {
        QKeychain::WritePasswordJob job(service);
        job.setKey(account);
        job.setBinaryData(secret);
        runAndWait(job);
    }

    void remove(const QString& service, const QString& account) override {
        QKeychain::DeletePasswordJob job(service);
        job.setKey(account);
        runAndWait(job);
    }
};

} // namespace

std::unique_ptr<KeychainBackend> Keychain::platformBackend() {
    return std::make_unique<PlatformKeychain>();
}
