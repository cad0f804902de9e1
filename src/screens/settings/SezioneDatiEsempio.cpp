#include "screens/settings/SezioneDatiEsempio.h"

#include "engine/DatiEsempio.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

SezioneDatiEsempio::SezioneDatiEsempio(Store& store, QWidget* genitore)
    : SezioneModulo(tr("Dati di esempio"), genitore), m_store(store) {
    setObjectName(QStringLiteral("sezioneDatiEsempio"));
    righe()->addRow(creaNota(tr("Aggiunge 24 aziende inventate e un modello già formattato, per provare "
                                "l'applicazione senza toccare i contatti veri. Gli indirizzi usano i domini .example, "
                                "riservati agli esempi: non esistono, quindi nessun messaggio può raggiungerli "
                                "davvero."),
                             this));
    auto* pulsanti = new QWidget(this);
    auto* riga = new QHBoxLayout(pulsanti);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* lista = new QPushButton(Symbols::icona(QStringLiteral("sparkles")), tr("Lista e modello"), pulsanti);
    lista->setObjectName(QStringLiteral("esempioListaEModello"));
    connect(lista, &QPushButton::clicked, this, [this] {
        const DatiEsempio::Esito esito = DatiEsempio::carica(m_store);
        mostra(tr("Creata la lista \"") + esito.lista.name + tr("\" con ") + QString::number(esito.righe) +
               tr(" contatti e il modello \"") + esito.modello.name + tr("\"."));
    });
    auto* scenario =
        new QPushButton(Symbols::icona(QStringLiteral("wand.and.stars")), tr("Scenario completo"), pulsanti);
    scenario->setObjectName(QStringLiteral("esempioScenario"));
    scenario->setToolTip(tr("Aggiunge anche una campagna conclusa, il suo storico e alcuni esclusi"));
    connect(scenario, &QPushButton::clicked, this, [this] { mostra(DatiEsempio::caricaScenario(m_store)); });
    auto* rimuovi = new QPushButton(Symbols::icona(QStringLiteral("trash")), tr("Rimuovi"), pulsanti);
    rimuovi->setObjectName(QStringLiteral("esempioRimuovi"));
    rimuovi->setToolTip(tr("Toglie tutti i dati dimostrativi senza toccare i tuoi"));
    rimuovi->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::red))));
    connect(rimuovi, &QPushButton::clicked, this, [this] { mostra(DatiEsempio::rimuoviScenario(m_store)); });
    riga->addWidget(lista);
    riga->addWidget(scenario);
    riga->addWidget(rimuovi);
    riga->addStretch(1);
    righe()->addRow(pulsanti);
    m_esito = new QLabel(this);
    m_esito->setObjectName(QStringLiteral("esitoEsempio"));
    m_esito->setWordWrap(true);
    m_esito->setFont(carattereScalato(m_esito->font(), 0.9));
    m_esito->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::green))));
    // Always in the layout, empty until a button has run: a row that appears later can leave the wrapped note
    // above it a line short.
    righe()->addRow(m_esito);
}

QString SezioneDatiEsempio::esitoEsempio() const {
    return m_esito->text();
}

void SezioneDatiEsempio::mostra(const QString& esito) {
    m_esito->setText(esito);
}
