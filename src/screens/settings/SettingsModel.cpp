#include "screens/settings/SettingsModel.h"

#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "settings/SettingsStore.h"
#include "ui/Formati.h"

namespace SettingsModel {

namespace {

SMTPSession::Options& opzioniSessione() {
    static SMTPSession::Options opzioni;
    return opzioni;
}

QString tr(const char* testo) {
    return QCoreApplication::translate("SettingsView", testo);
}

} // namespace

Preset presetCorrente(const QString& host) {
    for (Preset preset : tuttiIPreset())
        if (hostOf(preset) == host)
            return preset;
    return Preset::personalizzato;
}

QString etichettaProvider(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return tr("Brevo (") + hostOf(preset) + u')';
    case Preset::aruba:
        return tr("Aruba (") + hostOf(preset) + u')';
    case Preset::arubaBusiness:
        return tr("Aruba Business (") + hostOf(preset) + u')';
    case Preset::gmail:
        return tr("Gmail (password per app)");
    case Preset::personalizzato:
        return tr("Personalizzato");
    }
    return {};
}

QString suggerimentoProvider(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return tr("Nome utente e password si trovano in Brevo → SMTP e API → SMTP: il nome utente è il tuo \"SMTP "
                  "login\", la password è la \"SMTP key\" (non la password dell'account). L'indirizzo mittente deve "
                  "essere un mittente verificato o appartenere a un dominio autenticato in Brevo.");
    case Preset::aruba:
    case Preset::arubaBusiness:
        return tr("Nome utente: l'indirizzo completo della casella. Password: quella della casella. Il mittente deve "
                  "coincidere con la casella, altrimenti Aruba rifiuta l'invio.");
    case Preset::gmail:
        return tr("Serve una \"password per le app\" generata nell'account Google (la password normale non "
                  "funziona). Google non consente invii massivi non richiesti: usalo solo per prove.");
    case Preset::personalizzato:
        return {};
    }
    return {};
}

QString notaRitmo(Preset preset) {
    switch (preset) {
    case Preset::brevo:
        return tr("Il piano gratuito Brevo consente circa 300 messaggi al giorno. Con un servizio d'invio la pausa "
                  "può restare bassa (1 secondo): è il servizio stesso a regolare il ritmo verso i destinatari.");
    case Preset::aruba:
    case Preset::arubaBusiness:
        return tr("Aruba accetta circa 500 messaggi al giorno per casella. Con una casella di posta normale conviene "
                  "tenere pause ampie (2-5 secondi) e volumi bassi per non farsi limitare.");
    case Preset::gmail:
        return tr("Gmail consente 500 destinatari al giorno (2.000 con Workspace), ma vieta gli invii massivi non "
                  "richiesti: usalo solo per prove.");
    case Preset::personalizzato:
        return tr("Imposta il tetto in base ai limiti del tuo provider. Una pausa fra i messaggi riduce il rischio "
                  "di limitazioni.");
    }
    return {};
}

void applica(SettingsStore& settings, Preset preset) {
    if (preset == Preset::personalizzato)
        return;
    const SMTPConfig modello = configPredefinita(preset);
    // One write per step, as a user changing each field would.
    SMTPConfig config = settings.config();
    config.host = modello.host;
    settings.setConfig(config);
    config.port = 465;
    settings.setConfig(config);
    config.useTLS = true;
    settings.setConfig(config);
    config.dailyLimit = modello.dailyLimit;
    settings.setConfig(config);
    settings.reloadPasswordForCurrentAccount();
}

void cambiaNomeUtente(SettingsStore& settings, const QString& nomeUtente) {
    SMTPConfig config = settings.config();
    if (config.username == nomeUtente)
        return;
    config.username = nomeUtente;
    settings.setConfig(config);
    settings.reloadPasswordForCurrentAccount();
}

void riempiMittenteDalNomeUtente(SettingsStore& settings) {
    SMTPConfig config = settings.config();
    if (config.fromEmail.isEmpty() && isValidEmailSyntax(config.username)) {
        config.fromEmail = Text::normalizedAddress(config.username);
        settings.setConfig(config);
    }
}

void cambiaHost(SettingsStore& settings, const QString& host) {
    SMTPConfig config = settings.config();
    if (config.host == host)
        return;
    config.host = host;
    settings.setConfig(config);
    settings.reloadPasswordForCurrentAccount();
}

QString avvisoMittente(const QString& fromEmail) {
    if (fromEmail.isEmpty())
        return tr("Manca l'indirizzo mittente: su Aruba deve essere la stessa casella del nome utente, altrimenti il "
                  "server rifiuta l'invio.");
    if (!isValidEmailSyntax(fromEmail))
        return tr("Indirizzo mittente non valido");
    return {};
}

QString dominioMittente(const QString& fromEmail) {
    const qsizetype chiocciola = fromEmail.lastIndexOf(u'@');
    return chiocciola < 0 ? QString() : fromEmail.mid(chiocciola + 1);
}

QString promptDisiscrizione(const SMTPConfig& config) {
    const QString indirizzo = config.indirizzoDisiscrizione();
    return indirizzo.isEmpty() ? tr("come il mittente") : indirizzo;
}

QString pausa(double secondi) {
    return formato(tr("%.1f"), secondi) + tr(" s");
}

std::optional<int> intero(const QString& testo) {
    bool ok = false;
    const int valore = testo.trimmed().toInt(&ok);
    return ok ? std::optional<int>(valore) : std::nullopt;
}

QCoro::Task<EsitoProva> provaConnessione(SMTPConfig config, QString password) {
    SMTPSession sessione(std::move(config), std::move(password), opzioniSessione());
    try {
        co_await sessione.connect();
    } catch (const SMTPError& errore) {
        co_return EsitoProva{false, errore.errorDescription()};
    }
    co_await sessione.disconnect();
    co_return EsitoProva{true, tr("Connessione e autenticazione riuscite.")};
}

void setOpzioniSessionePerTest(const SMTPSession::Options& opzioni) {
    opzioniSessione() = opzioni;
}

} // namespace SettingsModel
