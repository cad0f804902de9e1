#pragma once

#include "ui/Palette.h"

#include <QFrame>
#include <QLabel>

// The few looks that the pieces of the templates screen share.
namespace Stile {

// A style sheet that paints a widget's text in one of the named colours.
inline QString testoColorato(const QColor& colore) {
    return QStringLiteral("color: %1").arg(Palette::css(colore));
}

// A hairline between parts of a pane, in the secondary colour.
inline QFrame* linea(Qt::Orientation verso, QWidget* genitore) {
    auto* linea = new QFrame(genitore);
    linea->setFrameShape(verso == Qt::Horizontal ? QFrame::HLine : QFrame::VLine);
    linea->setFrameShadow(QFrame::Plain);
    linea->setStyleSheet(testoColorato(Palette::colore(Colore::secondary, 0.25)));
    return linea;
}

// A short explanation in smaller, dimmer text that wraps.
inline QLabel* nota(const QString& testo, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    etichetta->setWordWrap(true);
    QFont carattere = etichetta->font();
    carattere.setPointSizeF(carattere.pointSizeF() * 0.92);
    etichetta->setFont(carattere);
    etichetta->setStyleSheet(testoColorato(Palette::colore(Colore::secondary)));
    return etichetta;
}

} // namespace Stile
