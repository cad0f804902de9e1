#include "screens/suppressions/DettaglioEsclusione.h"

#include "ui/PresentazioneMotivo.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QLabel* testo(const char* nome, QWidget* genitore, bool selezionabile = false) {
    auto* etichetta = new QLabel(genitore);
    etichetta->setObjectName(QLatin1String(nome));
    etichetta->setWordWrap(true);
    etichetta->setTextFormat(Qt::PlainText);
    if (selezionabile)
        etichetta->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return etichetta;
}

QLabel* intestazione(const QString& titolo, QWidget* genitore) {
    auto* etichetta = new QLabel(titolo, genitore);
    etichetta->setFont(carattereScalato(etichetta->font(), 0.95, QFont::DemiBold));
    return etichetta;
}

} // namespace

DettaglioEsclusione::DettaglioEsclusione(QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("dettaglioEscluso"));
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(16, 12, 16, 12);
    colonna->setSpacing(8);

    auto* testa = new QHBoxLayout;
    testa->setSpacing(8);
    m_simbolo = new QLabel(this);
    m_simbolo->setFixedSize(24, 24);
    testa->addWidget(m_simbolo, 0, Qt::AlignTop);
    m_email = testo("emailDettaglio", this, true);
    m_email->setFont(carattereScalato(m_email->font(), 1.25, QFont::DemiBold));
    testa->addWidget(m_email, 1);
    colonna->addLayout(testa);

    m_etichetta = testo("motivoDettaglio", this);
    colonna->addWidget(m_etichetta);
    colonna->addSpacing(4);
    colonna->addWidget(intestazione(tr("Che cosa significa"), this));
    m_spiegazione = testo("spiegazioneDettaglio", this);
    colonna->addWidget(m_spiegazione);
    colonna->addSpacing(4);
    m_titoloRisposta = intestazione(tr("Risposta tecnica del server"), this);
    colonna->addWidget(m_titoloRisposta);
    m_risposta = testo("rispostaDettaglio", this, true);
    m_risposta->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    colonna->addWidget(m_risposta);
    m_avviso = testo("avvisoDettaglio", this);
    m_avviso->setText(PresentazioneMotivo::avvisoRiabilitazione());
    m_avviso->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::orange))));
    colonna->addWidget(m_avviso);
    colonna->addSpacing(6);

    m_togli = new QPushButton(Symbols::icona(QStringLiteral("arrow.uturn.backward")), tr("Togli dagli esclusi"), this);
    m_togli->setObjectName(QStringLiteral("togliEscluso"));
    m_togli->setToolTip(tr("L'indirizzo tornerà contattabile nelle prossime campagne"));
    connect(m_togli, &QPushButton::clicked, this, [this] { Q_EMIT togliRichiesto(m_id); });
    auto* comandi = new QHBoxLayout;
    comandi->addWidget(m_togli);
    comandi->addStretch(1);
    colonna->addLayout(comandi);
    colonna->addStretch(1);
}

void DettaglioEsclusione::mostra(const SuppressionModel::Voce& voce) {
    m_id = voce.esclusione.id;
    const QColor tinta = Palette::colore(PresentazioneMotivo::colore(voce.motivo));
    m_simbolo->setPixmap(Symbols::pixmap(PresentazioneMotivo::simbolo(voce.motivo), tinta, 24, devicePixelRatioF()));
    aggiorna(m_email, voce.esclusione.email);
    aggiorna(m_etichetta, PresentazioneMotivo::etichetta(voce.motivo));
    aggiorna(m_spiegazione, PresentazioneMotivo::spiegazione(voce.motivo));
    const bool conRisposta = !voce.esclusione.reason.isEmpty();
    m_titoloRisposta->setVisible(conRisposta);
    m_risposta->setVisible(conRisposta);
    aggiorna(m_risposta, voce.esclusione.reason);
    m_avviso->setVisible(PresentazioneMotivo::sconsigliaRiabilitare(voce.motivo));
}
