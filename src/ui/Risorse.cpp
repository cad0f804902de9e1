#include "ui/Risorse.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {
// An installed program sits one folder below the prefix; a test or benchmark of the build tree up to three.
constexpr int livelliMassimi = 4;
} // namespace

namespace Risorse {

QString cercaDa(const QString& cartella) {
    QDir dir(cartella);
    for (int livello = 0; livello < livelliMassimi; ++livello) {
        const QString candidata = dir.absoluteFilePath(QStringLiteral("share/brezzario"));
        if (QFileInfo::exists(candidata + QStringLiteral("/Editor/editor.html")))
            return QDir::cleanPath(candidata);
        if (!dir.cdUp())
            break;
    }
    return {};
}

QString radice() {
    // Looked up once: the executable doesn't move while it runs.
    static const QString trovata = cercaDa(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
    return trovata;
}

QString percorso(const QString& relativo) {
    const QString cartella = radice();
    if (cartella.isEmpty())
        return {};
    const QString completo = cartella + u'/' + relativo;
    return QFileInfo::exists(completo) ? completo : QString();
}

} // namespace Risorse
