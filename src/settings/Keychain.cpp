#include "settings/Keychain.h"

#include <QStringDecoder>

namespace Keychain {

namespace {
std::unique_ptr<KeychainBackend>& backendSlot() {
    static std::unique_ptr<KeychainBackend> backend;
    return backend;
}

KeychainBackend& backend() {
    auto& slot = backendSlot();
    if (!slot)
        slot = platformBackend();
    return *slot;
}

std::optional<QString> readText(const QString& account, const QString& service) {
    const auto bytes = backend().read(service, account);
    if (!bytes)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(*bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}
} // namespace

std::optional<QString> password(const QString& account, const QString& service) {
    if (account.isEmpty())
        return std::nullopt;
    if (auto found = readText(account, service))
        return found;
    if (service != servizio)
        return std::nullopt;
    auto former = readText(account, servizioPrecedente);
    if (former)
        setPassword(*former, account, servizio); // moves over for good; the old entry stays
    return former;
}

void setPassword(const QString& password, const QString& account, const QString& service) {
    if (account.isEmpty())
        return;
    backend().remove(service, account);
    if (password.isEmpty())
        return;
    backend().write(service, account, password.toUtf8());
}

void delete_(const QString& account, const QString& service) {
    backend().remove(service, account);
}

void setBackend(std::unique_ptr<KeychainBackend> replacement) {
    backendSlot() = std::move(replacement);
}

} // namespace Keychain
