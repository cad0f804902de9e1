#include "app/TitoloBarra.h"

#include "ui/Risorse.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>

namespace {
constexpr int altezzaLogo = 50;
const QString nomeLogo = QStringLiteral("brezzario-titolo.png");
} // namespace

QStringList TitoloBarra::cartelleLogo() {
    const QString radice = Risorse::radice();
    if (radice.isEmpty())
        return {};
    return {radice + QStringLiteral("/Media"), radice};
}

QString TitoloBarra::cercaLogo(const QStringList& cartelle) {
    for (const QString& cartella : cartelle) {
        const QString percorso = cartella.endsWith(u'/') ? cartella + nomeLogo : cartella + u'/' + nomeLogo;
        if (QFileInfo(percorso).isFile() && !QPixmap(percorso).isNull())
            return percorso;
    }
    return {};
}

TitoloBarra::TitoloBarra(QWidget* genitore, const QStringList& cartelle) : QWidget(genitore) {
    setObjectName(QStringLiteral("titoloBarra"));
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* etichetta = new QLabel(this);
    etichetta->setObjectName(QStringLiteral("titoloBarraContenuto"));
    etichetta->setAlignment(Qt::AlignCenter);
    const QString logo = cercaLogo(cartelle);
    if (!logo.isEmpty()) {
        m_logo = true;
        const QPixmap immagine(logo);
        etichetta->setPixmap(immagine.scaledToHeight(altezzaLogo, Qt::SmoothTransformation));
        etichetta->setAccessibleName(tr("Brezzario — Nembrosa Software"));
    } else {
        etichetta->setText(tr("BREZZARIO"));
        QFont carattere = etichetta->font();
        carattere.setWeight(QFont::Bold);
        carattere.setLetterSpacing(QFont::AbsoluteSpacing, 3);
        carattere.setPointSizeF(carattere.pointSizeF() * 1.15);
        etichetta->setFont(carattere);
    }
    riga->addWidget(etichetta);
}
