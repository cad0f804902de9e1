#include "composition/TemplateRenderer.h"
#include "TestEnvironment.h"

using namespace Qt::Literals::StringLiterals;
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
    void htmlToPlainText_data();
    void htmlToPlainText();
};

void TestTemplateRenderer::fields_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("first spelling, order of appearance")
        << u"{{b}} {{ÈLITE}} {{B}} {{èlite}} {{a}}"_s << QStringList{"b", "ÈLITE", "a"};
    QTest::newRow("blanks round the name go, inner ones stay")
        << u"{{\u00a0Ragione sociale\u2003}} {{\nnome\n}}"_s << QStringList{"Ragione sociale", "nome"};
    QTest::newRow("empty braces, braces in the name") << u"{{}} {{a{b}} {{a}b}}"_s << QStringList{};
    QTest::newRow("only blanks: one blank is the name") << u"{{   }}"_s << QStringList{" "};
    QTest::newRow("third brace outside") << u"{{{nome}}}"_s << QStringList{"nome"};
    QTest::newRow("placeholder inside an unclosed one") << u"{{ {{cognome}} }} {{nome"_s << QStringList{"cognome"};
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
        << u"{{Nome}} {{Città}}"_s << QStringList{"nome", u"CITTÀ"_s} << QStringList{};
    QTest::newRow("missing in own spelling, in order")
        << u"{{Sconto}} {{nome}} {{Scadenza}}"_s << QStringList{"Nome", "email"} << QStringList{"Sconto", "Scadenza"};
    QTest::newRow("column with blanks does not match trimmed name")
        << u"{{nome}}"_s << QStringList{" nome "} << QStringList{"nome"};
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
    const Values mario{{"Nome", "Mario"}, {"Ragione Sociale", "Rossi & \"Figli\" <l'srl>"}, {u"CITTÀ"_s, "Roma"}};
    QTest::newRow("case and blanks ignored")
        << u"Ciao {{ NOME }}, {{città}}!"_s << mario << false << u"Ciao Mario, Roma!"_s;
    QTest::newRow("raw value") << u"{{ragione sociale}}"_s << mario << false << u"Rossi & \"Figli\" <l'srl>"_s;
    QTest::newRow("value escaped, text round it not")
        << u"a & <b>{{Ragione sociale}}</b>"_s << mario << true
        << u"a & <b>Rossi &amp; &quot;Figli&quot; &lt;l&#39;srl&gt;</b>"_s;
    QTest::newRow("entity escaped again") << u"{{x}}"_s << Values{{"x", "&lt;"}} << true << u"&amp;lt;"_s;
    QTest::newRow("unknown or blank placeholder vanishes")
        << u"Ciao {{cognome}}{{   }}."_s << mario << true << u"Ciao ."_s;
    QTest::newRow("value is not scanned again")
        << u"{{a}} {{b}}"_s << Values{{"a", "{{b}}"}, {"b", "x"}} << false << u"{{b}} x"_s;
    QTest::newRow("replacement syntax in a value is literal")
        << u"{{a}}"_s << Values{{"a", "\\1 $1 \\0 &"}} << false << u"\\1 $1 \\0 &"_s;
    QTest::newRow("unmatched braces stay") << u"{{ {{nome}} }} {{nome"_s << mario << false << u"{{ Mario }} {{nome"_s;
    QTest::newRow("characters outside the BMP round placeholders")
        << u"😀{{nome}}😀{{ nome }}𝄞"_s << mario << false << u"😀Mario😀Mario𝄞"_s;
    QTest::newRow("a broken character anywhere: no placeholder is read")
        << u"{{nome}} "_s + QChar(0xDC00) << mario << false << u"{{nome}} "_s + QChar(0xDC00);
}

void TestTemplateRenderer::substitute() {
    QFETCH(QString, text);
    QFETCH(Values, values);
    QFETCH(bool, escape);
    QFETCH(QString, expected);
    QCOMPARE(TemplateRenderer::substitute(text, values, escape), expected);
}

void TestTemplateRenderer::htmlToPlainText_data() {
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected");
    QTest::newRow("head, style and script dropped")
        << u"<HEAD lang=it><title>T</title></HEAD><style type=\"text/css\">p{color:red}</style><p>Ciao</p>"
           "<script>var a = '<p>no</p>';</script><Script>x</sCRIPT>"_s
        << u"Ciao"_s;
    QTest::newRow("links with their address, entities decoded after")
        << u"<a href=\"1\">uno</a> e <A class='b' HREF='https://x.it/?a=1&amp;b=2' target=_blank>due</A>"_s
        << u"uno (1) e due (https://x.it/?a=1&b=2)"_s;
    QTest::newRow("link text over lines keeps them") << u"<a href=\"u\">a<br>b</a>"_s << u"a\nb (u)"_s;
    QTest::newRow("only real anchors with href") << u"<a name=\"x\">ancora</a> <aè href='x'>y</aè>"_s << u"ancora y"_s;
    QTest::newRow("line breaks") << u"a<br>b<BR/>c<br />d<br\t/>e"_s << u"a\nb\nc\nd\ne"_s;
    QTest::newRow("block ends") << u"<p>1</p><DIV>2</DIV><h1>3</h1><h6>4</h6><h7>x</h7>y<tr>5</tr>"_s
                                << u"1\n2\n3\n4\nxy5"_s;
    QTest::newRow("list items") << u"<ul><li>uno</li><LI class=\"x\">due</li></ul>"_s << u"• uno\n• due"_s;
    QTest::newRow("link element leaves a bullet")
        << u"<link rel=\"stylesheet\" href=\"a.css\"><p>Testo</p>"_s << u"• Testo"_s;
    QTest::newRow("entities after tags") << u"&lt;b&gt;x&lt;/b&gt; &amp;lt; &quot;&#39;&apos; &eacute;"_s
                                         << u"<b>x</b> &lt; \"'' &eacute;"_s;
    QTest::newRow("nbsp entity is a blank, the character stays") << u"a&nbsp;b\u00a0c"_s << u"a b\u00a0c"_s;
    QTest::newRow("blank lines collapse to one") << u"uno<br> <br>\t<br><br>due\n\n\n\ntre"_s << u"uno\n\ndue\n\ntre"_s;
    QTest::newRow("blanks before a line feed vanish, at line start stay") << u"uno \t <br>  due"_s << u"uno\n  due"_s;
    QTest::newRow("trimmed at both ends") << u"<p>  </p>\n\n<div>x</div>\n\u00a0"_s << u"x"_s;
    QTest::newRow("anything between angle brackets goes") << u"1 < 2 e 3 > 2 <span\nclass=\"x\">!"_s << u"1  2 !"_s;
    QTest::newRow("empty brackets and an unclosed one stay") << u"x<>y<b>z a<b"_s << u"x<>yz a<b"_s;
    QTest::newRow("a tag runs to the first closing bracket") << u"<<a>b<c>>"_s << u"b>"_s;
    // The expressions match nothing in a text with half a surrogate pair; the entities are still decoded.
    QTest::newRow("a broken character anywhere: tags stay")
        << u"<p>a &amp; b</p><br>"_s + QChar(0xD800) << u"<p>a & b</p><br>"_s + QChar(0xD800);
}

void TestTemplateRenderer::htmlToPlainText() {
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QCOMPARE(TemplateRenderer::htmlToPlainText(html), expected);
}

BREZZARIO_TEST_GUILESS_MAIN(TestTemplateRenderer)
#include "tst_templaterenderer.moc"
