#pragma once

#include "records/Campaign.h"
#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "records/Store.h"

#include "ui/Comandi.h"
#include <QElapsedTimer>
#include <QHash>

#include <QWidget>

#include <memory>

struct Ambiente;
class CampaignDetailView;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTimer;
class Rinfresco;
class SendEngine;

// The section "campagne": the campaigns on the left, the selected one on the right. One engine for the whole
// screen, made with it: coming back to the section makes a new, idle one, while a run already started goes
// on with its own.
class CampaignsView : public QWidget, public ConNuovo {
    Q_OBJECT
public:
    explicit CampaignsView(Ambiente& ambiente, QWidget* genitore = nullptr);
    ~CampaignsView() override;

    const std::shared_ptr<SendEngine>& motore() const { return m_motore; }
    RecordId selezione() const { return m_selezione; }
    CampaignDetailView* dettaglio() const { return m_dettaglio; }
    QListWidget* elenco() const { return m_elenco; }
    QPushButton* pulsanteNuova() const { return m_nuova; }
    Rinfresco* rinfresco() const { return m_rinfresco; }

    void nuovaCampagna();
    void nuovo() override;
    void seleziona(RecordId campagna);
    void elimina(RecordId campagna);

protected:
    bool eventFilter(QObject* oggetto, QEvent* evento) override;

private:
    QWidget* creaColonnaElenco();
    // A change in the store: read at once, or a little later while this screen's run is going on.
    void aggiorna(Store::Entities cosa);
    // Reads the store now.
    void leggi(Store::Entities cosa);
    void riempiElenco();
    void mostraDettaglio();
    void mostraMenu(const QPoint& punto);

    Ambiente& m_ambiente;
    std::shared_ptr<SendEngine> m_motore;
    Rinfresco* m_rinfresco;
    QList<Campaign> m_campagne;
    QList<ContactList> m_liste;
    QList<MessageTemplate> m_modelli;
    QHash<RecordId, int> m_validiPerLista;
    RecordId m_selezione = 0;
    Store::Entities m_inAttesa;
    QElapsedTimer m_ultimaLettura;
    QTimer* m_differita;

    QListWidget* m_elenco = nullptr;
    QPushButton* m_nuova = nullptr;
    QStackedWidget* m_destra = nullptr;
    CampaignDetailView* m_dettaglio = nullptr;
};
