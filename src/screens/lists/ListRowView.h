#pragma once

#include <QStyledItemDelegate>

// Draws each row of the master list: a list with its state icon, name, tag, number of rows, day of import
// and, while a send is under way, how many were contacted; or a section header, "Attive" with the legend.
class ListRowView : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* pittore, const QStyleOptionViewItem& opzione, const QModelIndex& indice) const override;
    QSize sizeHint(const QStyleOptionViewItem& opzione, const QModelIndex& indice) const override;

private:
    void disegnaIntestazione(QPainter* pittore, const QStyleOptionViewItem& opzione, const QModelIndex& indice) const;
};

// The three pairs of icon and word of the legend, in order: symbol, colour's name in Palette, word.
struct VoceLegenda {
    QString simbolo;
    int colore;
    QString parola;
};
QList<VoceLegenda> vociLegenda();
