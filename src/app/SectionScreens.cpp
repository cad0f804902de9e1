#include "app/SectionScreens.h"

#include "app/SegnapostoSezione.h"
#include "screens/campaigns/CampaignsView.h"
#include "screens/history/HistoryView.h"
#include "screens/lists/ListsView.h"
#include "screens/settings/SettingsView.h"
#include "screens/suppressions/SuppressionView.h"
#include "screens/templates/TemplatesView.h"

// One line per section: a screen that arrives replaces its section's line here.
QWidget* creaSchermata(Sezione sezione, Ambiente& ambiente, QWidget* genitore) {
    switch (sezione) {
    case Sezione::liste:
        return new ListsView(ambiente, genitore);
    case Sezione::modelli:
        return new TemplatesView(ambiente, genitore);
    case Sezione::campagne:
        return new CampaignsView(ambiente, genitore);
    case Sezione::storico:
        return new HistoryView(ambiente, genitore);
    case Sezione::esclusi:
        return new SuppressionView(ambiente, genitore);
    case Sezione::impostazioni:
        return new SettingsView(ambiente, genitore);
    }
    return new SegnapostoSezione(sezione, genitore);
}
