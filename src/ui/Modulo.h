#pragma once

#include <QPushButton>
#include <QWidget>

class QFormLayout;
class QLabel;
class QTimer;
class QVBoxLayout;

// The pieces of the settings forms: titled groups of fields, small notes, and buttons that turn into a
// spinner while their work runs.

// A group of a form: a title above a framed box of rows. Rows made of a single widget span the box.
class SezioneModulo : public QWidget {
    Q_OBJECT
public:
    // An empty title gives a box with no heading.
    explicit SezioneModulo(const QString& titolo, QWidget* genitore = nullptr);
    QFormLayout* righe() const { return m_righe; }
    // A row of one widget at its natural width, at the left (a button).
    void aggiungiASinistra(QWidget* pezzo);

private:
    QFormLayout* m_righe;
};

// The column of a panel that stands inside a section: no margins of its own, rows close together.
QVBoxLayout* colonnaPannello(QWidget* pannello);

// A wrapping note in caption size and the secondary colour.
QLabel* creaNota(const QString& testo, QWidget* genitore);

// A button whose label gives way to a turning arc while `inAttesa`; it is disabled meanwhile.
class PulsanteAttesa : public QPushButton {
    Q_OBJECT
public:
    PulsanteAttesa(const QString& simbolo, const QString& testo, QWidget* genitore = nullptr);
    void setInAttesa(bool inAttesa);
    bool inAttesa() const { return m_inAttesa; }
    // Enabled only when `abilitato` and not waiting.
    void setAbilitato(bool abilitato);

protected:
    void paintEvent(QPaintEvent* evento) override;

private:
    QTimer* m_giro;
    int m_angolo = 0;
    bool m_inAttesa = false;
    bool m_abilitato = true;
};
