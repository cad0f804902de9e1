#include "app/VoceSidebar.h"

#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int latoSimbolo = 18;
constexpr int margine = 10;
constexpr qreal raggio = 10;
} // namespace

VoceSidebar::VoceSidebar(Sezione voce, QWidget* genitore) : QAbstractButton(genitore), m_voce(voce) {
    setObjectName(QStringLiteral("voce-") + rawValue(voce));
    setText(titolo(voce));
    setAccessibleName(titolo(voce));
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void VoceSidebar::setAttiva(bool attiva) {
    if (m_attiva == attiva)
        return;
    m_attiva = attiva;
    update();
}

QSize VoceSidebar::sizeHint() const {
    return {180, qMax(fontMetrics().height(), latoSimbolo) + 16};
}

void VoceSidebar::enterEvent(QEnterEvent* evento) {
    m_sotto = true;
    update();
    QAbstractButton::enterEvent(evento);
}

void VoceSidebar::leaveEvent(QEvent* evento) {
    m_sotto = false;
    update();
    QAbstractButton::leaveEvent(evento);
}

void VoceSidebar::paintEvent(QPaintEvent*) {
    QPainter pittore(this);
    pittore.setRenderHint(QPainter::Antialiasing);
    QPainterPath forma;
    forma.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), raggio, raggio);
    if (m_attiva) {
        // A solid, slightly raised fill stands in for the platform's thick material.
        pittore.fillPath(forma, palette().color(QPalette::Base));
        pittore.setPen(QPen(Palette::colore(Colore::primary, 0.10), 1));
        pittore.drawPath(forma);
    } else if (m_sotto) {
        pittore.fillPath(forma, Palette::colore(Colore::primary, 0.07));
    }

    const QColor tinta = m_attiva ? Palette::colore(Colore::accent) : Palette::colore(Colore::primary);
    const int y = (height() - latoSimbolo) / 2;
    pittore.drawPixmap(margine, y, Symbols::pixmap(simbolo(m_voce), tinta, latoSimbolo, devicePixelRatioF()));
    QFont carattere = font();
    if (m_attiva)
        carattere.setWeight(QFont::DemiBold);
    pittore.setFont(carattere);
    pittore.setPen(Palette::colore(Colore::primary));
    const QRect spazioTesto = rect().adjusted(margine + latoSimbolo + 10, 0, -margine, 0);
    pittore.drawText(spazioTesto, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, spazioTesto.width()));
}
