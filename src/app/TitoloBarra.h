#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;

// The picture in the middle of the tool bar: the program's title picture when one is shipped, its
// name in letters otherwise.
class TitoloBarra : public QWidget {
    Q_OBJECT
public:
    // Where the picture is looked for, in this order.
    static QStringList cartelleLogo();
    static QString cercaLogo(const QStringList& cartelle);

    explicit TitoloBarra(QWidget* genitore = nullptr, const QStringList& cartelle = cartelleLogo());

    bool mostraLogo() const { return m_logo; }

private:
    bool m_logo = false;
};
