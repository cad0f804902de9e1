#include "screens/domains/DominioCheckView.h"

#include "screens/domains/DominiModel.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QCoro/QCoroTask>
#include <QLabel>
#include <QVBoxLayout>

namespace {

struct Aspetto {
    const char* simbolo;
    Colore colore;
};

Aspetto aspettoDi(DNSCheck::Esito::Caso caso) {
    switch (caso) {
    case DNSCheck::Esito::ok:
        return {"checkmark.circle.fill", Colore::green};
    case DNSCheck::Esito::attenzione:
        return {"exclamationmark.triangle.fill", Colore::orange};
    case DNSCheck::Esito::mancante:
        break;
    }
    return {"xmark.octagon.fill", Colore::red};
}

} // namespace

DominioCheckView::DominioCheckView(QString dominio, QString hostSMTP, QWidget* genitore, OnEsito onEsito)
    : QWidget(genitore), m_dominio(std::move(dominio)), m_hostSMTP(std::move(hostSMTP)), m_onEsito(std::move(onEsito)) {
    setObjectName(QStringLiteral("dominioCheck"));
    QVBoxLayout* colonna = colonnaPannello(this);
    m_introduzione = creaNota(tr("Controlla SPF, DKIM e DMARC del dominio con cui spedisci: senza questi record i "
                                 "messaggi vengono accettati dai server ma finiscono quasi sempre nella posta "
                                 "indesiderata."),
                              this);
    m_introduzione->setObjectName(QStringLiteral("introduzione"));
    colonna->addWidget(m_introduzione);
    m_titolo = new QLabel(this);
    m_titolo->setObjectName(QStringLiteral("titoloDominio"));
    m_titolo->setWordWrap(true);
    m_titolo->setFont(carattereScalato(font(), 1.0, QFont::DemiBold));
    colonna->addWidget(m_titolo);
    for (const char* nome : {"verdettoSPF", "verdettoDKIM", "verdettoDMARC"}) {
        auto* verdetto = new NotaView(QStringLiteral("xmark.octagon.fill"), Colore::red, this);
        verdetto->setObjectName(QLatin1String(nome));
        m_verdetti.append(verdetto);
        colonna->addWidget(verdetto);
    }
    m_suggerimento = creaNota(QString(), this);
    m_suggerimento->setObjectName(QStringLiteral("suggerimentoDominio"));
    colonna->addWidget(m_suggerimento);
    m_pulsante = new PulsanteAttesa(QStringLiteral("checkmark.shield"), tr("Verifica il dominio"), this);
    m_pulsante->setObjectName(QStringLiteral("verificaDominio"));
    connect(m_pulsante, &QPushButton::clicked, this, &DominioCheckView::verifica);
    colonna->addWidget(m_pulsante, 0, Qt::AlignLeft);
    colonna->addStretch(1);
    mostra();
}

void DominioCheckView::imposta(const QString& dominio, const QString& hostSMTP) {
    m_dominio = dominio;
    m_hostSMTP = hostSMTP;
    mostra();
}

void DominioCheckView::verifica() {
    if (m_dominio.isEmpty() || m_inCorso)
        return;
    m_inCorso = true;
    mostra();
    QCoro::connect(DNSCheck::verifica(m_dominio, m_hostSMTP), this, [this](const DNSCheck::Risultato& risultato) {
        m_risultato = risultato;
        if (m_onEsito)
            m_onEsito(risultato);
        m_inCorso = false;
        mostra();
    });
}

void DominioCheckView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (m_giaMostrato)
        return;
    m_giaMostrato = true;
    if (!m_risultato)
        verifica();
}

void DominioCheckView::mostra() {
    m_pulsante->setInAttesa(m_inCorso);
    m_pulsante->setAbilitato(!m_dominio.isEmpty());
    m_introduzione->setVisible(!m_risultato);
    m_titolo->setVisible(m_risultato.has_value());
    m_suggerimento->setVisible(m_risultato && DominiModel::haMancanti(*m_risultato));
    for (NotaView* verdetto : m_verdetti)
        verdetto->setVisible(m_risultato.has_value());
    if (!m_risultato)
        return;
    aggiorna(m_titolo, DominiModel::titolo(*m_risultato));
    const DNSCheck::Esito esiti[] = {m_risultato->spf, m_risultato->dkim, m_risultato->dmarc};
    const QString nomi[] = {QStringLiteral("SPF"), QStringLiteral("DKIM"), QStringLiteral("DMARC")};
    for (int i = 0; i < 3; ++i) {
        const Aspetto aspetto = aspettoDi(esiti[i].caso);
        m_verdetti[i]->setAspetto(QLatin1String(aspetto.simbolo), aspetto.colore);
        m_verdetti[i]->setTesto(nomi[i] + QStringLiteral(": ") + esiti[i].testo);
    }
    aggiorna(m_suggerimento, DominiModel::suggerimento(m_risultato->servizio));
}
