#pragma once

#include <QList>
#include <QString>

#include <optional>

// Raw values equal the case names and are what the store holds; labels are what the user reads.

enum class SendStatus { sent, failed, skipped, test };

QString rawValue(SendStatus status);
QString label(SendStatus status);
// Absent when the text is none of the four raw values.
std::optional<SendStatus> sendStatusFromRaw(const QString& raw);
// A log's status is read leniently: an unknown raw value counts as sent.
SendStatus logStatusFromRaw(const QString& raw);

enum class CampaignStatus { draft, running, paused, completed, failed };

QString rawValue(CampaignStatus status);
QString label(CampaignStatus status);
// An unknown raw value reads as draft.
CampaignStatus campaignStatusFromRaw(const QString& raw);

// The category of an excluded address. It is derived from the free-text reason each time it is
// needed and never stored.
enum class MotivoEsclusione {
    casellaInesistente,
    casellaPiena,
    dominioInesistente,
    dominioSenzaPosta,
    rifiutatoDalServer,
    disiscritto,
    aggiuntoAMano,
    importato,
};

QString rawValue(MotivoEsclusione motivo);
const QList<MotivoEsclusione>& tuttiIMotivi();
MotivoEsclusione deduci(const QString& reason);
