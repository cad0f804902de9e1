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
    void failuresReadAsAbsence_data();
    void failuresReadAsAbsence();

    // Sender domain
    void righeTXT_data();
    void righeTXT();
    void nomeServizio_data();
    void nomeServizio();
    void verdetti_data();
    void verdetti();
    void txtAgainstNsd_data();
    void txtAgainstNsd();
    void selectorsAgainstNsd();
    void verificaAgainstNsd_data();
    void verificaAgainstNsd();

    // Brevo
    void leggiEventi_data();
    void leggiEventi();
    void eventiRequest_data();
    void eventiRequest();
    void eventiAnswers_data();
    void eventiAnswers();
    void blankKeySendsNothing();
    void networkFailures();
    void indirizziDaEscludere_data();
    void indirizziDaEscludere();

    // Applying bounces to the store
    void applica_data();
    void applica();

private:
    // Writes an executable shell script standing in for dig, makes dig run it, and returns its path.
    QString standInDig(const QString& name, const QString& body);

    QTemporaryDir m_dir;
    std::unique_ptr<NsdServer> m_nsd;
    std::unique_ptr<TestCA> m_ca;
    std::unique_ptr<HttpsServer> m_https;
};
