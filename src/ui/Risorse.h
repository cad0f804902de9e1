#pragma once

#include <QString>

// The program's files beside its code: the editor's page, its pictures and the user guide. They live in
// "share/brezzario" next to the folder of the executable (/usr/bin → /usr/share/brezzario), wherever a
// package puts it; a build tree has the same folder at its top, above the programs it builds.
namespace Risorse {

// The folder holding "Editor", "Media" and "guida", or an empty text when none is found.
QString radice();
// The first "share/brezzario" holding the editor's page, looked for from `cartella` upwards.
QString cercaDa(const QString& cartella);
// The path of a file under the root (e.g. "Media/icons/circle.svg"), or an empty text.
QString percorso(const QString& relativo);

} // namespace Risorse
