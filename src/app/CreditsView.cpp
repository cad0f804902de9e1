#include "app/CreditsView.h"

#include "ui/Palette.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

QString CreditsView::versione() {
    QString numero = QCoreApplication::applicationVersion();
    if (numero.isEmpty())
        numero = QStringLiteral("1.0");
    return QStringLiteral("Brezzario ") + numero;
}

CreditsView::CreditsView(QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("credits"));
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(8, 6, 8, 10);
    colonna->setSpacing(2);

    auto* divisore = new QFrame(this);
    divisore->setFrameShape(QFrame::HLine);
    divisore->setFrameShadow(QFrame::Plain);
    divisore->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::primary, 0.15))));
    colonna->addWidget(divisore);
    colonna->addSpacing(6);

    auto* nome = new QLabel(versione(), this);
    nome->setObjectName(QStringLiteral("versione"));
    QFont grassetto = nome->font();
    grassetto.setWeight(QFont::DemiBold);
    nome->setFont(grassetto);
    colonna->addWidget(nome);

    auto* produttore = new QLabel(tr("Un programma di Nembrosa Software"), this);
    produttore->setObjectName(QStringLiteral("produttore"));
    produttore->setWordWrap(true);
    QFont piccolo = produttore->font();
    piccolo.setPointSizeF(piccolo.pointSizeF() * 0.85);
    produttore->setFont(piccolo);
    produttore->setStyleSheet(QStringLiteral("color: %1").arg(Palette::css(Palette::colore(Colore::secondary))));
    colonna->addWidget(produttore);

    auto* collegamento = new QPushButton(tr("nembrosa.example"), this);
    collegamento->setObjectName(QStringLiteral("sitoProduttore"));
    collegamento->setFlat(true);
    collegamento->setCursor(Qt::PointingHandCursor);
    collegamento->setFont(piccolo);
    collegamento->setToolTip(sitoProduttore);
    collegamento->setStyleSheet(QStringLiteral("QPushButton { color: %1; text-align: left; padding: 0; border: none; }")
                                    .arg(Palette::css(Palette::colore(Colore::accent))));
    connect(collegamento, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(QUrl(sitoProduttore)); });
    colonna->addWidget(collegamento, 0, Qt::AlignLeft);
}
