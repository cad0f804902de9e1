#include "ui/Segnaposto.h"

#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

QWidget* creaSegnaposto(const QString& simbolo, const QString& titolo, const QString& testo, QWidget* genitore) {
    auto* segnaposto = new QWidget(genitore);
    auto* colonna = new QVBoxLayout(segnaposto);
    colonna->addStretch(1);
    auto* immagine = new QLabel(segnaposto);
    immagine->setPixmap(
        Symbols::pixmap(simbolo, Palette::colore(Colore::secondary), 56, segnaposto->devicePixelRatioF()));
    immagine->setAlignment(Qt::AlignCenter);
    colonna->addWidget(immagine);
    auto* intestazione = new QLabel(titolo, segnaposto);
    intestazione->setObjectName(QStringLiteral("titoloSegnaposto"));
    intestazione->setFont(carattereScalato(intestazione->font(), 1.4, QFont::DemiBold));
    intestazione->setAlignment(Qt::AlignCenter);
    colonna->addWidget(intestazione);
    auto* spiegazione = new QLabel(testo, segnaposto);
    spiegazione->setWordWrap(true);
    spiegazione->setAlignment(Qt::AlignCenter);
    spiegazione->setFixedWidth(420);
    spiegazione->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    auto* centro = new QHBoxLayout;
    centro->addStretch(1);
    centro->addWidget(spiegazione);
    centro->addStretch(1);
    colonna->addLayout(centro);
    colonna->addStretch(1);
    return segnaposto;
}
