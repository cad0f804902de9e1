#pragma once

#include "app/Sezione.h"

#include <QAbstractButton>

// One row of the sidebar: the section's symbol and title over the whole width, a soft background under
// the pointer and a filled one on the current section.
class VoceSidebar : public QAbstractButton {
    Q_OBJECT
public:
    explicit VoceSidebar(Sezione voce, QWidget* genitore = nullptr);

    Sezione voce() const { return m_voce; }
    bool attiva() const { return m_attiva; }
    void setAttiva(bool attiva);
    bool sotto() const { return m_sotto; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* evento) override;
    void enterEvent(QEnterEvent* evento) override;
    void leaveEvent(QEvent* evento) override;

private:
    Sezione m_voce;
    bool m_attiva = false;
    bool m_sotto = false;
};
