#include "screens/suppressions/RiquadroMotivo.h"

#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QLocale>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int margine = 10;
constexpr int latoSimbolo = 18;
} // namespace

RiquadroMotivo::RiquadroMotivo(QWidget* genitore) : QAbstractButton(genitore) {
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void RiquadroMotivo::imposta(const DatiRiquadroMotivo& dati) {
    m_dati = dati;
    setToolTip(dati.titolo);
    setAccessibleName(dati.titolo);
    updateGeometry();
    update();
}

QSize RiquadroMotivo::sizeHint() const {
    const QFontMetrics titolo(carattereScalato(font(), 0.9));
    const QFontMetrics numero(carattereScalato(font(), 1.5, QFont::Bold));
    const int larghezza = qMax(titolo.horizontalAdvance(m_dati.titolo),
                               latoSimbolo + 6 + numero.horizontalAdvance(QStringLiteral("00000")));
    // Room for a label on two lines: the longest ones wrap rather than lose their end.
    return {qBound(120, larghezza + 2 * margine, 220), numero.height() + 2 * titolo.height() + 2 * margine + 4};
}

void RiquadroMotivo::paintEvent(QPaintEvent*) {
    QPainter pittore(this);
    pittore.setRenderHint(QPainter::Antialiasing);
    const QColor tinta = Palette::colore(m_dati.colore);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    QPainterPath forma;
    forma.addRoundedRect(area, 8, 8);
    pittore.fillPath(forma, Palette::colore(m_dati.colore, m_dati.attivo ? 0.2 : 0.07));
    // The chosen tile is ringed in the accent colour, so that grey categories read as chosen too.
    QColor bordo = m_dati.attivo ? Palette::colore(Colore::accent) : tinta;
    if (!m_dati.attivo)
        bordo.setAlphaF(underMouse() ? 0.45f : 0.2f);
    pittore.setPen(QPen(bordo, m_dati.attivo ? 2 : 1));
    pittore.drawPath(forma);

    const QFont numero = carattereScalato(font(), 1.5, QFont::Bold);
    const QFontMetrics misureNumero(numero);
    const int alto = margine;
    const int rapporto = int(devicePixelRatioF());
    pittore.drawPixmap(QRect(margine, alto + (misureNumero.height() - latoSimbolo) / 2, latoSimbolo, latoSimbolo),
                       Symbols::pixmap(m_dati.icona, tinta, latoSimbolo, qMax(1, rapporto)));
    pittore.setFont(numero);
    pittore.setPen(m_dati.colore == Colore::secondary ? Palette::colore(Colore::primary) : tinta);
    pittore.drawText(
        QRect(margine + latoSimbolo + 6, alto, width() - 2 * margine - latoSimbolo - 6, misureNumero.height()),
        Qt::AlignLeft | Qt::AlignVCenter, QLocale().toString(m_dati.quanti));
    const QFont titolo = carattereScalato(font(), 0.9);
    pittore.setFont(titolo);
    pittore.setPen(Palette::colore(Colore::primary));
    const QFontMetrics misureTitolo(titolo);
    pittore.drawText(QRect(margine, alto + misureNumero.height() + 4, width() - 2 * margine, 2 * misureTitolo.height()),
                     Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, m_dati.titolo);
}
