#pragma once

#include <QTemporaryFile>
#include <QUrl>
#include <QWebEngineView>

#include <functional>
#include <memory>

// A message's page as a mail client would show it: no script of the message runs, and a link opens in
// the default browser while the preview stays where it is.
class HTMLPreview : public QWebEngineView {
    Q_OBJECT
public:
    using ApriCollegamento = std::function<void(const QUrl& indirizzo)>;

    explicit HTMLPreview(QWidget* genitore = nullptr);

    // Loads the page unless it is the one already shown.
    void setHtml(const QString& html);
    const QString& ultimoHTML() const { return m_ultimoHTML; }

    // Where links go; the default browser unless a test takes over.
    static void setApriCollegamento(ApriCollegamento apri);
    static void apri(const QUrl& indirizzo);

    static constexpr qsizetype sogliaInLinea = 600000;

protected:
    bool eventFilter(QObject* oggetto, QEvent* evento) override;

private:
    QString m_ultimoHTML;
    std::unique_ptr<QTemporaryFile> m_file;
};
