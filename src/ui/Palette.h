#pragma once

#include <QColor>
#include <QString>

// The named colours of the screens. Primary and secondary follow the platform's palette (secondary is
// its placeholder text colour), accent its highlight; the others are fixed hues that read on both light
// and dark backgrounds.
enum class Colore { primary, secondary, accent, green, red, orange, yellow, blue, teal, indigo, purple };

namespace Palette {

QColor colore(Colore colore);
QColor colore(Colore colore, double opacita);
// "rgba(r, g, b, a)" for style sheets.
QString css(const QColor& colore);

} // namespace Palette
