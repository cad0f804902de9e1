// Template rendering and the plain-text version of a page. The input is the template text, then
// optionally a byte 0x01 and the row's values as "key=value" entries separated by 0x02.
#include "composition/TemplateRenderer.h"
#include "FuzzCheck.h"
#include "records/Text.h"

#include <QRegularExpression>
#include <QSet>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype split = input.indexOf(u'\x01');
    const QString text = split < 0 ? input : input.left(split);
    QHash<QString, QString> values;
    if (split >= 0) {
        for (const QString& entry : input.mid(split + 1).split(u'\x02')) {
            const qsizetype eq = entry.indexOf(u'=');
            if (eq >= 0)
                values.insert(entry.left(eq), entry.mid(eq + 1));
        }
    }

    const QString raw = TemplateRenderer::substitute(text, values, false);
    const QString escaped = TemplateRenderer::substitute(text, values, true);
    if (!text.contains(QLatin1String("{{"))) {
        FUZZ_CHECK(raw == text);
        FUZZ_CHECK(escaped == text);
    }
    // Escaping only ever lengthens a value, and values without the five characters are left alone.
    FUZZ_CHECK(escaped.size() >= raw.size());

    const QStringList fields = TemplateRenderer::fields(text);
    QSet<QString> folded;
    for (const QString& name : fields) {
        FUZZ_CHECK(!name.isEmpty());
        FUZZ_CHECK(!name.contains(u'{') && !name.contains(u'}'));
        folded.insert(Text::lowercased(name));
    }
    FUZZ_CHECK(folded.size() == fields.size());
    const QStringList missing = TemplateRenderer::missingFields(text, values.keys());
    for (const QString& name : missing)
        FUZZ_CHECK(fields.contains(name));

    // Every known field given an empty value renders the same as no values at all.
    QHash<QString, QString> empties;
    for (const QString& name : fields)
        empties.insert(name, QString());
    FUZZ_CHECK(TemplateRenderer::substitute(text, empties, true) == TemplateRenderer::substitute(text, {}, false));

    const QString plain = TemplateRenderer::htmlToPlainText(text);
    FUZZ_CHECK(plain == Text::trimmedWhitespaceAndNewlines(plain));
    FUZZ_CHECK(!plain.contains(QLatin1String("\n\n\n")));
    static const QRegularExpression blankBeforeNewline(QStringLiteral("[ \\t]\\n"));
    FUZZ_CHECK(!blankBeforeNewline.match(plain).hasMatch());
    return 0;
}
