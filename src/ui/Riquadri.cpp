#include "ui/Riquadri.h"

#include "ui/Symbols.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

void aggiorna(QLabel* etichetta, const QString& testo) {
    if (etichetta->text() != testo)
        etichetta->setText(testo);
}

QFont carattereScalato(QFont base, double fattore, QFont::Weight peso) {
    base.setPointSizeF(base.pointSizeF() * fattore);
    base.setWeight(peso);
    return base;
}

namespace {
QString coloreTesto(Colore colore) {
    return QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(colore)));
}

void dipingiSfondo(QWidget* widget, Colore colore, double opacita, qreal raggio) {
    QPainter pittore(widget);
    pittore.setRenderHint(QPainter::Antialiasing);
    QPainterPath forma;
    forma.addRoundedRect(QRectF(widget->rect()), raggio, raggio);
    pittore.fillPath(forma, Palette::colore(colore, opacita));
}
} // namespace

BadgeView::BadgeView(QWidget* genitore) : QFrame(genitore), m_simbolo(new QLabel(this)), m_testo(new QLabel(this)) {
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(10, 4, 10, 4);
    riga->setSpacing(5);
    m_simbolo->setObjectName(QStringLiteral("simbolo"));
    m_testo->setObjectName(QStringLiteral("testo"));
    m_testo->setFont(carattereScalato(font(), 0.95, QFont::DemiBold));
    riga->addWidget(m_simbolo);
    riga->addWidget(m_testo);
    m_simbolo->hide();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BadgeView::imposta(const Badge& badge) {
    aggiorna(m_testo, badge.testo);
    if (toolTip() != badge.tooltip)
        setToolTip(badge.tooltip);
    if (badge.colore == m_colore && badge.simbolo == m_nomeSimbolo && !m_testo->styleSheet().isEmpty())
        return;
    m_colore = badge.colore;
    m_nomeSimbolo = badge.simbolo;
    m_testo->setStyleSheet(coloreTesto(m_colore));
    m_simbolo->setVisible(!badge.simbolo.isEmpty());
    if (!badge.simbolo.isEmpty())
        m_simbolo->setPixmap(Symbols::pixmap(badge.simbolo, Palette::colore(m_colore), 14, devicePixelRatioF()));
    update();
}

QString BadgeView::testo() const {
    return m_testo->text();
}

void BadgeView::paintEvent(QPaintEvent*) {
    dipingiSfondo(this, m_colore, 0.15, height() / 2.0);
}

RiquadroView::RiquadroView(QWidget* genitore)
    : QFrame(genitore), m_simbolo(new QLabel(this)), m_valore(new QLabel(this)), m_etichetta(new QLabel(this)) {
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(14, 10, 14, 10);
    colonna->setSpacing(2);
    m_simbolo->setObjectName(QStringLiteral("simbolo"));
    m_valore->setObjectName(QStringLiteral("valore"));
    m_etichetta->setObjectName(QStringLiteral("etichetta"));
    m_valore->setFont(carattereScalato(font(), 1.9, QFont::DemiBold));
    m_etichetta->setFont(carattereScalato(font(), 0.9));
    m_etichetta->setStyleSheet(coloreTesto(Colore::secondary));
    colonna->addWidget(m_simbolo);
    colonna->addWidget(m_valore);
    colonna->addWidget(m_etichetta);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void RiquadroView::imposta(const RiquadroDato& dato) {
    aggiorna(m_valore, QString::number(dato.valore));
    aggiorna(m_etichetta, dato.etichetta);
    if (m_simbolo->pixmap().isNull() || m_colore != dato.colore) {
        m_colore = dato.colore;
        m_simbolo->setPixmap(Symbols::pixmap(dato.icona, Palette::colore(m_colore), 20, devicePixelRatioF()));
        update();
    }
    setVisible(dato.mostrato);
}

void RiquadroView::paintEvent(QPaintEvent*) {
    dipingiSfondo(this, m_colore, 0.08, 12);
}

DatoInlineView::DatoInlineView(QWidget* genitore)
    : QWidget(genitore), m_titolo(new QLabel(this)), m_valore(new QLabel(this)), m_dettaglio(new QLabel(this)) {
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(1);
    m_titolo->setObjectName(QStringLiteral("titolo"));
    m_valore->setObjectName(QStringLiteral("valore"));
    m_titolo->setFont(carattereScalato(font(), 0.85));
    m_titolo->setStyleSheet(coloreTesto(Colore::secondary));
    m_valore->setFont(carattereScalato(font(), 1.1, QFont::DemiBold));
    m_valore->setStyleSheet(coloreTesto(Colore::primary));
    m_dettaglio->setObjectName(QStringLiteral("dettaglio"));
    m_dettaglio->setFont(carattereScalato(font(), 0.85));
    m_dettaglio->setStyleSheet(coloreTesto(Colore::secondary));
    m_dettaglio->hide();
    colonna->addWidget(m_titolo);
    colonna->addWidget(m_valore);
    colonna->addWidget(m_dettaglio);
}

void DatoInlineView::imposta(const DatoInline& dato) {
    aggiorna(m_titolo, dato.titolo);
    aggiorna(m_valore, dato.valore);
    if (m_colore != dato.colore) {
        m_colore = dato.colore;
        m_valore->setStyleSheet(coloreTesto(m_colore));
    }
    setVisible(dato.mostrato);
}

void DatoInlineView::imposta(const DatoTondo& dato) {
    imposta(DatoInline{dato.titolo, dato.valore, dato.colore, true});
    aggiorna(m_dettaglio, dato.dettaglio);
    m_dettaglio->setVisible(!dato.dettaglio.isEmpty());
}

NotaView::NotaView(const QString& simbolo, Colore colore, QWidget* genitore)
    : QWidget(genitore), m_immagine(new QLabel(this)), m_testo(new QLabel(this)), m_colore(colore) {
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(6);
    m_immagine->setAlignment(Qt::AlignTop);
    m_testo->setObjectName(QStringLiteral("testo"));
    m_testo->setWordWrap(true);
    // The first line stands beside the symbol however tall the row is made.
    m_testo->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_testo->setFont(carattereScalato(font(), 0.9));
    m_testo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    setAspetto(simbolo, colore);
    riga->addWidget(m_immagine, 0, Qt::AlignTop);
    riga->addWidget(m_testo, 1);
}

void NotaView::setAspetto(const QString& simbolo, Colore colore) {
    m_colore = colore;
    m_immagine->setPixmap(Symbols::pixmap(simbolo, Palette::colore(colore), 14, devicePixelRatioF()));
    m_testo->setStyleSheet(coloreTesto(colore));
}

void NotaView::setTesto(const QString& testo) {
    aggiorna(m_testo, testo);
    setVisible(!testo.isEmpty());
}

QString NotaView::testo() const {
    return m_testo->text();
}
