#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"
#include "MimeReader.h"
#include "records/EmailSyntax.h"
#include "TestEnvironment.h"

#include <QBuffer>
#include <QImage>
#include <QJsonArray>
#include <QRandomGenerator>
#include <QRegularExpression>

using MIMEBuilder::Attachment;
using MIMEBuilder::Message;
Q_DECLARE_METATYPE(MIMEBuilder::Message)

namespace {
// A picture that the test draws itself, encoded in the given format.
QByteArray picture(const char* format, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, (x * y) % 256));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QByteArray randomBytes(int size, quint32 seed) {
    QByteArray bytes(size, '\0');
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

QString dataURI(const QString& type, const QByteArray& bytes) {
    return QStringLiteral("data:") + type + QStringLiteral(";base64,") + QString::fromLatin1(bytes.toBase64());
}

QString flattened(const QString& s) {
    return MIMEBuilder::withoutControls(s);
}

// The header block with its folds undone.
QByteArray unfoldedHeaders(const QByteArray& bytes) {
    return bytes.left(bytes.indexOf("\r\n\r\n") + 2).replace("\r\n ", " ");
}

// Lines of the headers that carry data (the sender, the subject, the attachments' names) stay within
// 78 columns wherever a blank lets them fold; no line of the message passes 998 bytes.
QString overlongHeaderLine(const QByteArray& bytes) {
    bool carriesData = false;
    for (const QByteArray& line : bytes.split('\n')) {
        const QByteArray text = line.endsWith('\r') ? line.chopped(1) : line;
        if (!text.startsWith(' '))
            carriesData = text.startsWith("Subject:") || text.startsWith("From:") ||
                          text.startsWith("Content-Disposition: attachment") ||
                          (text.startsWith("Content-Type:") && !text.contains("multipart/"));
        const qsizetype colon = text.indexOf(": ");
        const bool foldable = text.mid(colon < 0 ? 0 : colon + 2).trimmed().contains(' ');
        if (text.size() > 998 || (carriesData && text.size() > 78 && foldable))
            return QString::fromUtf8(text.left(120));
    }
    return {};
}

QString textAsSent(QString s) {
    return s.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
}

// Italian prose with an accented letter every few words, as long as asked.
QString italian(int characters) {
    const QString words = QString::fromUtf16(u"Perché la città è più bella quando l'offerta arriva già pronta; ");
    QString text;
    while (text.size() < characters)
        text += words;
    return text.left(characters);
}

Message baseMessage() {
    Message m;
    m.from = {QStringLiteral("Ditta Rossi"), QStringLiteral("info@ditta-rossi.it")};
    m.to = QStringLiteral("mario.bianchi@example.it");
    m.subject = QStringLiteral("Novità di marzo");
    m.plainText = QStringLiteral("Buongiorno Mario,\nil listino è allegato.\n\nSaluti");
    m.html = QStringLiteral("<p>Buongiorno Mario,</p><p>il listino è allegato.</p>");
    return m;
}

QStringList headerNames(const Message& m) {
    QStringList names{"Date", "From", "To"};
    if (m.replyTo && !m.replyTo->isEmpty())
        names << "Reply-To";
    names << QStringList{"Subject", "Message-ID", "MIME-Version", "X-Mailer"};
    for (const auto& header : m.extraHeaders)
        names << header.first;
    return names << "Content-Type";
}
} // namespace

class TestMIMEBuilder : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readBack_data();
    void readBack();
    void freshIdentifiersForEveryMessage();
};

void TestMIMEBuilder::readBack_data() {
    QTest::addColumn<Message>("message");
    QTest::addColumn<QStringList>("pictures"); // data URIs that stand for @1@, @2@... in the HTML
    QTest::addColumn<QString>("tree");
    const QString alternative = QStringLiteral("multipart/alternative(text/plain,text/html)");

    Message plain = baseMessage();
    plain.html.clear();
    plain.plainText = QStringLiteral("uno\r\ndue\rtre\n\n\tquattro \t\nfine\t ") + QString(100, u'=');
    QTest::newRow("plain text only, line ends of every kind") << plain << QStringList{} << alternative;

    MessageTemplate t(QStringLiteral("Offerta"), QStringLiteral("Per {{nome}}"),
                      QStringLiteral("<p>Ciao {{nome}},</p><ul><li>Sconto & regalo</li></ul>"));
    SMTPConfig config;
    config.fromEmail = QStringLiteral("info@ditta-rossi.it");
    config.mittentePostale = QStringLiteral("Ditta Rossi Srl\nVia Garibaldi, 12\n20100 Milano");
    const MessageComposer::Rendered rendered = MessageComposer::compose(t, {{"nome", "Mario"}}, config);
    Message page = baseMessage();
    page.from.name = QStringLiteral("Rossi, Bianchi & Associati \"Studio\" s.r.l.");
    page.subject = rendered.subject;
    page.html = rendered.html;
    page.plainText = rendered.plainText;
    page.replyTo = QStringLiteral("risposte@ditta-rossi.it");
    page.extraHeaders = {{"List-Unsubscribe", "<mailto:risposte@ditta-rossi.it?subject=Cancellami>"}};
    QTest::newRow("a rendered page, specials in the sender's name") << page << QStringList{} << alternative;

    // A data URI that doesn't decode stays in the page; line breaks inside the base64 don't stop one.
    Message pictures = baseMessage();
    pictures.html = QStringLiteral("<img src=\"data:image/png;base64,QUI\"><img src=\"@1@\" alt=\"logo\"><p>Foto</p>"
                                   "<img src=\"@2@\"><table style=\"background:url(@3@)\"><tr><td>x</td></tr></table>");
    QStringList three{dataURI("image/png", picture("PNG", 120, 40)), dataURI("image/jpeg", picture("JPEG", 300, 200)),
                      dataURI("image/webp", picture("WEBP", 64, 64))};
    three[2].insert(40, QStringLiteral("\r\n  ")).insert(90, u'\n');
    QTest::newRow("three data-URI pictures")
        << pictures << three << "multipart/related(" + alternative + ",image/png,image/jpeg,image/webp)";

    Message attachments = baseMessage();
    attachments.html = QStringLiteral("<p>uno</p>\r\n<p>due</p>\r<p>=3D</p>\n");
    attachments.attachments = {
        {QString::fromUtf16(u"Listino prezzi è 2026.pdf"), "application/pdf", randomBytes(150000, 1)},
        {QString::fromUtf16(u"Città – elenco clienti.xlsx"), MIMEBuilder::mimeType("xlsx"), randomBytes(57, 2)},
        {QString::fromUtf16(u"Perché 😀.txt"), "text/plain", QByteArray("riga uno\r\nriga due\n")},
        {"note.csv", "text/plain", QByteArray()},
    };
    QTest::newRow("attachments with accented names")
        << attachments << QStringList{}
        << "multipart/mixed(" + alternative +
               ",application/pdf,application/vnd.openxmlformats-officedocument.spreadsheetml.sheet,text/plain,"
               "text/plain)";

    Message both = pictures;
    both.attachments = {{QString::fromUtf16(u"Offerta n° 7.pdf"), "application/pdf", randomBytes(3000, 3)}};
    QTest::newRow("pictures and an attachment")
        << both << three
        << "multipart/mixed(multipart/related(" + alternative + ",image/png,image/jpeg,image/webp),application/pdf)";

    Message empty = baseMessage();
    empty.plainText.clear();
    empty.html.clear();
    empty.subject.clear();
    empty.from.name = QStringLiteral(" \t");
    empty.to = QString::fromUtf16(u"niccolò@esempio.it");
    empty.replyTo = QString();
    QTest::newRow("empty body, subject and sender name") << empty << QStringList{} << alternative;

    Message injected = baseMessage();
    injected.subject = QStringLiteral("Offerta\r\nBcc: vittima@example.com");
    injected.to = QStringLiteral("mario@example.it\nBcc: v2@example.com");
    injected.replyTo = QStringLiteral("r@example.it\r\nX-Iniettato: 1");
    injected.from.name = QStringLiteral("Ditta\r\nBcc: v3@example.com");
    injected.extraHeaders = {{"List-Unsubscribe", "<mailto:r@example.it?subject=Cancellami>\nBcc: v4@example.com"}};
    QTest::newRow("line feeds injected into every header") << injected << QStringList{} << alternative;

    Message longOnes = baseMessage();
    longOnes.subject = italian(500);
    longOnes.from.name = italian(500);
    longOnes.plainText = italian(5000) + QStringLiteral(" \n") + QString(3000, u'=');
    longOnes.html = QStringLiteral("<p>") + italian(8000) + QStringLiteral("</p>");
    QTest::newRow("500-character subject and name, long lines") << longOnes << QStringList{} << alternative;

    // Header lines past 998 bytes: a 5,000-character subject made one line of 5,021.
    Message huge = baseMessage();
    huge.subject = italian(5000);
    huge.from.name = italian(2000);
    QTest::newRow("5,000-character subject, 2,000-character name") << huge << QStringList{} << alternative;
    Message hugeAscii = baseMessage();
    hugeAscii.subject = QString(5000, u'x');
    hugeAscii.from.name = QStringLiteral("Studio Rossi, ") + QString(1500, u'y');
    QTest::newRow("5,000 ASCII letters without a blank") << hugeAscii << QStringList{} << alternative;

    Message asciiWords = baseMessage();
    asciiWords.subject = QStringLiteral("Offerta  speciale: sconti fino al 50% ").repeated(80);
    asciiWords.from.name = QStringLiteral("Rossi, Bianchi & Associati - Studio \"Legale\" ").repeated(20);
    QTest::newRow("long ASCII subject and quoted name folded at their blanks")
        << asciiWords << QStringList{} << alternative;

    Message names = baseMessage();
    names.attachments = {
        {italian(300) + QStringLiteral(".pdf"), "application/pdf", randomBytes(60, 4)},
        {QStringLiteral("Offerta \"Estate\" C:\\listini\\2026.pdf"), "application/pdf", randomBytes(60, 5)},
        {QString(400, u'z') + QStringLiteral(".txt"), "text/plain", QByteArray("z")},
        {QStringLiteral("Relazione trimestrale delle vendite per regione e per agente, con le note del direttore.pdf"),
         MIMEBuilder::mimeType("xlsx"), randomBytes(60, 6)},
    };
    QTest::newRow("long attachment names, quotes and backslashes")
        << names << QStringList{}
        << "multipart/mixed(" + alternative +
               ",application/pdf,application/pdf,text/plain,"
               "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet)";

    // Control characters from a cell or a settings field landed raw in the headers.
    Message controls = baseMessage();
    controls.subject = QString::fromUtf16(u"Offerta\u0000 \u001b[31mrossa\u0007\u007f fine\u0085\u009b", 28);
    controls.from.name = QString::fromUtf16(u"Ditta\u001b]0;titolo\u0007 Rossi");
    controls.to = QString::fromUtf16(u"mario@example.it\u0000", 17);
    controls.replyTo = QString::fromUtf16(u"r@example.it\u001b");
    controls.attachments = {
        {QString::fromUtf16(u"listino\u0000\u001b.pdf", 13), "application/pdf", "x"},
        {QString::fromUtf16(u"città\u0007.pdf"), QString::fromUtf16(u"application/pdf\u0007"), "y"}};
    QTest::newRow("control characters in every header")
        << controls << QStringList{} << "multipart/mixed(" + alternative + ",application/pdf,application/pdf)";

    // Raw text with no blank to fold at: a line of more than 998 bytes, which servers refuse.
    Message unbroken = baseMessage();
    unbroken.to = QString(400, QChar(0xFFFD)) + QStringLiteral("@example.it");
    QTest::newRow("no blank in hundreds of non-ASCII characters") << unbroken << QStringList{} << alternative;

    // Addresses with accented domains went out as raw UTF-8.
    Message accented = baseMessage();
    accented.to = QString::fromUtf16(u"mario@müller.de");
    accented.from.email = QString::fromUtf16(u"info@città.it");
    accented.replyTo = QString::fromUtf16(u"risposte@città.it");
    QTest::newRow("accented domains in their ASCII form") << accented << QStringList{} << alternative;
}

void TestMIMEBuilder::readBack() {
    QFETCH(Message, message);
    QFETCH(QStringList, pictures);
    QFETCH(QString, tree);
    const QString htmlWithMarkers = message.html;
    for (qsizetype i = 0; i < pictures.size(); ++i)
        message.html.replace(QStringLiteral("@%1@").arg(i + 1), pictures[i]);

    const QByteArray bytes = MIMEBuilder::build(message);
    const QJsonObject read = TestSupport::readWithPython(bytes);
    QVERIFY(!read.isEmpty());
    // Folded where long, but with the folds undone the subject is its encoded value.
    QVERIFY(unfoldedHeaders(bytes).contains(
        "\r\nSubject: " + MIMEBuilder::encodeHeaderValue(message.subject, 9).toLatin1() + "\r\n"));
    // The message's own structure is written as ever: its Content-Type on one line, last of the headers.
    static const QRegularExpression outerType(QStringLiteral(
        "\r\nContent-Type: multipart/[a-z]+; (type=\"multipart/alternative\"; )?boundary=\"[^\"\r\n]+\"\r\n\r\n"));
    QVERIFY(outerType.match(QString::fromLatin1(bytes.left(bytes.indexOf("\r\n\r\n") + 4))).hasMatch());
    const QString overlong = overlongHeaderLine(bytes);
    QVERIFY2(overlong.isEmpty(), qPrintable(overlong));

    QCOMPARE(read["tree"].toString(), tree);
    QCOMPARE(read["defects"].toArray(), QJsonArray());
    QVERIFY(read["preamble"].toString().isEmpty());
    const QJsonObject lines = read["lines"].toObject();
    QVERIFY2(lines["maxLineBytes"].toInt() <= 998, qPrintable(QString::number(lines["maxLineBytes"].toInt())));
    QCOMPARE(lines["bareLF"].toInt(), 0);
    QCOMPARE(lines["bareCR"].toInt(), 0);
    QVERIFY(lines["endsWithCRLF"].toBool());

    // Headers: order, values decoded back, and nothing injected.
    QStringList names;
    for (const QJsonValue& name : read["headerNames"].toArray())
        names << name.toString();
    QCOMPARE(names, headerNames(message));
    const QJsonObject raw = read["raw"].toObject();
    QCOMPARE(read["subject"].toString(), flattened(message.subject));
    // A fold where the text had no blank is the one change a reader may see, in text no address has.
    QCOMPARE(raw["To"].toString().remove(QStringLiteral("\r\n ")), wireAddress(flattened(message.to)));
    if (message.replyTo && !message.replyTo->isEmpty())
        QCOMPARE(raw["Reply-To"].toString(), wireAddress(flattened(*message.replyTo)));
    for (const auto& [name, value] : message.extraHeaders)
        QCOMPARE(raw[name].toString(), flattened(value));
    const QJsonArray from = read["from"].toArray();
    QCOMPARE(from.size(), 1);
    // Python's address parser keeps the blanks between adjacent encoded words, which RFC 2047 drops.
    const QString name = flattened(message.from.name).trimmed();
    QCOMPARE(read["fromName"].toString(), name);
    if (!MIMEBuilder::addressHeader(message.from.name, message.from.email, 6).contains(u"?= =?"))
        QCOMPARE(from[0]["name"].toString(), name);
    QCOMPARE(from[0]["email"].toString(), wireAddress(message.from.email));
    const QRegularExpression messageId(QStringLiteral("^<[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}@") +
                                       QRegularExpression::escape(wireAddress(message.from.email).section(u'@', -1)) +
                                       u'>' + u'$');
    QVERIFY2(messageId.match(read["messageId"].toString()).hasMatch(), qPrintable(read["messageId"].toString()));
    QVERIFY(!read["date"].toString().isEmpty());

    // Parts: texts as written, pictures and attachments byte for byte.
    const QJsonArray leaves = read["leaves"].toArray();
    QCOMPARE(leaves.size(), 2 + pictures.size() + message.attachments.size());
    QCOMPARE(leaves[0]["type"].toString(), "text/plain");
    QCOMPARE(leaves[0]["text"].toString(), textAsSent(message.plainText));
    QCOMPARE(leaves[1]["type"].toString(), "text/html");
    QString expectedHtml = htmlWithMarkers;
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        const QJsonValue leaf = leaves[2 + i];
        const QString type = pictures[i].section(u';', 0, 0).mid(5);
        QCOMPARE(leaf["type"].toString(), type);
        QCOMPARE(leaf["disposition"].toString(), "inline");
        QCOMPARE(leaf["filename"].toString(), QStringLiteral("immagine%1.%2").arg(i + 1).arg(type.section(u'/', 1)));
        const QString uriData = pictures[i].section(u',', 1).remove(u'\r').remove(u'\n').remove(u' ');
        QCOMPARE(leaf["data"].toString(), uriData);
        QString cid = leaf["cid"].toString();
        QVERIFY2(cid.startsWith(u'<') && cid.endsWith(u'>'), qPrintable(cid));
        expectedHtml.replace(QStringLiteral("@%1@").arg(i + 1), QStringLiteral("cid:") + cid.mid(1, cid.size() - 2));
    }
    QCOMPARE(leaves[1]["text"].toString(), textAsSent(expectedHtml));
    for (qsizetype i = 0; i < message.attachments.size(); ++i) {
        const Attachment& attachment = message.attachments[i];
        const QJsonValue leaf = leaves[2 + pictures.size() + i];
        QCOMPARE(leaf["type"].toString(), flattened(attachment.mimeType).trimmed());
        QCOMPARE(leaf["disposition"].toString(), "attachment");
        QCOMPARE(leaf["filename"].toString(), flattened(attachment.filename));
        QCOMPARE(QByteArray::fromBase64(leaf["data"].toString().toLatin1()), attachment.data);
        QCOMPARE(leaf["defects"].toArray(), QJsonArray());
    }
}

void TestMIMEBuilder::freshIdentifiersForEveryMessage() {
    Message m = baseMessage();
    m.html = QStringLiteral("<img src=\"data:image/png;base64,QUJD\">");
    m.attachments = {{"a.pdf", "application/pdf", "x"}};
    const QRegularExpression identifiers(QStringLiteral(
        "(----=_Brezzario_(alt|rel|mix)_[0-9A-F]{32}|Message-ID: <[^>]+>|img1\\.[0-9A-F]{8}@brezzario)"));
    QSet<QString> seen;
    for (int i = 0; i < 2; ++i) {
        const QString text = QString::fromUtf8(MIMEBuilder::build(m));
        QSet<QString> these;
        auto it = identifiers.globalMatch(text);
        while (it.hasNext())
            these.insert(it.next().captured(1));
        QCOMPARE(these.size(), 5); // three boundaries, the Message-ID, the picture's identifier
        QVERIFY(!seen.intersects(these));
        seen.unite(these);
    }
}

BREZZARIO_TEST_GUILESS_MAIN(TestMIMEBuilder)
#include "tst_mimebuilder.moc"
