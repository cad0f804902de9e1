#include "screens/editor/EditorController.h"
#include "screens/editor/EditorToolbar.h"
#include "screens/editor/FlowLayout.h"
#include "screens/editor/Popovers.h"
#include "screens/editor/RichTextEditor.h"
#include "Screenshot.h"
#include "TestEnvironment.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QWebEnginePage>

namespace {

struct Cambio {
    QString html;
    RecordId proprietario;
};

QJsonValue json(const char* testo) {
    const QJsonDocument documento = QJsonDocument::fromJson(QByteArray("[") + testo + "]");
    return documento.array().first();
}

} // namespace

class TestEditor : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    // Without a page: the bridge alone.
    void jsString_data();
    void jsString();
    void testiDegliScript_data();
    void testiDegliScript();
    void prontezza_data();
    void prontezza();
    void messaggi_data();
    void messaggi();
    void hexString_data();
    void hexString();
    void popover_data();
    void popover();
    void flowLayout_data();
    void flowLayout();

    // The page in the real web engine.
    void pronto();
    void andataERitorno_data();
    void andataERitorno();
    void comandi_data();
    void comandi();
    void pulsanteSopravvive();
    void incolla_data();
    void incolla();
    void digitazioneESelezioneNuova();
    void annullaERipeti();
    void paginaMancante();

private:
    QVariant js(const QString& script);
    void contenuto(const QString& html, RecordId proprietario = 1);
    void selezionaTutto();

    EditorController* m_controller = nullptr;
    RichTextEditor* m_vista = nullptr;
    QList<Cambio> m_cambi;
};

void TestEditor::initTestCase() {
    m_controller = new EditorController(this);
    m_vista = new RichTextEditor(m_controller, QStringLiteral("<div>iniziale</div>"), 1);
    m_vista->setOnChange([this](const QString& html, RecordId proprietario) { m_cambi.append({html, proprietario}); });
    m_vista->resize(700, 400);
    m_vista->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_vista));
    QTRY_VERIFY_WITH_TIMEOUT(m_controller->isReady(), 15000);
}

void TestEditor::cleanupTestCase() {
    delete m_vista;
}

QVariant TestEditor::js(const QString& script) {
    QVariant risultato;
    bool arrivato = false;
    m_vista->page()->runJavaScript(script, [&](const QVariant& valore) {
        risultato = valore;
        arrivato = true;
    });
    if (!QTest::qWaitFor([&] { return arrivato; }, 20000))
        return QStringLiteral("<nessuna risposta>");
    return risultato;
}

void TestEditor::contenuto(const QString& html, RecordId proprietario) {
    m_controller->setContent(html, proprietario);
    js(QString()); // scripts run in order: once this answers, the content is there
}

void TestEditor::selezionaTutto() {
    js(QStringLiteral("(function(){var r=document.createRange();r.selectNodeContents(document.getElementById("
                      "'contenuto'));var s=getSelection();s.removeAllRanges();s.addRange(r);})()"));
}

// ---------------------------------------------------------------------------------------------------------

void TestEditor::jsString_data() {
    QTest::addColumn<QString>("testo");
    QTest::newRow("quotes") << QStringLiteral("Il \"nuovo\" listino dell'anno");
    QTest::newRow("back-slashes") << QStringLiteral("C:\\cartella\\file \\n non è un a capo");
    QTest::newRow("line ends") << QStringLiteral("riga 1\nriga 2\r\nriga 3\tfine");
    QTest::newRow("script end and separators") << QStringLiteral("</script><script>x()</script>\u2028\u2029");
    QTest::newRow("empty") << QString();
}

// The literal is valid JSON for the same text, and none of the characters that end a script line
// remains raw in it.
void TestEditor::jsString() {
    QFETCH(QString, testo);
    const QString letterale = EditorController::jsString(testo);
    QVERIFY(letterale.startsWith(u'"') && letterale.endsWith(u'"'));
    for (QChar c : {QChar(u'\n'), QChar(u'\r'), QChar(0x2028), QChar(0x2029)})
        QVERIFY2(!letterale.contains(c), qPrintable(letterale));
    const QJsonDocument documento = QJsonDocument::fromJson(("[" + letterale + "]").toUtf8());
    QCOMPARE(documento.array().first().toString(), testo);
}

void TestEditor::testiDegliScript_data() {
    QTest::addColumn<QString>("comando");
    QTest::addColumn<QString>("script");
    QTest::newRow("setFields") << "setFields"
                               << R"(window.BrezzarioEditor.setFields(["nome","Ragione \"sociale\""]);)";
    QTest::newRow("insertField") << "insertField"
                                 << R"(window.BrezzarioEditor.insertField("nome");)";
    QTest::newRow("insertHTML") << "insertHTML"
                                << R"(window.BrezzarioEditor.insertHTML("<b>x</b>");)";
    QTest::newRow("insertImage") << "insertImage"
                                 << R"(window.BrezzarioEditor.insertImage("data:image/png;base64,AA");)";
    QTest::newRow("insertLink") << "insertLink"
                                << R"(window.BrezzarioEditor.insertLink("https://a.it", "Sito");)";
    QTest::newRow("insertButton") << "insertButton"
                                  << R"(window.BrezzarioEditor.insertButton("https://a.it", "Vai", "#1A57DB");)";
    QTest::newRow("exec") << "exec"
                          << R"(window.BrezzarioEditor.exec("bold");)";
    QTest::newRow("exec with a value") << "execValue"
                                       << R"(window.BrezzarioEditor.exec("foreColor", "#FF0000");)";
    QTest::newRow("setFontFamily") << "setFontFamily"
                                   << R"(window.BrezzarioEditor.setFontFamily("Georgia, 'Times New Roman', serif");)";
    QTest::newRow("setFontSize") << "setFontSize"
                                 << "window.BrezzarioEditor.setFontSize(24);";
    QTest::newRow("clearFormatting") << "clearFormatting"
                                     << "window.BrezzarioEditor.clearFormatting();";
    QTest::newRow("setContent") << "setContent"
                                << R"(window.BrezzarioEditor.setContent("a\nb");)";
}

void TestEditor::testiDegliScript() {
    QFETCH(QString, comando);
    QFETCH(QString, script);
    EditorController controller;
    QObject custode;
    QStringList eseguiti;
    controller.setEsecutorePerTest(&custode, [&](const QString& s) { eseguiti.append(s); });
    controller.pronto(QString(), 0);
    eseguiti.clear();
    if (comando == "setFields")
        controller.setFields({"nome", "Ragione \"sociale\""});
    else if (comando == "insertField")
        controller.insertField("nome");
    else if (comando == "insertHTML")
        controller.insertHTML("<b>x</b>");
    else if (comando == "insertImage")
        controller.insertImage("data:image/png;base64,AA");
    else if (comando == "insertLink")
        controller.insertLink("https://a.it", "Sito");
    else if (comando == "insertButton")
        controller.insertButton("https://a.it", "Vai", "#1A57DB");
    else if (comando == "exec")
        controller.exec("bold");
    else if (comando == "execValue")
        controller.exec("foreColor", QStringLiteral("#FF0000"));
    else if (comando == "setFontFamily")
        controller.setFontFamily(EditorToolbar::caratteri().at(2).second);
    else if (comando == "setFontSize")
        controller.setFontSize(24);
    else if (comando == "clearFormatting")
        controller.clearFormatting();
    else if (comando == "setContent")
        controller.setContent("a\nb");
    QCOMPARE(eseguiti, QStringList{script});
}

void TestEditor::prontezza_data() {
    QTest::addColumn<QStringList>("passi");
    QTest::addColumn<QStringList>("attesi");
    const QString campi = R"(window.BrezzarioEditor.setFields(["nome"]);)";
    const QString iniziale = R"(window.BrezzarioEditor.setContent("iniziale");)";
    QTest::newRow("content chosen before ready comes after the fields")
        << QStringList{"content:scelto", "fields", "ready"}
        << QStringList{campi, R"(window.BrezzarioEditor.setContent("scelto");)"};
    QTest::newRow("two contents before ready: only the last")
        << QStringList{"content:primo", "content:secondo", "ready"}
        << QStringList{R"(window.BrezzarioEditor.setContent("secondo");)"};
    QTest::newRow("nobody asked: the initial content all the same") << QStringList{"ready"} << QStringList{iniziale};
    QTest::newRow("other commands before ready are lost")
        << QStringList{"bold", "ready"} << QStringList{R"(window.BrezzarioEditor.exec("bold");)", iniziale};
    QTest::newRow("after ready everything goes at once")
        << QStringList{"ready", "fields", "content:dopo"}
        << QStringList{iniziale, campi, R"(window.BrezzarioEditor.setContent("dopo");)"};
    QTest::newRow("no view: nothing runs, content waits")
        << QStringList{"noview", "content:x", "bold", "ready"} << QStringList{};
}

// Scripts are recorded in the order the page would run them.
void TestEditor::prontezza() {
    QFETCH(QStringList, passi);
    QFETCH(QStringList, attesi);
    EditorController controller;
    auto custode = std::make_unique<QObject>();
    QStringList eseguiti;
    controller.setEsecutorePerTest(custode.get(), [&](const QString& s) { eseguiti.append(s); });
    EditorCoordinator coordinatore(&controller, nullptr);
    coordinatore.pendingInitialHTML = QStringLiteral("iniziale");
    for (const QString& passo : passi) {
        if (passo == "ready")
            coordinatore.post(json(R"({"type":"ready"})"));
        else if (passo == "fields")
            controller.setFields({"nome"});
        else if (passo == "bold")
            controller.exec("bold");
        else if (passo == "noview")
            custode.reset();
        else if (passo.startsWith("content:"))
            controller.setContent(passo.mid(8));
    }
    QCOMPARE(eseguiti, attesi);
}

void TestEditor::messaggi_data() {
    QTest::addColumn<QString>("corpo");
    QTest::addColumn<bool>("cambia");
    QTest::addColumn<RecordId>("proprietario");
    QTest::newRow("change of the current content")
        << R"({"type":"change","html":"<b>x</b>","gen":2})" << true << RecordId(8);
    QTest::newRow("change made before the new selection")
        << R"({"type":"change","html":"<b>x</b>","gen":1})" << true << RecordId(7);
    QTest::newRow("change of the emptied page") << R"({"type":"change","html":"","gen":3})" << false << RecordId(0);
    QTest::newRow("unknown generation") << R"({"type":"change","html":"x","gen":9})" << false << RecordId(0);
    QTest::newRow("no generation") << R"({"type":"change","html":"x"})" << false << RecordId(0);
    QTest::newRow("html not a text") << R"({"type":"change","html":42,"gen":2})" << false << RecordId(0);
    QTest::newRow("no html") << R"({"type":"change","gen":2})" << false << RecordId(0);
    QTest::newRow("other type") << R"({"type":"eval","html":"x","gen":2})" << false << RecordId(0);
    QTest::newRow("no type") << R"({"html":"x","gen":2})" << false << RecordId(0);
    QTest::newRow("not a dictionary") << R"(["change","x"])" << false << RecordId(0);
    QTest::newRow("a bare text") << R"("change")" << false << RecordId(0);
}

void TestEditor::messaggi() {
    QFETCH(QString, corpo);
    QFETCH(bool, cambia);
    QFETCH(RecordId, proprietario);
    EditorController controller;
    QObject custode;
    controller.setEsecutorePerTest(&custode, [](const QString&) {});
    EditorCoordinator coordinatore(&controller, nullptr);
    coordinatore.proprietarioIniziale = 7;
    QList<Cambio> cambi;
    coordinatore.onChange = [&](const QString& html, RecordId id) { cambi.append({html, id}); };
    coordinatore.post(json(R"({"type":"ready"})")); // content 1 belongs to template 7
    controller.setContent("b", 8);                  // content 2
    controller.setContent("", 0);                   // content 3: nothing selected
    coordinatore.post(json(corpo.toUtf8().constData()));
    QCOMPARE(cambi.size(), cambia ? 1 : 0);
    if (cambia)
        QCOMPARE(cambi.first().proprietario, proprietario);
}

void TestEditor::hexString_data() {
    QTest::addColumn<QColor>("colore");
    QTest::addColumn<QString>("atteso");
    QTest::newRow("pure red") << QColor(Qt::red) << "#FF0000";
    QTest::newRow("button default") << QColor::fromRgbF(0.1f, 0.34f, 0.86f, 1.0f) << "#1A57DB";
    QTest::newRow("rounds, not truncates") << QColor::fromRgbF(0.502f, 0.999f, 0.0019f) << "#80FF00";
    QTest::newRow("from HSV") << QColor::fromHsv(240, 255, 255) << "#0000FF";
    QTest::newRow("invalid is black") << QColor() << "#000000";
}

void TestEditor::hexString() {
    QFETCH(QColor, colore);
    QFETCH(QString, atteso);
    QCOMPARE(::hexString(colore), atteso);
}

void TestEditor::popover_data() {
    QTest::addColumn<bool>("pulsante");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("etichetta");
    QTest::addColumn<bool>("abilitato");
    QTest::newRow("link: initial https://") << false << "https://"
                                            << "" << true;
    QTest::newRow("link: a.it is too short") << false << "a.it"
                                             << "" << false;
    QTest::newRow("link: ab.it is enough") << false << "ab.it"
                                           << "" << true;
    QTest::newRow("button: as it opens") << true << "https://"
                                         << "Scopri di più" << true;
    QTest::newRow("button: cleared label") << true << "https://x.it"
                                           << "" << false;
    QTest::newRow("button: short address") << true << "x.it"
                                           << "Vai" << false;
}

void TestEditor::popover() {
    QFETCH(bool, pulsante);
    QFETCH(QString, url);
    QFETCH(QString, etichetta);
    QFETCH(bool, abilitato);
    QStringList inseriti;
    if (pulsante) {
        ButtonPopover finestra([&](const QString& u, const QString& e, const QString& c) { inseriti << u << e << c; });
        QCOMPARE(finestra.etichetta()->text(), QStringLiteral("Scopri di più"));
        finestra.url()->setText(url);
        finestra.etichetta()->setText(etichetta);
        QCOMPARE(finestra.inserisci()->isEnabled(), abilitato);
        if (abilitato) {
            finestra.inserisci()->click();
            QCOMPARE(inseriti, (QStringList{url, etichetta, "#1A57DB"}));
        }
    } else {
        LinkPopover finestra([&](const QString& u, const QString& t) { inseriti << u << t; });
        finestra.url()->setText(url);
        QCOMPARE(finestra.inserisci()->isEnabled(), abilitato);
        if (abilitato) {
            finestra.inserisci()->click();
            QCOMPARE(inseriti, (QStringList{url, QString()}));
        }
    }
}

void TestEditor::flowLayout_data() {
    QTest::addColumn<QList<QSize>>("dimensioni");
    QTest::addColumn<int>("larghezza");
    QTest::addColumn<QList<QPoint>>("punti");
    QTest::addColumn<int>("altezza");
    const QSize chip(40, 20);
    QTest::newRow("one line") << QList<QSize>{chip, chip} << 200 << QList<QPoint>{{0, 0}, {46, 0}} << 20;
    // 40 + 6 + 40 = 86 fits 86 exactly; the third goes below.
    QTest::newRow("exact fit, then wrap")
        << QList<QSize>{chip, chip, chip} << 86 << QList<QPoint>{{0, 0}, {46, 0}, {0, 26}} << 46;
    QTest::newRow("wider than the line stays alone")
        << QList<QSize>{QSize(300, 30), chip} << 100 << QList<QPoint>{{0, 0}, {0, 36}} << 56;
    QTest::newRow("row height is the tallest") << QList<QSize>{QSize(10, 10), QSize(10, 30), QSize(80, 10)} << 60
                                               << QList<QPoint>{{0, 0}, {16, 0}, {0, 36}} << 46;
    QTest::newRow("no width proposed: one line")
        << QList<QSize>{chip, chip, chip} << 0 << QList<QPoint>{{0, 0}, {46, 0}, {92, 0}} << 20;
    QTest::newRow("nothing") << QList<QSize>{} << 100 << QList<QPoint>{} << 0;
}

void TestEditor::flowLayout() {
    QFETCH(QList<QSize>, dimensioni);
    QFETCH(int, larghezza);
    QFETCH(QList<QPoint>, punti);
    QFETCH(int, altezza);
    int calcolata = -1;
    QCOMPARE(FlowLayout::disposizione(dimensioni, larghezza, 6, &calcolata), punti);
    QCOMPARE(calcolata, altezza);
}

// ---------------------------------------------------------------------------------------------------------

void TestEditor::pronto() {
    // The initial content came with the page's "ready", with no request from anybody.
    QCOMPARE(js(QStringLiteral("window.BrezzarioEditor.html()")).toString(), QStringLiteral("<div>iniziale</div>"));
    m_controller->setFields({"nome", "città"});
    QCOMPARE(js(QStringLiteral("window.BrezzarioEditor.fields().join('|')")).toString(), QStringLiteral("nome|città"));
}

void TestEditor::andataERitorno_data() {
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("atteso");
    QTest::addColumn<int>("chip");
    QTest::newRow("quotes, back-slashes and line feeds")
        << "<div title=\"a &quot;b&quot;\">Il \"nuovo\" C:\\dati\\n\nriga 2 l'ultima</div>"
        << "<div title=\"a &quot;b&quot;\">Il \"nuovo\" C:\\dati\\n\nriga 2 l'ultima</div>" << 0;
    QTest::newRow("fields become chips and come back") << "<div>Ciao {{nome}}, da {{ Città }}!</div>"
                                                       << "<div>Ciao {{nome}}, da {{Città}}!</div>" << 2;
    QTest::newRow("a field in an address stays text")
        << "<div><a href=\"https://x.it/?id={{id}}\">vai</a> {{nome}}</div>"
        << "<div><a href=\"https://x.it/?id={{id}}\">vai</a> {{nome}}</div>" << 1;
    QTest::newRow("a placeholder that isn't one") << "<div>{{}} e {{a{b}}</div>"
                                                  << "<div>{{}} e {{a{b}}</div>" << 0;
    QTest::newRow("empty") << ""
                           << "" << 0;
}

void TestEditor::andataERitorno() {
    QFETCH(QString, html);
    QFETCH(QString, atteso);
    QFETCH(int, chip);
    contenuto(html);
    QCOMPARE(js(QStringLiteral("window.BrezzarioEditor.html()")).toString(), atteso);
    QCOMPARE(
        js(QStringLiteral("document.querySelectorAll('#contenuto span.tok[contenteditable=false]').length")).toInt(),
        chip);
}

void TestEditor::comandi_data() {
    QTest::addColumn<QString>("comando");
    QTest::addColumn<QString>("atteso");
    QTest::newRow("bold") << "bold"
                          << "<b>ciao mondo</b>";
    QTest::newRow("italic") << "italic"
                            << "<i>ciao mondo</i>";
    QTest::newRow("underline") << "underline"
                               << "<u>ciao mondo</u>";
    QTest::newRow("strikeThrough") << "strikeThrough"
                                   << "<strike>ciao mondo</strike>";
    QTest::newRow("foreColor") << "foreColor"
                               << "color: rgb(255, 0, 0)";
    QTest::newRow("hiliteColor") << "hiliteColor"
                                 << "background-color: rgb(255, 255, 0)";
    QTest::newRow("insertUnorderedList") << "insertUnorderedList"
                                         << "<ul><li>ciao mondo</li></ul>";
    QTest::newRow("insertOrderedList") << "insertOrderedList"
                                       << "<ol><li>ciao mondo</li></ol>";
    QTest::newRow("justifyCenter") << "justifyCenter"
                                   << "text-align: center";
    QTest::newRow("justifyRight") << "justifyRight"
                                  << "text-align: right";
    QTest::newRow("font family") << "font"
                                 << "font-family: Georgia";
    QTest::newRow("font size") << "size"
                               << "font-size: 24px";
    QTest::newRow("separator line") << "hr"
                                    << "<hr style=\"border:none;border-top:1px solid #e0e0e0;margin:18px 0";
    QTest::newRow("link on the selection") << "link"
                                           << "<a href=\"https://nembrosa.example\">ciao mondo</a>";
    QTest::newRow("field chip") << "field"
                                << "{{nome}}";
    QTest::newRow("picture") << "image"
                             << "<img src=\"data:image/png;base64,iVBORw0KGgo=\"";
    QTest::newRow("clear formatting") << "clear"
                                      << "<div>ciao mondo</div>";
    QTest::newRow("unknown command changes nothing") << "evil"
                                                     << "<div><b>ciao</b> mondo</div>";
}

// Each command of the toolbar, through the controller's script, on a selected text.
void TestEditor::comandi() {
    QFETCH(QString, comando);
    QFETCH(QString, atteso);
    contenuto(QStringLiteral("<div><b>ciao</b> mondo</div>"));
    if (comando != "clear" && comando != "evil")
        contenuto(QStringLiteral("<div>ciao mondo</div>"));
    selezionaTutto();
    if (comando == "foreColor")
        m_controller->exec(comando, QStringLiteral("#FF0000"));
    else if (comando == "hiliteColor")
        m_controller->exec(comando, QStringLiteral("#FFFF00"));
    else if (comando == "font")
        m_controller->setFontFamily(EditorToolbar::caratteri().at(2).second);
    else if (comando == "size")
        m_controller->setFontSize(24);
    else if (comando == "hr")
        m_controller->insertHTML(EditorToolbar::lineaSeparatrice());
    else if (comando == "link")
        m_controller->insertLink(QStringLiteral("https://nembrosa.example"), QString());
    else if (comando == "field")
        m_controller->insertField(QStringLiteral("nome"));
    else if (comando == "image")
        m_controller->insertImage(QStringLiteral("data:image/png;base64,iVBORw0KGgo="));
    else if (comando == "clear")
        m_controller->clearFormatting();
    else if (comando == "evil")
        m_controller->exec(QStringLiteral("insertHTML"), QStringLiteral("<img src=x onerror=alert(1)>"));
    else
        m_controller->exec(comando);
    const QString html = js(QStringLiteral("window.BrezzarioEditor.html()")).toString();
    QVERIFY2(html.contains(atteso), qPrintable(html));
}

// A button is a table that mail clients keep, locked in the page, and it comes back the same.
void TestEditor::pulsanteSopravvive() {
    contenuto(QStringLiteral("<div>Prima</div>"));
    js(QStringLiteral("(function(){var r=document.createRange();r.selectNodeContents(document.getElementById("
                      "'contenuto'));r.collapse(false);var s=getSelection();s.removeAllRanges();s.addRange(r);})()"));
    m_controller->insertButton(QStringLiteral("https://nembrosa.example/offerta?c={{codice}}"),
                               QStringLiteral("Scopri <di> più"), QStringLiteral("#1A57DB"));
    m_controller->insertField(QStringLiteral("nome"));
    const QString html = js(QStringLiteral("window.BrezzarioEditor.html()")).toString();
    QVERIFY2(html.contains(QStringLiteral("<table role=\"presentation\"")), qPrintable(html));
    QVERIFY2(html.contains(QStringLiteral("bgcolor=\"#1A57DB\"")), qPrintable(html));
    QVERIFY2(html.contains(QStringLiteral("href=\"https://nembrosa.example/offerta?c={{codice}}\"")), qPrintable(html));
    QVERIFY2(html.contains(QStringLiteral(">Scopri &lt;di&gt; più</a>")), qPrintable(html));
    QVERIFY2(!html.contains(QStringLiteral("contenteditable")), qPrintable(html));
    QCOMPARE(
        js(QStringLiteral("document.querySelector('#contenuto table').getAttribute('contenteditable')")).toString(),
        QStringLiteral("false"));
    TestSupport::salvaSchermata(m_vista, QStringLiteral("editor-pulsante-e-chip"));
    contenuto(html);
    QCOMPARE(js(QStringLiteral("window.BrezzarioEditor.html()")).toString(), html);
}

void TestEditor::incolla_data() {
    QTest::addColumn<QString>("appunti");
    QTest::addColumn<QStringList>("restano");
    QTest::addColumn<QStringList>("spariscono");
    const QString word = QStringLiteral(
        "<html xmlns:o=\"urn:schemas-microsoft-com:office:office\"><head><meta name=Generator content=\"Microsoft "
        "Word 15\"><link rel=File-List href=\"file:///C:/x.xml\"><style>p.MsoNormal{margin:0}</style><!--[if gte "
        "mso 9]><xml><o:OfficeDocumentSettings/></xml><![endif]--></head><body lang=IT><p class=MsoNormal "
        "style='mso-line-height-alt:12pt;color:#1F3864'><b>Offerta</b> per <i>{{nome}}</i><o:p></o:p></p>"
        "<ul><li class=MsoListParagraph>primo</li></ul><table class=MsoTableGrid border=1><tr><td "
        "style='mso-border-alt:solid'>cella</td></tr></table><img src=\"file:///C:/Users/x/image001.png\">"
        "<!-- commento --><a href=\"https://nembrosa.example\" onclick=\"rubare()\">sito</a></body></html>");
    QTest::newRow("word processor") << word
                                    << QStringList{"<b>Offerta</b>",
                                                   "{{nome}}",
                                                   "<ul><li>primo</li></ul>",
                                                   "<td>cella</td>",
                                                   "<a href=\"https://nembrosa.example\">sito</a>",
                                                   "color:#1F3864"}
                                    << QStringList{"Mso",   "mso-", "o:p",   "<style",  "<meta",
                                                   "<link", "<!--", "file:", "onclick", "<xml"};
    const QString pagina = QStringLiteral(
        "<div onmouseover=\"x()\">Testo <script>document.title='preso'</script><img src=x onerror=\"rubare()\">"
        "<img src=\"https://nembrosa.example/logo.png\" onload=\"x()\"><a href=\"javascript:rubare()\">trappola</a>"
        "<iframe src=\"https://a.it\"></iframe><span style=\"background:url(javascript:x)\">sfondo</span>"
        "<svg><script>x()</script></svg><form><input value=1></form></div>");
    QTest::newRow("page with a script") << pagina
                                        << QStringList{"Testo", "<img src=\"https://nembrosa.example/logo.png\">",
                                                       "trappola", "sfondo"}
                                        << QStringList{"script", "onerror", "onload", "onmouseover", "javascript",
                                                       "iframe", "url(",    "<form",  "<input",      "src=\"x\""};
}

// A real paste event, with the clipboard's HTML, through the page's own handler.
void TestEditor::incolla() {
    QFETCH(QString, appunti);
    QFETCH(QStringList, restano);
    QFETCH(QStringList, spariscono);
    contenuto(QString());
    js(QStringLiteral("document.title='editor'"));
    js(QStringLiteral("(function(){var d=new DataTransfer();d.setData('text/html',%1);var r=document.getElementById("
                      "'contenuto');r.focus();r.dispatchEvent(new ClipboardEvent('paste',{clipboardData:d,bubbles:true,"
                      "cancelable:true}));})()")
           .arg(EditorController::jsString(appunti)));
    const QString html = js(QStringLiteral("window.BrezzarioEditor.html()")).toString();
    for (const QString& parte : restano)
        QVERIFY2(html.contains(parte), qPrintable(parte + QStringLiteral(" missing in ") + html));
    for (const QString& parte : spariscono)
        QVERIFY2(!html.contains(parte, Qt::CaseInsensitive), qPrintable(parte + QStringLiteral(" left in ") + html));
    QCOMPARE(js(QStringLiteral("document.title")).toString(), QStringLiteral("editor"));
}

// Typing reports the content with its template; an edit still pending when the selection moves goes to
// the template it was made in, and the new template never receives the old content.
void TestEditor::digitazioneESelezioneNuova() {
    contenuto(QStringLiteral("<div>Uno</div>"), 11);
    m_cambi.clear();
    m_vista->setFocus();
    js(QStringLiteral("(function(){var c=document.getElementById('contenuto');c.focus();var r=document.createRange();"
                      "r.selectNodeContents(c);r.collapse(false);var s=getSelection();s.removeAllRanges();"
                      "s.addRange(r);})()"));
    QTest::keyClicks(m_vista->focusProxy(), QStringLiteral("abc"));
    QTRY_VERIFY_WITH_TIMEOUT(!m_cambi.isEmpty() && m_cambi.last().html.contains(QStringLiteral("abc")), 10000);
    QCOMPARE(m_cambi.last().proprietario, RecordId(11));

    // Keystrokes in quick succession and the new selection at once: the tail still belongs to 11.
    m_cambi.clear();
    QTest::keyClicks(m_vista->focusProxy(), QStringLiteral("xyz"));
    QTRY_VERIFY(js(QStringLiteral("window.BrezzarioEditor.html()")).toString().contains(QStringLiteral("xyz")));
    contenuto(QStringLiteral("<div>Due</div>"), 12);
    QTRY_VERIFY_WITH_TIMEOUT(!m_cambi.isEmpty() && m_cambi.last().html.contains(QStringLiteral("xyz")), 10000);
    for (const Cambio& cambio : m_cambi)
        QCOMPARE(cambio.proprietario, RecordId(11));
    QTest::qWait(400);
    for (const Cambio& cambio : m_cambi)
        QVERIFY2(cambio.proprietario != 12, qPrintable(cambio.html));
    QCOMPARE(js(QStringLiteral("window.BrezzarioEditor.html()")).toString(), QStringLiteral("<div>Due</div>"));
}

// Undo and redo step over chips and inserts like over typed text.
void TestEditor::annullaERipeti() {
    contenuto(QStringLiteral("<div>Ciao </div>"));
    js(QStringLiteral("(function(){var c=document.getElementById('contenuto');c.focus();var r=document.createRange();"
                      "r.selectNodeContents(c.firstChild);r.collapse(false);var s=getSelection();s.removeAllRanges();"
                      "s.addRange(r);})()"));
    m_controller->insertField(QStringLiteral("nome"));
    m_controller->insertHTML(QStringLiteral("<b>!</b>"));
    const QString pieno = js(QStringLiteral("window.BrezzarioEditor.html()")).toString();
    QVERIFY2(pieno.contains(QStringLiteral("{{nome}}")) && pieno.contains(QStringLiteral("<b>!</b>")),
             qPrintable(pieno));
    m_vista->setFocus();
    QTest::keyClick(m_vista->focusProxy(), Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(m_vista->focusProxy(), Qt::Key_Z, Qt::ControlModifier);
    QTRY_COMPARE(js(QStringLiteral("window.BrezzarioEditor.html()")).toString(), QStringLiteral("<div>Ciao </div>"));
    QTest::keyClick(m_vista->focusProxy(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_VERIFY(js(QStringLiteral("window.BrezzarioEditor.html()")).toString().contains(QStringLiteral("{{nome}}")));
}

// With no page in the resources the editor stays blank and never becomes ready; nothing is said.
void TestEditor::paginaMancante() {
    QCOMPARE(RichTextEditor::percorsoPagina(QStringLiteral(":/nessuna")), QString());
    QCOMPARE(RichTextEditor::percorsoPagina(Risorse::radice()),
             Risorse::radice() + QStringLiteral("/Editor/editor.html"));
    EditorController controller;
    RichTextEditor vista(&controller, QStringLiteral("x"), 1, nullptr, QStringLiteral(":/nessuna"));
    vista.show();
    QTest::qWait(1000);
    QVERIFY(!controller.isReady());
    QVERIFY(vista.url().isEmpty());
    controller.setContent(QStringLiteral("y"));
    QCOMPARE(controller.pendingContent(), std::optional<QString>(QStringLiteral("y")));
}

BREZZARIO_TEST_MAIN(TestEditor)
#include "tst_editor.moc"
