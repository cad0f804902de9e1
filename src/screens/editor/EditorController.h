#pragma once

#include "records/RecordId.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QWebEngineView;

// The bridge to the editor's page: every command becomes one script text, run without waiting for a
// result. Content and fields wait for the page's "ready"; every other command is lost if it comes
// earlier. Shared by the toolbar and the host, and owned by the templates screen.
class EditorController : public QObject {
    Q_OBJECT
public:
    // Runs one script text in the page.
    using Esecutore = std::function<void(const QString& script)>;

    explicit EditorController(QObject* genitore = nullptr);

    // The text as a JSON string literal, quotes included; "\"\"" if it can't be encoded.
    static QString jsString(const QString& testo);

    void setWebView(QWebEngineView* vista);
    // Scripts go to `esegui` while `custode` lives, in place of a web view (tests of the protocol).
    void setEsecutorePerTest(QObject* custode, Esecutore esegui);
    bool haVista() const { return !m_custode.isNull(); }
    bool isReady() const { return m_isReady; }
    const std::optional<QString>& pendingContent() const { return m_pendingContent; }
    const std::optional<QStringList>& pendingFields() const { return m_pendingFields; }

    // `proprietario` is the template the content belongs to: the page's later changes are told with it,
    // so an edit still in flight when the selection moves goes back to the template it was made in.
    void setContent(const QString& html, RecordId proprietario = 0);
    void setFields(const QStringList& nomi);
    void insertField(const QString& nome);
    void insertHTML(const QString& html);
    void insertImage(const QString& dataURI);
    void insertLink(const QString& url, const QString& testo);
    void insertButton(const QString& url, const QString& etichetta, const QString& colore);
    void exec(const QString& comando, const std::optional<QString>& valore = std::nullopt);
    void setFontFamily(const QString& famiglia);
    void setFontSize(int px);
    void clearFormatting();

    // The page said "ready": fields first, then the pending content or else the initial one.
    void pronto(const QString& htmlIniziale, RecordId proprietarioIniziale);
    // The template whose content the page showed at its `generazione`-th setContent; absent when unknown.
    std::optional<RecordId> proprietarioDi(qint64 generazione) const;

private:
    void esegui(const QString& script);
    void inviaContenuto(const QString& html, RecordId proprietario);

    QPointer<QObject> m_custode;
    Esecutore m_esegui;
    bool m_isReady = false;
    std::optional<QString> m_pendingContent;
    RecordId m_proprietarioInAttesa = 0;
    std::optional<QStringList> m_pendingFields;
    QList<RecordId> m_proprietari; // one per setContent that reached the page, in order
};
