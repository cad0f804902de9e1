#pragma once

#include "app/Ambiente.h"
#include "app/Sezione.h"

class QWidget;

// Builds the screen of a section, new at every call: a screen's local state ends when the user leaves it.
QWidget* creaSchermata(Sezione sezione, Ambiente& ambiente, QWidget* genitore);
