#pragma once

#include "settings/Keychain.h"

#include <QHash>
#include <QPair>

// A secret store in memory, for tests that are about the logic around the secret service.
class MemoryKeychain final : public KeychainBackend {
public:
    using Key = QPair<QString, QString>; // service, account

    std::optional<QByteArray> read(const QString& service, const QString& account) override {
        ++reads;
        const auto it = entries->constFind({service, account});
        if (it == entries->cend())
            return std::nullopt;
        return *it;
    }
    void write(const QString& service, const QString& account, const QByteArray& secret) override {
        entries->insert({service, account}, secret);
    }
    void remove(const QString& service, const QString& account) override { entries->remove({service, account}); }

    // Shared so that a test keeps a view after handing the backend over.
    std::shared_ptr<QHash<Key, QByteArray>> entries = std::make_shared<QHash<Key, QByteArray>>();
    int reads = 0;
};
