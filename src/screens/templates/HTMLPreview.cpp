#include "screens/templates/HTMLPreview.h"

#include <QChildEvent>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QKeyEvent>
#include <QWebEnginePage>
#include <QWebEngineSettings>

namespace {

HTMLPreview::ApriCollegamento& apriCollegamento() {
    static HTMLPreview::ApriCollegamento apri;
    return apri;
}

// A link meant for a new window arrives here first: its address goes to the browser and the page dies.
class PaginaVersoBrowser : public QWebEnginePage {
public:
    explicit PaginaVersoBrowser(QObject* genitore) : QWebEnginePage(genitore) {}

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType, bool) override {
        if (url.isValid() && !url.isEmpty())
            HTMLPreview::apri(url);
        deleteLater();
        return false;
    }
};

class PaginaAnteprima : public QWebEnginePage {
public:
    explicit PaginaAnteprima(QObject* genitore) : QWebEnginePage(genitore) {
        settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
        settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
        settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
        settings()->setAttribute(QWebEngineSettings::PluginsEnabled, false);
    }

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType tipo, bool principale) override {
        if (tipo == NavigationTypeLinkClicked && principale && !url.isEmpty()) {
            HTMLPreview::apri(url);
            return false;
        }
        return true;
    }
    QWebEnginePage* createWindow(WebWindowType) override { return new PaginaVersoBrowser(this); }
};

} // namespace

HTMLPreview::HTMLPreview(QWidget* genitore) : QWebEngineView(genitore) {
    setObjectName(QStringLiteral("htmlPreview"));
    setPage(new PaginaAnteprima(this));
    setContextMenuPolicy(Qt::NoContextMenu);
    installEventFilter(this);
}

bool HTMLPreview::eventFilter(QObject* oggetto, QEvent* evento) {
    // The page keeps the keys it is given, Esc too; the widget that takes them is made with the page.
    if (oggetto == this && evento->type() == QEvent::ChildAdded) {
        if (QObject* figlio = static_cast<QChildEvent*>(evento)->child(); figlio->isWidgetType())
            figlio->installEventFilter(this);
    } else if (oggetto != this && evento->type() == QEvent::KeyPress &&
               static_cast<QKeyEvent*>(evento)->key() == Qt::Key_Escape) {
        // Esc closes the sheet the message is shown in, as it does from any other field of the sheet.
        if (auto* foglio = qobject_cast<QDialog*>(window())) {
            foglio->reject();
            return true;
        }
    }
    return QWebEngineView::eventFilter(oggetto, evento);
}

void HTMLPreview::setHtml(const QString& html) {
    if (html == m_ultimoHTML)
        return;
    m_ultimoHTML = html;
    const QByteArray byte = html.toUtf8();
    // The engine takes inline pages only up to 2 MB, percent-encoded; a message with several pictures
    // is larger, and goes through a file of its own.
    if (byte.size() < sogliaInLinea) {
        m_file.reset();
        page()->setHtml(html, QUrl());
        return;
    }
    m_file = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/anteprima-XXXXXX.html"));
    if (m_file->open() && m_file->write(byte) == byte.size() && m_file->flush())
        page()->load(QUrl::fromLocalFile(m_file->fileName()));
}

void HTMLPreview::setApriCollegamento(ApriCollegamento apri) {
    apriCollegamento() = std::move(apri);
}

void HTMLPreview::apri(const QUrl& indirizzo) {
    if (apriCollegamento())
        apriCollegamento()(indirizzo);
    else
        QDesktopServices::openUrl(indirizzo);
}
