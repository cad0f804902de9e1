#include "app/SectionScreens.h"

#include "app/SegnapostoSezione.h"
#include "screens/history/HistoryView.h"
#include "screens/suppressions/SuppressionView.h"

// One line per section: a screen that arrives replaces its section's line here.
QWidget* creaSchermata(Sezione sezione, Ambiente& ambiente, QWidget* genitore) {
    switch (sezione) {
    case Sezione::liste:
        return new SegnapostoSezione(Sezione::liste, genitore);
    case Sezione::modelli:
        return new SegnapostoSezione(Sezione::modelli, genitore);
    case Sezione::campagne:
        return new SegnapostoSezione(Sezione::campagne, genitore);
    case Sezione::storico:
        return new HistoryView(ambiente, genitore);
    case Sezione::esclusi:
        return new SuppressionView(ambiente, genitore);
    case Sezione::impostazioni:
        return new SegnapostoSezione(Sezione::impostazioni, genitore);
    }
    return new SegnapostoSezione(sezione, genitore);
}
