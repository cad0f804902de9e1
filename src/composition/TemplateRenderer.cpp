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

// QRegularExpression checks the whole text for valid UTF-16 before every match it looks for: over a page of
// some 10 KB and ten expressions with a few matches each, that was most of htmlToPlainText (109 µs of a
// message here, 20 µs without). A valid text is checked once, then matched without the check; any other is
// matched with it, as Qt does, and so matches nothing.
QRegularExpression::MatchOptions checkedOnce(const QString& text) {
    return QStringView(text).isValidUtf16() ? QRegularExpression::DontCheckSubjectStringMatchOption
                                            : QRegularExpression::NoMatchOption;
}

// QString::replace with an expression, as Qt does it ("\N" stands for group N), with the options of
// checkedOnce. Matches and groups begin and end on whole code points, so what it writes is as valid as the text.
void replaceAll(QString& text, const QRegularExpression& re, const QString& replacement,
                QRegularExpression::MatchOptions options) {
    auto it = re.globalMatch(text, 0, QRegularExpression::NormalMatch, options);
    if (!it.hasNext())
        return;
    QString out;
    out.reserve(text.size());
    qsizetype cursor = 0;
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        out.append(QStringView(text).mid(cursor, match.capturedStart(0) - cursor));
        for (qsizetype i = 0; i < replacement.size(); ++i) {
            if (replacement[i] == u'\\' && i + 1 < replacement.size() && replacement[i + 1].isDigit())
                out.append(match.capturedView(replacement[++i].digitValue()));
            else
                out.append(replacement[i]);
        }
        cursor = match.capturedEnd(0);
    }
    out.append(QStringView(text).mid(cursor));
    text = std::move(out);
}

// The same as replacing <[^>]+> with nothing, a page's hundreds of tags without a match object each; only
// for a text checkedOnce found valid, as the expression matches nothing in any other.
void dropTags(QString& text) {
    QString out;
    qsizetype cursor = 0;
    for (qsizetype open = text.indexOf(u'<'); open >= 0; open = text.indexOf(u'<', open + 1)) {
        const qsizetype close = text.indexOf(u'>', open + 1);
        if (close < 0)
            break; // no later tag can close either
        if (close == open + 1)
            continue; // "<>" holds nothing, so no tag begins here
        if (out.isNull())
            out.reserve(text.size());
        out.append(QStringView(text).mid(cursor, open - cursor));
        cursor = close + 1;
        open = close;
    }
    if (out.isNull())
        return;
    out.append(QStringView(text).mid(cursor));
    text = std::move(out);
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
    auto it = pattern().globalMatch(text, 0, QRegularExpression::NormalMatch, checkedOnce(text));
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
    auto it = pattern().globalMatch(text, 0, QRegularExpression::NormalMatch, checkedOnce(text));
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
    static const QRegularExpression blanksBeforeNewline = compiled(QStringLiteral("[ \\t]+\\n"), unicode);
    static const QRegularExpression manyNewlines = compiled(QStringLiteral("\\n{3,}"), unicode);

    QString text = html;
    // Every step keeps a valid text valid, so one check serves them all.
    const QRegularExpression::MatchOptions options = checkedOnce(text);
    for (const Step& step : tagSteps())
        replaceAll(text, step.re, step.replacement, options);
    if (options & QRegularExpression::DontCheckSubjectStringMatchOption)
        dropTags(text);
    text = htmlEntitiesDecoded(text);
    replaceAll(text, blanksBeforeNewline, QStringLiteral("\n"), options);
    replaceAll(text, manyNewlines, QStringLiteral("\n\n"), options);
    return Text::trimmedWhitespaceAndNewlines(text);
}

} // namespace TemplateRenderer
