#pragma once

#include "settings/Preset.h"
#include "settings/ProfiloInvio.h"
#include "settings/SMTPConfig.h"

#include <QList>
#include <QObject>
#include <QString>

class QSettings;

// The send profiles, the active one, and the active account's password. Every change is written to
// the user's preferences at once; the password lives in the secret store and is loaded only when a
// screen first needs it, so that starting the program never touches the secret store.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    static inline const QString chiaveProfili = QStringLiteral("profiliInvio");
    static inline const QString chiaveProfiloAttivo = QStringLiteral("profiloAttivo");
    static inline const QString chiaveConfigurazione = QStringLiteral("smtpConfig");

    explicit SettingsStore(QObject* parent = nullptr);
    ~SettingsStore() override;

    const QList<ProfiloInvio>& profili() const { return m_profili; }
    int indiceAttivo() const { return m_indiceAttivo; }
    const QString& password() const { return m_password; }
    void setPassword(const QString& password);
    bool passwordCaricata() const { return m_passwordCaricata; }

    // The active profile's configuration; a bare SMTPConfig when the index is out of range.
    SMTPConfig config() const;
    void setConfig(const SMTPConfig& config);
    QString nomeProfiloAttivo() const;
    void setNomeProfiloAttivo(const QString& nome);
    bool isConfigured() const;

    void selezionaProfilo(int indice);
    void aggiungiProfilo(const QString& nome, Preset preset);
    void eliminaProfiloAttivo();
    void caricaPasswordSeServe();
    void reloadPasswordForCurrentAccount();

    // The account under which the active profile's password is kept: username "@" host.
    QString accountCorrente() const;

Q_SIGNALS:
    void changed();

private:
    QList<ProfiloInvio> caricaProfili();
    std::optional<QList<ProfiloInvio>> recuperaDaVersionePrecedente();
    void salvaProfili();
    void setIndiceAttivo(int indice);
    void indiceCambiato();
    bool indiceValido() const { return m_indiceAttivo >= 0 && m_indiceAttivo < m_profili.size(); }

    std::unique_ptr<QSettings> m_preferenze;
    QList<ProfiloInvio> m_profili;
    int m_indiceAttivo = 0;
    QString m_password;
    bool m_passwordCaricata = false;
};
