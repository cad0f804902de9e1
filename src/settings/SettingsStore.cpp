#include "settings/SettingsStore.h"

#include "records/EmailSyntax.h"
#include "settings/Keychain.h"

#include <QSettings>

namespace {

// QSettings keeps no type for numbers in its files, so an integer may come back as text.
std::optional<int> integerValue(const QSettings& settings, const QString& key) {
    if (!settings.contains(key))
        return std::nullopt;
    const QVariant value = settings.value(key);
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return value.toInt();
    case QMetaType::QString: {
        bool ok = false;
        const int number = value.toString().toInt(&ok);
        return ok ? std::optional<int>(number) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<QList<ProfiloInvio>> nonEmptyProfiles(const QVariant& value) {
    if (!value.isValid())
        return std::nullopt;
    auto profili = ProfiloInvio::decodeList(value.toByteArray());
    if (!profili || profili->isEmpty())
        return std::nullopt;
    return profili;
}

std::optional<SMTPConfig> storedConfig(const QVariant& value) {
    if (!value.isValid())
        return std::nullopt;
    return SMTPConfig::fromJsonBytes(value.toByteArray());
}

ProfiloInvio profiloDa(const SMTPConfig& config) {
    return ProfiloInvio{QUuid::createUuid(), nomeSuggerito(config.host), config};
}

int clampIndex(int index, qsizetype count) {
    return count == 0 ? 0 : std::clamp(index, 0, int(count) - 1);
}

} // namespace

SettingsStore::SettingsStore(QObject* parent)
    : QObject(parent),
      m_preferenze(std::make_unique<QSettings>(QStringLiteral("velarmo"), QStringLiteral("Brezzario"))) {
    m_profili = caricaProfili();
    const auto stored = integerValue(*m_preferenze, chiaveProfiloAttivo);
    m_indiceAttivo = stored ? clampIndex(*stored, m_profili.size()) : 0;
}

SettingsStore::~SettingsStore() = default;

QList<ProfiloInvio> SettingsStore::caricaProfili() {
    if (auto stored = nonEmptyProfiles(m_preferenze->value(chiaveProfili)))
        return *stored;
    QList<ProfiloInvio> profili = recuperaDaVersionePrecedente().value_or(QList<ProfiloInvio>{});
    if (auto config = storedConfig(m_preferenze->value(chiaveConfigurazione)))
        profili.append(profiloDa(*config));
    const auto hasHost = [&](const QString& host) {
        return std::any_of(profili.cbegin(), profili.cend(),
                           [&](const ProfiloInvio& p) { return p.config.host == host; });
    };
    if (!hasHost(hostOf(Preset::brevo)))
        profili.append(ProfiloInvio{QUuid::createUuid(), QStringLiteral("Brevo"), configPredefinita(Preset::brevo)});
    if (!hasHost(hostOf(Preset::aruba)))
        profili.append(ProfiloInvio{QUuid::createUuid(), QStringLiteral("Aruba"), configPredefinita(Preset::aruba)});
    return profili;
}

std::optional<QList<ProfiloInvio>> SettingsStore::recuperaDaVersionePrecedente() {
    // The former product's preferences are only ever read.
    const QSettings former(QStringLiteral("velarmo"), QStringLiteral("Lumacco"));
    if (former.status() != QSettings::NoError)
        return std::nullopt;
    const QVariant formerProfiles = former.value(chiaveProfili);
    if (auto profili = nonEmptyProfiles(formerProfiles)) {
        m_preferenze->setValue(chiaveProfili, formerProfiles.toByteArray());
        if (auto indice = integerValue(former, chiaveProfiloAttivo))
            m_preferenze->setValue(chiaveProfiloAttivo, *indice);
        m_preferenze->sync();
        return profili;
    }
    if (auto config = storedConfig(former.value(chiaveConfigurazione)))
        return QList<ProfiloInvio>{profiloDa(*config)};
    return std::nullopt;
}

void SettingsStore::salvaProfili() {
    m_preferenze->setValue(chiaveProfili, ProfiloInvio::encodeList(m_profili));
    m_preferenze->sync();
    Q_EMIT changed();
}

SMTPConfig SettingsStore::config() const {
    return indiceValido() ? m_profili.at(m_indiceAttivo).config : SMTPConfig{};
}

void SettingsStore::setConfig(const SMTPConfig& config) {
    if (!indiceValido())
        return;
    m_profili[m_indiceAttivo].config = config;
    salvaProfili();
}

QString SettingsStore::nomeProfiloAttivo() const {
    return indiceValido() ? m_profili.at(m_indiceAttivo).nome : QString();
}

void SettingsStore::setNomeProfiloAttivo(const QString& nome) {
    if (!indiceValido())
        return;
    m_profili[m_indiceAttivo].nome = nome;
    salvaProfili();
}

QString SettingsStore::accountCorrente() const {
    const SMTPConfig current = config();
    return current.username + u'@' + current.host;
}

bool SettingsStore::isConfigured() const {
    const SMTPConfig current = config();
    return !current.host.isEmpty() && !current.username.isEmpty() && !m_password.isEmpty() &&
           isValidEmailSyntax(current.fromEmail);
}

void SettingsStore::setPassword(const QString& password) {
    m_password = password;
    if (m_passwordCaricata)
        Keychain::setPassword(password, accountCorrente());
    Q_EMIT changed();
}

void SettingsStore::setIndiceAttivo(int indice) {
    m_indiceAttivo = indice;
    indiceCambiato();
}

void SettingsStore::indiceCambiato() {
    m_preferenze->setValue(chiaveProfiloAttivo, m_indiceAttivo);
    m_preferenze->sync();
    if (m_passwordCaricata)
        m_password = Keychain::password(accountCorrente()).value_or(QString());
    Q_EMIT changed();
}

void SettingsStore::selezionaProfilo(int indice) {
    const int clamped = clampIndex(indice, m_profili.size());
    if (clamped == m_indiceAttivo)
        return;
    setIndiceAttivo(clamped);
}

void SettingsStore::aggiungiProfilo(const QString& nome, Preset preset) {
    m_profili.append(ProfiloInvio{QUuid::createUuid(), nome, configPredefinita(preset)});
    salvaProfili();
    setIndiceAttivo(int(m_profili.size()) - 1);
}

void SettingsStore::eliminaProfiloAttivo() {
    if (m_profili.size() < 2 || !indiceValido())
        return;
    // The removed profile's password stays in the secret store: another profile may share it.
    m_profili.removeAt(m_indiceAttivo);
    salvaProfili();
    setIndiceAttivo(std::min(int(m_profili.size()) - 1, m_indiceAttivo));
}

void SettingsStore::caricaPasswordSeServe() {
    if (m_passwordCaricata)
        return;
    // Writing back what was just read would change nothing in the secret store, so the value is only kept.
    m_passwordCaricata = true;
    m_password = Keychain::password(accountCorrente()).value_or(QString());
    Q_EMIT changed();
}

void SettingsStore::reloadPasswordForCurrentAccount() {
    if (!m_passwordCaricata)
        return;
    const QString stored = Keychain::password(accountCorrente()).value_or(QString());
    if (stored != m_password) {
        m_password = stored;
        Q_EMIT changed();
    }
}
