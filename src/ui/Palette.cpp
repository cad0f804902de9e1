#include "ui/Palette.h"

#include <QGuiApplication>
#include <QPalette>

namespace Palette {

QColor colore(Colore colore) {
    const QPalette tavolozza = QGuiApplication::palette();
    switch (colore) {
    case Colore::primary:
        return tavolozza.color(QPalette::WindowText);
    case Colore::secondary:
        return tavolozza.color(QPalette::PlaceholderText);
    case Colore::accent:
        return tavolozza.color(QPalette::Highlight);
    case Colore::green:
        return QColor(0x2e, 0x9e, 0x48);
    case Colore::red:
        return QColor(0xe0, 0x35, 0x2b);
    case Colore::orange:
        return QColor(0xe0, 0x78, 0x00);
    case Colore::yellow:
        return QColor(0xc9, 0x9a, 0x00); // darker than a pure yellow, so that text in it reads on white
    case Colore::blue:
        return QColor(0x0a, 0x6c, 0xdb);
    case Colore::teal:
        return QColor(0x1f, 0x9e, 0xb3);
    case Colore::indigo:
        return QColor(0x58, 0x56, 0xd6);
    case Colore::purple:
        return QColor(0x9b, 0x4d, 0xca);
    }
    return tavolozza.color(QPalette::WindowText);
}

QColor colore(Colore nome, double opacita) {
    QColor risultato = colore(nome);
    risultato.setAlphaF(float(opacita));
    return risultato;
}

QString css(const QColor& colore) {
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(colore.red())
        .arg(colore.green())
        .arg(colore.blue())
        .arg(colore.alpha());
}

} // namespace Palette
