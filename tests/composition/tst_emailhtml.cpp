#include "composition/EmailHTML.h"
#include "composition/MessageComposer.h"
#include "TestEnvironment.h"

#include <QXmlStreamReader>

using EmailHTML::PiePagina;
using OptionalPie = std::optional<PiePagina>;
Q_DECLARE_METATYPE(OptionalPie)
Q_DECLARE_METATYPE(SMTPConfig)
Q_DECLARE_METATYPE(MessageTemplate)

namespace {
SMTPConfig config(const QString& motivazione, const QString& disiscrizione, const QString& replyTo, const QString& from,
                  const QString& postale, bool attivo = true) {
    SMTPConfig c;
    c.piePaginaAttivo = attivo;
    c.motivazioneContatto = motivazione;
    c.emailDisiscrizione = disiscrizione;
    c.replyTo = replyTo;
    c.fromEmail = from;
    c.mittentePostale = postale;
    return c;
}

// The page's parts as a mail client's XHTML reader sees them: it must be well-formed XML.
QString xmlError(const QString& page) {
    QXmlStreamReader reader(page);
    while (!reader.atEnd())
        reader.readNext();
    return reader.hasError() ? reader.errorString() : QString();
}

const QString pageHead = QStringLiteral(
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
    "<head>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />\n<meta name=\"viewport\" "
    "content=\"width=device-width, initial-scale=1\" />\n<title></title>\n</head>\n<body "
    "style=\"margin:0;padding:0;background-color:#f4f4f5;\">\n");
const QString layoutOpen = QStringLiteral(
    "\n<table role=\"presentation\" width=\"100%\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
    "style=\"background-color:#f4f4f5;\">\n<tr>\n<td align=\"center\" style=\"padding:24px 12px;\">\n<table "
    "role=\"presentation\" width=\"640\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
    "style=\"width:640px;max-width:100%;background-color:#ffffff;border-radius:8px;\">\n<tr>\n<td "
    "style=\"padding:28px 32px;font-family:Arial,Helvetica,sans-serif;font-size:14px;line-height:1.5;color:#222222;"
    "\">\n");
const QString footerRow = QStringLiteral(
    "<tr>\n<td style=\"padding:0 32px 26px;font-family:Arial,Helvetica,sans-serif;font-size:11px;line-height:1.6;"
    "color:#6b7280;border-top:1px solid #e5e7eb;padding-top:16px;\">\n");
const QString pageClose = QStringLiteral("\n</table>\n</td>\n</tr>\n</table>\n</body>\n</html>");
} // namespace

class TestEmailHTML : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void piePagina_data();
    void piePagina();
    void wrap_data();
    void wrap();
    void compose_data();
    void compose();
};

void TestEmailHTML::piePagina_data() {
    QTest::addColumn<SMTPConfig>("config");
    QTest::addColumn<OptionalPie>("expected");
    QTest::newRow("switched off whatever it holds")
        << config("Motivo", "stop@x.it", "", "", "Via Roma 1", false) << OptionalPie();
    QTest::newRow("on but empty behaves as off") << config(" \n ", "non valido", "", "", "\t") << OptionalPie();
    QTest::newRow("texts trimmed, address lower-cased")
        << config("  Motivo\n", " Stop@X.IT ", "", "", "\nVia Roma 1\n20100 Milano \n")
        << OptionalPie(PiePagina{"Motivo", "stop@x.it", "Via Roma 1\n20100 Milano"});
    QTest::newRow("invalid unsubscribe address falls back to reply-to")
        << config("", "stop@", "Risposte@Ditta.IT", "info@ditta.it", "")
        << OptionalPie(PiePagina{"", "risposte@ditta.it", ""});
    QTest::newRow("then to the sender") << config("", "", "", "Info@Ditta.it", "")
                                        << OptionalPie(PiePagina{"", "info@ditta.it", ""});
    QTest::newRow("no valid address, only the reason")
        << config("Motivo", "x", "y@", "@z.it", "") << OptionalPie(PiePagina{"Motivo", "", ""});
}

void TestEmailHTML::piePagina() {
    QFETCH(SMTPConfig, config);
    QFETCH(OptionalPie, expected);
    QCOMPARE(EmailHTML::piePagina(config), expected);
}

void TestEmailHTML::wrap_data() {
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("preheader");
    QTest::addColumn<OptionalPie>("pie");
    QTest::addColumn<QString>("expected");
    const QString bodyEnd = QStringLiteral("\n</td>\n</tr>\n");
    QTest::newRow("preheader escaped and hidden, no footer")
        << "<p>x</p>"
        << "Sconti & <novità>" << OptionalPie()
        << pageHead +
               QString::fromUtf16(u"<div style=\"display:none;max-height:0;overflow:hidden;mso-hide:all;\">Sconti "
                                  u"&amp; &lt;novità&gt;</div>") +
               layoutOpen + "<p>x</p>" + bodyEnd + pageClose;
    QTest::newRow("full footer")
        << "<p>x</p>"
        << "" << OptionalPie(PiePagina{"Clienti & fornitori", "stop@x.it", "Ditta <Srl>\nVia Roma 1"})
        << pageHead + layoutOpen + "<p>x</p>" + bodyEnd + footerRow +
               QString::fromUtf16(
                   u"Clienti &amp; fornitori<br />Non vuoi più ricevere questi messaggi? <a "
                   u"href=\"mailto:stop@x.it?subject=Cancellami%20dalla%20lista\" "
                   u"style=\"color:#6b7280;text-decoration:underline;\">Cancella la tua iscrizione</a> (oppure scrivi "
                   u"a stop@x.it).<br />Ditta &lt;Srl&gt;<br />Via Roma 1") +
               "\n</td>\n</tr>" + pageClose;
    QTest::newRow("footer with the reason only")
        << "<p>x</p>"
        << "" << OptionalPie(PiePagina{"Motivo", "", ""})
        << pageHead + layoutOpen + "<p>x</p>" + bodyEnd + footerRow + "Motivo\n</td>\n</tr>" + pageClose;
}

void TestEmailHTML::wrap() {
    QFETCH(QString, body);
    QFETCH(QString, preheader);
    QFETCH(OptionalPie, pie);
    QFETCH(QString, expected);
    const QString page = EmailHTML::wrap(body, preheader, pie);
    QCOMPARE(page, expected);
    QCOMPARE(xmlError(page), QString());
}

void TestEmailHTML::compose_data() {
    QTest::addColumn<MessageTemplate>("template_");
    QTest::addColumn<SMTPConfig>("config");
    QTest::addColumn<QString>("plainText");
    MessageTemplate t(QStringLiteral("Offerta"), QStringLiteral("Per {{azienda}}"),
                      QStringLiteral("<p>Ciao {{nome}},</p><p>{{azienda}} <a href=\"https://x.it\">sito</a></p>"));
    const SMTPConfig off = config("Motivo", "", "", "info@ditta.it", "", false);
    const SMTPConfig on = config("Motivo & co.", "", "", "info@ditta.it", "Via Roma 1");
    const QString derived = QStringLiteral("Ciao Mario,\nRossi & <Figli> sito (https://x.it)");
    const QString footerText = QString::fromUtf16(u"\n\n-- \nMotivo & co.\nPer non ricevere più questi messaggi scrivi "
                                                  u"a info@ditta.it con oggetto \"Cancellami\".\nVia Roma 1");
    QTest::newRow("text from the body") << t << off << derived;
    QTest::newRow("footer after the derived text") << t << on << derived + footerText;
    MessageTemplate own = t;
    own.plainOverride = QStringLiteral("Caro {{nome}} di {{azienda}}");
    QTest::newRow("own plain text, not escaped, footer of the address alone")
        << own << config("", "", "", "info@ditta.it", "")
        << QString::fromUtf16(u"Caro Mario di Rossi & <Figli>\n\n-- \nPer non ricevere più questi messaggi scrivi a "
                              u"info@ditta.it con oggetto \"Cancellami\".");
    own.plainOverride = QStringLiteral(" ");
    QTest::newRow("a blank own text is used as it stands") << own << off << " ";
}

void TestEmailHTML::compose() {
    QFETCH(MessageTemplate, template_);
    QFETCH(SMTPConfig, config);
    QFETCH(QString, plainText);
    const RowValues row{{"Nome", "Mario"}, {"AZIENDA", "Rossi & <Figli>"}};
    const MessageComposer::Rendered r = MessageComposer::compose(template_, row, config);
    QCOMPARE(r.subject, "Per Rossi & <Figli>");
    QCOMPARE(r.plainText, plainText);
    const QString body("<p>Ciao Mario,</p><p>Rossi &amp; &lt;Figli&gt; <a href=\"https://x.it\">sito</a></p>");
    QCOMPARE(r.html, EmailHTML::wrap(body, QString(), EmailHTML::piePagina(config)));
}

BREZZARIO_TEST_GUILESS_MAIN(TestEmailHTML)
#include "tst_emailhtml.moc"
