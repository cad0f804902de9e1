#include "ui/Modulo.h"

#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QTimer>
#include <QVBoxLayout>

SezioneModulo::SezioneModulo(const QString& titolo, QWidget* genitore) : QWidget(genitore) {
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(6);
    if (!titolo.isEmpty()) {
        auto* intestazione = new QLabel(titolo, this);
        intestazione->setObjectName(QStringLiteral("titoloSezione"));
        intestazione->setFont(carattereScalato(font(), 1.0, QFont::DemiBold));
        colonna->addWidget(intestazione);
    }
    auto* riquadro = new QFrame(this);
    riquadro->setObjectName(QStringLiteral("riquadroSezione"));
    riquadro->setFrameShape(QFrame::StyledPanel);
    m_righe = new QFormLayout(riquadro);
    m_righe->setContentsMargins(12, 10, 12, 12);
    m_righe->setRowWrapPolicy(QFormLayout::DontWrapRows);
    m_righe->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_righe->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    colonna->addWidget(riquadro);
}

void SezioneModulo::aggiungiASinistra(QWidget* pezzo) {
    auto* riga = new QHBoxLayout;
    riga->setContentsMargins(0, 0, 0, 0);
    riga->addWidget(pezzo);
    riga->addStretch(1);
    m_righe->addRow(riga);
}

QVBoxLayout* colonnaPannello(QWidget* pannello) {
    auto* colonna = new QVBoxLayout(pannello);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(6);
    return colonna;
}

QLabel* creaNota(const QString& testo, QWidget* genitore) {
    auto* nota = new QLabel(testo, genitore);
    nota->setWordWrap(true);
    nota->setFont(carattereScalato(nota->font(), 0.9));
    nota->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    nota->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return nota;
}

PulsanteAttesa::PulsanteAttesa(const QString& simbolo, const QString& testo, QWidget* genitore)
    : QPushButton(Symbols::icona(simbolo), testo, genitore), m_giro(new QTimer(this)) {
    m_giro->setInterval(50);
    connect(m_giro, &QTimer::timeout, this, [this] {
        m_angolo = (m_angolo + 30) % 360;
        update();
    });
}

void PulsanteAttesa::setInAttesa(bool inAttesa) {
    if (inAttesa == m_inAttesa)
        return;
    m_inAttesa = inAttesa;
    if (inAttesa)
        m_giro->start();
    else
        m_giro->stop();
    setEnabled(m_abilitato && !m_inAttesa);
    update();
}

void PulsanteAttesa::setAbilitato(bool abilitato) {
    m_abilitato = abilitato;
    setEnabled(m_abilitato && !m_inAttesa);
}

void PulsanteAttesa::paintEvent(QPaintEvent* evento) {
    if (!m_inAttesa) {
        QPushButton::paintEvent(evento);
        return;
    }
    // The bevel without its label, then the arc where the label stood.
    QStylePainter pittore(this);
    QStyleOptionButton opzione;
    initStyleOption(&opzione);
    opzione.text.clear();
    opzione.icon = QIcon();
    pittore.drawControl(QStyle::CE_PushButton, opzione);
    pittore.setRenderHint(QPainter::Antialiasing);
    const int lato = qMin(height() - 10, 16);
    const QRectF cerchio(width() / 2.0 - lato / 2.0, height() / 2.0 - lato / 2.0, lato, lato);
    QPen penna(Palette::colore(Colore::secondary), 2);
    penna.setCapStyle(Qt::RoundCap);
    pittore.setPen(penna);
    pittore.drawArc(cerchio, -m_angolo * 16, 270 * 16);
}
