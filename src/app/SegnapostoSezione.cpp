#include "app/SegnapostoSezione.h"

#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QLabel>
#include <QVBoxLayout>

SegnapostoSezione::SegnapostoSezione(Sezione sezione, QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("schermata-") + rawValue(sezione));
    auto* colonna = new QVBoxLayout(this);
    colonna->addStretch(1);
    auto* immagine = new QLabel(this);
    immagine->setPixmap(Symbols::pixmap(simbolo(sezione), Palette::colore(Colore::secondary), 64, devicePixelRatioF()));
    immagine->setAlignment(Qt::AlignCenter);
    colonna->addWidget(immagine);
    auto* nome = new QLabel(titolo(sezione), this);
    nome->setObjectName(QStringLiteral("titoloSezione"));
    nome->setAlignment(Qt::AlignCenter);
    QFont carattere = nome->font();
    carattere.setPointSizeF(carattere.pointSizeF() * 1.6);
    carattere.setWeight(QFont::DemiBold);
    nome->setFont(carattere);
    nome->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    colonna->addWidget(nome);
    colonna->addStretch(1);
}
