#include "screens/domains/VerificaDominiView.h"

#include "records/Store.h"
#include "ui/Modulo.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QCheckBox>
#include <QCoro/QCoroTask>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

namespace {

QLabel* titoletto(const QString& testo, const char* nome, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    etichetta->setObjectName(QLatin1String(nome));
    etichetta->setFont(carattereScalato(etichetta->font(), 0.9, QFont::DemiBold));
    return etichetta;
}

QLabel* elencoIndirizzi(const char* nome, QWidget* genitore) {
    auto* etichetta = new QLabel(genitore);
    etichetta->setObjectName(QLatin1String(nome));
    etichetta->setFont(carattereScalato(etichetta->font(), 0.9));
    etichetta->setTextFormat(Qt::PlainText);
    etichetta->setTextInteractionFlags(Qt::TextSelectableByMouse);
    etichetta->setWordWrap(true);
    return etichetta;
}

NotaView* riga(const char* simbolo, Colore colore, const char* nome, QWidget* genitore) {
    auto* nota = new NotaView(QLatin1String(simbolo), colore, genitore);
    nota->setObjectName(QLatin1String(nome));
    return nota;
}

} // namespace

VerificaDominiView::VerificaDominiView(Store& store, QWidget* genitore) : QWidget(genitore), m_store(store) {
    setObjectName(QStringLiteral("verificaDomini"));
    QVBoxLayout* colonna = colonnaPannello(this);
    colonna->addWidget(creaNota(tr("Interroga il DNS di ogni dominio presente nelle liste, esattamente come fa "
                                   "l'invio. Serve a scoprire in anticipo gli indirizzi di aziende chiuse, che "
                                   "altrimenti rimbalzerebbero facendo salire il tasso di errore del servizio."),
                                this));
    auto* comandi = new QHBoxLayout;
    m_pulsante =
        new PulsanteAttesa(QStringLiteral("checkmark.shield"), tr("Controlla i domini di tutte le liste"), this);
    m_pulsante->setObjectName(QStringLiteral("controllaDomini"));
    connect(m_pulsante, &QPushButton::clicked, this, &VerificaDominiView::controlla);
    comandi->addWidget(m_pulsante);
    m_avanzamento = new QLabel(this);
    m_avanzamento->setObjectName(QStringLiteral("avanzamento"));
    comandi->addWidget(m_avanzamento);
    comandi->addStretch(1);
    colonna->addLayout(comandi);

    m_conteggi = new QLabel(this);
    m_conteggi->setObjectName(QStringLiteral("conteggi"));
    m_conteggi->setWordWrap(true);
    colonna->addWidget(m_conteggi);
    m_dimostrativi = riga("sparkles", Colore::secondary, "dimostrativi", this);
    m_nessunProblema = riga("checkmark.circle.fill", Colore::green, "nessunProblema", this);
    m_inesistenti = riga("xmark.octagon.fill", Colore::red, "inesistenti", this);
    m_senzaServer = riga("exclamationmark.triangle.fill", Colore::orange, "senzaServer", this);
    for (QWidget* pezzo : {static_cast<QWidget*>(m_dimostrativi), static_cast<QWidget*>(m_nessunProblema),
                           static_cast<QWidget*>(m_inesistenti), static_cast<QWidget*>(m_senzaServer)})
        colonna->addWidget(pezzo);

    m_titoloDaScartare = titoletto(tr("Indirizzi non recapitabili:"), "titoloDaScartare", this);
    m_daScartare = elencoIndirizzi("daScartare", this);
    m_titoloIncerti = titoletto(tr("Indirizzi a consegna incerta:"), "titoloIncerti", this);
    m_incerti = elencoIndirizzi("incerti", this);
    m_includiIncertiScelta = new QCheckBox(this);
    m_includiIncertiScelta->setObjectName(QStringLiteral("includiIncerti"));
    connect(m_includiIncertiScelta, &QCheckBox::toggled, this, [this](bool acceso) {
        m_includiIncerti = acceso;
        mostra();
    });
    m_notaIncerti = creaNota(tr("Il dominio risponde ma non dichiara dove ricevere la posta: spesso è un sito senza "
                                "casella, a volte funziona lo stesso. Escluderli è la scelta prudente."),
                             this);
    m_aggiungi = new QPushButton(Symbols::icona(QStringLiteral("nosign")), QString(), this);
    m_aggiungi->setObjectName(QStringLiteral("aggiungiAgliEsclusi"));
    connect(m_aggiungi, &QPushButton::clicked, this, &VerificaDominiView::aggiungiAgliEsclusi);
    m_aggiunti = new QLabel(this);
    m_aggiunti->setObjectName(QStringLiteral("esclusiAggiunti"));
    m_aggiunti->setWordWrap(true);
    for (QWidget* pezzo : {static_cast<QWidget*>(m_titoloDaScartare), static_cast<QWidget*>(m_daScartare),
                           static_cast<QWidget*>(m_titoloIncerti), static_cast<QWidget*>(m_incerti),
                           static_cast<QWidget*>(m_includiIncertiScelta), static_cast<QWidget*>(m_notaIncerti)})
        colonna->addWidget(pezzo);
    colonna->addWidget(m_aggiungi, 0, Qt::AlignLeft);
    colonna->addWidget(m_aggiunti);
    colonna->addStretch(1);
    mostra();
}

void VerificaDominiView::controlla() {
    if (m_inCorso)
        return;
    m_inCorso = true;
    m_esito.reset();
    m_esclusiAggiunti.reset();
    m_fatti = 0;
    const QStringList indirizzi = DominiModel::indirizziDelleListe(m_store);
    const QSet<QString> domini = MXCheck::domini(indirizzi);
    m_totale = int(domini.size());
    mostra();
    // The progress arrives on this thread; a panel closed meanwhile is simply no longer told.
    QPointer<VerificaDominiView> vista(this);
    auto avanzamento = [vista](int fatti, int totale) {
        if (!vista)
            return;
        vista->m_fatti = fatti;
        vista->m_totale = totale;
        vista->mostra();
    };
    QCoro::connect(MXCheck::verifica(domini, avanzamento), this,
                   [this, indirizzi](const QHash<QString, MXCheck::Esito>& esiti) { concludi(indirizzi, esiti); });
}

void VerificaDominiView::concludi(const QStringList& indirizzi, const QHash<QString, MXCheck::Esito>& esiti) {
    m_esito = DominiModel::riepiloga(indirizzi, esiti);
    m_inCorso = false;
    mostra();
}

void VerificaDominiView::aggiungiAgliEsclusi() {
    if (!m_esito || m_esclusiAggiunti)
        return;
    if (m_esito->daScartare.isEmpty() && !m_includiIncerti)
        return;
    m_esclusiAggiunti = DominiModel::aggiungiAgliEsclusi(m_store, *m_esito, m_includiIncerti);
    mostra();
}

void VerificaDominiView::mostra() {
    using namespace DominiModel;
    m_pulsante->setInAttesa(m_inCorso);
    aggiorna(m_avanzamento, m_inCorso ? avanzamento(m_fatti, m_totale) : QString());
    m_avanzamento->setVisible(m_inCorso && m_totale > 0);

    const Riepilogo vuoto;
    const Riepilogo& r = m_esito ? *m_esito : vuoto;
    const bool c = m_esito.has_value();
    m_conteggi->setVisible(c);
    aggiorna(m_conteggi, c ? lineaConteggi(r) : QString());
    m_dimostrativi->setTesto(c ? lineaDimostrativi(r) : QString());
    m_nessunProblema->setTesto(c ? lineaNessunProblema(r) : QString());
    m_inesistenti->setTesto(c ? lineaInesistenti(r) : QString());
    m_senzaServer->setTesto(c ? lineaSenzaServer(r) : QString());

    m_titoloDaScartare->setVisible(!r.daScartare.isEmpty());
    m_daScartare->setVisible(!r.daScartare.isEmpty());
    aggiorna(m_daScartare, elenco(r.daScartare));
    const bool incerti = !r.incerti.isEmpty();
    for (QWidget* pezzo : {static_cast<QWidget*>(m_titoloIncerti), static_cast<QWidget*>(m_incerti),
                           static_cast<QWidget*>(m_includiIncertiScelta), static_cast<QWidget*>(m_notaIncerti)})
        pezzo->setVisible(incerti);
    aggiorna(m_incerti, elenco(r.incerti));
    m_includiIncertiScelta->setText(tr("Escludi anche questi ") + QString::number(r.incerti.size()) + tr(" indirizzi"));

    m_aggiungi->setVisible(!r.daScartare.isEmpty() || incerti);
    m_aggiungi->setText(tr("Aggiungi agli esclusi (") + QString::number(daAggiungere(r, m_includiIncerti)) + u')');
    m_aggiungi->setEnabled(!m_esclusiAggiunti && (!r.daScartare.isEmpty() || m_includiIncerti));
    m_aggiunti->setVisible(m_esclusiAggiunti.has_value());
    aggiorna(m_aggiunti, m_esclusiAggiunti ? esitoAggiunta(*m_esclusiAggiunti) : QString());
}
