#include "ui/OrdineTab.h"

#include <QChildEvent>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace {

class Custode : public QObject {
public:
    Custode(QWidget* prima, QWidget* vista) : QObject(vista), m_prima(prima), m_vista(vista) {
        vista->installEventFilter(this);
        rimetti();
    }

    bool eventFilter(QObject* oggetto, QEvent* evento) override {
        if (oggetto == m_vista && evento->type() == QEvent::ChildAdded &&
            static_cast<QChildEvent*>(evento)->child()->isWidgetType())
            // The view names the new widget its focus proxy only after adding it.
            QTimer::singleShot(0, this, &Custode::rimetti);
        return false;
    }

private:
    void rimetti() {
        // The view itself takes no focus: what Tab stops at is the widget it hands its focus to.
        if (m_prima && m_vista)
            QWidget::setTabOrder(m_prima, m_vista->focusProxy() ? m_vista->focusProxy() : m_vista.data());
    }

    QPointer<QWidget> m_prima;
    QPointer<QWidget> m_vista;
};

} // namespace

namespace OrdineTab {

void subitoDopo(QWidget* prima, QWidget* vista) {
    new Custode(prima, vista);
}

} // namespace OrdineTab
