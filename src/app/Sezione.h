#pragma once

#include <QList>
#include <QString>

// The sections of the sidebar, in its order.
enum class Sezione { liste, modelli, campagne, storico, esclusi, impostazioni };

const QList<Sezione>& tutteLeSezioni();
QString rawValue(Sezione sezione);
// The title in the sidebar and in the window's title bar.
QString titolo(Sezione sezione);
QString simbolo(Sezione sezione);
