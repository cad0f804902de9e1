#pragma once

#include "ui/DatiRiquadri.h"

#include <QFrame>
#include <QLabel>

// The small pieces that screens share: badges, counter tiles, figures and coloured notes with a symbol.

// A rounded label on its colour at low opacity, with an optional symbol before the text.
class BadgeView : public QFrame {
    Q_OBJECT
public:
    explicit BadgeView(QWidget* genitore = nullptr);
    void imposta(const Badge& badge);
    QString testo() const;
    Colore colore() const { return m_colore; }

protected:
    void paintEvent(QPaintEvent* evento) override;

private:
    QLabel* m_simbolo;
    QLabel* m_testo;
    Colore m_colore = Colore::primary;
    QString m_nomeSimbolo;
};

class RiquadroView : public QFrame {
    Q_OBJECT
public:
    explicit RiquadroView(QWidget* genitore = nullptr);
    void imposta(const RiquadroDato& dato);
    Colore colore() const { return m_colore; }

protected:
    void paintEvent(QPaintEvent* evento) override;

private:
    QLabel* m_simbolo;
    QLabel* m_valore;
    QLabel* m_etichetta;
    Colore m_colore = Colore::primary;
};

class DatoInlineView : public QWidget {
    Q_OBJECT
public:
    explicit DatoInlineView(QWidget* genitore = nullptr);
    void imposta(const DatoInline& dato);
    // The same, with the caption under the value.
    void imposta(const DatoTondo& dato);
    Colore colore() const { return m_colore; }

private:
    QLabel* m_titolo;
    QLabel* m_valore;
    QLabel* m_dettaglio;
    Colore m_colore = Colore::primary;
};

// A line of text in one colour, after a symbol in the same colour.
class NotaView : public QWidget {
    Q_OBJECT
public:
    NotaView(const QString& simbolo, Colore colore, QWidget* genitore = nullptr);
    void setTesto(const QString& testo);
    QString testo() const;
    // Another symbol and colour, for a note whose meaning changes (a success or a failure).
    void setAspetto(const QString& simbolo, Colore colore);
    Colore colore() const { return m_colore; }

private:
    QLabel* m_immagine;
    QLabel* m_testo;
    Colore m_colore;
};

// Sets a label's text only when it changed, so that a refresh at every turn costs no layout.
void aggiorna(QLabel* etichetta, const QString& testo);
QFont carattereScalato(QFont base, double fattore, QFont::Weight peso = QFont::Normal);
