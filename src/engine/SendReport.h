#pragma once

#include "engine/SendEngine.h"

// The report of a run that the dashboard exports: one line per event, oldest first.
namespace SendReport {

QString testo(const QList<SendEngine::EventoInvio>& eventi);
// The name the save panel proposes; the panel, not this, deals with characters a file name can't hold.
QString nomeProposto(const QString& nomeCampagna);

} // namespace SendReport
