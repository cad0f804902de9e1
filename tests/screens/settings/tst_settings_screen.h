#pragma once

#include "AiosmtpdServer.h"
#include "HttpsServer.h"
#include "MemoryKeychain.h"
#include "NsdServer.h"
#include "TempStore.h"
#include "TestCA.h"

#include <QObject>
#include <QtTest>

#include <memory>

#include "screens/settings/SettingsView.h"
#include "settings/SettingsStore.h"

// The settings form and its domain panels, driven offscreen against real servers: aiosmtpd with implicit TLS
// and AUTH, NSD queried by the real dig, and a local HTTPS stand-in for Brevo. The secret store is in memory
// here; the real one is tested in test_settings_keyring.
class TestSettingsScreen : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    // The form
    void sezioniInOrdine();
    void providerPersonalizzatoNonCambiaNulla();
    void hostDigitatoSceglieIlProvider();
    void presetSostituisceIlLimite_data();
    void presetSostituisceIlLimite();
    void profiloPerProvider_data();
    void profiloPerProvider();
    void nomeUtenteRiempieIlMittente_data();
    void nomeUtenteRiempieIlMittente();
    void avvisoMittente_data();
    void avvisoMittente();
    void profiliAggiuntaEdEliminazione();
    void pausaDaZeroATrenta();
    void campiDelPiePagina();
    void testoQualsiasiNeiCampi_data();
    void testoQualsiasiNeiCampi();
    void dueIstanzeCondividonoSoloLeImpostazioni();
    void simulazioneApreIlCruscotto();
    void schermataIntera();

    // The connection test
    void provaConnessione_data();
    void provaConnessione();
    void provaConnessioneUsaLaCopia();

    // The domain panels
    void dominioDelMittente_data();
    void dominioDelMittente();
    void dominioVuotoNonVerifica();
    void verificaDomini();
    void verificaDominiSoloIncerti();
    void verificaDominiGiaEsclusi();
    void rimbalzi_data();
    void rimbalzi();
    void chiaveBrevoSvuotata();

private:
    std::unique_ptr<SettingsView> apri();
    SettingsStore& settings() { return *m_settings; }

    std::unique_ptr<TestCA> m_ca;
    std::unique_ptr<TestCA> m_altraCA;
    std::unique_ptr<AiosmtpdServer> m_smtp;
    std::unique_ptr<AiosmtpdServer> m_smtpNonAttendibile;
    std::unique_ptr<NsdServer> m_nsd;
    std::unique_ptr<HttpsServer> m_https;
    std::unique_ptr<TempStore> m_store;
    std::unique_ptr<SettingsStore> m_settings;
    std::shared_ptr<QHash<MemoryKeychain::Key, QByteArray>> m_segreti;
};
