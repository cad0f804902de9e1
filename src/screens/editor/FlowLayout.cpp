#include "screens/editor/FlowLayout.h"

#include <QWidget>

#include <cmath>
#include <limits>

FlowLayout::FlowLayout(QWidget* genitore, double spacing) : QLayout(genitore), m_spacing(spacing) {
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout() {
    while (QLayoutItem* voce = takeAt(0))
        delete voce;
}

QList<QPoint> FlowLayout::disposizione(const QList<QSize>& dimensioni, int larghezza, double spacing, int* altezza) {
    const double massima = larghezza > 0 ? double(larghezza) : std::numeric_limits<double>::infinity();
    double x = 0, y = 0, rigaAlta = 0;
    QList<QPoint> punti;
    punti.reserve(dimensioni.size());
    for (const QSize& dimensione : dimensioni) {
        if (x > 0 && x + dimensione.width() > massima) {
            y += rigaAlta + spacing;
            x = 0;
            rigaAlta = 0;
        }
        punti.append(QPoint(int(std::lround(x)), int(std::lround(y))));
        x += dimensione.width() + spacing;
        rigaAlta = std::max(rigaAlta, double(dimensione.height()));
    }
    if (altezza)
        *altezza = int(std::ceil(y + rigaAlta));
    return punti;
}

void FlowLayout::addItem(QLayoutItem* voce) {
    m_voci.append(voce);
}

QLayoutItem* FlowLayout::itemAt(int indice) const {
    return indice >= 0 && indice < m_voci.size() ? m_voci.at(indice) : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int indice) {
    return indice >= 0 && indice < m_voci.size() ? m_voci.takeAt(indice) : nullptr;
}

int FlowLayout::heightForWidth(int larghezza) const {
    return disponi(QRect(0, 0, larghezza, 0), false);
}

QSize FlowLayout::minimumSize() const {
    QSize minima;
    for (const QLayoutItem* voce : m_voci)
        minima = minima.expandedTo(voce->minimumSize());
    const QMargins margini = contentsMargins();
    return minima + QSize(margini.left() + margini.right(), margini.top() + margini.bottom());
}

QSize FlowLayout::sizeHint() const {
    return minimumSize();
}

void FlowLayout::setGeometry(const QRect& rettangolo) {
    QLayout::setGeometry(rettangolo);
    disponi(rettangolo, true);
}

int FlowLayout::disponi(const QRect& rettangolo, bool applica) const {
    const QRect area = rettangolo.marginsRemoved(contentsMargins());
    QList<QSize> dimensioni;
    QList<QLayoutItem*> visibili;
    for (QLayoutItem* voce : m_voci) {
        if (voce->widget() && voce->widget()->isHidden())
            continue;
        visibili.append(voce);
        dimensioni.append(voce->sizeHint());
    }
    int altezza = 0;
    const QList<QPoint> punti = disposizione(dimensioni, area.width(), m_spacing, &altezza);
    if (applica)
        for (qsizetype i = 0; i < visibili.size(); ++i)
            visibili.at(i)->setGeometry(QRect(area.topLeft() + punti.at(i), dimensioni.at(i)));
    const QMargins margini = contentsMargins();
    return altezza + margini.top() + margini.bottom();
}
