#include "composition/TemplateRenderer.h"
#include "TestEnvironment.h"

using Values = QHash<QString, QString>;

class TestTemplateRenderer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void fields_data();
    void fields();
    void missingFields_data();
    void missingFields();
    void substitute_data();
    void substitute();
    void escaped_data();
    void escaped();
    void htmlToPlainText_data();
    void htmlToPlainText();
};

void TestTemplateRenderer::fields_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("same name in two cases keeps the first spelling") << "{{Nome}} {{nome}}" << QStringList{"Nome"};
    QTest::newRow("blanks inside the braces") << "{{ Nome }} e {{cognome}}" << QStringList{"Nome", "cognome"};
    QTest::newRow("inner blanks stay in the name") << "{{Ragione sociale}}" << QStringList{"Ragione sociale"};
    QTest::newRow("empty braces") << "{{}}" << QStringList{};
    QTest::newRow("brace inside the name") << "{{a{b}} {{a}b}}" << QStringList{};
    QTest::newRow("only blanks: one blank is the name") << "{{   }}" << QStringList{" "};
    QTest::newRow("unicode case folding") << QString::fromUtf16(u"{{ÈLITE}} {{èlite}}") << QStringList{"ÈLITE"};
    QTest::newRow("no-break spaces are white space")
        << QString::fromUtf16(u"{{\u00a0nome\u2003}}") << QStringList{"nome"};
    QTest::newRow("line feeds round the name") << "{{\nnome\n}}" << QStringList{"nome"};
    QTest::newRow("third brace outside") << "{{{nome}}}" << QStringList{"nome"};
    QTest::newRow("placeholder inside an unclosed one") << "{{ {{cognome}} }} {{nome" << QStringList{"cognome"};
    QTest::newRow("order of first appearance") << "{{b}} {{a}} {{B}} {{c}} {{A}}" << QStringList{"b", "a", "c"};
    QTest::newRow("no placeholder") << "Gentile cliente" << QStringList{};
}

void TestTemplateRenderer::fields() {
    QFETCH(QString, text);
    QFETCH(QStringList, expected);
    QCOMPARE(TemplateRenderer::fields(text), expected);
}

void TestTemplateRenderer::missingFields_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("columns match whatever their case")
        << QString::fromUtf16(u"{{Nome}} {{Città}}") << QStringList{"nome", QString::fromUtf16(u"CITTÀ")}
        << QStringList{};
    QTest::newRow("no columns") << "Ciao {{Nome}}" << QStringList{} << QStringList{"Nome"};
    QTest::newRow("missing in own spelling, in order")
        << "{{Sconto}} {{nome}} {{Scadenza}}" << QStringList{"Nome", "email"} << QStringList{"Sconto", "Scadenza"};
    QTest::newRow("field used only in the subject")
        << "Offerta per {{azienda}} <p>Ciao {{nome}}</p>" << QStringList{"nome"} << QStringList{"azienda"};
    QTest::newRow("column with blanks does not match trimmed name")
        << "{{nome}}" << QStringList{" nome "} << QStringList{"nome"};
}

void TestTemplateRenderer::missingFields() {
    QFETCH(QString, text);
    QFETCH(QStringList, columns);
    QFETCH(QStringList, expected);
    QCOMPARE(TemplateRenderer::missingFields(text, columns), expected);
}

void TestTemplateRenderer::substitute_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<Values>("values");
    QTest::addColumn<bool>("escape");
    QTest::addColumn<QString>("expected");
    const Values mario{{"Nome", "Mario"}, {"Ragione Sociale", "Rossi & \"Figli\" <srl>"}};
    QTest::newRow("case and blanks ignored") << "Ciao {{ NOME }}, {{nome}}!" << mario << false << "Ciao Mario, Mario!";
    QTest::newRow("name with inner blanks") << "{{ragione sociale}}" << mario << false << "Rossi & \"Figli\" <srl>";
    QTest::newRow("escaped value") << "<b>{{Ragione sociale}}</b>" << mario << true
                                   << "<b>Rossi &amp; &quot;Figli&quot; &lt;srl&gt;</b>";
    QTest::newRow("text round the value is not escaped") << "a & b {{nome}} <i>" << mario << true << "a & b Mario <i>";
    QTest::newRow("entity escaped again") << "{{x}}" << Values{{"x", "&amp; l'arte"}} << true << "&amp;amp; l&#39;arte";
    QTest::newRow("unknown field vanishes") << "Ciao {{cognome}}." << mario << true << "Ciao .";
    QTest::newRow("blank-only placeholder vanishes") << "a{{   }}b" << mario << false << "ab";
    QTest::newRow("value is not scanned again")
        << "{{a}} {{b}}" << Values{{"a", "{{b}}"}, {"b", "x"}} << false << "{{b}} x";
    QTest::newRow("replacement syntax in a value is literal")
        << "{{a}}" << Values{{"a", "\\1 $1 \\0 &"}} << false << "\\1 $1 \\0 &";
    QTest::newRow("unmatched braces stay") << "{{ {{nome}} }} {{nome" << mario << false << "{{ Mario }} {{nome";
    QTest::newRow("characters outside the BMP round placeholders")
        << QString::fromUtf16(u"😀{{nome}}😀{{ nome }}𝄞") << mario << false << QString::fromUtf16(u"😀Mario😀Mario𝄞");
    QTest::newRow("unicode-cased key") << QString::fromUtf16(u"{{città}}")
                                       << Values{{QString::fromUtf16(u"CITTÀ"), "Roma"}} << false << "Roma";
    QTest::newRow("no placeholder") << "Testo fisso & <b>" << mario << true << "Testo fisso & <b>";
    QTest::newRow("empty text") << "" << mario << true << "";
}

void TestTemplateRenderer::substitute() {
    QFETCH(QString, text);
    QFETCH(Values, values);
    QFETCH(bool, escape);
    QFETCH(QString, expected);
    QCOMPARE(TemplateRenderer::substitute(text, values, escape), expected);
}

void TestTemplateRenderer::escaped_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("all five") << "& < > \" '"
                              << "&amp; &lt; &gt; &quot; &#39;";
    QTest::newRow("escapes are not escaped twice within one pass") << "<&>"
                                                                   << "&lt;&amp;&gt;";
    QTest::newRow("existing entity") << "&lt;"
                                     << "&amp;lt;";
    QTest::newRow("plain text") << QString::fromUtf16(u"Niccolò") << QString::fromUtf16(u"Niccolò");
}

void TestTemplateRenderer::escaped() {
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QCOMPARE(TemplateRenderer::escaped(value), expected);
}

void TestTemplateRenderer::htmlToPlainText_data() {
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected");
    QTest::newRow("head, style and script dropped")
        << "<HEAD lang=it><title>T</title></HEAD><style type=\"text/css\">p{color:red}</style><p>Ciao</p>"
           "<script>var a = '<p>no</p>';</script><Script>x</sCRIPT>"
        << "Ciao";
    QTest::newRow("link with its address") << "<p>Vai al <a href=\"https://x.it\">sito</a>.</p>"
                                           << "Vai al sito (https://x.it).";
    QTest::newRow("link in single quotes, entities decoded after")
        << "<A class='b' HREF='https://x.it/?a=1&amp;b=2' target=_blank>qui</A>"
        << "qui (https://x.it/?a=1&b=2)";
    QTest::newRow("two links stay apart") << "<a href=\"1\">uno</a> e <a href=\"2\">due</a>"
                                          << "uno (1) e due (2)";
    QTest::newRow("link text over lines keeps them") << "<a href=\"u\">a<br>b</a>"
                                                     << "a\nb (u)";
    QTest::newRow("anchor without href only loses tags") << "<a name=\"x\">ancora</a>"
                                                         << "ancora";
    QTest::newRow("a tag name that only begins with a")
        << QString::fromUtf16(u"<aè href='x'>y</aè> <abbr href='z'>w</abbr>") << "y w";
    QTest::newRow("line breaks") << "a<br>b<BR/>c<br />d<br\t/>e"
                                 << "a\nb\nc\nd\ne";
    QTest::newRow("block ends") << "<p>uno</p><DIV>due</DIV><h1>tre</h1><h6>quattro</h6><h7>x</h7>y"
                                << "uno\ndue\ntre\nquattro\nxy";
    QTest::newRow("table rows") << "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>"
                                << "ab\nc";
    QTest::newRow("list items") << "<ul><li>uno</li><LI class=\"x\">due</li></ul>"
                                << QString::fromUtf16(u"• uno\n• due");
    QTest::newRow("link element leaves a bullet")
        << "<link rel=\"stylesheet\" href=\"a.css\"><p>Testo</p>" << QString::fromUtf16(u"• Testo");
    QTest::newRow("entities after tags") << "&lt;b&gt;x&lt;/b&gt; &amp;lt; &quot;&#39;&apos; &eacute; &#233;"
                                         << "<b>x</b> &lt; \"'' &eacute; &#233;";
    QTest::newRow("nbsp entity is a blank, the character stays")
        << QString::fromUtf16(u"a&nbsp;b\u00a0c") << QString::fromUtf16(u"a b\u00a0c");
    QTest::newRow("many line feeds collapse to two") << "uno<br><br><br><br>due\n\n\n\ntre"
                                                     << "uno\n\ndue\n\ntre";
    QTest::newRow("blanks before a line feed vanish, at line start stay") << "uno \t <br>  due"
                                                                          << "uno\n  due";
    QTest::newRow("blank lines with blanks collapse") << "a<br> <br>\t<br> <br>b"
                                                      << "a\n\nb";
    QTest::newRow("trimmed at both ends") << "<p>  </p>\n\n<div>x</div>\n\u00a0"
                                          << "x";
    QTest::newRow("tag over lines") << "a<span\nclass=\"x\">b</span>"
                                    << "ab";
    QTest::newRow("a lone less-than sign stays") << "1 < 2"
                                                 << "1 < 2";
    QTest::newRow("anything between angle brackets goes") << "1 < 2 e 3 > 2"
                                                          << "1  2";
    QTest::newRow("empty") << ""
                           << "";
}

void TestTemplateRenderer::htmlToPlainText() {
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QCOMPARE(TemplateRenderer::htmlToPlainText(html), expected);
}

BREZZARIO_TEST_GUILESS_MAIN(TestTemplateRenderer)
#include "tst_templaterenderer.moc"
