#include "app/SectionScreens.h"

#include "app/SegnapostoSezione.h"
#include "screens/templates/TemplatesView.h"

// One line per section: a screen that arrives replaces its section's line here.
QWidget* creaSchermata(Sezione sezione, Ambiente& ambiente, QWidget* genitore) {
    Q_UNUSED(ambiente);
    switch (sezione) {
    case Sezione::liste:
        return new SegnapostoSezione(Sezione::liste, genitore);
    case Sezione::modelli:
        return new TemplatesView(ambiente, genitore);
    case Sezione::campagne:
        return new SegnapostoSezione(Sezione::campagne, genitore);
    case Sezione::storico:
        return new SegnapostoSezione(Sezione::storico, genitore);
    case Sezione::esclusi:
        return new SegnapostoSezione(Sezione::esclusi, genitore);
    case Sezione::impostazioni:
        return new SegnapostoSezione(Sezione::impostazioni, genitore);
    }
    return new SegnapostoSezione(sezione, genitore);
}
