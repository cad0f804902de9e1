#pragma once

#include <QHash>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

// Turns the text of a template into one recipient's text. A placeholder is `{{campo}}`; field names
// are compared after Unicode lower-casing, and the spelling the user typed is kept only for display.
namespace TemplateRenderer {

// The placeholder expression, compiled once; group 1 is the name without the blanks round it.
const QRegularExpression& pattern();

// Names in order of first appearance, each once (case-insensitively), in their first spelling.
QStringList fields(const QString& text);

// The names of fields(template_) that no column matches, in order and in their own spelling.
QStringList missingFields(const QString& template_, const QStringList& columns);

// Every placeholder replaced by the row's value, or by nothing when the row has no such field. A
// replaced value is never scanned again. With `escape` the values are HTML-escaped.
QString substitute(const QString& text, const QHash<QString, QString>& values, bool escape);

// The five HTML escapes, ampersand first so the others are not escaped twice.
QString escaped(const QString& value);

// The few entities the editor produces, decoded; "&amp;" last so "&amp;lt;" gives "&lt;" and no more.
QString htmlEntitiesDecoded(const QString& text);

// A readable plain-text version of an HTML body.
QString htmlToPlainText(const QString& html);

} // namespace TemplateRenderer
