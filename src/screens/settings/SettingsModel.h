#pragma once

#include "settings/Preset.h"
#include "settings/SMTPConfig.h"
#include "smtp/SMTPSession.h"

#include <QCoreApplication>
#include <QString>

#include <QCoro/QCoroTask>

class SettingsStore;

// The logic of the settings form, without widgets: which provider the host stands for, what each provider's
// notes say, and the rules that a choice of provider or a new user name set off.
namespace SettingsModel {

// The first preset whose host equals `host` exactly; an empty or unknown host gives personalizzato. The
// provider is never stored: a known host typed by hand has chosen that provider.
Preset presetCorrente(const QString& host);
QString etichettaProvider(Preset preset);
// The hint under the provider picker; empty for personalizzato.
QString suggerimentoProvider(Preset preset);
QString notaRitmo(Preset preset);

// A provider's host, port 465, TLS and daily limit, then the password of the account that now applies.
// Nothing for personalizzato. Pace, user name and sender stay as they are.
void applica(SettingsStore& settings, Preset preset);
// Writes the user name and reloads the password of the account that now applies.
void cambiaNomeUtente(SettingsStore& settings, const QString& nomeUtente);
// When the user is done with the user name: an empty sender takes it, trimmed and lower-cased, if it is an
// address. Only once, since a filled sender is left alone; and not at each keystroke, where a half-typed
// "mario@ditta.co" already passes as an address and would stick.
void riempiMittenteDalNomeUtente(SettingsStore& settings);
// Writes the host and reloads the password, since the account's key holds the host.
void cambiaHost(SettingsStore& settings, const QString& host);

// The orange line under the sender: missing, malformed, or nothing.
QString avvisoMittente(const QString& fromEmail);
// What stands after the last "@" of the sender, or nothing.
QString dominioMittente(const QString& fromEmail);
QString promptDisiscrizione(const SMTPConfig& config);
QString pausa(double secondi);
// The integer of a number field, or nothing for text that isn't one (an empty field changes nothing).
std::optional<int> intero(const QString& testo);

struct EsitoProva {
    bool riuscita = false;
    QString testo;
};

// Connects, authenticates and says goodbye, on a copy of the account taken by the caller. Never throws:
// a failure comes back as its text.
QCoro::Task<EsitoProva> provaConnessione(SMTPConfig config, QString password);

// For tests only: the options of the session the connection test makes (a short time-out, a test CA).
void setOpzioniSessionePerTest(const SMTPSession::Options& opzioni);

} // namespace SettingsModel
