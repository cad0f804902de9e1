#include "screens/editor/EditorController.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QWebEnginePage>
#include <QWebEngineView>

EditorController::EditorController(QObject* genitore) : QObject(genitore) {}

QString EditorController::jsString(const QString& testo) {
    const QByteArray json = QJsonDocument(QJsonArray{testo}).toJson(QJsonDocument::Compact);
    if (json.size() < 2)
        return QStringLiteral("\"\"");
    QString letterale = QString::fromUtf8(json.mid(1, json.size() - 2));
    // JSON allows these two line ends inside strings; older script engines end a line there.
    letterale.replace(QChar(0x2028), QStringLiteral("\\u2028")).replace(QChar(0x2029), QStringLiteral("\\u2029"));
    return letterale;
}

void EditorController::setWebView(QWebEngineView* vista) {
    m_custode = vista;
    m_esegui = [vista = QPointer<QWebEngineView>(vista)](const QString& script) {
        if (vista)
            vista->page()->runJavaScript(script);
    };
}

void EditorController::setEsecutorePerTest(QObject* custode, Esecutore esegui) {
    m_custode = custode;
    m_esegui = std::move(esegui);
}

void EditorController::esegui(const QString& script) {
    if (m_custode && m_esegui)
        m_esegui(script);
}

void EditorController::inviaContenuto(const QString& html, RecordId proprietario) {
    m_proprietari.append(proprietario);
    esegui(QStringLiteral("window.BrezzarioEditor.setContent(") + jsString(html) + QStringLiteral(");"));
}

void EditorController::setContent(const QString& html, RecordId proprietario) {
    if (m_isReady && haVista()) {
        inviaContenuto(html, proprietario);
        return;
    }
    m_pendingContent = html;
    m_proprietarioInAttesa = proprietario;
}

void EditorController::setFields(const QStringList& nomi) {
    if (!(m_isReady && haVista())) {
        m_pendingFields = nomi;
        return;
    }
    QStringList letterali;
    for (const QString& nome : nomi)
        letterali.append(jsString(nome));
    esegui(QStringLiteral("window.BrezzarioEditor.setFields([") + letterali.join(u',') + QStringLiteral("]);"));
}

void EditorController::insertField(const QString& nome) {
    esegui(QStringLiteral("window.BrezzarioEditor.insertField(") + jsString(nome) + QStringLiteral(");"));
}

void EditorController::insertHTML(const QString& html) {
    esegui(QStringLiteral("window.BrezzarioEditor.insertHTML(") + jsString(html) + QStringLiteral(");"));
}

void EditorController::insertImage(const QString& dataURI) {
    esegui(QStringLiteral("window.BrezzarioEditor.insertImage(") + jsString(dataURI) + QStringLiteral(");"));
}

void EditorController::insertLink(const QString& url, const QString& testo) {
    esegui(QStringLiteral("window.BrezzarioEditor.insertLink(") + jsString(url) + QStringLiteral(", ") +
           jsString(testo) + QStringLiteral(");"));
}

void EditorController::insertButton(const QString& url, const QString& etichetta, const QString& colore) {
    esegui(QStringLiteral("window.BrezzarioEditor.insertButton(") + jsString(url) + QStringLiteral(", ") +
           jsString(etichetta) + QStringLiteral(", ") + jsString(colore) + QStringLiteral(");"));
}

void EditorController::exec(const QString& comando, const std::optional<QString>& valore) {
    QString script = QStringLiteral("window.BrezzarioEditor.exec(") + jsString(comando);
    if (valore)
        script += QStringLiteral(", ") + jsString(*valore);
    esegui(script + QStringLiteral(");"));
}

void EditorController::setFontFamily(const QString& famiglia) {
    esegui(QStringLiteral("window.BrezzarioEditor.setFontFamily(") + jsString(famiglia) + QStringLiteral(");"));
}

void EditorController::setFontSize(int px) {
    esegui(QStringLiteral("window.BrezzarioEditor.setFontSize(%1);").arg(px));
}

void EditorController::clearFormatting() {
    esegui(QStringLiteral("window.BrezzarioEditor.clearFormatting();"));
}

void EditorController::pronto(const QString& htmlIniziale, RecordId proprietarioIniziale) {
    m_isReady = true;
    if (m_pendingFields) {
        const QStringList campi = *m_pendingFields;
        m_pendingFields.reset();
        setFields(campi);
    }
    QString html = htmlIniziale;
    RecordId proprietario = proprietarioIniziale;
    if (m_pendingContent) {
        html = *m_pendingContent;
        proprietario = m_proprietarioInAttesa;
    }
    m_pendingContent.reset();
    m_proprietarioInAttesa = 0;
    setContent(html, proprietario);
}

std::optional<RecordId> EditorController::proprietarioDi(qint64 generazione) const {
    if (generazione < 1 || generazione > m_proprietari.size())
        return std::nullopt;
    return m_proprietari.at(generazione - 1);
}
