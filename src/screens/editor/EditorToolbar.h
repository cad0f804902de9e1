#pragma once

#include <QColor>
#include <QList>
#include <QPair>
#include <QString>
#include <QWidget>

class EditorController;
class QToolButton;

// "#RRGGBB" of a colour in sRGB, each channel rounded; black for a colour that has no sRGB form.
QString hexString(const QColor& colore);

// The formatting commands above the editor, in groups that wrap onto a second line in a narrow pane.
class EditorToolbar : public QWidget {
    Q_OBJECT
public:
    static const QList<int>& dimensioni();
    // Name shown and font stack sent.
    static const QList<QPair<QString, QString>>& caratteri();
    static QString lineaSeparatrice();

    EditorToolbar(EditorController* editor, QWidget* genitore = nullptr);

    QColor coloreTesto() const { return m_coloreTesto; }
    QColor coloreSfondo() const { return m_coloreSfondo; }
    void scegliColoreTesto();
    void scegliColoreSfondo();
    void mostraLink();
    void mostraBottone();
    // Asks for a picture and puts it in the text as a data URI; a file that isn't a picture does nothing.
    void inserisciImmagine();

private:
    QToolButton* pulsante(const QString& simbolo, const QString& aiuto, const QString& nome);
    QToolButton* comando(const QString& simbolo, const QString& aiuto, const QString& comando);
    QWidget* gruppo(const QList<QWidget*>& controlli);
    void scegliColore(const QString& titolo, const QString& comando, QColor& colore, QToolButton* pulsante);

    EditorController* m_editor;
    QColor m_coloreTesto = Qt::black;
    QColor m_coloreSfondo = Qt::yellow;
    QToolButton* m_pulsanteTesto = nullptr;
    QToolButton* m_pulsanteSfondo = nullptr;
};
