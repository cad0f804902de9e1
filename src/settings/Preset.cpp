#include "settings/Preset.h"

const QList<Preset>& tuttiIPreset() {
    static const QList<Preset> all{Preset::brevo, Preset::aruba, Preset::arubaBusiness, Preset::gmail,
                                   Preset::personalizzato};
    return all;
}

QString rawValue(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return QStringLiteral("brevo");
    case Preset::aruba:
        return QStringLiteral("aruba");
    case Preset::arubaBusiness:
        return QStringLiteral("arubaBusiness");
    case Preset::gmail:
        return QStringLiteral("gmail");
    case Preset::personalizzato:
        return QStringLiteral("personalizzato");
    }
    return {};
}

std::optional<Preset> presetFromRaw(const QString& raw) {
    for (Preset preset : tuttiIPreset())
        if (rawValue(preset) == raw)
            return preset;
    return std::nullopt;
}

QString label(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return QStringLiteral("Brevo");
    case Preset::aruba:
        return QStringLiteral("Aruba");
    case Preset::arubaBusiness:
        return QStringLiteral("Aruba Business");
    case Preset::gmail:
        return QStringLiteral("Gmail");
    case Preset::personalizzato:
        return QStringLiteral("Personalizzato");
    }
    return {};
}

QString hostOf(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return QStringLiteral("smtp-relay.brevo.com");
    case Preset::aruba:
        return QStringLiteral("smtps.aruba.it");
    case Preset::arubaBusiness:
        return QStringLiteral("smtps.arubabusiness.it");
    case Preset::gmail:
        return QStringLiteral("smtp.gmail.com");
    case Preset::personalizzato:
        return {};
    }
    return {};
}

SMTPConfig configPredefinita(Preset preset) {
    SMTPConfig config;
    config.host = hostOf(preset);
    config.port = 465;
    config.useTLS = true;
    config.delayBetweenMessages = 2.0;
    switch (preset) {
    case Preset::brevo:
        config.dailyLimit = 300;
        break;
    case Preset::aruba:
    case Preset::arubaBusiness:
        config.dailyLimit = 500;
        break;
    case Preset::gmail:
        config.dailyLimit = 400;
        break;
    case Preset::personalizzato:
        config.dailyLimit = 0;
        break;
    }
    return config;
}

QString nomeSuggerito(const QString& host) {
    for (Preset preset : tuttiIPreset()) {
        const QString presetHost = hostOf(preset);
        if (!presetHost.isEmpty() && presetHost == host)
            return label(preset);
    }
    return host;
}
