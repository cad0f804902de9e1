#pragma once

#include "app/Sezione.h"
#include "ui/Ambiente.h"

class QWidget;

// Builds the screen of a section, new at every call: a screen's local state ends when the user leaves it.
QWidget* creaSchermata(Sezione sezione, Ambiente& ambiente, QWidget* genitore);
