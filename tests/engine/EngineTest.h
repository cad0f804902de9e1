#pragma once

#include "AiosmtpdServer.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"
#include "TempStore.h"

#include <QObject>
#include <QStringList>

#include <chrono>
#include <memory>

class TestCA;

// A stored list, template and campaign, the settings of one send profile and an engine, on a real store.
// Rows are given as addresses; every row gets the fields "nome" and "citta". The engine's sessions trust
// `ca` and give up after `timeout`.
struct Scena {
    Scena(const SMTPConfig& config, const QStringList& indirizzi, const TestCA* ca,
          std::chrono::milliseconds timeout = std::chrono::seconds(5));

    void corri(); // runs the campaign to its end in a nested event loop
    Campaign campagna() const;
    QList<SendLog> logs() const; // this campaign's, oldest first
    QList<SendLog> logsCon(SendStatus stato) const;
    ContactRow riga(const QString& email) const; // the first row of the list with that address

    static QString nomeDi(const QString& email); // the local part, capitalised, and " & Figli"

    TempStore temp;
    Store& store;
    SettingsStore settings;
    std::shared_ptr<SendEngine> engine = std::make_shared<SendEngine>();
    ContactList lista;
    MessageTemplate modello;
    Campaign campaign;
};

// Every line of the activity log with the given prefix, in order.
QStringList righeCon(const SendEngine& engine, const QString& prefisso);

// A configuration for a server: pace 0, no daily limit, no domain check, a footer with content.
SMTPConfig configurazione(const SMTPConfig& server);

// aiosmtpd with implicit TLS and AUTH, already started, answering the given rules.
std::unique_ptr<AiosmtpdServer> avviaServer(TestCA& ca, const QList<AiosmtpdServer::Rule>& rcpt = {},
                                            const QList<AiosmtpdServer::Rule>& data = {});

class TestEngine : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    // Debian's aiosmtpd with implicit TLS and AUTH.
    void campagnaCompleta();
    void secondaCorsa_data();
    void secondaCorsa();
    void rifiuti_data();
    void rifiuti();
    void quota_data();
    void quota();
    void controlloDomini_data();
    void controlloDomini();
    void pausaEStop();
    void campagnaSenzaModelloOLista();

    // Scripted servers for the faults a real server won't produce.
    void copioni_data();
    void copioni();
    void esitoPrimaDelMessaggioSuccessivo_data();
    void esitoPrimaDelMessaggioSuccessivo();
    void pausaARitmoZero();

    // The test send.
    void invioDiProva_data();
    void invioDiProva();
    void invioDiProvaFallito_data();
    void invioDiProvaFallito();
    void cifratura_data();
    void cifratura();

    // Addresses that smuggle text into commands, and addresses that aren't ASCII.
    void mittenteNonValido_data();
    void mittenteNonValido();
    void dominiAccentati();
    void provaADominioAccentato_data();
    void provaADominioAccentato();

private:
    TestCA& ca();
};
