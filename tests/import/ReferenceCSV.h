#pragma once

#include <QByteArray>
#include <QChar>
#include <QList>
#include <QStringList>
#include <QStringView>

// The reader's rules written the plain way they are stated, one character at a time over the decoded text,
// with the grapheme test at every delimiter and quote. Slow and kept obviously right, so that the reader's
// fast way through the bytes can be held against it (by the tests and the fuzzer).
namespace ReferenceCSV {

// Rows of a text whose line ends are already LF, every row kept.
QList<QStringList> rows(QStringView text, QChar delimiter);

// What parseRaw should give for the bytes: the whole file decoded, the delimiter found on that text, the
// rows split and the blank ones dropped.
struct Result {
    QList<QStringList> rows;
    QChar delimiter;
    QString encodingName;
};
Result parse(const QByteArray& bytes);

} // namespace ReferenceCSV
