#pragma once

#include "app/Sezione.h"

#include <QWidget>

// The plain face of a section whose screen this build doesn't have: its symbol and its title.
class SegnapostoSezione : public QWidget {
    Q_OBJECT
public:
    SegnapostoSezione(Sezione sezione, QWidget* genitore = nullptr);
};
