#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

// The screens name their pictures by symbol ("paperplane.fill"); one table turns each into an icon of
// the system's freedesktop theme.
namespace Symbols {

// Gives the icon theme a name when the platform sets none (the offscreen platform, bare window managers),
// so that themed icons resolve everywhere.
void preparaTemaIcone();
// The freedesktop name for a symbol, or an empty text for a symbol the table doesn't know.
QString nomeFreedesktop(const QString& simbolo);
QIcon icona(const QString& simbolo);
// The symbol painted in one colour, `lato` pixels square at the given device pixel ratio.
QPixmap pixmap(const QString& simbolo, const QColor& colore, int lato, qreal rapporto = 1.0);
QIcon iconaColorata(const QString& simbolo, const QColor& colore);

} // namespace Symbols
