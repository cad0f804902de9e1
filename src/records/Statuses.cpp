#include "records/Statuses.h"

#include <QCoreApplication>

#include <array>
#include <utility>

QString rawValue(SendStatus status) {
    switch (status) {
    case SendStatus::sent:
        return QStringLiteral("sent");
    case SendStatus::failed:
        return QStringLiteral("failed");
    case SendStatus::skipped:
        return QStringLiteral("skipped");
    case SendStatus::test:
        return QStringLiteral("test");
    }
    return {};
}

QString label(SendStatus status) {
    switch (status) {
    case SendStatus::sent:
        return QCoreApplication::translate("SendStatus", "Inviata");
    case SendStatus::failed:
        return QCoreApplication::translate("SendStatus", "Errore");
    case SendStatus::skipped:
        return QCoreApplication::translate("SendStatus", "Saltata");
    case SendStatus::test:
        return QCoreApplication::translate("SendStatus", "Prova");
    }
    return {};
}

std::optional<SendStatus> sendStatusFromRaw(const QString& raw) {
    for (SendStatus status : {SendStatus::sent, SendStatus::failed, SendStatus::skipped, SendStatus::test})
        if (raw == rawValue(status))
            return status;
    return std::nullopt;
}

SendStatus logStatusFromRaw(const QString& raw) {
    return sendStatusFromRaw(raw).value_or(SendStatus::sent);
}

QString rawValue(CampaignStatus status) {
    switch (status) {
    case CampaignStatus::draft:
        return QStringLiteral("draft");
    case CampaignStatus::running:
        return QStringLiteral("running");
    case CampaignStatus::paused:
        return QStringLiteral("paused");
    case CampaignStatus::completed:
        return QStringLiteral("completed");
    case CampaignStatus::failed:
        return QStringLiteral("failed");
    }
    return {};
}

QString label(CampaignStatus status) {
    switch (status) {
    case CampaignStatus::draft:
        return QCoreApplication::translate("CampaignStatus", "Bozza");
    case CampaignStatus::running:
        return QCoreApplication::translate("CampaignStatus", "In corso");
    case CampaignStatus::paused:
        return QCoreApplication::translate("CampaignStatus", "In pausa");
    case CampaignStatus::completed:
        return QCoreApplication::translate("CampaignStatus", "Completata");
    case CampaignStatus::failed:
        return QCoreApplication::translate("CampaignStatus", "Fallita");
    }
    return {};
}

CampaignStatus campaignStatusFromRaw(const QString& raw) {
    for (CampaignStatus status : {CampaignStatus::draft, CampaignStatus::running, CampaignStatus::paused,
                                  CampaignStatus::completed, CampaignStatus::failed})
        if (raw == rawValue(status))
            return status;
    return CampaignStatus::draft;
}

QString rawValue(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
        return QStringLiteral("casellaInesistente");
    case MotivoEsclusione::casellaPiena:
        return QStringLiteral("casellaPiena");
    case MotivoEsclusione::dominioInesistente:
        return QStringLiteral("dominioInesistente");
    case MotivoEsclusione::dominioSenzaPosta:
        return QStringLiteral("dominioSenzaPosta");
    case MotivoEsclusione::rifiutatoDalServer:
        return QStringLiteral("rifiutatoDalServer");
    case MotivoEsclusione::disiscritto:
        return QStringLiteral("disiscritto");
    case MotivoEsclusione::aggiuntoAMano:
        return QStringLiteral("aggiuntoAMano");
    case MotivoEsclusione::importato:
        return QStringLiteral("importato");
    }
    return {};
}

const QList<MotivoEsclusione>& tuttiIMotivi() {
    static const QList<MotivoEsclusione> all{
        MotivoEsclusione::casellaInesistente, MotivoEsclusione::casellaPiena,
        MotivoEsclusione::dominioInesistente, MotivoEsclusione::dominioSenzaPosta,
        MotivoEsclusione::rifiutatoDalServer, MotivoEsclusione::disiscritto,
        MotivoEsclusione::aggiuntoAMano,      MotivoEsclusione::importato,
    };
    return all;
}

MotivoEsclusione deduci(const QString& reason) {
    // The order is part of the rule: codes match as plain substrings anywhere, so a reply holding
    // both "550" and "quota" is a missing mailbox.
    using M = MotivoEsclusione;
    static const std::array<std::pair<const char16_t*, M>, 23> rules{{
        {u"dominio inesistente", M::dominioInesistente},
        {u"dominio non esiste", M::dominioInesistente},
        {u"dominio senza server di posta", M::dominioSenzaPosta},
        {u"importato da", M::importato},
        {u"disiscri", M::disiscritto},
        {u"cancellami", M::disiscritto},
        {u"unsubscribe", M::disiscritto},
        {u"user unknown", M::casellaInesistente},
        {u"invalid recipient", M::casellaInesistente},
        {u"no such user", M::casellaInesistente},
        {u"does not exist", M::casellaInesistente},
        {u"recipient address rejected", M::casellaInesistente},
        {u"mailbox unavailable", M::casellaInesistente},
        {u"550", M::casellaInesistente},
        {u"5.1.1", M::casellaInesistente},
        {u"mailbox full", M::casellaPiena},
        {u"quota", M::casellaPiena},
        {u"452", M::casellaPiena},
        {u"relaying denied", M::rifiutatoDalServer},
        {u"blocked", M::rifiutatoDalServer},
        {u"554", M::rifiutatoDalServer},
        {u"553", M::rifiutatoDalServer},
        {u"rifiutato dal server", M::rifiutatoDalServer},
    }};
    const QString lowered = reason.toLower();
    for (const auto& [needle, motivo] : rules)
        if (lowered.contains(QStringView(needle)))
            return motivo;
    return M::aggiuntoAMano;
}
