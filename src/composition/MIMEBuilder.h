#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>

#include <optional>

// The exact bytes of one message as they go to the server after DATA. Every call makes fresh
// boundaries, content identifiers and Message-ID, so each recipient gets their own.
namespace MIMEBuilder {

struct Address {
    QString name;
    QString email;
};

struct Attachment {
    QString filename;
    QString mimeType;
    QByteArray data;
    // The base64 lines of data when already made: a run encodes each attachment once, not per message.
    QByteArray encoded = {};
};

struct InlineImage {
    QString cid;
    QString mimeType;
    QString filename;
    QByteArray data;
    QByteArray encoded = {}; // as for Attachment
};

struct Message {
    Address from;
    QString to;                     // used as it stands
    std::optional<QString> replyTo; // absent or empty: no Reply-To header
    QString subject;
    QString html; // the whole page; data URIs of pictures in it become related parts
    QString plainText;
    // Pictures already taken out of the page (a run takes the template's out once), referred to by "cid:";
    // they come before the ones found in html.
    QList<InlineImage> inlineImages = {};
    QList<Attachment> attachments;
    QList<QPair<QString, QString>> extraHeaders;
};

struct ExtractedImages {
    QString html; // with "cid:" references in place of the data URIs
    QList<InlineImage> images;
};

QByteArray build(const Message& message);

// Takes every base64 data URI of an image out of the HTML, numbering the pictures from 1 (or from the
// number after `numeroIniziale`). A data URI whose base64 doesn't decode stays where it is and uses up no number.
ExtractedImages extractInlineImages(const QString& html, int numeroIniziale = 0);
// The same pictures with their base64 lines made, for a sender that uses them many times.
void codifica(QList<InlineImage>& images);
void codifica(QList<Attachment>& attachments);

// "Tue, 3 Mar 2026 09:05:07 +0100", in the machine's time zone.
QString rfc5322Date(const QDateTime& moment);

// Control characters (C0, DEL, C1: line ends, NUL, ESC…) become blanks, so nothing from the data can end a
// header line early or reach a reader's terminal.
QString withoutControls(const QString& value);

// Control characters become blanks. A value that is plain ASCII, with no word too long for a folded line,
// stays as it is; any other becomes a run of UTF-8 base64 encoded words of at most 75 characters, split
// between whole characters and separated by blanks, where a line may be folded. `column` is where the
// value starts on its line, so that the first word leaves the line within 76 columns.
QString encodeHeaderValue(const QString& value, qsizetype column = 0);

// "Name <address>", or the bare address without a name. An ASCII name holding an RFC 5322 special is a
// quoted string; the domain of the address is in its ASCII form.
QString addressHeader(const QString& name, const QString& email, qsizetype column = 0);

// "Name: value" folded at the blanks of the value so that lines stay within 78 columns where a blank
// allows it (RFC 5322 2.1.1); no CRLF at the end.
QString headerLine(const QString& name, const QString& value);

// `; parameter="value"` appended to the start of a header line, folded before the parameter and inside
// the value only: an ASCII value as a quoted string with `"` and `\` escaped, any other as encoded words
// inside the quotes.
QString withParameter(const QString& start, const QString& parameter, const QString& value);

// Quoted-printable of the UTF-8 text, with CRLF line ends and lines of at most 76 bytes.
QByteArray quotedPrintable(const QString& text);

// Base64 in lines of 76 characters joined with CRLF, with no line end after the last.
QByteArray base64Lines(const QByteArray& data);

// The media type for a file extension (without the dot), "application/octet-stream" if unknown.
QString mimeType(const QString& fileExtension);

} // namespace MIMEBuilder
