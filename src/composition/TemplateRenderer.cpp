#include "composition/TemplateRenderer.h"

#include "records/Text.h"

#include <QSet>

#include <array>

namespace TemplateRenderer {

namespace {
// Unicode properties make \s and \b mean what the ICU dialect means.
constexpr auto unicode = QRegularExpression::UseUnicodePropertiesOption;
constexpr auto unicodeNoCase =
    QRegularExpression::UseUnicodePropertiesOption | QRegularExpression::CaseInsensitiveOption;

QRegularExpression compiled(const QString& expression, QRegularExpression::PatternOptions options) {
    QRegularExpression re(expression, options);
    if (!re.isValid())
        qFatal("TemplateRenderer: %s", qPrintable(re.errorString()));
    re.optimize();
    return re;
}

struct Step {
    QRegularExpression re;
    QString replacement;
};

// The replacements of htmlToPlainText, in the order they must run: whole elements whose content is
// not text first, then links (whose address would be lost with the tags), then line structure.
const std::array<Step, 7>& tagSteps() {
    static const std::array<Step, 7> steps = [] {
        std::array<Step, 7> s;
        const char* dropped[] = {"script", "style", "head"};
        for (int i = 0; i < 3; ++i) {
            const QString name = QLatin1String(dropped[i]);
            s[i] = {compiled(u'<' + name + QStringLiteral("[^>]*>[\\s\\S]*?</") + name + u'>', unicodeNoCase), {}};
        }
        s[3] = {compiled(QStringLiteral("<a\\b[^>]*href=[\"']([^\"']+)[\"'][^>]*>([\\s\\S]*?)</a>"), unicodeNoCase),
                QStringLiteral("\\2 (\\1)")};
        s[4] = {compiled(QStringLiteral("<br\\s*/?>"), unicodeNoCase), QStringLiteral("\n")};
        s[5] = {compiled(QStringLiteral("</(p|div|tr|h[1-6]|li)>"), unicodeNoCase), QStringLiteral("\n")};
        s[6] = {compiled(QStringLiteral("<li[^>]*>"), unicodeNoCase), QStringLiteral("\u2022 ")};
        return s;
    }();
    return steps;
}
} // namespace

const QRegularExpression& pattern() {
    static const QRegularExpression re = compiled(QStringLiteral("\\{\\{\\s*([^{}]+?)\\s*\\}\\}"), unicode);
    return re;
}

QStringList fields(const QString& text) {
    QStringList result;
    QSet<QString> seen;
    auto it = pattern().globalMatch(text);
    while (it.hasNext()) {
        const QString name = it.next().captured(1);
        const QString folded = Text::lowercased(name);
        if (seen.contains(folded))
            continue;
        seen.insert(folded);
        result.append(name);
    }
    return result;
}

QStringList missingFields(const QString& template_, const QStringList& columns) {
    QSet<QString> known;
    for (const QString& column : columns)
        known.insert(Text::lowercased(column));
    QStringList missing;
    for (const QString& name : fields(template_))
        if (!known.contains(Text::lowercased(name)))
            missing.append(name);
    return missing;
}

QString substitute(const QString& text, const QHash<QString, QString>& values, bool escape) {
    QHash<QString, QString> folded;
    folded.reserve(values.size());
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        folded.insert(Text::lowercased(it.key()), it.value());

    QString out;
    out.reserve(text.size());
    qsizetype cursor = 0;
    auto it = pattern().globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        out.append(QStringView(text).mid(cursor, match.capturedStart(0) - cursor));
        const QString value = folded.value(Text::lowercased(match.captured(1)));
        out.append(escape ? escaped(value) : value);
        cursor = match.capturedEnd(0);
    }
    out.append(QStringView(text).mid(cursor));
    return out;
}

QString escaped(const QString& value) {
    QString s = value;
    s.replace(u'&', QStringLiteral("&amp;"));
    s.replace(u'<', QStringLiteral("&lt;"));
    s.replace(u'>', QStringLiteral("&gt;"));
    s.replace(u'"', QStringLiteral("&quot;"));
    s.replace(u'\'', QStringLiteral("&#39;"));
    return s;
}

QString htmlEntitiesDecoded(const QString& text) {
    QString s = text;
    s.replace(QStringLiteral("&nbsp;"), QStringLiteral(" "));
    s.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    s.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    s.replace(QStringLiteral("&quot;"), QStringLiteral("\""));
    s.replace(QStringLiteral("&#39;"), QStringLiteral("'"));
    s.replace(QStringLiteral("&apos;"), QStringLiteral("'"));
    s.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return s;
}

QString htmlToPlainText(const QString& html) {
    static const QRegularExpression anyTag = compiled(QStringLiteral("<[^>]+>"), unicode);
    static const QRegularExpression blanksBeforeNewline = compiled(QStringLiteral("[ \\t]+\\n"), unicode);
    static const QRegularExpression manyNewlines = compiled(QStringLiteral("\\n{3,}"), unicode);

    QString text = html;
    for (const Step& step : tagSteps())
        text.replace(step.re, step.replacement);
    text.replace(anyTag, QString());
    text = htmlEntitiesDecoded(text);
    text.replace(blanksBeforeNewline, QStringLiteral("\n"));
    text.replace(manyNewlines, QStringLiteral("\n\n"));
    return Text::trimmedWhitespaceAndNewlines(text);
}

} // namespace TemplateRenderer
