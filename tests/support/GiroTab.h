#pragma once

#include <QApplication>
#include <QList>
#include <QStringList>
#include <QTest>
#include <QWidget>

namespace TestSupport {

// The round of Tab inside a form: the widgets it stops at, in order, and the one it could not leave, if any.
struct Giro {
    QList<QWidget*> tappe;
    QWidget* trappola = nullptr;
};

// Presses Tab from `primo` as a person does, until the focus comes back round, leaves the form, or stays put.
inline Giro giroDelTab(QWidget* modulo, QWidget* primo) {
    Giro giro;
    primo->setFocus(Qt::TabFocusReason);
    QCoreApplication::processEvents();
    int dentroLaPagina = 0;
    for (int passo = 0; passo < 200; ++passo) {
        QWidget* attuale = QApplication::focusWidget();
        if (!attuale || !modulo->isAncestorOf(attuale))
            break;
        if (giro.tappe.contains(attuale)) {
            // Inside a web page Tab first walks the page's own links and fields; only then does it leave.
            const bool pagina = attuale->parentWidget() && attuale->parentWidget()->inherits("QWebEngineView");
            if (attuale != giro.tappe.last())
                break;
            if (!pagina || ++dentroLaPagina >= 20) {
                giro.trappola = attuale;
                break;
            }
        } else {
            giro.tappe.append(attuale);
            dentroLaPagina = 0;
        }
        QTest::keyClick(attuale, Qt::Key_Tab);
        // A web page hands the focus on after a round trip to its own process.
        (void)QTest::qWaitFor([attuale] { return QApplication::focusWidget() != attuale; }, 1000);
    }
    return giro;
}

// Where each stop stands on the form: the visual rows of a form, top to bottom, then left to right; a column
// to the right starts again from its top. Two stops are on one row when their middles are less than half the
// shorter one's height apart.
inline QString primoFuoriOrdine(QWidget* modulo, const QList<QWidget*>& visitati) {
    for (int i = 1; i < visitati.size(); ++i) {
        const QRect a(visitati[i - 1]->mapTo(modulo, QPoint()), visitati[i - 1]->size());
        const QRect b(visitati[i]->mapTo(modulo, QPoint()), visitati[i]->size());
        const int tolleranza = qMin(a.height(), b.height()) / 2;
        const bool stessaRiga = qAbs(a.center().y() - b.center().y()) < tolleranza;
        const bool nuovaColonna = b.left() >= a.right();
        const bool inOrdine = stessaRiga ? b.left() >= a.left() : b.center().y() > a.center().y() || nuovaColonna;
        if (!inOrdine)
            return QStringLiteral("%1 (%2) → %3 (%4)")
                .arg(visitati[i - 1]->objectName(), QString::fromLatin1(visitati[i - 1]->metaObject()->className()),
                     visitati[i]->objectName(), QString::fromLatin1(visitati[i]->metaObject()->className()));
    }
    return {};
}

// The widget a person tabs to for `w`: a spin box rather than the line edit inside it.
inline QWidget* tappaDi(QWidget* w, QWidget* modulo) {
    QWidget* tappa = w;
    for (QWidget* su = w->parentWidget(); su && su != modulo; su = su->parentWidget())
        if (su->focusProxy() == tappa)
            tappa = su;
    return tappa;
}

// The fields and buttons of `modulo` that a person can tab to and that the round never reached.
inline QStringList senzaTappa(QWidget* modulo, const QList<QWidget*>& visitati) {
    QList<QWidget*> raggiunti;
    for (QWidget* w : visitati)
        raggiunti.append(tappaDi(w, modulo));
    QStringList mancanti;
    for (QWidget* w : modulo->findChildren<QWidget*>()) {
        // A scroll area is the frame round the fields, not one of them.
        if (w->focusProxy() || !(w->focusPolicy() & Qt::TabFocus) || !w->isVisibleTo(modulo) || !w->isEnabled() ||
            w->inherits("QScrollArea"))
            continue;
        if (!raggiunti.contains(tappaDi(w, modulo)))
            mancanti << w->objectName() + u':' + QString::fromLatin1(w->metaObject()->className());
    }
    return mancanti;
}

} // namespace TestSupport
