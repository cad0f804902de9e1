#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

// The settings of one sending account. A plain value, compared field by field.
struct SMTPConfig {
    QString host = defaultHost();
    int port = 465;
    bool useTLS = true; // TLS from the first byte
    QString username;
    QString fromName;
    QString fromEmail;
    QString replyTo;
    double delayBetweenMessages = 2.0; // seconds between messages
    int dailyLimit = 500;              // messages in a rolling 24 hours; 0 or less means no limit
    bool piePaginaAttivo = true;
    QString emailDisiscrizione;
    QString mittentePostale;
    QString motivazioneContatto = defaultMotivazione();
    bool escludiRifiutati = true;
    bool verificaDomini = true;

    bool operator==(const SMTPConfig&) const = default;

    static QString defaultHost(); // Aruba's server
    static QString defaultMotivazione();

    // The address for unsubscribe requests: the first valid one of emailDisiscrizione, replyTo and
    // fromEmail, trimmed and lower-cased; "" when none is valid.
    QString indirizzoDisiscrizione() const;

    QJsonObject toJson() const;
    // Tolerant of missing or null keys, which take their defaults; a key with a value of the wrong
    // type fails the whole decoding.
    static std::optional<SMTPConfig> fromJson(const QJsonObject& object);
    static std::optional<SMTPConfig> fromJsonBytes(const QByteArray& bytes);
};
