#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

// Where the secrets really live. The program uses the platform's secret service; tests may put an
// in-memory one in its place.
class KeychainBackend {
public:
    virtual ~KeychainBackend() = default;
    // Nothing when the entry is missing or the secret service can't answer.
    virtual std::optional<QByteArray> read(const QString& service, const QString& account) = 0;
    virtual void write(const QString& service, const QString& account, const QByteArray& secret) = 0;
    virtual void remove(const QString& service, const QString& account) = 0;
};

// Passwords by service and account. The operations are synchronous: each waits for the secret service
// in a local loop that takes no user input.
namespace Keychain {

inline const QString servizio = QStringLiteral("com.velarmo.Brezzario.smtp");
inline const QString servizioPrecedente = QStringLiteral("com.velarmo.Lumacco.smtp");
inline const QString accountBrevo = QStringLiteral("brevo-api");

// An entry found only under the former product's service is copied under ours on first read.
std::optional<QString> password(const QString& account, const QString& service = servizio);
// Replaces the entry; an empty password removes it.
void setPassword(const QString& password, const QString& account, const QString& service = servizio);
void delete_(const QString& account, const QString& service = servizio);

// Test seam: nullptr restores the platform's secret service.
void setBackend(std::unique_ptr<KeychainBackend> backend);
std::unique_ptr<KeychainBackend> platformBackend();

} // namespace Keychain
