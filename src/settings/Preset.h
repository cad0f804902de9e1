#pragma once

#include "settings/SMTPConfig.h"

#include <QList>
#include <QString>

#include <optional>

// The providers the settings screen offers, in the order of its picker.
enum class Preset { brevo, aruba, arubaBusiness, gmail, personalizzato };

const QList<Preset>& tuttiIPreset();
QString rawValue(Preset preset);
std::optional<Preset> presetFromRaw(const QString& raw);
QString label(Preset preset);
// The provider's public submission host for implicit TLS on port 465; empty for personalizzato.
QString hostOf(Preset preset);
// The preset's row, with the defaults of SMTPConfig in every other field.
SMTPConfig configPredefinita(Preset preset);
// The label of the first preset whose host equals `host` exactly, else the host itself.
QString nomeSuggerito(const QString& host);
