#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

// Driving the form as a user would: by keyboard and mouse on widgets found by object name.
namespace AiutiModulo {

template <class T> T* trova(QWidget* radice, const char* nome) {
    return radice->findChild<T*>(QLatin1String(nome));
}

// Opens a picker's list, moves to an entry and confirms it with Return, as a user picks one.
inline void scegli(QComboBox* scelta, int indice) {
    scelta->setFocus();
    scelta->showPopup();
    QAbstractItemView* elenco = scelta->view();
    elenco->setCurrentIndex(scelta->model()->index(indice, 0));
    QTest::keyClick(elenco, Qt::Key_Return);
}

// Replaces a field's text by typing, then leaves the field as Tab would.
inline void digita(QLineEdit* campo, const QString& testo) {
    campo->setFocus();
    campo->selectAll();
    QTest::keyClick(campo, Qt::Key_Backspace);
    // QTest types ASCII only; anything else arrives as a paste would.
    bool ascii = true;
    for (QChar c : testo)
        ascii = ascii && c.unicode() < 0x80;
    if (ascii)
        QTest::keyClicks(campo, testo);
    else
        campo->insert(testo);
    QTest::keyClick(campo, Qt::Key_Return);
}

// Every text a user can read in the widget: labels, buttons, and fields that aren't masked.
inline QStringList testiVisibili(QWidget* radice) {
    QStringList testi;
    for (QLabel* etichetta : radice->findChildren<QLabel*>())
        if (etichetta->isVisibleTo(radice))
            testi << etichetta->text() << etichetta->toolTip();
    for (QAbstractButton* pulsante : radice->findChildren<QAbstractButton*>())
        testi << pulsante->text() << pulsante->toolTip();
    for (QLineEdit* campo : radice->findChildren<QLineEdit*>())
        if (campo->echoMode() == QLineEdit::Normal)
            testi << campo->text() << campo->placeholderText() << campo->displayText();
        else
            testi << campo->displayText();
    return testi;
}

} // namespace AiutiModulo
