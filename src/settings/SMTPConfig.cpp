#include "settings/SMTPConfig.h"

#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "settings/Preset.h"

#include <QJsonDocument>

#include <climits>

QString SMTPConfig::defaultHost() {
    return hostOf(Preset::aruba);
}

QString SMTPConfig::defaultMotivazione() {
    return QStringLiteral("Ricevi questo messaggio perché il tuo indirizzo è tra i contatti della nostra attività.");
}

QString SMTPConfig::indirizzoDisiscrizione() const {
    for (const QString* candidate : {&emailDisiscrizione, &replyTo, &fromEmail})
        if (isValidEmailSyntax(*candidate))
            return Text::normalizedAddress(*candidate);
    return {};
}

QJsonObject SMTPConfig::toJson() const {
    return {
        {"host", host},
        {"port", port},
        {"useTLS", useTLS},
        {"username", username},
        {"fromName", fromName},
        {"fromEmail", fromEmail},
        {"replyTo", replyTo},
        {"delayBetweenMessages", delayBetweenMessages},
        {"dailyLimit", dailyLimit},
        {"piePaginaAttivo", piePaginaAttivo},
        {"emailDisiscrizione", emailDisiscrizione},
        {"mittentePostale", mittentePostale},
        {"motivazioneContatto", motivazioneContatto},
        {"escludiRifiutati", escludiRifiutati},
        {"verificaDomini", verificaDomini},
    };
}

namespace {
// Each reader leaves the field alone when the key is absent or null, and fails on a wrong type.
bool readText(const QJsonObject& o, const char* key, QString& field) {
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isString())
        return false;
    field = v.toString();
    return true;
}

bool readBool(const QJsonObject& o, const char* key, bool& field) {
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isBool())
        return false;
    field = v.toBool();
    return true;
}

bool readDouble(const QJsonObject& o, const char* key, double& field) {
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isDouble())
        return false;
    field = v.toDouble();
    return true;
}

// JSON has one number type; an integer field takes only numbers without a fraction that fit.
bool readInt(const QJsonObject& o, const char* key, int& field) {
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isDouble())
        return false;
    const double d = v.toDouble();
    if (d != static_cast<double>(static_cast<long long>(d)) || d < INT_MIN || d > INT_MAX)
        return false;
    field = static_cast<int>(d);
    return true;
}
} // namespace

std::optional<SMTPConfig> SMTPConfig::fromJson(const QJsonObject& o) {
    SMTPConfig c;
    const bool ok =
        readText(o, "host", c.host) && readInt(o, "port", c.port) && readBool(o, "useTLS", c.useTLS) &&
        readText(o, "username", c.username) && readText(o, "fromName", c.fromName) &&
        readText(o, "fromEmail", c.fromEmail) && readText(o, "replyTo", c.replyTo) &&
        readDouble(o, "delayBetweenMessages", c.delayBetweenMessages) && readInt(o, "dailyLimit", c.dailyLimit) &&
        readBool(o, "piePaginaAttivo", c.piePaginaAttivo) && readText(o, "emailDisiscrizione", c.emailDisiscrizione) &&
        readText(o, "mittentePostale", c.mittentePostale) &&
        readText(o, "motivazioneContatto", c.motivazioneContatto) &&
        readBool(o, "escludiRifiutati", c.escludiRifiutati) && readBool(o, "verificaDomini", c.verificaDomini);
    if (!ok)
        return std::nullopt;
    return c;
}

std::optional<SMTPConfig> SMTPConfig::fromJsonBytes(const QByteArray& bytes) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return fromJson(document.object());
}
