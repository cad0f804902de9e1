#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <QStringList>

// Runs the system's dig against one fixed public resolver, never the machine's own. A query that can't be
// made (no dig, a failed launch, no answer in time) gives no lines: callers read that as an absence.
namespace Dig {

inline constexpr const char* publicResolver = "1.1.1.1";
inline constexpr const char* defaultExecutable = "/usr/bin/dig";

// The arguments, in order, for one query.
QStringList arguments(const QString& type, const QString& name);

// The pieces of dig's standard output between line feeds, empty pieces and dig's own comment lines
// (";;" notes such as "connection timed out", which it prints on standard output too) left out.
QCoro::Task<QStringList> query(QString type, QString name);

// The output of one run, split as query() does it. Bytes that aren't valid UTF-8 give nothing.
QStringList answerPieces(const QByteArray& output);

// For tests only: another resolver address or another dig. An empty text restores the default.
void setResolverForTests(const QString& address);
void setExecutableForTests(const QString& path);

} // namespace Dig
