#pragma once

#include <QColor>
#include <QDialog>

#include <functional>

class QLineEdit;
class QPushButton;
class QToolButton;

// The small window of the toolbar's link button: an address and an optional visible text.
class LinkPopover : public QDialog {
    Q_OBJECT
public:
    using OnInsert = std::function<void(const QString& url, const QString& testo)>;
    LinkPopover(OnInsert onInsert, QWidget* genitore = nullptr);

    QLineEdit* url() const { return m_url; }
    QLineEdit* testo() const { return m_testo; }
    QPushButton* inserisci() const { return m_inserisci; }

private:
    void aggiornaPulsante();

    OnInsert m_onInsert;
    QLineEdit* m_url;
    QLineEdit* m_testo;
    QPushButton* m_inserisci;
};

// The small window of the toolbar's button button: address, label and colour of a call to action.
class ButtonPopover : public QDialog {
    Q_OBJECT
public:
    using OnInsert = std::function<void(const QString& url, const QString& etichetta, const QString& colore)>;
    ButtonPopover(OnInsert onInsert, QWidget* genitore = nullptr);

    QLineEdit* url() const { return m_url; }
    QLineEdit* etichetta() const { return m_etichetta; }
    QPushButton* inserisci() const { return m_inserisci; }
    QColor colore() const { return m_colore; }
    void setColore(const QColor& colore);

private:
    void aggiornaPulsante();

    OnInsert m_onInsert;
    QLineEdit* m_url;
    QLineEdit* m_etichetta;
    QToolButton* m_campione;
    QPushButton* m_inserisci;
    QColor m_colore = QColor::fromRgbF(0.1f, 0.34f, 0.86f, 1.0f);
};

// A square button painted in a colour, for the colour pickers.
QIcon campioneColore(const QColor& colore, QSize dimensione = QSize(16, 16));
