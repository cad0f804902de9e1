#include "screens/templates/ModelliListModel.h"

#include "screens/templates/TemplatesModel.h"
#include "ui/Palette.h"

#include <QApplication>
#include <QPainter>

ModelliListModel::ModelliListModel(QObject* genitore) : QAbstractListModel(genitore) {}

void ModelliListModel::imposta(QList<MessageTemplate> modelli) {
    QList<Voce> voci;
    voci.reserve(modelli.size());
    for (const MessageTemplate& modello : modelli)
        voci.append({modello.id, TemplatesModel::nomeMostrato(modello), TemplatesModel::oggettoMostrato(modello)});
    if (voci == m_voci)
        return;
    // Same templates in the same order: repaint the texts and keep the selection where it is.
    bool stessaForma = voci.size() == m_voci.size();
    for (qsizetype i = 0; stessaForma && i < voci.size(); ++i)
        stessaForma = voci.at(i).id == m_voci.at(i).id;
    if (stessaForma) {
        m_voci = std::move(voci);
        Q_EMIT dataChanged(index(0), index(int(m_voci.size()) - 1));
        return;
    }
    beginResetModel();
    m_voci = std::move(voci);
    endResetModel();
}

int ModelliListModel::riga(RecordId id) const {
    for (qsizetype i = 0; i < m_voci.size(); ++i)
        if (m_voci.at(i).id == id)
            return int(i);
    return -1;
}

RecordId ModelliListModel::id(int riga) const {
    return riga >= 0 && riga < m_voci.size() ? m_voci.at(riga).id : 0;
}

int ModelliListModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : int(m_voci.size());
}

QVariant ModelliListModel::data(const QModelIndex& indice, int ruolo) const {
    if (!indice.isValid() || indice.row() >= m_voci.size())
        return {};
    const Voce& voce = m_voci.at(indice.row());
    switch (ruolo) {
    case Qt::DisplayRole:
        return voce.nome;
    case Qt::ToolTipRole:
        return voce.nome + u'\n' + voce.oggetto;
    case OggettoRole:
        return voce.oggetto;
    case IdRole:
        return voce.id;
    default:
        return {};
    }
}

void ModelloDelegate::paint(QPainter* pittore, const QStyleOptionViewItem& opzione, const QModelIndex& indice) const {
    QStyleOptionViewItem base = opzione;
    initStyleOption(&base, indice);
    base.text.clear();
    const QWidget* vista = opzione.widget;
    QStyle* stile = vista ? vista->style() : QApplication::style();
    stile->drawControl(QStyle::CE_ItemViewItem, &base, pittore, vista);

    const QRect area = opzione.rect.adjusted(10, 6, -10, -6);
    const bool scelto = opzione.state & QStyle::State_Selected;
    QFont titolo = opzione.font;
    titolo.setWeight(QFont::DemiBold);
    QFont sotto = opzione.font;
    sotto.setPointSizeF(sotto.pointSizeF() * 0.9);
    const QFontMetrics metricaTitolo(titolo);
    const QFontMetrics metricaSotto(sotto);
    pittore->save();
    pittore->setFont(titolo);
    pittore->setPen(opzione.palette.color(scelto ? QPalette::HighlightedText : QPalette::Text));
    pittore->drawText(QRect(area.left(), area.top(), area.width(), metricaTitolo.height()), Qt::AlignLeft,
                      metricaTitolo.elidedText(indice.data().toString(), Qt::ElideRight, area.width()));
    pittore->setFont(sotto);
    pittore->setPen(scelto ? opzione.palette.color(QPalette::HighlightedText) : Palette::colore(Colore::secondary));
    pittore->drawText(
        QRect(area.left(), area.top() + metricaTitolo.height() + 2, area.width(), metricaSotto.height()), Qt::AlignLeft,
        metricaSotto.elidedText(indice.data(ModelliListModel::OggettoRole).toString(), Qt::ElideRight, area.width()));
    pittore->restore();
}

QSize ModelloDelegate::sizeHint(const QStyleOptionViewItem& opzione, const QModelIndex& indice) const {
    Q_UNUSED(indice);
    QFont sotto = opzione.font;
    sotto.setPointSizeF(sotto.pointSizeF() * 0.9);
    return QSize(200, QFontMetrics(opzione.font).height() + QFontMetrics(sotto).height() + 14);
}
