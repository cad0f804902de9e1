#pragma once

#include <QLayout>
#include <QList>

// Places its children like words on lines: each at its ideal size, a new line when the next one no
// longer fits the width.
class FlowLayout : public QLayout {
public:
    explicit FlowLayout(QWidget* genitore = nullptr, double spacing = 6);
    ~FlowLayout() override;

    double spacingF() const { return m_spacing; }

    // Where each of the given sizes goes within the width, and the height they need all together.
    static QList<QPoint> disposizione(const QList<QSize>& dimensioni, int larghezza, double spacing, int* altezza);

    void addItem(QLayoutItem* voce) override;
    int count() const override { return int(m_voci.size()); }
    QLayoutItem* itemAt(int indice) const override;
    QLayoutItem* takeAt(int indice) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int larghezza) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect& rettangolo) override;

private:
    int disponi(const QRect& rettangolo, bool applica) const;

    QList<QLayoutItem*> m_voci;
    double m_spacing;
};
