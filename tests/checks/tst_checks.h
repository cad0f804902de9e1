#pragma once

#include "HttpsServer.h"
#include "NsdServer.h"
#include "TestCA.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

// The deliverability checks against a real NSD answering the real dig, stand-in dig scripts for what a
// real server won't do, a local HTTPS server in Brevo's place, and real store files.
class TestChecks : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    // Recipient domains
    void domini_data();
    void domini();
    void eDimostrativo_data();
    void eDimostrativo();
    void answerPieces_data();
    void answerPieces();
    void mxAgainstNsd_data();
    void mxAgainstNsd();
    void digArguments_data();
    void digArguments();
    void queriesPerDomain_data();
    void queriesPerDomain();
    void widthAndProgress();
    void emptySetGivesEmptyMap();
    void failuresReadAsAbsence_data();
    void failuresReadAsAbsence();

    // Sender domain
    void righeTXT_data();
    void righeTXT();
    void nomeServizio_data();
    void nomeServizio();
    void valutaSPF_data();
    void valutaSPF();
    void valutaDKIM_data();
    void valutaDKIM();
    void valutaDMARC_data();
    void valutaDMARC();
    void txtAgainstNsd_data();
    void txtAgainstNsd();
    void selectorsAgainstNsd();
    void selectorThroughUnfollowedCname();
    void verificaAgainstNsd_data();
    void verificaAgainstNsd();
    void verificaWithSilentResolver();

    // Brevo
    void leggiData_data();
    void leggiData();
    void leggiEventi_data();
    void leggiEventi();
    void erroreTexts_data();
    void erroreTexts();
    void eventiRequest_data();
    void eventiRequest();
    void eventiReadsEvents();
    void eventiFailures_data();
    void eventiFailures();
    void blankKeySendsNothing_data();
    void blankKeySendsNothing();
    void untrustedServerIsANetworkError();
    void indirizziDaEscludere_data();
    void indirizziDaEscludere();

    // Applying bounces to the store
    void applica_data();
    void applica();
    void applicaSameAddressTwice();

private:
    // Writes an executable shell script standing in for dig and returns its path.
    QString standInDig(const QString& name, const QString& body);
    void useNsd();

    QTemporaryDir m_dir;
    std::unique_ptr<NsdServer> m_nsd;
    std::unique_ptr<TestCA> m_ca;
    std::unique_ptr<HttpsServer> m_https;
};
