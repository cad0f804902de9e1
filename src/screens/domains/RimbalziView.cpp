#include "screens/domains/RimbalziView.h"

#include "checks/BrevoAPI.h"
#include "checks/Rimbalzi.h"
#include "records/Store.h"
#include "screens/domains/DominiModel.h"
#include "settings/Keychain.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QComboBox>
#include <QCoro/QCoroTask>
#include <QFormLayout>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

struct Scaricati {
    bool riuscito = false;
    QList<BrevoAPI::Evento> eventi;
    QString errore;
};

// A free coroutine with values for parameters, so that nothing it holds belongs to the panel.
QCoro::Task<Scaricati> scaricaEventi(int giorni, QString chiave) {
    // The result is awaited into a local first: GCC 12 mishandles a co_await inside a braced initialiser.
    Scaricati scaricati;
    try {
        scaricati.eventi = co_await BrevoAPI::indirizziDaEscludere(giorni, chiave);
        scaricati.riuscito = true;
    } catch (const BrevoAPI::Errore& errore) {
        scaricati.errore = errore.errorDescription();
    }
    co_return scaricati;
}

} // namespace

RimbalziView::RimbalziView(Store& store, QWidget* genitore) : QWidget(genitore), m_store(store) {
    setObjectName(QStringLiteral("rimbalzi"));
    QVBoxLayout* colonna = colonnaPannello(this);
    auto* campi = new QFormLayout;
    campi->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    campi->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_chiave = new QLineEdit(this);
    m_chiave->setObjectName(QStringLiteral("chiaveAPI"));
    m_chiave->setEchoMode(QLineEdit::Password);
    campi->addRow(tr("Chiave API di Brevo"), m_chiave);
    m_periodo = new QComboBox(this);
    m_periodo->setObjectName(QStringLiteral("periodo"));
    m_periodo->addItem(tr("Ultimi 7 giorni"), 7);
    m_periodo->addItem(tr("Ultimi 30 giorni"), 30);
    m_periodo->addItem(tr("Ultimi 90 giorni"), 90);
    m_periodo->setCurrentIndex(1);
    campi->addRow(tr("Periodo"), m_periodo);
    colonna->addLayout(campi);
    colonna->addWidget(creaNota(tr("La chiave API è diversa dalla chiave SMTP: si genera in Brevo → SMTP e API → "
                                   "scheda API. Serve a leggere i messaggi respinti dopo la consegna, che l'invio "
                                   "non può conoscere: quelli definitivi vengono aggiunti agli esclusi e non "
                                   "saranno più contattati."),
                                this));
    m_pulsante =
        new PulsanteAttesa(QStringLiteral("arrow.down.circle"), tr("Scarica rimbalzi e aggiorna esclusi"), this);
    m_pulsante->setObjectName(QStringLiteral("scaricaRimbalzi"));
    colonna->addWidget(m_pulsante, 0, Qt::AlignLeft);
    m_esitoVista = new NotaView(QStringLiteral("checkmark.circle.fill"), Colore::green, this);
    m_esitoVista->setObjectName(QStringLiteral("esitoRimbalzi"));
    m_esitoVista->setTesto(QString());
    colonna->addWidget(m_esitoVista);

    // The panel opens with the stored key; only the user's edits write it back.
    m_chiaveAPI = Keychain::password(Keychain::accountBrevo).value_or(QString());
    m_chiave->setText(m_chiaveAPI);
    connect(m_chiave, &QLineEdit::textEdited, this, &RimbalziView::cambiaChiave);
    connect(m_periodo, &QComboBox::activated, this, [this] { m_giorni = m_periodo->currentData().toInt(); });
    connect(m_pulsante, &QPushButton::clicked, this, &RimbalziView::scarica);
    colonna->addStretch(1);
    mostra();
}

void RimbalziView::cambiaChiave(const QString& chiave) {
    m_chiaveAPI = chiave;
    Keychain::setPassword(chiave, Keychain::accountBrevo); // "" deletes the entry
    mostra();
}

void RimbalziView::scarica() {
    if (m_inCorso || m_chiaveAPI.isEmpty())
        return;
    m_inCorso = true;
    m_esito.reset();
    mostra();
    const int giorni = m_giorni;
    QCoro::connect(scaricaEventi(giorni, m_chiaveAPI), this, [this, giorni](const Scaricati& scaricati) {
        if (!scaricati.riuscito) {
            concludi(std::nullopt, scaricati.errore);
            return;
        }
        const Rimbalzi::Conteggio conteggio = Rimbalzi::applica(m_store, scaricati.eventi);
        concludi(scaricati.eventi.size(), DominiModel::esitoScarica(scaricati.eventi.size(), conteggio, giorni));
    });
}

void RimbalziView::concludi(std::optional<qsizetype> eventi, const QString& testo) {
    m_esitoPositivo = eventi.has_value();
    m_esito = testo;
    m_inCorso = false;
    mostra();
}

void RimbalziView::mostra() {
    m_pulsante->setInAttesa(m_inCorso);
    m_pulsante->setAbilitato(!m_chiaveAPI.isEmpty());
    if (m_esitoPositivo)
        m_esitoVista->setAspetto(QStringLiteral("checkmark.circle.fill"), Colore::green);
    else
        m_esitoVista->setAspetto(QStringLiteral("xmark.octagon.fill"), Colore::red);
    m_esitoVista->setTesto(m_esito.value_or(QString()));
}
