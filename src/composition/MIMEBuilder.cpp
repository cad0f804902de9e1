#include "composition/MIMEBuilder.h"

#include "records/Casuale.h"
#include "records/EmailSyntax.h"

#include <QRegularExpression>
#include <QUuid>

namespace MIMEBuilder {

namespace {
constexpr QByteArrayView crlf = "\r\n";

QString boundary(const char* prefix) {
    return QLatin1String(prefix) + uuidCasuale().toString(QUuid::Id128).toUpper();
}

// Base64 as a strict decoder reads it once unknown characters are ignored: the padded length must be
// a multiple of four and padding may stand only at the end.
std::optional<QByteArray> decodedBase64(QStringView text) {
    QByteArray alphabet;
    alphabet.reserve(text.size());
    for (QChar c : text) {
        const char16_t u = c.unicode();
        if ((u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9') || u == '+' || u == '/' ||
            u == '=')
            alphabet.append(static_cast<char>(u));
    }
    if (alphabet.size() % 4 != 0)
        return std::nullopt;
    const qsizetype firstPad = alphabet.indexOf('=');
    if (firstPad >= 0) {
        const qsizetype pads = alphabet.size() - firstPad;
        if (pads > 2 || alphabet.count('=') != pads)
            return std::nullopt;
    }
    auto result = QByteArray::fromBase64Encoding(alphabet, QByteArray::AbortOnBase64DecodingErrors);
    if (!result)
        return std::nullopt;
    return *std::move(result);
}

class Writer {
public:
    explicit Writer(qsizetype expected) { m_bytes.reserve(expected); }
    void line(QByteArrayView text = {}) {
        m_bytes.append(text);
        m_bytes.append(crlf);
    }
    void line(const QString& text) { line(QByteArrayView(text.toUtf8())); }
    void append(QByteArrayView bytes) { m_bytes.append(bytes); }
    QByteArray take() { return std::move(m_bytes); }

private:
    QByteArray m_bytes;
};

void writePartHeaders(Writer& w, const QString& boundary, const QStringList& headers) {
    w.line(QStringLiteral("--") + boundary);
    for (const QString& header : headers)
        w.line(header);
    w.line();
}

QString multipartType(const QString& subtype, const QString& boundary) {
    return QStringLiteral("multipart/") + subtype + QStringLiteral("; boundary=\"") + boundary + u'"';
}
} // namespace

ExtractedImages extractInlineImages(const QString& html, int numeroIniziale) {
    static const QRegularExpression dataURI(QStringLiteral("data:(image/[a-zA-Z0-9.+-]+);base64,([A-Za-z0-9+/=\\s]+)"),
                                            QRegularExpression::UseUnicodePropertiesOption);

    ExtractedImages result;
    qsizetype cursor = 0;
    int counter = numeroIniziale;
    // Most pages hold no picture: the cheap test spares them the expression.
    if (!html.contains(QLatin1String("data:image/"), Qt::CaseInsensitive))
        return {html, {}};
    auto it = dataURI.globalMatch(html);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result.html.append(QStringView(html).mid(cursor, match.capturedStart(0) - cursor));
        cursor = match.capturedEnd(0);
        std::optional<QByteArray> data = decodedBase64(match.capturedView(2));
        if (!data) {
            result.html.append(match.capturedView(0));
            continue;
        }
        const int n = ++counter;
        const QString type = match.captured(1);
        const QString extension = type.mid(type.lastIndexOf(u'/') + 1);
        const QString cid = QStringLiteral("img%1.%2@brezzario")
                                .arg(n)
                                .arg(uuidCasuale().toString(QUuid::WithoutBraces).toUpper().left(8));
        result.images.append({cid, type, QStringLiteral("immagine%1.%2").arg(n).arg(extension), *std::move(data)});
        result.html.append(QStringLiteral("cid:") + cid);
    }
    if (cursor == 0)
        result.html = html;
    else
        result.html.append(QStringView(html).mid(cursor));
    return result;
}

void codifica(QList<InlineImage>& images) {
    for (InlineImage& image : images)
        image.encoded = base64Lines(image.data);
}

void codifica(QList<Attachment>& attachments) {
    for (Attachment& attachment : attachments)
        attachment.encoded = base64Lines(attachment.data);
}

QByteArray build(const Message& message) {
    ExtractedImages extracted = extractInlineImages(message.html, int(message.inlineImages.size()));
    extracted.images = message.inlineImages + extracted.images;
    const QByteArray plainPart = quotedPrintable(message.plainText);
    const QByteArray htmlPart = quotedPrintable(extracted.html);

    QList<QByteArray> imageParts, attachmentParts;
    qsizetype expected = plainPart.size() + htmlPart.size() + 4096;
    for (const InlineImage& image : std::as_const(extracted.images)) {
        imageParts.append(image.encoded.isEmpty() ? base64Lines(image.data) : image.encoded);
        expected += imageParts.last().size() + 512;
    }
    for (const Attachment& attachment : message.attachments) {
        attachmentParts.append(attachment.encoded.isEmpty() ? base64Lines(attachment.data) : attachment.encoded);
        expected += attachmentParts.last().size() + 512;
    }

    const QString alternative = boundary("----=_Brezzario_alt_");
    const QString related = extracted.images.isEmpty() ? QString() : boundary("----=_Brezzario_rel_");
    const QString mixed = message.attachments.isEmpty() ? QString() : boundary("----=_Brezzario_mix_");
    const QString alternativeType = multipartType(QStringLiteral("alternative"), alternative);
    const QString relatedType = related.isEmpty() ? alternativeType
                                                  : QStringLiteral("multipart/related; type=\"multipart/alternative\"; "
                                                                   "boundary=\"") +
                                                        related + u'"';
    const QString outerType = mixed.isEmpty() ? relatedType : multipartType(QStringLiteral("mixed"), mixed);

    // Addresses go out with their domains in ASCII form, which every server routes.
    QString domain = wireAddress(message.from.email);
    domain = domain.mid(domain.lastIndexOf(u'@') + 1);
    QList<QPair<QString, QString>> headers = {
        {QStringLiteral("Date"), rfc5322Date(QDateTime::currentDateTime())},
        {QStringLiteral("From"), addressHeader(message.from.name, message.from.email, 6)},
        {QStringLiteral("To"), wireAddress(message.to)},
    };
    if (message.replyTo && !message.replyTo->isEmpty())
        headers.append({QStringLiteral("Reply-To"), wireAddress(*message.replyTo)});
    headers.append({QStringLiteral("Subject"), encodeHeaderValue(message.subject, 9)});
    headers.append(
        {QStringLiteral("Message-ID"), u'<' + uuidCasuale().toString(QUuid::WithoutBraces) + u'@' + domain + u'>'});
    headers.append({QStringLiteral("MIME-Version"), QStringLiteral("1.0")});
    headers.append({QStringLiteral("X-Mailer"), QStringLiteral("Brezzario")});
    headers.append(message.extraHeaders);

    Writer w(expected);
    for (const auto& [name, value] : headers)
        w.line(headerLine(name, value));
    w.line(QStringLiteral("Content-Type: ") + outerType);
    w.line();

    if (!mixed.isEmpty())
        writePartHeaders(w, mixed, {QStringLiteral("Content-Type: ") + relatedType});
    if (!related.isEmpty())
        writePartHeaders(w, related, {QStringLiteral("Content-Type: ") + alternativeType});

    const QString qp = QStringLiteral("Content-Transfer-Encoding: quoted-printable");
    writePartHeaders(w, alternative, {QStringLiteral("Content-Type: text/plain; charset=UTF-8"), qp});
    w.append(plainPart);
    w.line();
    writePartHeaders(w, alternative, {QStringLiteral("Content-Type: text/html; charset=UTF-8"), qp});
    w.append(htmlPart);
    w.line();
    w.line(QStringLiteral("--") + alternative + QStringLiteral("--"));

    const QString base64 = QStringLiteral("Content-Transfer-Encoding: base64");
    if (!related.isEmpty()) {
        w.line();
        for (qsizetype i = 0; i < extracted.images.size(); ++i) {
            const InlineImage& image = extracted.images[i];
            writePartHeaders(w, related,
                             {QStringLiteral("Content-Type: %1; name=\"%2\"").arg(image.mimeType, image.filename),
                              base64, QStringLiteral("Content-ID: <%1>").arg(image.cid),
                              QStringLiteral("Content-Disposition: inline; filename=\"%1\"").arg(image.filename)});
            w.append(imageParts[i]);
            w.line();
        }
        w.line(QStringLiteral("--") + related + QStringLiteral("--"));
    }
    if (!mixed.isEmpty()) {
        w.line();
        for (qsizetype i = 0; i < message.attachments.size(); ++i) {
            const Attachment& attachment = message.attachments[i];
            writePartHeaders(w, mixed,
                             {withParameter(QStringLiteral("Content-Type: ") + attachment.mimeType,
                                            QStringLiteral("name"), attachment.filename),
                              base64,
                              withParameter(QStringLiteral("Content-Disposition: attachment"),
                                            QStringLiteral("filename"), attachment.filename)});
            w.append(attachmentParts[i]);
            w.line();
        }
        w.line(QStringLiteral("--") + mixed + QStringLiteral("--"));
    }
    return w.take();
}

} // namespace MIMEBuilder
